// SPDX-License-Identifier: Apache-2.0
// The daemon's signals and answers.
#include "backend/lumo/boundedcalls.h"
#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumodecoding.h"
#include "backend/lumo/lumolog.h"
#include "backend/lumo/networkinglowlevellumo.h"
#include "backend/networklistener.h"
#include "backend/softapinterface.h"
#include "wifidaemonproxy.h"

#include <utility>

// A question does not start the daemon: one that is not there has nothing to tell.
QDBusMessage Networking_LowLevel_LUMO::ask(const QString& interface, const QString& method,
                                           const QVariantList& arguments)
{
    QDBusMessage question = createCall(interface, method, arguments);
    question.setAutoStartService(false);
    return m_calls->ask(
        [&] { return m_daemon->connection().asyncCall(question, m_daemon->timeout()); });
}

std::optional<QVariantMap> Networking_LowLevel_LUMO::askDetails(const QString& interface)
{
    const QDBusMessage reply =
        ask(m_daemon->interface(), QStringLiteral("InterfaceDetails"), {interface});
    if (!BoundedCalls::isAnswer(reply))
        return std::nullopt;
    if (reply.type() == QDBusMessage::ErrorMessage) {
        LOG4CPLUS_DEBUG(lumoLogger(), "No details of " << interface << ": " << reply.errorName()
                                                       << ", " << lumoText(reply.errorMessage()));
        return QVariantMap();
    }
    if (reply.signature() != QLatin1String("a{sv}"))
        return QVariantMap();
    return lumoPlainMap(qdbus_cast<QVariantMap>(reply.arguments().value(0)));
}

QVariantMap Networking_LowLevel_LUMO::details(const QString& interface)
{
    return askDetails(interface).value_or(QVariantMap());
}

QString Networking_LowLevel_LUMO::mode()
{
    const QDBusMessage reply = ask(propertiesInterface(), QStringLiteral("Get"),
                                   {m_daemon->interface(), QStringLiteral("Mode")});
    return qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant().toString();
}

bool Networking_LowLevel_LUMO::cableStatus()
{
    return lumoField<bool>(details(m_listener.wiredInterface()), "CableStatus");
}

bool Networking_LowLevel_LUMO::hasWireless()
{
    return parsePresent(details(m_listener.wirelessInterface()));
}

double Networking_LowLevel_LUMO::getWirelessRssi()
{
    return lumoField<qint32>(details(m_listener.wirelessInterface()), "Signal");
}

QString Networking_LowLevel_LUMO::getEthernetMAC()
{
    return lumoField<QString>(details(m_listener.wiredInterface()), "Mac");
}

QString Networking_LowLevel_LUMO::getWirelessMAC()
{
    return lumoField<QString>(details(m_listener.wirelessInterface()), "Mac");
}

Networking_LowLevel::InterfaceStatus
Networking_LowLevel_LUMO::interfaceStatus(const QString& interface)
{
    return static_cast<InterfaceStatus>(m_interfaceStatuses.value(interface, Unknown));
}

QStringList Networking_LowLevel_LUMO::connectedInterfaces() const
{
    QStringList names = m_interfacesConnected.values();
    names.sort();
    return names;
}

OrvaNetworkInfo Networking_LowLevel_LUMO::getNetworkState()
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    QStringList names = connectedInterfaces();
    names << m_listener.wiredInterface() << m_listener.wirelessInterface();
    names.removeDuplicates();
    QMap<QString, QVariantMap> answers;
    for (const QString& name : std::as_const(names)) {
        answers[name] = details(name);
        LOG4CPLUS_TRACE(lumoLogger(),
                        "Interface: " << name << " \tdetails: " << orvaToLog(answers.value(name)));
    }
    return parseNetworkState(answers, m_listener.wiredInterface(), m_listener.wirelessInterface());
}

void Networking_LowLevel_LUMO::on_lumo_Connected(const QString& interface)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "LUMO signal: Connected (" << interface << ")");
    m_interfacesConnected.insert(interface);
    m_listener.setLinkStatus(interface, true);
    if (isSoftApInterface(interface))
        LOG4CPLUS_DEBUG(lumoLogger(), "SoftAp started");
    else
        LOG4CPLUS_DEBUG(lumoLogger(), "Connected to: " << interface);
    LOG4CPLUS_DEBUG(lumoLogger(),
                    "m_interfacesConnected: " << connectedInterfaces().join(QStringLiteral(", ")));
}

void Networking_LowLevel_LUMO::on_lumo_Disconnected(const QString& interface)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "LUMO signal: Disconnected (" << interface << ")");
    m_listener.setLinkStatus(interface, false);
    m_interfacesConnected.remove(interface);
    LOG4CPLUS_DEBUG(lumoLogger(),
                    "m_interfacesConnected: " << connectedInterfaces().join(QStringLiteral(", ")));
}

void Networking_LowLevel_LUMO::on_lumo_Disconnecting(const QString& interface)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "LUMO signal: Disconnecting (" << interface << ")");
    m_listener.setDisconnecting(interface);
}

void Networking_LowLevel_LUMO::on_lumo_AuthError(const QString& ssid, const QString& description)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "ssid: " << ssid << " description: " << description);
    Q_EMIT AuthError(ssid, description);
}

void Networking_LowLevel_LUMO::on_lumo_Error(const QString& description)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "description: " << description);
    Q_EMIT Error(description);
}

void Networking_LowLevel_LUMO::on_lumo_InterfaceStatus(const QString& interface, int status)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "interface: " << interface << " status: " << status);
    m_interfaceStatuses.insert(interface, status);
    Q_EMIT InterfaceStatusChanged(interface, static_cast<InterfaceStatus>(status));
}

void Networking_LowLevel_LUMO::on_lumo_CableStatus(bool CablePluggedIn)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "CablePluggedIn: " << CablePluggedIn);
    m_listener.setCurrentCableStatus(CablePluggedIn);
}

void Networking_LowLevel_LUMO::on_lumo_ScanResults(const QVariantMap& Results)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    const QVariantMap map = lumoPlainMap(Results);
    LOG4CPLUS_DEBUG(lumoLogger(), "Results: " << orvaToLog(map));
    m_scanning = false;
    const QVector<OrvaNetworkScanResult> results = parseScanResults(map);
    LOG4CPLUS_DEBUG(lumoLogger(), "ScanResults emitted: " << orvaToLog(
                                      OrvaCodec<QVector<OrvaNetworkScanResult>>::encode(results)));
    Q_EMIT UnsupportedNetworks(parseUnsupportedNetworks(map));
    Q_EMIT ScanResults(results);
}

void Networking_LowLevel_LUMO::on_lumo_WpsCredentials(const QVariantMap& map)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    const QVariantMap credentials = lumoPlainMap(map);
    LOG4CPLUS_DEBUG(lumoLogger(), "map: " << orvaToLog(credentials));
    if (!m_wpsRunning) {
        LOG4CPLUS_WARN(lumoLogger(),
                       "Got WPS credentials but there is no receiver for them anymore?");
        return;
    }
    endWps().finish(parseWpsCredentials(credentials));
}

void Networking_LowLevel_LUMO::on_lumo_WpsError(const QString& Message)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "ErrorMessage: " << Message);
    if (!m_wpsRunning) {
        LOG4CPLUS_WARN(lumoLogger(), "Got WPS error but there is no receiver for them anymore?");
        return;
    }
    endWps().setError(CMError(QStringLiteral("WpsError"), Message));
}

void Networking_LowLevel_LUMO::on_wpsTimer_timeout()
{
    on_lumo_WpsError(QStringLiteral("WPS request timed out"));
}

// The session is over before its reply is answered: the answer may start the next session.
CMReply<OrvaNetworkInterface> Networking_LowLevel_LUMO::endWps()
{
    m_wpsRunning = false;
    m_wpsTimer.stop();
    return std::exchange(m_wpsReply, CMReply<OrvaNetworkInterface>());
}
