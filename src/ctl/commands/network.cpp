// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "commands/joining.h"
#include "commands/profileedit.h"

namespace ctl {

namespace {

bool isDisconnected(const OrvaNetworkInfo& info)
{
    return info.state() == OrvaNetworkState::Disconnected;
}

Result start(Context& context, const Arguments&)
{
    const auto profile = publishedProfile(context.host);
    if (!profile)
        return profile.error();
    return activateAndWait(context, OrvaNetworkStartPath(), {}, whenInfo(&isConnected),
                           [&](const OrvaNetworkInfo& info) { return noNetwork(info, *profile); });
}

Result restart(Context& context, const Arguments&)
{
    const auto profile = publishedProfile(context.host);
    if (!profile)
        return profile.error();
    const JoinWatch watch(context);
    return watch.explained(
        activateAndReturn(context, OrvaNetworkRestartPath(), &isConnected,
                          [&](const OrvaNetworkInfo& info) { return noNetwork(info, *profile); }));
}

Result stop(Context& context, const Arguments&)
{
    return activateAndWait(context, OrvaNetworkStopPath(), {}, whenInfo(&isDisconnected));
}

Result shutdown(Context& context, const Arguments&)
{
    return activateAndWait(context, OrvaNetworkShutdownPath(), {}, whenInfo(&isDisconnected));
}

} // namespace

Commands networkCommands()
{
    return {
        {"network", "Starts and stops networking"},
        {"network start", "Starts networking and waits until connected", {resultTime()}, &start},
        {"network stop", "Stops networking", {resultTime()}, &stop},
        {"network restart",
         "Stops and starts it, and waits until connected",
         {resultTime()},
         &restart},
        {"network shutdown",
         "Announces that the network goes down, and stops it later",
         {resultTime()},
         &shutdown},
    };
}

} // namespace ctl
