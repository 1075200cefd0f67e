#pragma once

#include "outcome.h"

#include <QDBusConnection>
#include <QDBusPendingReply>
#include <QDeadlineTimer>
#include <functional>

namespace ctl {

/// The connection to the system bus, and the one place where orvactl waits.
///
/// Calls are asynchronous; awaiting one runs the event loop, so that signals are delivered
/// meanwhile.
class Bus
{
public:
    Bus();

    [[nodiscard]] const QDBusConnection& connection() const { return m_connection; }

    /// Fails where there is no system bus to talk to.
    Result check() const;

    /// Runs the event loop until @p done says true or @p deadline expires; false if it expired.
    [[nodiscard]] static bool runUntil(const std::function<bool()>& done,
                                       const QDeadlineTimer& deadline);

    /// Waits for the answer to @p call and gives its first argument.
    template <typename T>
    static Outcome<T> await(const QDBusPendingReply<T>& call,
                            const QDeadlineTimer& deadline = QDeadlineTimer::Forever)
    {
        const Result result = finish(call, deadline);
        return result.ok() ? Outcome<T>(QDBusPendingReply<T>(call).value()) : Outcome<T>(result);
    }

    /// Waits for the answer to @p call, whatever it holds.
    static Result finish(const QDBusPendingCall& call,
                         const QDeadlineTimer& deadline = QDeadlineTimer::Forever);

private:
    QDBusConnection m_connection;
};

} // namespace ctl
