// SPDX-License-Identifier: Apache-2.0
#include "world/played/playedradio.h"

#include <algorithm>

namespace {

constexpr int radioHostNumber = 21;

QVector<KnownNetwork> byPriority(QVector<KnownNetwork> networks)
{
    std::stable_sort(networks.begin(), networks.end(),
                     [](const auto& a, const auto& b) { return a.priority > b.priority; });
    return networks;
}

bool isSameBssid(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

bool matches(const AccessPoint& point, const KnownNetwork& network)
{
    return point.ssid == network.ssid && network.security == point.security &&
           (network.bssid.isEmpty() || isSameBssid(network.bssid, point.bssid));
}

bool opens(const KnownNetwork& network, const AccessPoint& point)
{
    return point.security != Security::WpaPsk || point.key == network.key;
}

bool isSame(const KnownNetwork& a, const KnownNetwork& b)
{
    return a.ssid == b.ssid && a.security == b.security && a.key == b.key;
}

} // namespace

PlayedRadio::PlayedRadio(const QString& name, World& world, const WorldDescription& description)
    : PlayedLink(name, world, description)
    , m_wps(world, description)
{
    m_scan.setSingleShot(true);
    connect(&m_scan, &QTimer::timeout, this, &PlayedRadio::finishScan);
    connect(&m_wps, &PlayedWps::changed, this, [this] {
        updateStatus();
        reconcile();
    });
}

void PlayedRadio::configure(const QVector<KnownNetwork>& networks,
                            const std::optional<StaticIp>& ip, RadioPermission permission)
{
    const bool sameIp = m_ip == ip;
    m_networks = byPriority(networks);
    m_ip = ip;
    m_permission = permission;
    m_blocked.clear();
    if (isConnecting() || isWaiting())
        abort();
    if (isUp() && permission != RadioPermission::Leave && sameIp && isStill(choose()))
        announceUp();
    else if (isUp())
        leave();
    reconcile();
}

void PlayedRadio::permit(RadioPermission permission)
{
    m_permission = permission;
    reconcile();
}

void PlayedRadio::accessPointsChanged()
{
    const auto* point = target();
    const bool holds = point && matches(*point, m_choice.network) &&
                       (phase() == Phase::Associating || opens(m_choice.network, *point));
    if (isUp() && !holds)
        return goDown();
    if (isConnecting() && !holds)
        abort();
    reconcile();
}

void PlayedRadio::scan()
{
    m_scanWanted = !m_scan.isActive();
    reconcile();
}

void PlayedRadio::reassociate()
{
    m_blocked.clear();
    if (isUp())
        return leave();
    reconcile();
}

void PlayedRadio::reconcile()
{
    if (m_permission == RadioPermission::Leave && isUp())
        leave();
    if (m_permission == RadioPermission::Leave && isConnecting())
        abort();
    if (m_scan.isActive() || m_wps.isRunning() || isConnecting() || phase() == Phase::Leaving)
        return;
    if (m_scanWanted)
        return startScan();
    if (isUp() || m_permission != RadioPermission::Join)
        return;
    if (const auto choice = choose()) {
        m_choice = *choice;
        enter(Phase::Associating);
    } else if (!m_blocked.isEmpty() && !isWaiting()) {
        wait();
    }
}

InterfaceStatus PlayedRadio::currentStatus() const
{
    if (m_wps.isRunning())
        return InterfaceStatus::Wps;
    if (m_scan.isActive())
        return InterfaceStatus::Scanning;
    return statusOfPhase();
}

void PlayedRadio::startScan()
{
    m_scanWanted = false;
    m_scan.start(description().delays.of("scan"));
    updateStatus();
}

void PlayedRadio::finishScan()
{
    Q_EMIT world().scanned(seenNetworks());
    updateStatus();
    reconcile();
}

QVector<ScannedNetwork> PlayedRadio::seenNetworks() const
{
    QVector<ScannedNetwork> networks;
    for (const auto& point : description().accessPoints) {
        if (point.hidden)
            continue;
        networks.append({point.ssid, point.bssid, point.security, point.signal, point.channel,
                         point.frequency, informationElements(point), point.wpa3});
    }
    return networks;
}

void PlayedRadio::associated()
{
    const auto* point = target();
    if (point && !opens(m_choice.network, *point)) {
        const auto& ssid = m_choice.network.ssid;
        block();
        Q_EMIT world().authenticationFailed(ssid, QStringLiteral("Wrong key for ") + ssid);
        return reconcile();
    }
    enter(Phase::Configuring);
}

void PlayedRadio::leaseRefused()
{
    block();
    reconcile();
}

void PlayedRadio::block()
{
    m_blocked.append(m_choice.network.ssid);
    abort();
}

void PlayedRadio::retry()
{
    m_blocked.clear();
    reconcile();
}

std::optional<Lease> PlayedRadio::askLease() const
{
    const auto* point = target();
    if (!point)
        return std::nullopt;
    return ::lease(description().network(point->network), m_ip, radioHostNumber,
                   description().wirelessMac);
}

std::optional<PlayedRadio::Choice> PlayedRadio::choose() const
{
    for (const auto& network : m_networks) {
        const auto bssid = bestAccessPoint(network);
        if (!bssid.isEmpty() && !m_blocked.contains(network.ssid))
            return Choice{network, bssid};
    }
    return std::nullopt;
}

QString PlayedRadio::bestAccessPoint(const KnownNetwork& network) const
{
    const AccessPoint* best = nullptr;
    for (const auto& point : description().accessPoints)
        if (matches(point, network) && (!best || point.signal > best->signal))
            best = &point;
    return best ? best->bssid : QString();
}

const AccessPoint* PlayedRadio::target() const
{
    for (const auto& point : description().accessPoints)
        if (isSameBssid(point.bssid, m_choice.bssid))
            return &point;
    return nullptr;
}

bool PlayedRadio::isStill(const std::optional<Choice>& choice) const
{
    const auto* point = target();
    return choice && point && isSame(choice->network, m_choice.network) &&
           matches(*point, choice->network);
}

InterfaceDetails PlayedRadio::details() const
{
    InterfaceDetails details;
    details.kind = InterfaceDetails::Kind::Wireless;
    details.mac = description().wirelessMac;
    details.connected = isUp();
    details.lease = lease();
    const auto* point = target();
    if (!isUp() || !point)
        return details;
    details.security = point->security;
    details.ssid = point->ssid;
    details.bssid = point->bssid;
    details.frequency = point->frequency;
    details.signal = point->signal;
    details.channel = point->channel;
    return details;
}
