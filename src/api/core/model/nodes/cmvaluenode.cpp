// SPDX-License-Identifier: Apache-2.0
#include "core/model/nodes/cmvaluenode.h"

#include "core/model/nodes/cmnodes.h"

CMValueNode* CMValueNode::create(CMNodes& nodes, const CMPath& path, QMutex*)
{
    auto* node = new CMValueNode(nodes, path);
    connect(node, &CMValueNode::valueChanged, &nodes, [&nodes, node](const OrvaValue& value) {
        Q_EMIT nodes.valueChanged(node->path(), value);
    });
    nodes.add(node);
    return node;
}

CMValueNode* CMValueNode::create(CMNodes& nodes, const CMNodeRow& row)
{
    Q_ASSERT(row.kind == CMNodeRow::Value || row.kind == CMNodeRow::ReadOnly);
    auto* node = create(nodes, CMPath(QLatin1String(row.path)));
    node->describe(row);
    node->setReadOnly(row.kind == CMNodeRow::ReadOnly);
    return node;
}

void CMValueNode::setValue(const OrvaValue& value)
{
    if (m_known && m_value == value)
        return;
    m_known = true;
    m_value = value;
    Q_EMIT valueChanged(value);
}

QString CMValueNode::kind() const
{
    return QStringLiteral("value");
}

QString CMValueNode::type() const
{
    const QString told = CMUINode::type();
    return told.isEmpty() ? m_value.typeKey() : told;
}

void CMValueNode::getData(const CMGetDataRequest& request)
{
    request.reply.finish(m_value.__variant());
}

void CMValueNode::setData(const CMSetDataRequest& request)
{
    if (request.role() != OrvaRoles::Value())
        return request.fail(CMError::wrongKind(path()));
    if (m_readOnly)
        return request.fail(CMError::readOnly(path()));
    if (refusesType(request))
        return;
    setValue(request.value());
    request.answer();
}
