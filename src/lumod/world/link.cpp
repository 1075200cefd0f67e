// SPDX-License-Identifier: Apache-2.0
#include "world/link.h"

Link::Link(QString name, World& world)
    : m_name(std::move(name))
    , m_world(world)
{
}

bool Link::isConnecting() const
{
    return m_phase == Phase::Associating || m_phase == Phase::Configuring;
}

InterfaceStatus Link::statusOfPhase() const
{
    switch (m_phase) {
    case Phase::Associating:
    case Phase::Leaving:
        return InterfaceStatus::Connecting;
    case Phase::Configuring:
        return InterfaceStatus::Addressing;
    case Phase::Down:
    case Phase::Up:
        break;
    }
    return InterfaceStatus::Idle;
}

void Link::enter(Phase phase)
{
    m_phase = phase;
    entered(phase);
    updateStatus();
}

void Link::comeUp()
{
    enter(Phase::Up);
    announceUp();
    reconcile(); // a scan that was asked for meanwhile
    Q_EMIT settled();
}

void Link::leave()
{
    enter(Phase::Leaving);
    Q_EMIT m_world.disconnecting(m_name);
}

void Link::goDown()
{
    abort();
    Q_EMIT m_world.disconnected(m_name);
    Q_EMIT m_world.addressesChanged();
    Q_EMIT settled();
    reconcile();
}

void Link::announceUp()
{
    Q_EMIT m_world.connected(m_name);
    Q_EMIT m_world.addressesChanged();
}

void Link::reportNoAnswer()
{
    Q_EMIT m_world.failed(QStringLiteral("No DHCP answer on ") + m_name);
}

void Link::announceStatus()
{
    m_status = currentStatus();
    Q_EMIT m_world.statusChanged(m_name, m_status);
}

void Link::updateStatus()
{
    if (currentStatus() != m_status)
        announceStatus();
}
