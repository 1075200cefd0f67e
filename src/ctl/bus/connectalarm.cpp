// SPDX-License-Identifier: Apache-2.0
#include "bus/connectalarm.h"

#include "bus/bus.h"

#include <csignal>
#include <sys/time.h>
#include <unistd.h>

namespace ctl {

namespace {

void giveUp(int)
{
    const char text[] = "orvactl: timed-out: The bus does not answer in the time given.\n";
    (void)!write(STDERR_FILENO, text, sizeof text - 1);
    _exit(int(ExitStatus::TimedOut));
}

void setAlarm(qint64 milliseconds)
{
    const itimerval once = {{}, {milliseconds / 1000, milliseconds % 1000 * 1000}};
    setitimer(ITIMER_REAL, &once, nullptr);
}

} // namespace

ConnectAlarm::ConnectAlarm(const QDeadlineTimer& deadline)
{
    std::signal(SIGALRM, &giveUp);
    const qint64 patience = std::chrono::milliseconds(Bus::patience).count();
    // A time of 0 would be none.
    setAlarm(deadline.isForever() ? patience : qMax(deadline.remainingTime(), qint64(1)));
}

ConnectAlarm::~ConnectAlarm()
{
    setAlarm(0);
}

} // namespace ctl
