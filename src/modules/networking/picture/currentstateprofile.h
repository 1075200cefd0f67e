// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

/// The network that is actually up, in the form of a profile. Only IPv4 settings have a place in
/// it.
[[nodiscard]] OrvaNetworkProfile currentStateProfile(const OrvaNetworkInfo& info);
