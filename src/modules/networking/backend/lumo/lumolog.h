// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/dbglog.h"

/// The logger of everything that speaks to the connection daemon.
ORVA_LOGGER(lumoLogger, "Networking_LowLevel_LUMO")
