// SPDX-License-Identifier: Apache-2.0
#include "endsignals.h"

#include <QSocketNotifier>

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

volatile int writeEnd = -1;

void onSignal(int)
{
    const char byte = 0;
    // Nothing can be done about a failure in a signal handler.
    [[maybe_unused]] const auto written = ::write(writeEnd, &byte, 1);
}

} // namespace

EndSignals::EndSignals(QObject* parent)
    : QObject(parent)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        qFatal("no pipe for signals");
    m_readEnd = ends[0];
    writeEnd = ends[1];
    const auto* notifier = new QSocketNotifier(m_readEnd, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (::read(m_readEnd, &byte, 1) == 1)
            Q_EMIT received();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

EndSignals::~EndSignals()
{
    ::signal(SIGINT, SIG_DFL);
    ::signal(SIGTERM, SIG_DFL);
    ::close(m_readEnd);
    ::close(writeEnd);
    writeEnd = -1;
}
