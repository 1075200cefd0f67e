// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/dbglog.h"

/// The logger of the worker and its rooms.
ORVA_LOGGER(networkingLogger, "Networking")
