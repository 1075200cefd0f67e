#pragma once

#include "action.h"

namespace ctl {

/// Adds `wifi scan` and `wifi list` to the group @p wifi.
void addScanCommands(CommandLine& commands, CLI::App& wifi);

} // namespace ctl
