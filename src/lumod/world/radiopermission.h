// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/link.h"

/// The use of the radio that the cable permits.
enum class RadioPermission {
    Leave, ///< not to be joined
    Keep,  ///< may stay joined, but not join
    Join,
};

/// In the automatic mode the radio yields to a cable that is up, and waits for one that tries.
[[nodiscard]] RadioPermission radioPermission(NetworkMode mode, const Link& cable);
