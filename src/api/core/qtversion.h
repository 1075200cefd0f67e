// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractEventDispatcher>
#include <QProcess>

#include <functional>

// What the versions of Qt spell differently. No other header asks which of them it is.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)

/// A process whose child prepares itself by a function, between fork and exec.
class OrvaPreparedProcess : public QProcess
{
public:
    /// `prepare` runs in the child: it may call async-signal-safe functions alone.
    void setChildProcessModifier(std::function<void()> prepare) { m_prepare = std::move(prepare); }

protected:
    void setupChildProcess() override
    {
        if (m_prepare)
            m_prepare();
    }

private:
    std::function<void()> m_prepare;
};

/// An event dispatcher that is asked for nothing but what each version asks for.
class OrvaEventDispatcher : public QAbstractEventDispatcher
{
public:
    bool hasPendingEvents() override { return false; }
    void flush() override {}
};

/// The milliseconds with which a dispatcher is told of a timer.
using OrvaTimerInterval = int;

#else

/// A process whose child prepares itself by a function, between fork and exec.
using OrvaPreparedProcess = QProcess;
/// An event dispatcher that is asked for nothing but what each version asks for.
using OrvaEventDispatcher = QAbstractEventDispatcher;
/// The milliseconds with which a dispatcher is told of a timer.
using OrvaTimerInterval = qint64;

#endif
