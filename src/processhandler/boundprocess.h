// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcess>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

/// A program that the kernel kills when this process dies without having ended it.
///
/// The only place that depends on the version of Qt: a child prepares itself by an override in Qt
/// 5, by a function that is set in Qt 6.
class BoundProcess : public QProcess
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
protected:
    void setupChildProcess() override
    {
        bind(m_parent);
    }
#else
public:
    BoundProcess()
    {
        setChildProcessModifier([parent = m_parent] { bind(parent); });
    }
#endif

private:
    static void bind(pid_t parent)
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // The parent may have died before the line above.
        if (getppid() != parent)
            _exit(127);
    }

    pid_t m_parent = getpid();
};
