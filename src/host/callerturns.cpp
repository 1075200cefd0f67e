// SPDX-License-Identifier: Apache-2.0
#include "callerturns.h"

#include <QElapsedTimer>

namespace {

constexpr qint64 turnMs = 4;

} // namespace

void CallerTurns::add(const QString& caller, Work work, const Start& start)
{
    if (!std::exchange(m_scheduled, true))
        schedule();
    QQueue<Call>& calls = m_calls[caller];
    if (calls.isEmpty())
        m_callers.enqueue(caller);
    calls.enqueue({work, start});
}

void CallerTurns::schedule()
{
    QMetaObject::invokeMethod(this, &CallerTurns::takeTurn, Qt::QueuedConnection);
}

void CallerTurns::takeTurn()
{
    QElapsedTimer turn;
    turn.start();
    // The callers served go behind those that came since, before those that come from now on.
    m_callers += std::exchange(m_served, {});
    while (!m_calls.isEmpty()) {
        const Call call = next();
        call.start();
        if (call.work == Work::Later)
            // The work begins from the event loop; calls that come in meanwhile go first.
            return void(
                QMetaObject::invokeMethod(this, &CallerTurns::schedule, Qt::QueuedConnection));
        if (turn.elapsed() >= turnMs)
            return schedule();
    }
    m_scheduled = false;
}

CallerTurns::Call CallerTurns::next()
{
    if (m_callers.isEmpty())
        m_callers.swap(m_served);
    const QString caller = m_callers.dequeue();
    const auto calls = m_calls.find(caller);
    Call call = calls->dequeue();
    if (calls->isEmpty())
        m_calls.erase(calls);
    else
        m_served.enqueue(caller);
    return call;
}
