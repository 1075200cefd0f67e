// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "signalhandler.h"

#include <QSocketNotifier>

#include <optional>

namespace ctl {

/// While it lives, the first Ctrl-C, SIGTERM or SIGHUP does not end the program: whoever waits
/// leaves off and tidies up first. The second ends it. At most one at a time.
class Interrupt
{
public:
    Interrupt();
    ~Interrupt();
    Q_DISABLE_COPY(Interrupt)

    /// The signal that came, 0 for none.
    [[nodiscard]] static int received();

private:
    int m_descriptor;
    QSocketNotifier m_notifier;
    std::optional<SignalHandler> m_handler;
};

} // namespace ctl
