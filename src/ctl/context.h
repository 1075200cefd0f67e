// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bus/host.h"
#include "output/output.h"
#include "parser/command.h"

namespace ctl {

/// The things that a command works with.
struct Context
{
    Bus& bus;
    Host& host;
    Output& out;
    bool waits = true;        ///< for the result of an action: not with --wait 0
    QStringList columns = {}; ///< of the table that the command writes
};

} // namespace ctl
