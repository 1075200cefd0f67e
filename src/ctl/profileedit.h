// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "action.h"

namespace ctl {

/// The profile as it is published, keys masked. Every edit starts from it.
Outcome<OrvaNetworkProfile> publishedProfile(Host& host);

/// Sets the whole profile, so that nothing that was not named is dropped; masked keys stay as they
/// are.
Result setProfile(Context& context, const OrvaNetworkProfile& profile, const InfoVerdict& verdict);

} // namespace ctl
