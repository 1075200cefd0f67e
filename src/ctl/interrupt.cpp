// SPDX-License-Identifier: Apache-2.0
#include "interrupt.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace ctl {

namespace {

volatile std::sig_atomic_t receivedSignal = 0;
int wakeUp = -1; ///< wakes the event loop; a handler can reach nothing else

/// A mask would not do: the bus's thread, which was there before, takes signals too.
void takeSignal(int signal)
{
    receivedSignal = signal;
    const quint64 one = 1;
    (void)!write(wakeUp, &one, sizeof one);
}

void setFatalHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

} // namespace

Interrupt::Interrupt()
    : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_notifier(m_descriptor, QSocketNotifier::Read)
{
    wakeUp = m_descriptor;
    QObject::connect(&m_notifier, &QSocketNotifier::activated,
                     [this] { m_notifier.setEnabled(false); });
    setFatalHandler(&takeSignal);
}

Interrupt::~Interrupt()
{
    setFatalHandler(SIG_DFL);
    m_notifier.setEnabled(false);
    close(m_descriptor);
}

int Interrupt::received()
{
    return receivedSignal;
}

} // namespace ctl
