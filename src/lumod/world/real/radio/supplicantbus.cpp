// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/supplicantbus.h"

#include "log.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

namespace {

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString busName = QStringLiteral("org.freedesktop.DBus");

/// Nested maps of a signal as maps, for whoever looks into them.
QVariantMap mapOf(const QVariant& value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return value.toMap();
    const auto argument = value.value<QDBusArgument>();
    return argument.currentSignature() == QLatin1String("a{sv}") ? qdbus_cast<QVariantMap>(argument)
                                                                 : QVariantMap();
}

} // namespace

SupplicantBus::SupplicantBus(QObject* parent)
    : QObject(parent)
    , m_bus(QDBusConnection::systemBus())
    , m_watcher(QLatin1String(root), m_bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceRegistered, this, &SupplicantBus::appeared);
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, &SupplicantBus::vanished);
    const struct
    {
        const char* of;
        const char* name;
    } signalRows[] = {{interface, "ScanDone"},
                      {interface, "BSSAdded"},
                      {interface, "BSSRemoved"},
                      {wps, "Event"},
                      {wps, "Credentials"}};
    for (const auto& row : signalRows)
        m_bus.connect(QLatin1String(root), QString(), QLatin1String(row.of),
                      QLatin1String(row.name), this, SLOT(on_signal(QDBusMessage)));
    m_bus.connect(QLatin1String(root), QString(), propertiesInterface,
                  QStringLiteral("PropertiesChanged"), this,
                  SLOT(on_propertiesChanged(QDBusMessage)));
}

void SupplicantBus::findOwner(const std::function<void(bool owned)>& then)
{
    auto message = QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"),
                                                  busName, QStringLiteral("NameHasOwner"));
    message.setArguments({QLatin1String(root)});
    send(message,
         [then](const QDBusMessage& answer) { then(answer.arguments().value(0).toBool()); });
}

void SupplicantBus::call(const QString& path, const char* interface, const char* method,
                         const QVariantList& arguments, const Then& then)
{
    auto message = QDBusMessage::createMethodCall(QLatin1String(root), path,
                                                  QLatin1String(interface), QLatin1String(method));
    message.setArguments(arguments);
    send(message, then);
}

void SupplicantBus::set(const QString& path, const char* interface, const char* property,
                        const QVariant& value)
{
    auto message = QDBusMessage::createMethodCall(QLatin1String(root), path, propertiesInterface,
                                                  QStringLiteral("Set"));
    message.setArguments({QLatin1String(interface), QLatin1String(property),
                          QVariant::fromValue(QDBusVariant(value))});
    send(message, [property](const QDBusMessage& answer) {
        if (answer.type() == QDBusMessage::ErrorMessage)
            qCDebug(lcLumod).noquote()
                << "wpa_supplicant does not take" << property << answer.errorMessage();
    });
}

void SupplicantBus::send(const QDBusMessage& message, const Then& then)
{
    auto toSend = message;
    toSend.setAutoStartService(false); // the system's own one would fight ours
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(toSend), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, then] {
        watcher->deleteLater();
        if (then)
            then(watcher->reply());
    });
}

void SupplicantBus::on_signal(const QDBusMessage& message)
{
    auto arguments = message.arguments();
    for (auto& argument : arguments)
        if (argument.userType() == qMetaTypeId<QDBusArgument>())
            argument = mapOf(argument);
    Q_EMIT told(message.path(), message.member(), arguments);
}

void SupplicantBus::on_propertiesChanged(const QDBusMessage& message)
{
    const auto arguments = message.arguments();
    if (arguments.size() >= 2)
        Q_EMIT propertiesChanged(message.path(), arguments.at(0).toString(),
                                 mapOf(arguments.at(1)));
}
