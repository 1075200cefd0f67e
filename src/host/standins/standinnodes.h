// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmnoderow.h"

// clang-format off

/// The nodes on which the stand-ins show what was asked of them.
#define ORVA_STANDIN_NODES(ROW)                                                                    \
    ROW(PowerModulesPath, "power/modules", Rows, "", Default, "",                                  \
        "The modules that made themselves known.")                                                 \
    ROW(PowerRequestsPath, "power/requests", Rows, "", Default, "",                                \
        "The last 100 resource and target requests in their order, repeats included.")             \
    ROW(PowerResourceWifiPath, "power/resource/wifi", ReadOnly, "bool", Default, "",               \
        "True if any module holds the Wi-Fi radio.")                                               \
    ROW(PowerTargetPath, "power/target", ReadOnly, "i32", Default, "",                             \
        "The target that was last requested, 0 before.")                                           \
    ROW(WifiRestartPath, "wifi-restart/restart", Action, "", Default, "",                          \
        "Takes the wireless interface down and up again, answers an error where that fails.")      \
    ROW(WifiRestartCountPath, "wifi-restart/count", ReadOnly, "i32", Default, "",                  \
        "The number of restarts of Wi-Fi since the host's start.")
// clang-format on

/// The row of the node at `path`, for its creation. A path without a row is our own mistake
/// (fatal).
[[nodiscard]] const CMNodeRow& standinNode(const CMPath& path);

// The path functions, one for each row.
ORVA_STANDIN_NODES(ORVA_NODE_PATH)
