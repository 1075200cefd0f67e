// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/realradio.h"

#include "world/real/radio/preference.h"

namespace {

constexpr int reviveMilliseconds = 200;

} // namespace

RealRadio::RealRadio(World& world, Kernel& kernel, NameServers& nameServers,
                     const RealSettings& settings)
    : RealLink(settings.wireless, settings.wirelessMetric, world, kernel, nameServers, settings)
    , m_supplicant(settings.wireless, settings)
    , m_scan(world, m_supplicant)
    , m_wps(world, m_supplicant)
{
    connect(&m_supplicant, &Supplicant::ready, this, [this] { reconcile(); });
    connect(&m_supplicant, &Supplicant::lost, this, &RealRadio::lost);
    connect(&m_supplicant, &Supplicant::changed, this, &RealRadio::followSupplicant);
    connect(&m_supplicant, &Supplicant::failed, this, [this](const QString& description) {
        Q_EMIT this->world().failed(description);
        reconcile();
    });
    connect(&m_supplicant, &Supplicant::keyRefused, this, [this](const QString& ssid) {
        Q_EMIT this->world().authenticationFailed(ssid, QStringLiteral("Wrong key for ") + ssid);
    });
    connect(&m_supplicant, &Supplicant::driverRefused, this, &RealRadio::refused);
    m_revive.setSingleShot(true);
    connect(&m_switch, &RadioSwitch::unblocked, this,
            [this] { m_revive.start(reviveMilliseconds); });
    // wpa_supplicant does so itself, unless a radio in another namespace hides the switch from it.
    connect(&m_revive, &QTimer::timeout, this, [this] {
        if (exists() && !link().up)
            this->kernel().setUp(link().index);
    });
    connect(&m_scan, &RealScan::ended, this, [this] {
        updateStatus();
        reconcile();
    });
    connect(&m_wps, &RealWps::changed, this, [this] {
        updateStatus();
        reconcile();
        Q_EMIT moved();
    });
}

void RealRadio::configure(const QVector<KnownNetwork>& networks, const std::optional<StaticIp>& ip,
                          RadioPermission permission)
{
    QVector<KnownNetwork> joinable;
    for (const auto& network : byPreference(networks))
        if (network.security)
            joinable.append(network);
    const bool sameIp = this->ip() == ip;
    const bool same = sameIp && std::equal(joinable.begin(), joinable.end(), m_networks.begin(),
                                           m_networks.end(), isSameNetwork);
    const auto joined = m_supplicant.network();
    const bool staying = isUp() && permission != RadioPermission::Leave && sameIp && joined &&
                         isBest(*joined, joinable, m_supplicant.heard());
    m_networks = joinable;
    m_permission = permission;
    setIp(ip);
    m_current = same && (isUp() || isConnecting());
    if (staying) {
        load();
        return announceUp();
    }
    if (isUp())
        return leave();
    if (!m_current && phase() != Phase::Leaving)
        away();
    reconcile();
}

void RealRadio::permit(RadioPermission permission)
{
    if (m_permission == permission)
        return;
    m_permission = permission;
    reconcile();
}

void RealRadio::takeDown()
{
    cancelWps();
    configure({}, std::nullopt, RadioPermission::Leave);
}

void RealRadio::scan()
{
    m_scan.want();
    reconcile();
}

void RealRadio::reassociate()
{
    m_current = false;
    if (isUp())
        return leave();
    reconcile();
}

void RealRadio::rejoin()
{
    if (m_joined || phase() == Phase::Leaving)
        return;
    m_current = false;
    reconcile();
}

int RealRadio::joinedChannel() const
{
    constexpr int lastOf5GHz = 5885; // MHz
    const auto point = m_supplicant.accessPoint();
    return m_joined && point && point->frequency <= lastOf5GHz
               ? supplicant::channelOf(point->frequency)
               : 0;
}

void RealRadio::startWps(const QString& pin)
{
    m_wps.start(pin);
}

void RealRadio::cancelWps()
{
    if (m_wps.isRunning())
        m_wps.fail(QStringLiteral("WPS was cancelled"));
}

void RealRadio::followInterface(const KernelLink& before)
{
    if (before.index == link().index)
        return;
    if (exists())
        m_supplicant.start(link().index);
    else
        m_supplicant.stop();
}

/// One step, after which this is called again.
void RealRadio::reconcile()
{
    if (phase() == Phase::Leaving)
        return;
    const bool yields = m_permission == RadioPermission::Leave || m_wps.isWaiting();
    if (isUp() && yields)
        return leave();
    ask(m_joined);
    if (!m_supplicant.isReady())
        return refuse(m_supplicant.fault());
    load();
    if (m_wps.isWaiting())
        m_wps.begin();
    if (!m_scan.isWaiting() || isConnecting() || m_wps.isRunning())
        return;
    m_scan.begin();
    updateStatus();
}

/// Refuses the scan or session that was asked for. Without a fault it only has to wait.
void RealRadio::refuse(const QString& fault)
{
    if (!fault.isEmpty() && m_scan.isWaiting())
        m_scan.end(fault);
    if (!fault.isEmpty() && m_wps.isWaiting())
        m_wps.fail(fault);
}

bool RealRadio::wantsNetworks() const
{
    return !m_networks.isEmpty() && !m_wps.isRunning() &&
           (m_permission == RadioPermission::Join ||
            (m_permission == RadioPermission::Keep && (isUp() || isConnecting())));
}

/// Has wpa_supplicant know what is wanted.
void RealRadio::load()
{
    const bool wanted = wantsNetworks();
    if (m_loaded == wanted && (m_current || !wanted))
        return;
    m_current = wanted;
    m_loaded = wanted;
    if (wanted)
        return m_supplicant.join(m_networks, isUp());
    m_supplicant.leave();
    away();
}

void RealRadio::followSupplicant()
{
    switch (m_supplicant.state()) {
    case supplicant::State::Away:
        away();
        break;
    case supplicant::State::Joining:
        joining();
        break;
    case supplicant::State::Joined:
        joined();
        break;
    }
    updateStatus();
    reconcile();
}

void RealRadio::joining()
{
    if (m_loaded && !m_joined && phase() == Phase::Down)
        enter(Phase::Associating);
}

void RealRadio::joined()
{
    if (!m_loaded || phase() == Phase::Leaving || !m_supplicant.network())
        return;
    const auto network = m_supplicant.networkPath();
    if (m_joined && network != m_joinedNetwork)
        away(); // to another network without a word between
    if (m_joined)
        return;
    m_joined = true;
    m_joinedNetwork = network;
    forgetSilence();
    enter(Phase::Configuring);
    Q_EMIT moved();
}

/// Joined to nothing.
void RealRadio::away()
{
    const bool wasJoined = std::exchange(m_joined, false);
    if (phase() != Phase::Down)
        dropCarrier();
    forgetSilence();
    ask(false);
    if (wasJoined)
        Q_EMIT moved();
}

void RealRadio::lost()
{
    m_loaded = false;
    m_current = false;
    away();
    if (m_scan.isRunning())
        m_scan.end(QStringLiteral("wpa_supplicant has ended"));
}

void RealRadio::left()
{
    m_joined = false;
    m_loaded = false;
    m_current = false;
    if (m_supplicant.isReady())
        m_supplicant.leave();
    goDown();
    Q_EMIT moved();
}

InterfaceStatus RealRadio::currentStatus() const
{
    if (!exists())
        return InterfaceStatus::Absent;
    if (m_wps.isRunning())
        return InterfaceStatus::Wps;
    if (m_scan.isRunning())
        return InterfaceStatus::Scanning;
    return statusOfPhase();
}

InterfaceDetails RealRadio::details() const
{
    InterfaceDetails details;
    if (!exists())
        return details;
    details.kind = InterfaceDetails::Kind::Wireless;
    describe(details);
    const auto point = m_supplicant.accessPoint();
    if (!isUp() || !point)
        return details;
    details.security = point->security();
    details.ssid = supplicant::nameOf(point->ssid).value_or(QString());
    details.bssid = supplicant::addressText(point->bssid);
    details.frequency = point->frequency;
    details.channel = supplicant::channelOf(point->frequency);
    details.signal = m_supplicant.signalLevel();
    return details;
}
