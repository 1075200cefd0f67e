// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"

#include <cstdint>
#include <functional>

struct nl_msg;

/// Has the kernel's wireless part carry out a command, one of NL80211_CMD_*, with the attributes
/// that `fill` puts. The kernel answers at once.
Result<> callNl80211(std::uint8_t command, const std::function<void(nl_msg* message)>& fill);
