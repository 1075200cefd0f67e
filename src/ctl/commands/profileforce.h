// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/action.h"

namespace ctl {

/// True if the command sets an address, or what goes with one.
bool asksForAddress(const Arguments& given);

/// True if the network is up by the profile, with what the command has set.
bool isInForce(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile,
               const Arguments& given);

/// Judges what is not in force after some seconds: the profile is set, and something else keeps it
/// from it.
std::optional<Result> isForLater(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile,
                                 const Arguments& given);

} // namespace ctl
