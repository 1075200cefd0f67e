// SPDX-License-Identifier: Apache-2.0
#include "commands/profileedit.h"

namespace ctl {

Outcome<OrvaNetworkProfile> publishedProfile(Host& host)
{
    const auto value = host.value(OrvaNetworkProfilePath());
    return value ? Outcome<OrvaNetworkProfile>(value->networkProfile()) : value.error();
}

Parameter confirmTime()
{
    return {"--confirm",
            "Go back to the profile before unless \"orvactl profile confirm\" comes in that time",
            Parameter::Kind::Seconds};
}

Action settingOf(const OrvaNetworkProfile& profile, const Arguments& given)
{
    const auto seconds = given.seconds("--confirm");
    if (!seconds)
        return {OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(profile)};
    OrvaNetworkProfileTrial trial;
    trial.setProfile(profile);
    trial.setConfirmWithinMs(qRound(qMin(*seconds, 1e6) * 1000));
    return {OrvaNetworkTryNetworkProfilePath(), OrvaValue::of(trial)};
}

void noteTrial(const Output& out, const Arguments& given)
{
    if (given.seconds("--confirm"))
        out.note(QStringLiteral("The profile before comes back unless \"orvactl profile confirm\" "
                                "comes in time."));
}

} // namespace ctl
