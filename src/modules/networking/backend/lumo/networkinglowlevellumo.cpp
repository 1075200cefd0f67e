// SPDX-License-Identifier: Apache-2.0
#include "backend/lumo/networkinglowlevellumo.h"

#include "backend/lumo/boundedcalls.h"
#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumoencoding.h"
#include "backend/lumo/lumolog.h"
#include "backend/networklistener.h"
#include "core/orvaplainvalue.h"
#include "freedesktopdbus.h"
#include "wifidaemonproxy.h"

#include <limits>

namespace {

constexpr int wpsLimit = 130000;     // ms; a session's walk time is 120 s
constexpr int wpsCancelLimit = 5000; // ms; for a daemon that does not answer

QString daemonService()
{
    return QString::fromLatin1(WifiDaemonProxy::staticInterfaceName());
}

QString daemonPath()
{
    return QLatin1Char('/') + daemonService().replace(QLatin1Char('.'), QLatin1Char('/'));
}

QString busService()
{
    return QString::fromLatin1(org_freedesktop_dbus::staticInterfaceName());
}

QString cut(const QString& text)
{
    return lumoText(text);
}

int cut(int number)
{
    return number;
}

} // namespace

Networking_LowLevel_LUMO::Networking_LowLevel_LUMO(NetworkListener& listener)
    : m_listener(listener)
    , m_daemon(
          new WifiDaemonProxy(daemonService(), daemonPath(), QDBusConnection::systemBus(), this))
    , m_bus(new org_freedesktop_dbus(busService(), QStringLiteral("/org/freedesktop/DBus"),
                                     QDBusConnection::systemBus(), this))
    , m_calls(new BoundedCalls(QDBusConnection::systemBus(), daemonService(), this))
    , m_wpsTimer(this)
    , m_restartTimer(this)
{
    m_clock.start();
    // BoundedCalls decides how long to wait; the bus tells when the daemon goes.
    m_daemon->setTimeout(std::numeric_limits<int>::max());
    connectDaemon();

    m_wpsTimer.setSingleShot(true);
    connect(&m_wpsTimer, &QTimer::timeout, this, &Networking_LowLevel_LUMO::on_wpsTimer_timeout);
    m_restartTimer.setSingleShot(true);
    connect(&m_restartTimer, &QTimer::timeout, this,
            &Networking_LowLevel_LUMO::on_restartTimer_timeout);
    connect(m_calls, &BoundedCalls::askAgain, this, &Networking_LowLevel_LUMO::on_calls_askAgain);
    QTimer::singleShot(0, this, &Networking_LowLevel_LUMO::on_cableStatus_init);
}

Networking_LowLevel_LUMO::~Networking_LowLevel_LUMO() = default;

void Networking_LowLevel_LUMO::connectDaemon()
{
    using Self = Networking_LowLevel_LUMO;
    using Daemon = WifiDaemonProxy;
    const auto withTextsCut = [this](auto slot) {
        return [this, slot](const auto&... arguments) { (this->*slot)(cut(arguments)...); };
    };
    connect(m_bus, &org_freedesktop_dbus::NameOwnerChanged, this, &Self::on_nameOwnerChanged);
    connect(m_daemon, &Daemon::Started, this, &Self::on_lumo_Started);
    connect(m_daemon, &Daemon::Connected, this, withTextsCut(&Self::on_lumo_Connected));
    connect(m_daemon, &Daemon::Disconnecting, this, withTextsCut(&Self::on_lumo_Disconnecting));
    connect(m_daemon, &Daemon::Disconnected, this, withTextsCut(&Self::on_lumo_Disconnected));
    connect(m_daemon, &Daemon::AuthError, this, withTextsCut(&Self::on_lumo_AuthError));
    connect(m_daemon, &Daemon::Error, this, withTextsCut(&Self::on_lumo_Error));
    connect(m_daemon, &Daemon::InterfaceStatusChanged, this,
            withTextsCut(&Self::on_lumo_InterfaceStatus));
    connect(m_daemon, &Daemon::CableStatus, this, &Self::on_lumo_CableStatus);
    connect(m_daemon, &Daemon::ScanResults, this, &Self::on_lumo_ScanResults);
    connect(m_daemon, &Daemon::WpsCredentials, this, &Self::on_lumo_WpsCredentials);
    connect(m_daemon, &Daemon::WpsError, this, withTextsCut(&Self::on_lumo_WpsError));
    connect(m_daemon, &Daemon::AddressesChanged, this, &Self::AddressesChanged);
    connect(m_daemon, &Daemon::SoftApError, this, withTextsCut(&Self::SoftApError));
    connect(m_daemon, &Daemon::StationConnected, this, withTextsCut(&Self::StationConnected));
    connect(m_daemon, &Daemon::StationDisconnected, this, withTextsCut(&Self::StationDisconnected));
}

QString Networking_LowLevel_LUMO::propertiesInterface()
{
    return QStringLiteral("org.freedesktop.DBus.Properties");
}

QDBusMessage Networking_LowLevel_LUMO::createCall(const QString& interface, const QString& method,
                                                  const QVariantList& arguments) const
{
    auto call =
        QDBusMessage::createMethodCall(m_daemon->service(), m_daemon->path(), interface, method);
    call.setArguments(arguments);
    return call;
}

// A command wants no reply: the bus bounds how many replies may be outstanding, and a daemon that
// hangs must not cost a command.
void Networking_LowLevel_LUMO::send(const QString& interface, const QString& method,
                                    const QVariantList& arguments)
{
    QDBusMessage message = createCall(interface, method, arguments);
    message.setAutoStartService(!m_replaying);
    m_daemon->connection().send(message);
}

void Networking_LowLevel_LUMO::send(const QString& method, const QVariantList& arguments)
{
    send(m_daemon->interface(), method, arguments);
}

// A write is not waited for either: the bus keeps the order, so the daemon has read it before the
// next command.
void Networking_LowLevel_LUMO::writeProperty(const QString& property, const QVariantMap& value)
{
    send(propertiesInterface(), QStringLiteral("Set"),
         {m_daemon->interface(), property, QVariant::fromValue(QDBusVariant(value))});
}

bool Networking_LowLevel_LUMO::scanNetworks()
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "Invoke scan");
    m_scanning = true;
    send(QStringLiteral("Scan"));
    return true;
}

bool Networking_LowLevel_LUMO::applyProfile(const OrvaNetworkProfile& profile)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    LOG4CPLUS_DEBUG(lumoLogger(), "profile: " << profile);
    writeProperty(QStringLiteral("WirelessNetworks"),
                  lumoWirelessNetworks(profile.wirelessNetworks()));
    writeProperty(QStringLiteral("WiredIpSettings"), lumoIpSettings(profile.wired()));
    writeProperty(QStringLiteral("WirelessIpSettings"), lumoIpSettings(profile.wireless()));
    const QString mode = OrvaNetworkProfileType::toString(profile.type());
    LOG4CPLUS_TRACE(lumoLogger(), "lumoInterface: SetNormalMode " << mode);
    send(QStringLiteral("SetNormalMode"), {mode});
    LOG4CPLUS_INFO(lumoLogger(), "Applied profile: " << profile);
    m_appliedProfile = profile;
    return true;
}

bool Networking_LowLevel_LUMO::disconnect()
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    m_softAps.clear();
    m_scanning = false;
    send(QStringLiteral("SetOffMode"));
    return true;
}

bool Networking_LowLevel_LUMO::forceWifiReconnect()
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    send(QStringLiteral("ForceWifiReconnect"));
    return true;
}

bool Networking_LowLevel_LUMO::performWpsPbc(const CMReply<OrvaNetworkInterface>& reply)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    if (!startWps(reply))
        return false;
    send(QStringLiteral("WpsPbc"));
    return true;
}

bool Networking_LowLevel_LUMO::performWpsPin(const QString& pin,
                                             const CMReply<OrvaNetworkInterface>& reply)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    if (!startWps(reply))
        return false;
    send(QStringLiteral("WpsPin"), {pin});
    return true;
}

bool Networking_LowLevel_LUMO::cancelWps()
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    if (!m_wpsRunning)
        return false;
    send(QStringLiteral("WpsCancel"));
    m_wpsTimer.start(qMin(wpsCancelLimit, m_wpsTimer.remainingTime()));
    return true;
}

bool Networking_LowLevel_LUMO::startWps(const CMReply<OrvaNetworkInterface>& reply)
{
    if (m_wpsRunning) {
        LOG4CPLUS_ERROR(lumoLogger(), "WPS is already running");
        return false;
    }
    m_wpsReply = reply;
    m_wpsRunning = true;
    m_wpsTimer.start(wpsLimit);
    return true;
}

bool Networking_LowLevel_LUMO::startSoftAp(const OrvaNetworkProfileSoftApSettings& settings)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    m_softAps.insert(settings.apInterface(), settings);
    sendStartSoftAp(settings);
    return true;
}

void Networking_LowLevel_LUMO::sendStartSoftAp(const OrvaNetworkProfileSoftApSettings& settings)
{
    send(QStringLiteral("StartSoftAp"),
         {settings.apInterface(), OrvaPlain::toBus(settings.__hash())});
}

bool Networking_LowLevel_LUMO::stopSoftAp(const OrvaNetworkProfileSoftApSettings& settings)
{
    const auto trace = dbglog_scopedFunction(lumoLogger(), Q_FUNC_INFO);
    m_softAps.remove(settings.apInterface());
    send(QStringLiteral("StopSoftAp"), {settings.apInterface()});
    return true;
}
