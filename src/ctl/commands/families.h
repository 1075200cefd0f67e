// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "parser/command.h"

namespace ctl {

// One family of commands each, in the order of the help.
Commands statusCommands();
Commands monitorCommands();
Commands networkCommands();
Commands profileCommands();
Commands wifiCommands();
Commands scanCommands();
Commands wpsCommands();
Commands wifiLinkCommands();
Commands softApCommands();
Commands radioCommands();
Commands watchdogCommands();
Commands genericCommands();
Commands watchCommands();
Commands worldCommands();

} // namespace ctl
