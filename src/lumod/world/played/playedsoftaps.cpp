// SPDX-License-Identifier: Apache-2.0
#include "world/played/playedsoftaps.h"

PlayedSoftAps::PlayedSoftAps(World& world, const WorldDescription& description)
    : m_world(world)
    , m_description(description)
{
    for (const auto& interface : description.softAps.keys())
        m_softAps.insert(interface, {});
}

void PlayedSoftAps::start(const QString& interface, const SoftApSettings& settings)
{
    auto& softAp = m_softAps[interface];
    dropStations(softAp);
    softAp.settings = settings;
    const int start = ++softAp.start;
    setPhase(interface, Phase::Starting);
    QTimer::singleShot(m_description.delays.of("softAp"), this,
                       [this, interface, start] { comeUp(interface, start); });
}

void PlayedSoftAps::comeUp(const QString& interface, int start)
{
    if (m_softAps[interface].start != start)
        return;
    setPhase(interface, Phase::Up);
    Q_EMIT m_world.connected(interface);
    Q_EMIT m_world.addressesChanged();
}

void PlayedSoftAps::stop(const QString& interface)
{
    auto found = m_softAps.find(interface);
    if (found == m_softAps.end() || found->phase == Phase::Down)
        return;
    ++found->start;
    Q_EMIT m_world.disconnecting(interface);
    dropStations(*found);
    setPhase(interface, Phase::Down);
    Q_EMIT m_world.disconnected(interface);
    Q_EMIT m_world.addressesChanged();
}

void PlayedSoftAps::stopAll()
{
    for (const auto& interface : m_softAps.keys())
        stop(interface);
}

void PlayedSoftAps::dropStations(SoftAp& softAp)
{
    const auto stations = std::exchange(softAp.stations, {});
    for (const auto& station : stations)
        Q_EMIT m_world.stationLeft(station);
}

void PlayedSoftAps::setPhase(const QString& interface, Phase phase)
{
    const auto before = status(interface);
    m_softAps[interface].phase = phase;
    if (status(interface) != before)
        Q_EMIT m_world.statusChanged(interface, status(interface));
}

void PlayedSoftAps::announceStatus()
{
    for (const auto& interface : m_softAps.keys())
        Q_EMIT m_world.statusChanged(interface, status(interface));
}

InterfaceStatus PlayedSoftAps::status(const QString& interface) const
{
    const auto found = m_softAps.constFind(interface);
    if (found == m_softAps.constEnd())
        return InterfaceStatus::Absent;
    switch (found->phase) {
    case Phase::Down:
        return InterfaceStatus::NoCarrier;
    case Phase::Starting:
        return InterfaceStatus::Connecting;
    case Phase::Up:
        return InterfaceStatus::Idle;
    }
    return InterfaceStatus::Absent;
}

QStringList PlayedSoftAps::stations(const QString& interface) const
{
    return m_softAps.value(interface).stations;
}

InterfaceDetails PlayedSoftAps::details(const QString& interface) const
{
    InterfaceDetails details;
    const auto found = m_softAps.constFind(interface);
    if (found == m_softAps.constEnd())
        return details;
    const auto& settings = found->settings;
    details.kind = InterfaceDetails::Kind::SoftAp;
    details.mac =
        settings.bssid.isEmpty() ? m_description.softAps.value(interface) : settings.bssid;
    details.connected = found->phase == Phase::Up;
    if (!details.connected)
        return details;
    details.ssid = settings.ssid;
    details.channel = settings.channel;
    details.lease.ips =
        QStringList{QStringLiteral("%1/%2").arg(settings.address).arg(settings.prefix)};
    return details;
}

bool PlayedSoftAps::join(const QString& interface, const QString& hwAddress)
{
    if (!details(interface).connected)
        return false;
    if (m_softAps[interface].stations.contains(hwAddress))
        return true;
    static_cast<void>(leave(hwAddress));
    m_softAps[interface].stations.append(hwAddress);
    Q_EMIT m_world.stationJoined(hwAddress);
    return true;
}

bool PlayedSoftAps::leave(const QString& hwAddress)
{
    for (auto& softAp : m_softAps) {
        if (!softAp.stations.removeOne(hwAddress))
            continue;
        Q_EMIT m_world.stationLeft(hwAddress);
        return true;
    }
    return false;
}
