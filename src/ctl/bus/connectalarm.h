// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDeadlineTimer>

namespace ctl {

/// While it lives the program ends with the status TimedOut at a deadline.
///
/// Connecting to the bus blocks within the bus's own library, which a bus that was stopped makes
/// wait without regard to anybody's deadline; nothing but a signal gets past that.
class ConnectAlarm
{
public:
    /// The patience of a call holds where the deadline is for ever.
    explicit ConnectAlarm(const QDeadlineTimer& deadline);
    ~ConnectAlarm();
    Q_DISABLE_COPY(ConnectAlarm)
};

} // namespace ctl
