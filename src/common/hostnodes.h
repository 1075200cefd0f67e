// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmnoderow.h"

// clang-format off

/// The nodes by which the host shows its own state.
#define ORVA_HOST_NODES(ROW)                                                                       \
    ROW(HostSettingsFaultPath, "host/settings-fault", ReadOnly, "string", Default, "",             \
        "Why settings cannot be stored, as the start or the last write found it; empty where they can.")
// clang-format on

/// The row of the node at `path`, for its creation. A path without a row is our own mistake
/// (fatal).
[[nodiscard]] const CMNodeRow& hostNode(const CMPath& path);

// The path functions, one for each row.
ORVA_HOST_NODES(ORVA_NODE_PATH)
