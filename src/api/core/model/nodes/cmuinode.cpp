// SPDX-License-Identifier: Apache-2.0
#include "core/model/nodes/cmuinode.h"

#include "core/model/nodes/cmnodes.h"

namespace {

struct Dispatch
{
    CMUINode& node;

    void operator()(const CMGetDataRequest& request) const { node.getData(request); }
    void operator()(const CMGetRowsRequest& request) const { node.getRows(request); }
    void operator()(const CMMatchRowRequest& request) const { node.matchRow(request); }
    void operator()(const CMSetDataRequest& request) const { node.setData(request); }
};

} // namespace

CMUINode::CMUINode(CMNodes& nodes, const CMPath& path)
    : QObject(&nodes)
    , m_path(path)
{
}

CMNodeInfo CMUINode::info() const
{
    return {m_path, kind(), m_title.toString(), m_permission, isReadOnly(), m_secret, type()};
}

void CMUINode::request(const CMRequest& request)
{
    std::visit(Dispatch{*this}, request);
}

void CMUINode::getData(const CMGetDataRequest& request)
{
    request.reply.setError(CMError::wrongKind(m_path));
}

void CMUINode::getRows(const CMGetRowsRequest& request)
{
    request.reply.setError(CMError::wrongKind(m_path));
}

void CMUINode::matchRow(const CMMatchRowRequest& request)
{
    request.reply.setError(CMError::wrongKind(m_path));
}

void CMUINode::setData(const CMSetDataRequest& request)
{
    request.fail(CMError::wrongKind(m_path));
}

void CMUINode::describe(const CMNodeRow& row)
{
    setType(QLatin1String(row.type));
    setPermission(row.permission);
    setTitle(TrString(row.title));
}

bool CMUINode::refusesType(const CMSetDataRequest& request) const
{
    const QStringList types = type().split(QLatin1Char('|'));
    if (types.first().isEmpty() || types.contains(request.value().typeKey()))
        return false;
    request.fail(CMError::malformedValue(
        m_path, QStringLiteral("it takes a \"%1\"").arg(types.join(QStringLiteral("\" or \"")))));
    return true;
}
