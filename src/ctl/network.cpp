// SPDX-License-Identifier: Apache-2.0
#include "action.h"
#include "families.h"

namespace ctl {

namespace {

/// A switch of networking as a whole, and the state that it leads to.
Command switchCommand(const char* name, const char* description, const CMPath& path,
                      OrvaNetworkState state)
{
    const bool up = state == OrvaNetworkState::Connected;
    const auto reached = [state](const OrvaNetworkInfo& info) { return info.state() == state; };
    return {std::string("network ") + name,
            description,
            {{"--wait",
              up ? "Also wait until connected, at most SECONDS"
                 : "Also wait until disconnected, at most SECONDS",
              Parameter::Kind::Time}},
            [path, reached](Context& context, const Arguments&) {
                return activateAndWait(context, path, {}, whenInfo(reached));
            }};
}

} // namespace

Commands networkCommands()
{
    using State = OrvaNetworkState;
    return {
        {"network", "Starts and stops networking"},
        switchCommand("start", "Starts networking", OrvaNetworkStartPath(), State::Connected),
        switchCommand("stop", "Stops networking", OrvaNetworkStopPath(), State::Disconnected),
        switchCommand("restart", "Stops and starts it", OrvaNetworkRestartPath(), State::Connected),
        switchCommand("shutdown", "Announces that the network goes down, and stops it later",
                      OrvaNetworkShutdownPath(), State::Disconnected),
    };
}

} // namespace ctl
