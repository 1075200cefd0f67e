// SPDX-License-Identifier: Apache-2.0
#include "core/model/nodes/cmlistrowsnode.h"

#include "core/model/nodes/cmnodes.h"

CMListRowsNode* CMListRowsNode::create(CMNodes& nodes, const CMPath& path)
{
    auto* node = new CMListRowsNode(nodes, path);
    connect(node, &CMListRowsNode::rowsChanged, &nodes,
            [&nodes, node] { Q_EMIT nodes.rowsChanged(node->path()); });
    nodes.add(node);
    return node;
}

CMListRowsNode* CMListRowsNode::create(CMNodes& nodes, const CMNodeRow& row)
{
    Q_ASSERT(row.kind == CMNodeRow::Rows);
    auto* node = create(nodes, CMPath(QLatin1String(row.path)));
    node->describe(row);
    return node;
}

void CMListRowsNode::rowsClear()
{
    if (m_rows.isEmpty())
        return;
    m_rows.clear();
    m_indexById.clear();
    announce();
}

void CMListRowsNode::rowsSetById(const OrvaRoles& row)
{
    const auto index = m_indexById.constFind(row.id());
    if (index != m_indexById.constEnd()) {
        m_rows[*index] = row;
    } else {
        m_indexById.insert(row.id(), m_rows.size());
        m_rows.append(row);
    }
    announce();
}

void CMListRowsNode::rowsRemoveById(const QString& id)
{
    const auto found = m_indexById.find(id);
    if (found == m_indexById.end())
        return;
    const int removed = *found;
    m_rows.removeAt(removed);
    m_indexById.erase(found);
    for (int& index : m_indexById) {
        if (index > removed)
            --index;
    }
    announce();
}

QString CMListRowsNode::kind() const
{
    return QStringLiteral("rows");
}

void CMListRowsNode::getRows(const CMGetRowsRequest& request)
{
    request.reply.finish(OrvaCodec<QVector<OrvaRoles>>::encode(m_rows));
}

void CMListRowsNode::matchRow(const CMMatchRowRequest& request)
{
    const auto index = m_indexById.constFind(request.id);
    request.reply.finish(index != m_indexById.constEnd() ? m_rows.at(*index).__variant()
                                                         : QVariant(QVariantHash()));
}

void CMListRowsNode::announce()
{
    if (m_announced)
        return;
    m_announced = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_announced = false;
            Q_EMIT rowsChanged();
        },
        Qt::QueuedConnection);
}
