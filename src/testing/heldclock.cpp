// SPDX-License-Identifier: Apache-2.0
#include "heldclock.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimerEvent>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <ctime>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// The pace of this program's monotonic clock.
enum class Pace { Real, Held, Running };
std::atomic<Pace> pace{Pace::Real};
std::atomic<bool> hurried{false};
/// The time in ns while the clock is held, and its lead over the system's while it runs. A system
/// call that waits until then does not end before.
std::atomic<qint64> moment{Q_INT64_C(30000000000000000)};

constexpr qint64 nsPerMs = 1000000;
constexpr qint64 nsPerS = 1000000000;

qint64 toNs(const timespec& time)
{
    return time.tv_sec * nsPerS + time.tv_nsec;
}

qint64 realNs()
{
    timespec time{};
    ::syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &time);
    return toNs(time);
}

qint64 nowNs()
{
    return pace == Pace::Held ? moment.load() : realNs() + (pace == Pace::Real ? 0 : moment.load());
}

timespec toTime(qint64 ns)
{
    return {ns / nsPerS, ns % nsPerS};
}

} // namespace

extern "C" {

Q_DECL_EXPORT int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    if (clock != CLOCK_MONOTONIC || pace == Pace::Real)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    *time = toTime(nowNs());
    return 0;
}

Q_DECL_EXPORT int ppoll(pollfd* files, nfds_t count, const timespec* limit, const sigset_t* mask)
{
    const bool hurries = hurried && limit;
    timespec wait = limit ? toTime(toNs(*limit) / (hurries ? 10 : 1)) : timespec{};
    const int ready = static_cast<int>(
        ::syscall(SYS_ppoll, files, count, limit ? &wait : nullptr, mask, sizeof(sigset_t) / 16));
    if (ready == 0 && limit && pace == Pace::Held)
        moment += toNs(*limit);
    return ready;
}

} // extern "C"

HeldClock::HeldClock()
{
    pace = Pace::Held;
}

HeldClock::~HeldClock()
{
    pace = Pace::Real;
}

HeldClock& HeldClock::instance()
{
    return *qobject_cast<HeldClock*>(QAbstractEventDispatcher::instance());
}

qint64 HeldClock::now()
{
    return nowNs() / nsPerMs;
}

void HeldClock::run()
{
    moment = 0;
    pace = Pace::Running;
}

void HeldClock::lag(qint64 ms)
{
    moment -= ms * nsPerMs;
    for (Timer& timer : instance().m_timers)
        timer.due -= ms;
}

void HeldClock::hurry(bool on)
{
    hurried = on;
}

void HeldClock::pass(qint64 ms)
{
    settle();
    const qint64 end = now() + ms;
    fireUntil(end);
    moment += std::max(Q_INT64_C(0), end - now()) * nsPerMs;
    settle();
}

void HeldClock::fireUntil(qint64 end)
{
    const auto earlier = [](const Timer& a, const Timer& b) { return a.due < b.due; };
    for (;;) {
        const auto next = std::min_element(m_timers.begin(), m_timers.end(), earlier);
        if (next == m_timers.end() || next->due > end)
            return;
        moment += std::max(Q_INT64_C(0), next->due - now()) * nsPerMs;
        next->due =
            now() +
            std::max(1, static_cast<int>(next->info.interval)); // one of 0 ms would never let go
        QTimerEvent event(next->info.timerId);
        QCoreApplication::sendEvent(next->object, &event);
        settle();
    }
}

QVector<int> HeldClock::due(const QObject* owner) const
{
    QVector<int> all;
    for (const Timer& timer : m_timers) {
        const QObject* object = timer.object;
        while (object && object != owner)
            object = object->parent();
        if (object)
            all << static_cast<int>(timer.due - now());
    }
    std::sort(all.begin(), all.end());
    return all;
}

void HeldClock::settle()
{
    constexpr int longestChain = 20; // queued calls that each post the next
    for (int i = 0; i < longestChain; ++i)
        QCoreApplication::sendPostedEvents();
}

bool HeldClock::processEvents(QEventLoop::ProcessEventsFlags flags)
{
    QCoreApplication::sendPostedEvents();
    fireUntil(now());
    if (flags & QEventLoop::WaitForMoreEvents)
        QThread::msleep(1);
    return true;
}

void HeldClock::registerTimer(int id, OrvaTimerInterval interval, Qt::TimerType type,
                              QObject* object)
{
    const int ms = static_cast<int>(interval);
    m_timers.append({TimerInfo(id, ms, type), object, now() + ms});
}

bool HeldClock::unregisterTimer(int id)
{
    const auto end = std::remove_if(m_timers.begin(), m_timers.end(),
                                    [id](const Timer& timer) { return timer.info.timerId == id; });
    const bool found = end != m_timers.end();
    m_timers.erase(end, m_timers.end());
    return found;
}

bool HeldClock::unregisterTimers(QObject* object)
{
    for (const TimerInfo& info : registeredTimers(object))
        unregisterTimer(info.timerId);
    return true;
}

QList<QAbstractEventDispatcher::TimerInfo> HeldClock::registeredTimers(QObject* object) const
{
    QList<TimerInfo> infos;
    for (const Timer& timer : m_timers)
        if (timer.object == object)
            infos << timer.info;
    return infos;
}

int HeldClock::remainingTime(int id)
{
    for (const Timer& timer : std::as_const(m_timers))
        if (timer.info.timerId == id)
            return static_cast<int>(timer.due - now());
    return -1;
}
