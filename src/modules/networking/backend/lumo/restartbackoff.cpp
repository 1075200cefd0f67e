// SPDX-License-Identifier: Apache-2.0
#include "backend/lumo/restartbackoff.h"

namespace {
constexpr int window = 10000;       // ms
constexpr int tolerated = 2;        // losses within the window
constexpr int firstDelay = 1000;    // ms
constexpr int longestDelay = 30000; // ms
} // namespace

int RestartBackoff::afterLoss(qint64 now)
{
    const bool goesOn = m_delay > 0 && now - m_losses.last() <= m_delay + window;
    m_losses.append(now);
    while (now - m_losses.first() > window)
        m_losses.removeFirst();
    if (goesOn)
        m_delay = qMin(2 * m_delay, longestDelay);
    else
        m_delay = m_losses.size() > tolerated ? firstDelay : 0;
    return m_delay;
}
