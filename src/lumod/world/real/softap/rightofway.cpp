// SPDX-License-Identifier: Apache-2.0
#include "world/real/softap/rightofway.h"

#include <utility>

namespace {

constexpr int patienceMilliseconds = 25000; // a scan, a key, and a try more
constexpr int calmMilliseconds = 300000;

} // namespace

RightOfWay::RightOfWay(RealRadio& radio)
    : m_radio(radio)
{
    m_patience.setSingleShot(true);
    m_calm.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        if (m_radio.isInSession())
            return m_patience.start(patienceMilliseconds);
        m_given = false;
        m_calm.start(calmMilliseconds);
        Q_EMIT spent();
    });
}

void RightOfWay::claim()
{
    m_given = true;
    m_claimed = true;
}

void RightOfWay::clear()
{
    if (std::exchange(m_claimed, false))
        m_radio.rejoin();
}

void RightOfWay::take()
{
    m_given = false;
    m_claimed = false;
    m_patience.stop();
}

bool RightOfWay::holds()
{
    m_given = m_given && m_radio.wantsToJoin() && !m_radio.isJoined();
    if (!m_given)
        m_patience.stop();
    else if (!m_patience.isActive())
        m_patience.start(patienceMilliseconds);
    return m_given;
}
