// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "action.h"

namespace ctl {

/// The profile as it is published, keys masked. Every edit starts from it.
Outcome<OrvaNetworkProfile> publishedProfile(Host& host);

} // namespace ctl
