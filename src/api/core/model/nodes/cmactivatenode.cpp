// SPDX-License-Identifier: Apache-2.0
#include "core/model/nodes/cmactivatenode.h"

#include "core/model/nodes/cmnodes.h"

CMActivateNode* CMActivateNode::create(CMNodes& nodes, const CMPath& path)
{
    qRegisterMetaType<CMSetDataRequest>();
    auto* node = new CMActivateNode(nodes, path);
    nodes.add(node);
    return node;
}

CMActivateNode* CMActivateNode::create(CMNodes& nodes, const CMNodeRow& row)
{
    Q_ASSERT(row.kind == CMNodeRow::Action);
    auto* node = create(nodes, CMPath(QLatin1String(row.path)));
    node->describe(row);
    return node;
}

QString CMActivateNode::kind() const
{
    return QStringLiteral("activate");
}

void CMActivateNode::setData(const CMSetDataRequest& request)
{
    if (request.role() != OrvaRoles::Activate())
        return request.fail(CMError::wrongKind(path()));
    if (!refusesType(request))
        Q_EMIT invoked(request);
}
