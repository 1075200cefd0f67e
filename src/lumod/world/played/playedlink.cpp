// SPDX-License-Identifier: Apache-2.0
#include "world/played/playedlink.h"

PlayedLink::PlayedLink(QString name, World& world, const WorldDescription& description)
    : Link(std::move(name), world)
    , m_description(description)
{
    m_step.setSingleShot(true);
    m_step.setTimerType(Qt::PreciseTimer);
    connect(&m_step, &QTimer::timeout, this, &PlayedLink::step);
}

void PlayedLink::entered(Phase phase)
{
    const auto& delays = m_description.delays;
    switch (phase) {
    case Phase::Down:
    case Phase::Up:
        return m_step.stop();
    case Phase::Associating:
        return m_step.start(delays.of("associate"));
    case Phase::Configuring:
        return m_step.start(delays.of("dhcp"));
    case Phase::Leaving:
        return m_step.start(delays.of("leave"));
    }
}

void PlayedLink::wait()
{
    abort();
    m_step.start(m_description.delays.of("retry"));
}

void PlayedLink::step()
{
    switch (phase()) {
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
        return comeUp();
    }
    reportNoAnswer();
    leaseRefused();
    Q_EMIT settled();
}
