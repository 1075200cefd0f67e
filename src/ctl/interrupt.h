// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSocketNotifier>

#include <csignal>

namespace ctl {

/// While it lives, Ctrl-C and SIGTERM do not end the program: whoever waits leaves off and tidies
/// up first. At most one at a time.
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
};

} // namespace ctl
