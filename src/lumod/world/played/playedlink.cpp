#include "world/played/playedlink.h"

PlayedLink::PlayedLink(QString name, World& world, const WorldDescription& description)
    : m_name(std::move(name))
    , m_world(world)
    , m_description(description)
{
    m_step.setSingleShot(true);
    m_step.setTimerType(Qt::PreciseTimer);
    connect(&m_step, &QTimer::timeout, this, &PlayedLink::step);
}

bool PlayedLink::isConnecting() const
{
    return m_phase == Phase::Associating || m_phase == Phase::Configuring;
}

void PlayedLink::enter(Phase phase, int delay)
{
    m_phase = phase;
    m_step.start(delay);
    updateStatus();
}

void PlayedLink::step()
{
    switch (m_phase) {
    case Phase::Down:
        return retry();
    case Phase::Associating:
        return associated();
    case Phase::Configuring:
        return takeLease();
    case Phase::Up:
        return;
    case Phase::Leaving:
        return goDown();
    }
}

void PlayedLink::takeLease()
{
    if (const auto lease = askLease()) {
        m_lease = *lease;
        m_phase = Phase::Up;
        updateStatus();
        announceUp();
        reconcile(); // a scan that was asked for meanwhile
    } else {
        Q_EMIT m_world.failed(QStringLiteral("No DHCP answer on ") + m_name);
        leaseRefused();
    }
    Q_EMIT settled();
}

void PlayedLink::leave()
{
    enter(Phase::Leaving, m_description.delays.of("leave"));
    Q_EMIT m_world.disconnecting(m_name);
}

void PlayedLink::goDown()
{
    abort();
    Q_EMIT m_world.disconnected(m_name);
    Q_EMIT m_world.addressesChanged();
    Q_EMIT settled();
    reconcile();
}

void PlayedLink::abort()
{
    m_step.stop();
    m_phase = Phase::Down;
    updateStatus();
}

void PlayedLink::announceUp()
{
    Q_EMIT m_world.connected(m_name);
    Q_EMIT m_world.addressesChanged();
}

void PlayedLink::announceStatus()
{
    m_status = currentStatus();
    Q_EMIT m_world.statusChanged(m_name, m_status);
}

void PlayedLink::updateStatus()
{
    if (currentStatus() != m_status)
        announceStatus();
}
