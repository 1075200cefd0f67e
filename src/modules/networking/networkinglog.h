#pragma once

#include "core/dbglog.h"

/// The worker's logger, named "Networking".
[[nodiscard]] const log4cplus::Logger& networkingLogger();
