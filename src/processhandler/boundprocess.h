// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/qtversion.h"

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

/// A program that the kernel kills when this process dies without having ended it.
class BoundProcess : public OrvaPreparedProcess
{
public:
    BoundProcess()
    {
        setChildProcessModifier([parent = getpid()] { bind(parent); });
    }

private:
    static void bind(pid_t parent)
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // The parent may have died before the line above.
        if (getppid() != parent)
            _exit(127);
    }
};
