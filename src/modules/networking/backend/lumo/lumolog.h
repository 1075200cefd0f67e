#pragma once

#include "core/dbglog.h"

/// The logger of everything that speaks to the connection daemon: "Networking_LowLevel_LUMO".
[[nodiscard]] const log4cplus::Logger& lumoLogger();
