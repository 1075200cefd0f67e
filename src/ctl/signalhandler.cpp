// SPDX-License-Identifier: Apache-2.0
#include "signalhandler.h"

namespace ctl {

SignalHandler::SignalHandler(void (*handler)(int), std::initializer_list<int> signals)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = int(SA_RESETHAND);
    for (const int signal : signals) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler == SIG_IGN)
            continue;
        m_before.emplace_back(signal, before);
        sigaction(signal, &action, nullptr);
    }
}

SignalHandler::~SignalHandler()
{
    for (const auto& [signal, before] : m_before)
        sigaction(signal, &before, nullptr);
}

} // namespace ctl
