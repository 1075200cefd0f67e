// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networknodes.h"

/// The name under which the network manager registers with the power manager.
[[nodiscard]] ORVA_API QString OrvaNetworkName();

/// Delay before the fallback soft access point starts, in milliseconds.
[[nodiscard]] ORVA_API int OrvaNetworkSoftApTimeout();

// The path functions, such as OrvaNetworkInfoPath(): one for each row.
ORVA_NETWORK_NODES(ORVA_NODE_PATH)
