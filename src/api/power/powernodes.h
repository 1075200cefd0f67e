// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmnoderow.h"

// clang-format off

/// The nodes of the power manager that the network manager asks. They take the bare fields of a
/// record.
#define ORVA_POWER_NODES(ROW)                                                                      \
    ROW(OrvaPowerManagerModuleRegisterPath, "power/module/register", Action, "", Default, "",      \
        "Takes the bare fields of an `OrvaPowerManagerModuleRegister`: makes a module known.")     \
    ROW(OrvaPowerManagerResourceRequestPath, "power/resource/request", Action, "", Default, "",    \
        "Takes the bare fields of an `OrvaPowerManagerResourceRequest`: a module needs a "         \
        "resource, or no longer does.")                                                            \
    ROW(OrvaPowerManagerTargetRequestPath, "power/target/request", Action, "", Default, "",        \
        "Takes the bare fields of an `OrvaPowerManagerTarget`: asks the device for a power "       \
        "state.")
// clang-format on

/// The row of the node at `path`, for its creation. A path without a row is our own mistake
/// (fatal).
[[nodiscard]] ORVA_API const CMNodeRow& orvaPowerNode(const CMPath& path);

// The path functions, one for each row.
ORVA_POWER_NODES(ORVA_NODE_PATH)
