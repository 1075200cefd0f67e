// SPDX-License-Identifier: Apache-2.0
#include "interrupt.h"

#include <sys/signalfd.h>
#include <unistd.h>

namespace ctl {

namespace {

int receivedSignal = 0;

sigset_t fatalSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, signal);
    return signals;
}

int openSignals()
{
    const sigset_t signals = fatalSignals();
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

void takeSignal(int descriptor)
{
    signalfd_siginfo signal = {};
    if (read(descriptor, &signal, sizeof signal) == ssize_t(sizeof signal))
        receivedSignal = int(signal.ssi_signo);
}

} // namespace

Interrupt::Interrupt()
    : m_descriptor(openSignals())
    , m_notifier(m_descriptor, QSocketNotifier::Read)
{
    const sigset_t signals = fatalSignals();
    pthread_sigmask(SIG_BLOCK, &signals, &m_before);
    QObject::connect(&m_notifier, &QSocketNotifier::activated,
                     [descriptor = m_descriptor] { takeSignal(descriptor); });
}

Interrupt::~Interrupt()
{
    m_notifier.setEnabled(false);
    close(m_descriptor);
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

int Interrupt::received()
{
    return receivedSignal;
}

} // namespace ctl
