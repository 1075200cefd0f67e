// SPDX-License-Identifier: Apache-2.0
#include "interrupt.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <unistd.h>

namespace ctl {

namespace {

volatile std::sig_atomic_t receivedSignal = 0;
int wakeUp = -1; ///< wakes the event loop; a handler can reach nothing else

/// A mask would not do: the bus's thread, which was there before, takes signals too.
void takeSignal(int signal)
{
    if (receivedSignal != 0) {
        std::raise(signal); // ends the program once this has returned
        return;
    }
    receivedSignal = signal;
    const int before = errno;
    const quint64 one = 1;
    (void)!write(wakeUp, &one, sizeof one);
    errno = before;
}

} // namespace

Interrupt::Interrupt()
    : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_notifier(m_descriptor, QSocketNotifier::Read)
{
    wakeUp = m_descriptor;
    QObject::connect(&m_notifier, &QSocketNotifier::activated,
                     [this] { m_notifier.setEnabled(false); });
    m_handler.emplace(&takeSignal, std::initializer_list<int>{SIGINT, SIGTERM, SIGHUP});
}

Interrupt::~Interrupt()
{
    m_handler.reset();
    m_notifier.setEnabled(false);
    close(m_descriptor);
}

int Interrupt::received()
{
    return receivedSignal;
}

} // namespace ctl
