// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "commands/joining.h"
#include "commands/profileedit.h"

namespace ctl {

namespace {

Result rssi(Context& context, const Arguments&)
{
    const auto level = activate(context, OrvaNetworkWirelessRssiPath(), {});
    if (!level)
        return level.error();
    context.out.line(QStringLiteral("%1 dBm").arg(level->double_()));
    return {};
}

Result reconnect(Context& context, const Arguments&)
{
    const auto profile = publishedProfile(context.host);
    if (!profile)
        return profile.error();
    const auto isUp = [](const OrvaNetworkInfo& info) {
        return info.wireless().state() == OrvaNetworkState::Connected;
    };
    const JoinWatch watch(context);
    return watch.explained(
        activateAndReturn(context, OrvaNetworkForceWifiReconnectPath(), isUp,
                          [&](const OrvaNetworkInfo& info) { return noWireless(info, *profile); }));
}

} // namespace

Commands wifiLinkCommands()
{
    return {
        {"wifi rssi", "Shows the signal level of the network in use", {}, &rssi},
        {"wifi reconnect", "Leaves the network and joins again", {resultTime()}, &reconnect},
    };
}

} // namespace ctl
