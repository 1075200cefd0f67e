// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtGlobal>

#include <csignal>
#include <initializer_list>
#include <utility>
#include <vector>

namespace ctl {

/// While it lives, each of the signals has `handler` run once, and then ends the program. One that
/// is ignored, as in the background or under nohup, stays so.
class SignalHandler
{
public:
    SignalHandler(void (*handler)(int), std::initializer_list<int> signals);
    ~SignalHandler();
    Q_DISABLE_COPY(SignalHandler)

private:
    std::vector<std::pair<int, struct sigaction>> m_before; ///< by their signals
};

} // namespace ctl
