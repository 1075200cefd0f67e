// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "command.h"
#include "host.h"
#include "output.h"

namespace ctl {

/// The things that a command works with.
struct Context
{
    const Bus& bus;
    Host& host;
    Output& out;
};

} // namespace ctl
