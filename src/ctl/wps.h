#pragma once

#include "action.h"

namespace ctl {

/// Adds the group `wifi wps` to the group @p wifi.
void addWpsCommands(CommandLine& commands, CLI::App& wifi);

} // namespace ctl
