// SPDX-License-Identifier: Apache-2.0
#include "world/real/link/realcable.h"

RealCable::RealCable(World& world, Kernel& kernel, NameServers& nameServers,
                     const RealSettings& settings)
    : RealLink(settings.wired, settings.wiredMetric, world, kernel, nameServers, settings)
{
}

void RealCable::configure(bool enabled, const std::optional<StaticIp>& ip)
{
    const bool same = m_enabled == enabled && this->ip() == ip;
    m_enabled = enabled;
    setIp(ip);
    if (enabled && exists() && !link().up)
        kernel().setUp(link().index);
    if (isUp() && same)
        return announceUp();
    if (isUp())
        return leave();
    forgetSilence();
    if (phase() != Phase::Leaving && !same)
        abort();
    reconcile();
}

void RealCable::followInterface(const KernelLink& before)
{
    if (exists() && link().index != before.index && !link().up)
        kernel().setUp(link().index);
    if (before.carrier != link().carrier)
        Q_EMIT world().cableChanged(link().carrier);
    // An interface that was replaced meanwhile had its carrier lost.
    if (before.carrier && (!link().carrier || link().index != before.index))
        dropCarrier();
}

void RealCable::reconcile()
{
    if (phase() == Phase::Leaving)
        return;
    ask(m_enabled);
    if (phase() == Phase::Down && m_enabled && link().carrier && !isSilent())
        enter(Phase::Configuring);
}

InterfaceStatus RealCable::currentStatus() const
{
    if (!exists())
        return InterfaceStatus::Absent;
    if (!link().carrier)
        return InterfaceStatus::NoCarrier;
    return isConnecting() ? InterfaceStatus::Connecting : InterfaceStatus::Idle;
}

InterfaceDetails RealCable::details() const
{
    InterfaceDetails details;
    if (!exists())
        return details;
    details.kind = InterfaceDetails::Kind::Wired;
    describe(details);
    details.cable = link().carrier;
    return details;
}
