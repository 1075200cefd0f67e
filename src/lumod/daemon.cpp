// SPDX-License-Identifier: Apache-2.0
#include "daemon.h"

#include "api/core/orvamask.h"
#include "busproperties.h"
#include "common/busnames.h"
#include "log.h"
#include "softapwire.h"
#include "wire.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>

#include <algorithm>
#include <array>

namespace {

const QString busName = QStringLiteral("org.orva.lumod");
const QString objectPath = QStringLiteral("/org/orva/lumod");

constexpr int maxPinDigits = 8;

std::optional<NetworkMode> modeFrom(const QString& text)
{
    if (text == QLatin1String("auto"))
        return NetworkMode::Auto;
    if (text == QLatin1String("wired"))
        return NetworkMode::Wired;
    if (text == QLatin1String("wireless"))
        return NetworkMode::Wireless;
    return std::nullopt;
}

bool isPin(const QString& pin)
{
    const auto isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    return pin.size() == maxPinDigits && std::all_of(pin.begin(), pin.end(), isDigit);
}

QString summary(const QVector<KnownNetwork>& networks)
{
    QStringList texts;
    for (const auto& network : networks)
        texts.append(QStringLiteral("%1 (priority %2, key %3)")
                         .arg(network.ssid)
                         .arg(network.priority)
                         .arg(network.key.isEmpty() ? QStringLiteral("none") : orvaMask()));
    return texts.join(QStringLiteral(", "));
}

} // namespace

Daemon::Daemon(World& world, QObject* parent)
    : QObject(parent)
    , m_world(world)
    , m_mode(QStringLiteral("OffMode"))
{
    new BusProperties(busName, this); // busName names the interface too
    relayWorld();
    relayRadio();
}

void Daemon::relayWorld()
{
    connect(&m_world, &World::connected, this, &Daemon::Connected);
    connect(&m_world, &World::disconnecting, this, &Daemon::Disconnecting);
    connect(&m_world, &World::disconnected, this, &Daemon::Disconnected);
    connect(&m_world, &World::addressesChanged, this, &Daemon::AddressesChanged);
    connect(&m_world, &World::cableChanged, this, &Daemon::CableStatus);
    connect(&m_world, &World::statusChanged, this, [this](const auto& interface, auto status) {
        Q_EMIT InterfaceStatusChanged(interface, static_cast<int>(status));
    });
    connect(&m_world, &World::failed, this, [this](const QString& description) {
        qCWarning(lcLumod).noquote() << description;
        Q_EMIT Error(description);
    });
}

void Daemon::relayRadio()
{
    connect(&m_world, &World::scanned, this, [this](const QVector<ScannedNetwork>& networks) {
        Q_EMIT ScanResults(outgoing(wire::toMap(networks)));
    });
    connect(&m_world, &World::authenticationFailed, this, &Daemon::AuthError);
    connect(&m_world, &World::softApFailed, this, &Daemon::SoftApError);
    connect(&m_world, &World::stationJoined, this, &Daemon::StationConnected);
    connect(&m_world, &World::stationLeft, this, &Daemon::StationDisconnected);
    connect(&m_world, &World::wpsSucceeded, this, [this](const auto& credentials) {
        Q_EMIT WpsCredentials(outgoing(wire::toMap(credentials)));
    });
    connect(&m_world, &World::wpsFailed, this, &Daemon::WpsError);
}

bool Daemon::serve()
{
    auto bus = QDBusConnection::systemBus();
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SLOT(on_disconnected()));
    if (!bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors) ||
        !bus.registerService(busName)) {
        const auto error = bus.lastError();
        qCCritical(lcLumod).noquote()
            << "Cannot own" << busName << "on the bus:"
            << (error.isValid() ? error.message() : QStringLiteral("somebody else does"));
        return false;
    }
    settleBusNames(bus, this);
    qCInfo(lcLumod).noquote() << "Serving" << busName;
    Q_EMIT Started();
    m_world.announce();
    return true;
}

void Daemon::on_disconnected()
{
    qCCritical(lcLumod) << "The bus has gone";
    QCoreApplication::exit(1);
}

void Daemon::refuse(const QString& text)
{
    qCWarning(lcLumod).noquote() << text;
    Q_EMIT Error(text);
    // The bus refuses and logs an error that nobody asked for.
    if (calledFromDBus() && message().isReplyRequired())
        sendErrorReply(QDBusError::InvalidArgs, text);
}

bool Daemon::isUp(InterfaceDetails::Kind kind) const
{
    const auto names = m_world.interfaces();
    return std::any_of(names.begin(), names.end(), [this, kind](const QString& name) {
        const auto details = m_world.details(name);
        return details.kind == kind && details.connected;
    });
}

bool Daemon::isConnected() const
{
    return isUp(InterfaceDetails::Kind::Wired) || isUp(InterfaceDetails::Kind::Wireless);
}

QVariantMap Daemon::details() const
{
    QVariantMap map;
    for (const auto& name : m_world.interfaces())
        map.insert(name, wire::toMap(m_world.details(name)));
    return outgoing(map);
}

int Daemon::logLevel() const
{
    return m_logLevel;
}

void Daemon::setLogLevel(int level)
{
    constexpr std::array severities = {"warning", "info", "debug"};
    m_logLevel = qBound(0, level, static_cast<int>(severities.size()));
    QStringList rules;
    for (int i = 0; i < static_cast<int>(severities.size()); ++i)
        rules.append(QStringLiteral("lumod.%1=%2")
                         .arg(QLatin1String(severities.at(static_cast<std::size_t>(i))),
                              i < m_logLevel ? QStringLiteral("true") : QStringLiteral("false")));
    QLoggingCategory::setFilterRules(rules.join(QLatin1Char('\n')));
}

QString Daemon::mode() const
{
    return isUp(InterfaceDetails::Kind::SoftAp) && !isConnected() ? QStringLiteral("SoftApMode")
                                                                  : m_mode;
}

QVariantMap Daemon::softApModeSettings() const
{
    return m_softApSettings.isEmpty() ? QVariantMap() : m_softApSettings.last();
}

void Daemon::setWiredIpSettings(const QVariantMap& settings)
{
    m_wiredIpSettings = wire::plain(settings);
}

void Daemon::setWirelessIpSettings(const QVariantMap& settings)
{
    m_wirelessIpSettings = wire::plain(settings);
}

void Daemon::setWirelessNetworks(const QVariantMap& networks)
{
    const auto received = wire::plain(networks);
    m_networks = wire::knownNetworks(received);
    m_wirelessNetworks.clear();
    for (const auto& network : std::as_const(m_networks))
        m_wirelessNetworks.insert(network.ssid, received.value(network.ssid));
    qCInfo(lcLumod).noquote() << "Networks:" << summary(m_networks);
}

void Daemon::ForceWifiReconnect()
{
    qCInfo(lcLumod) << "Reconnecting Wi-Fi";
    m_world.reassociate();
}

QVariantMap Daemon::InterfaceDetails(const QString& interface)
{
    return outgoing(wire::toMap(m_world.details(interface)));
}

void Daemon::Scan()
{
    qCInfo(lcLumod) << "Scan requested";
    m_world.scan();
}

void Daemon::SetNormalMode(const QString& mode)
{
    const auto wanted = modeFrom(mode);
    if (!wanted)
        return refuse(QStringLiteral("Unknown mode: ") + mode);
    qCInfo(lcLumod).noquote() << "Mode:" << m_mode << "->" << mode;
    m_mode = mode;
    m_world.bringUp({*wanted, m_networks, wire::staticIp(m_wiredIpSettings),
                     wire::staticIp(m_wirelessIpSettings)});
    // A client that started after us heard none of it.
    m_world.announce();
}

void Daemon::SetOffMode()
{
    qCInfo(lcLumod).noquote() << "Mode:" << m_mode << "-> OffMode";
    m_mode = QStringLiteral("OffMode");
    m_softApSettings.clear();
    m_world.takeDown();
}

void Daemon::StartSoftAp(const QString& interface, const QVariantMap& settings)
{
    const auto refuseIt = [this, &interface](const QString& why) {
        Q_EMIT SoftApError(interface, why);
        refuse(why);
    };
    if (m_world.details(interface).kind != InterfaceDetails::Kind::SoftAp)
        return refuseIt(QStringLiteral("Unknown soft-AP interface: ") + interface);
    const auto decoded = softApSettings(settings);
    if (!decoded)
        return refuseIt(decoded.why());
    qCInfo(lcLumod).noquote() << "Starting soft AP" << decoded->ssid << "on" << interface;
    if (const auto started = m_world.startSoftAp(interface, *decoded); !started)
        return refuseIt(started.why());
    m_softApSettings.insert(interface, maskedSoftApSettings(wire::plain(settings)));
}

void Daemon::StopSoftAp(const QString& interface)
{
    qCInfo(lcLumod).noquote() << "Stopping soft AP on" << interface;
    m_softApSettings.remove(interface);
    m_world.stopSoftAp(interface);
}

void Daemon::WpsCancel()
{
    m_world.cancelWps();
}

void Daemon::WpsPbc()
{
    qCInfo(lcLumod) << "WPS by push button";
    m_world.startWps(QString());
}

void Daemon::WpsPin(const QString& pin)
{
    if (!isPin(pin)) {
        const auto text = QStringLiteral("A WPS PIN has 8 digits");
        Q_EMIT WpsError(text);
        return refuse(text);
    }
    qCInfo(lcLumod) << "WPS by PIN";
    m_world.startWps(pin);
}
