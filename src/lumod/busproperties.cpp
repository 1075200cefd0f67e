// SPDX-License-Identifier: Apache-2.0
#include "busproperties.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QMetaProperty>

namespace {

/// Answers the call, if an answer is wanted.
void answer(const QDBusMessage& call, const QDBusMessage& reply)
{
    call.setDelayedReply(true); // or QtDBus answers too
    if (call.isReplyRequired())
        QDBusConnection::systemBus().send(reply);
}

/// A value from the bus, its map unpacked; invalid where it is something else that is nested.
QVariant plain(const QVariant& value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return value;
    const auto argument = value.value<QDBusArgument>();
    return argument.currentSignature() == QLatin1String("a{sv}")
               ? QVariant(qdbus_cast<QVariantMap>(argument))
               : QVariant();
}

} // namespace

BusProperties::BusProperties(const QString& interface, QObject* parent)
    : QDBusAbstractAdaptor(parent)
    , m_interface(interface)
{
}

void BusProperties::Get(const QString& interface, const QString& property, const QDBusMessage& call)
{
    const QMetaProperty found = find(interface, property, call);
    if (found.isValid())
        answer(call, call.createReply(QVariant::fromValue(QDBusVariant(found.read(parent())))));
}

void BusProperties::GetAll(const QString& interface, const QDBusMessage& call)
{
    QVariantMap values;
    const QMetaObject* object = parent()->metaObject();
    for (int i = QObject::staticMetaObject.propertyCount();
         interface == m_interface && i < object->propertyCount(); ++i)
        values.insert(QLatin1String(object->property(i).name()),
                      object->property(i).read(parent()));
    answer(call, call.createReply(values));
}

void BusProperties::Set(const QString& interface, const QString& property,
                        const QDBusVariant& value, const QDBusMessage& call)
{
    const QMetaProperty found = find(interface, property, call);
    if (!found.isValid())
        return;
    const QVariant content = plain(value.variant());
    if (!found.isWritable())
        answer(call, call.createErrorReply(QDBusError::PropertyReadOnly,
                                           property + QStringLiteral(" is read-only")));
    else if (content.userType() != found.userType() || !found.write(parent(), content))
        answer(call, call.createErrorReply(QDBusError::InvalidArgs,
                                           property + QStringLiteral(" is of another type")));
    else
        answer(call, call.createReply());
}

QMetaProperty BusProperties::find(const QString& interface, const QString& property,
                                  const QDBusMessage& call) const
{
    const QMetaObject* object = parent()->metaObject();
    const int index = object->indexOfProperty(property.toUtf8().constData());
    if (interface == m_interface && index >= QObject::staticMetaObject.propertyCount())
        return object->property(index);
    answer(call, call.createErrorReply(QDBusError::UnknownProperty,
                                       QStringLiteral("There is no property ") + property));
    return {};
}
