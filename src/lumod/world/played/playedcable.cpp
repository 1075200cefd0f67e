// SPDX-License-Identifier: Apache-2.0
#include "world/played/playedcable.h"

namespace {
constexpr int cableHostNumber = 20;
}

void PlayedCable::configure(bool enabled, const std::optional<StaticIp>& ip)
{
    const bool same = m_enabled == enabled && m_ip == ip;
    m_enabled = enabled;
    m_ip = ip;
    if (isUp() && same)
        return announceUp();
    if (isUp())
        return leave();
    if (isWaiting() || (isConnecting() && !same))
        abort();
    reconcile();
}

void PlayedCable::cableChanged()
{
    const bool wasLinked = phase() == Phase::Up || phase() == Phase::Leaving;
    if (!description().plugged && wasLinked)
        return goDown();
    abort();
    reconcile();
}

void PlayedCable::reconcile()
{
    if (phase() == Phase::Down && !isWaiting() && m_enabled && description().plugged)
        enter(Phase::Configuring);
}

InterfaceStatus PlayedCable::currentStatus() const
{
    if (!description().plugged)
        return InterfaceStatus::NoCarrier;
    return isConnecting() ? InterfaceStatus::Connecting : InterfaceStatus::Idle;
}

std::optional<Lease> PlayedCable::askLease() const
{
    const auto& world = description();
    return ::lease(world.network(world.cableNetwork), m_ip, cableHostNumber, world.wiredMac);
}

InterfaceDetails PlayedCable::details() const
{
    InterfaceDetails details;
    details.kind = InterfaceDetails::Kind::Wired;
    details.mac = description().wiredMac;
    details.connected = isUp();
    details.lease = lease();
    details.cable = description().plugged;
    return details;
}
