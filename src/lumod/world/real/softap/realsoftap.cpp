// SPDX-License-Identifier: Apache-2.0
#include "world/real/softap/realsoftap.h"

#include "log.h"
#include "world/real/engines/requiredprogram.h"

namespace {

constexpr int patientTries = 4; // a radio that is being switched on refuses some
constexpr int retryMilliseconds = 5000;

} // namespace

RealSoftAp::RealSoftAp(World& world, Kernel& kernel, const RealSettings& settings, RealRadio& radio)
    : m_world(world)
    , m_settings(settings)
    , m_radio(radio)
    , m_rightOfWay(radio)
    , m_interface(kernel, settings)
    , m_engine(settings.softAp, settings)
    , m_server(settings)
{
    m_pause.setSingleShot(true);
    connect(&m_engine, &AccessPointEngine::enabled, this, &RealSoftAp::comeUp);
    connect(&m_engine, &AccessPointEngine::moved, this, [this](int channel) {
        qCInfo(lcLumod, "Radar: the soft AP has moved from channel %d to %d", m_channel, channel);
        m_channel = channel;
    });
    connect(&m_engine, &AccessPointEngine::disabled, this, &RealSoftAp::interrupt);
    connect(&m_engine, &AccessPointEngine::stopped, this, &RealSoftAp::halted);
    connect(&m_engine, &AccessPointEngine::failed, this, &RealSoftAp::fail);
    connect(&m_engine, &AccessPointEngine::stationJoined, this, [this](const QString& station) {
        if (m_phase != Phase::Up || m_stations.contains(station))
            return;
        m_stations.append(station);
        Q_EMIT m_world.stationJoined(station);
    });
    connect(&m_engine, &AccessPointEngine::stationLeft, this, [this](const QString& station) {
        if (m_stations.removeOne(station))
            Q_EMIT m_world.stationLeft(station);
    });
    connect(&m_server, &AddressServer::stopped, this, &RealSoftAp::halted);
    connect(&m_server, &AddressServer::failed, &m_world, &World::failed);
    connect(&m_pause, &QTimer::timeout, this, &RealSoftAp::launch);
    connect(&m_rightOfWay, &RightOfWay::spent, this, &RealSoftAp::launch);
    connect(&m_radio, &RealRadio::moved, this, &RealSoftAp::update);
    connect(&m_radio, &RealRadio::refused, this, &RealSoftAp::makeWay);
}

RealSoftAp::~RealSoftAp()
{
    m_engine.end();
    m_interface.remove();
}

void RealSoftAp::clearUp()
{
    m_server.clearUp();
    m_engine.clearUp();
    m_interface.clearUp();
}

Result<> RealSoftAp::start(const SoftApSettings& settings)
{
    for (const auto& found :
         {requireProgram("The soft access point needs", m_settings.hostapd, "hostapd"),
          requireProgram("The soft access point needs", m_settings.dnsmasq, "dnsmasq-base")})
        if (!found)
            return found.error();
    m_wish = settings;
    m_failures = 0;
    m_wanted = true;
    m_pause.stop();
    if (m_phase == Phase::Leaving)
        return {}; // and then it comes back
    dropStations();
    enter(Phase::Waiting);
    halt();
    return {};
}

void RealSoftAp::stop()
{
    m_wanted = false;
    m_rightOfWay.take();
    m_pause.stop();
    if (m_phase == Phase::Down || m_phase == Phase::Leaving)
        return;
    Q_EMIT m_world.disconnecting(m_settings.softAp);
    m_phase = Phase::Leaving; // whose status is told when it has left
    halt();
}

void RealSoftAp::update()
{
    if (m_phase == Phase::Up && !m_interface.link().up)
        interrupt();
    if (currentStatus() != m_status)
        announceStatus();
    launch();
}

void RealSoftAp::setUplink(bool has)
{
    m_hasUplink = has;
    if (m_phase == Phase::Up)
        m_server.change(dnsmasqConfiguration(m_wish, place()));
}

/// Starts what is wanted, where nothing is in its way.
void RealSoftAp::launch()
{
    if (m_phase != Phase::Waiting || !isIdle() || m_pause.isActive())
        return;
    if (!m_interface.wakeRadio() || m_rightOfWay.holds())
        return tellDown();  // what was to be a restart
    enter(Phase::Starting); // before the kernel tells of what is made here
    if (const auto prepared = m_interface.prepare(m_wish.bssid); !prepared)
        return fail(prepared.why(), retryMilliseconds);
    const int joined = m_radio.joinedChannel();
    m_channel = joined > 0 ? joined : m_wish.channel;
    if (m_channel != m_wish.channel)
        qCInfo(lcLumod, "The soft AP is on channel %d, where the radio is, instead of %d",
               m_channel, m_wish.channel);
    m_engine.start(hostapdConfiguration(m_wish, place()));
}

void RealSoftAp::comeUp(int channel)
{
    if (m_phase != Phase::Starting)
        return;
    m_channel = channel;
    if (const auto set = m_interface.setAddress(m_wish.address, m_wish.prefix); !set)
        return fail(set.why(), retryMilliseconds);
    m_fault.clear();
    m_failures = 0;
    enter(Phase::Up);
    m_server.start(dnsmasqConfiguration(m_wish, place()));
    m_told = true;
    Q_EMIT m_world.connected(m_settings.softAp);
    Q_EMIT m_world.addressesChanged();
}

/// The radio is gone from under it, or wanted for something else.
void RealSoftAp::interrupt()
{
    if (!isRunning())
        return;
    m_rightOfWay.give();
    retreat();
}

void RealSoftAp::retreat()
{
    dropStations();
    enter(Phase::Waiting);
    tellDown();
    halt();
}

void RealSoftAp::tellDown()
{
    if (!std::exchange(m_told, false))
        return;
    Q_EMIT m_world.disconnected(m_settings.softAp);
    Q_EMIT m_world.addressesChanged();
}

void RealSoftAp::makeWay()
{
    if (!isRunning() || m_rightOfWay.isSpent())
        return;
    qCInfo(lcLumod) << "The soft AP makes way for a network that the radio cannot join beside it";
    m_rightOfWay.claim();
    retreat();
}

void RealSoftAp::fail(const QString& why, int pause)
{
    if (m_phase == Phase::Leaving || m_phase == Phase::Down)
        return halted();
    tell(QStringLiteral("The soft access point does not run: ") + why);
    m_pause.start(pause);
    if (isRunning())
        retreat();
}

/// Ends the engines; `halted` follows.
void RealSoftAp::halt()
{
    m_server.stop();
    if (m_engine.isRunning())
        m_engine.stop();
    halted();
}

void RealSoftAp::halted()
{
    if (!isIdle())
        return;
    if (m_phase == Phase::Leaving)
        left();
    m_rightOfWay.clear();
    launch();
}

void RealSoftAp::left()
{
    m_interface.removeAddress();
    dropStations();
    m_fault.clear();
    m_told = false;
    enter(Phase::Down);
    Q_EMIT m_world.disconnected(m_settings.softAp);
    Q_EMIT m_world.addressesChanged();
    if (m_wanted)
        enter(Phase::Waiting);
}

bool RealSoftAp::isIdle() const
{
    return !m_server.isRunning() && !m_engine.isRunning();
}

void RealSoftAp::dropStations()
{
    const auto stations = std::exchange(m_stations, {});
    for (const auto& station : stations)
        Q_EMIT m_world.stationLeft(station);
}

void RealSoftAp::tell(const QString& fault)
{
    if (fault != std::exchange(m_fault, fault))
        Q_EMIT m_world.failed(fault);
    if (++m_failures == patientTries)
        Q_EMIT m_world.softApFailed(m_settings.softAp, fault);
}

void RealSoftAp::enter(Phase phase)
{
    m_phase = phase;
    if (currentStatus() != m_status)
        announceStatus();
}

void RealSoftAp::announceStatus()
{
    m_status = currentStatus();
    Q_EMIT m_world.statusChanged(m_settings.softAp, m_status);
}

InterfaceStatus RealSoftAp::currentStatus() const
{
    if (!exists())
        return InterfaceStatus::Absent;
    switch (m_phase) {
    case Phase::Down:
        return InterfaceStatus::NoCarrier;
    case Phase::Waiting:
    case Phase::Starting:
        return InterfaceStatus::Connecting;
    case Phase::Up:
        return InterfaceStatus::Idle;
    case Phase::Leaving:
        return m_status;
    }
    return InterfaceStatus::Absent;
}

SoftApPlace RealSoftAp::place() const
{
    return {m_settings.softAp,        m_settings.runtimeDirectory,
            m_settings.country,       m_channel,
            m_settings.captivePortal, m_settings.captivePortal && !m_hasUplink};
}

InterfaceDetails RealSoftAp::details() const
{
    InterfaceDetails details;
    if (!exists())
        return details;
    details.kind = InterfaceDetails::Kind::SoftAp;
    const auto link = m_interface.link();
    details.mac = link.index != 0 ? link.mac : m_interface.hardwareAddress(m_wish.bssid);
    details.connected = m_phase == Phase::Up;
    if (!details.connected)
        return details;
    details.ssid = m_wish.ssid;
    details.channel = m_channel;
    for (const auto& address : link.addresses) {
        if (!address.ipv6)
            details.lease.ips.append(
                QStringLiteral("%1/%2").arg(address.address).arg(address.prefix));
    }
    return details;
}
