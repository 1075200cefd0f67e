// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/qtversion.h"

#include <QVector>

/// The time of a test program: it stands still, and no timer runs out, before the test lets time
/// pass.
///
/// It takes the place of the program's event dispatcher and of the C library's monotonic clock, so
/// that every timer and every clock of the code under test is held. It serves no sockets; D-Bus
/// needs none, since it reads on a thread of its own.
class HeldClock : public OrvaEventDispatcher
{
    Q_OBJECT
public:
    HeldClock();
    ~HeldClock() override;
    /// The one of this program, which `ORVA_HELD_TEST_MAIN` made.
    static HeldClock& instance();

    /// Milliseconds on the monotonic clock.
    [[nodiscard]] static qint64 now();
    /// Lets the time go on by itself too, for a test that has to do with other processes.
    static void run();
    /// Puts the monotonic clock back, and no timer: the two need not agree.
    static void lag(qint64 ms);
    /// Has waits for other programs take a tenth of their time for real.
    static void hurry(bool on);
    /// Lets time pass: each timer on its way finds its own moment, and what is queued is done after
    /// it.
    void pass(qint64 ms);
    /// The ms after which the timers of `owner` and of its children run out, the next one first.
    [[nodiscard]] QVector<int> due(const QObject* owner) const;
    /// Runs what is queued, and what that queues.
    static void settle();

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    void registerSocketNotifier(QSocketNotifier*) override {}
    void unregisterSocketNotifier(QSocketNotifier*) override {}
    bool unregisterTimer(int id) override;
    bool unregisterTimers(QObject* object) override;
    QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int id) override;
    void wakeUp() override {}
    void interrupt() override {}
    void registerTimer(int id, OrvaTimerInterval interval, Qt::TimerType type,
                       QObject* object) override;

private:
    struct Timer
    {
        TimerInfo info;
        QObject* object;
        qint64 due;
    };
    /// Fires what is due until then, in order.
    void fireUntil(qint64 end);

    QVector<Timer> m_timers; ///< in the order in which they were started
};

/// A program that runs the tests of `Test` while the time is held.
#define ORVA_HELD_TEST_MAIN(Test)                            \
    int main(int argc, char** argv)                          \
    {                                                        \
        qputenv("QTEST_FUNCTION_TIMEOUT", "2147483647");     \
        QCoreApplication::setEventDispatcher(new HeldClock); \
        const QCoreApplication application(argc, argv);      \
        Test test;                                           \
        return QTest::qExec(&test, argc, argv);              \
    }
