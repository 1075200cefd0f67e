#include "core/model/nodes/cmactivatenode.h"

#include "core/model/nodes/cmnodes.h"

CMActivateNode* CMActivateNode::create(CMNodes& nodes, const CMPath& path)
{
    qRegisterMetaType<CMSetDataRequest>();
    auto* node = new CMActivateNode(nodes, path);
    nodes.add(node);
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
    if (!m_accepts.isEmpty() && !m_accepts.contains(request.value().typeKey()))
        return request.fail(CMError::malformedValue(
            path(),
            QStringLiteral("it takes a \"%1\"").arg(m_accepts.join(QStringLiteral("\" or \"")))));
    Q_EMIT invoked(request);
}
