// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "output/output.h"
#include "parser/command.h"

#include <QDeadlineTimer>

namespace ctl {

/// The command that a person asked for.
struct Choice
{
    const Command* command = nullptr; ///< none where only --generate was given
    Arguments arguments;
    QDeadlineTimer deadline = QDeadlineTimer::Forever; ///< the time for all of it, if any was given
    bool waits = true;                                 ///< for the result of an action
    OutputStyle style;
    QString generate; ///< what to print in place of running a command: "man", a shell or none
};

/// Reads the command line. Where there is nothing to run, help or a fault was printed, and the exit
/// status is the answer. `program` must outlive the choice.
std::variant<Choice, ExitStatus> parseCommandLine(const Program& program, int argc, char** argv);

} // namespace ctl
