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
    const QString type = m_value.typeKey();
    if (!type.isEmpty() && request.value().typeKey() != type)
        return request.fail(
            CMError::malformedValue(path(), QStringLiteral("it takes a \"%1\"").arg(type)));
    setValue(request.value());
    request.answer();
}
