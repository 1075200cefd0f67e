// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/action.h"

namespace ctl {

/// The profile as it is published, keys masked. Every edit starts from it.
Outcome<OrvaNetworkProfile> publishedProfile(Host& host);

/// The option --confirm of what sets a profile.
Parameter confirmTime();

/// An action and what it is given.
struct Action
{
    CMPath path;
    OrvaValue value;
};

/// The action that sets the profile: on trial with --confirm.
Action settingOf(const OrvaNetworkProfile& profile, const Arguments& given);

/// Tells the person that the profile is on trial, where it is.
void noteTrial(const Output& out, const Arguments& given);

} // namespace ctl
