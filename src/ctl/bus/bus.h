// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "output/outcome.h"

#include <QDBusConnection>
#include <QDBusPendingReply>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <chrono>
#include <functional>

namespace ctl {

/// The connection to the system bus, and the one place where orvactl waits.
///
/// Calls are asynchronous; awaiting one runs the event loop, so that signals are delivered
/// meanwhile.
class Bus
{
public:
    /// The time that a call may take where the person gave none.
    static constexpr std::chrono::seconds patience{25};

    /// Connects. What is awaited later ends with `deadline`.
    explicit Bus(const QDeadlineTimer& deadline);
    ~Bus();
    Q_DISABLE_COPY(Bus)

    [[nodiscard]] const QDBusConnection& connection() const { return m_connection; }

    /// Fails where there is no system bus to talk to.
    Result check() const;

    /// Gives a command that is over `atMost` to tidy up, whatever it was given before and whether
    /// an Interrupt came.
    void tidyUp(std::chrono::seconds atMost);

    /// The time in which a person is asked for something is not part of that which they gave.
    class Pause
    {
    public:
        explicit Pause(Bus& bus)
            : m_bus(bus)
        {
            m_clock.start();
        }
        ~Pause() { m_bus.m_deadline += m_clock.elapsed(); }
        Q_DISABLE_COPY(Pause)

    private:
        Bus& m_bus;
        QElapsedTimer m_clock;
    };

    /// The end of the time that the person gave; never, where none was given.
    [[nodiscard]] const QDeadlineTimer& deadline() const { return m_deadline; }

    /// Runs the event loop until `done` says true or `deadline` expires; false if it expired.
    [[nodiscard]] static bool runUntil(const std::function<bool()>& done,
                                       const QDeadlineTimer& deadline);

    /// Waits for the answer to `call` and gives its first argument.
    template <typename T>
    Outcome<T> await(const QDBusPendingReply<T>& call, std::chrono::seconds atMost = patience) const
    {
        const Result result = finish(call, atMost);
        if (!result)
            return result.error();
        return QDBusPendingReply<T>(call).value();
    }

    /// Waits for the answer to `call`, whatever it holds: until the deadline, `atMost` where there
    /// is none, or an Interrupt.
    Result finish(const QDBusPendingCall& call, std::chrono::seconds atMost = patience) const;

private:
    QString m_name; ///< of the connection, in this process
    QDBusConnection m_connection;
    QDeadlineTimer m_deadline;
    bool m_isTidyingUp = false;
};

} // namespace ctl
