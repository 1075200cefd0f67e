// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "softap/softap.h"

/// The live requests of all interfaces as they are published, by interface and then in their order.
[[nodiscard]] OrvaList<OrvaNetworkSoftApRequestStatus>
softApRequestStatuses(const SoftApsByInterface& softAps);
