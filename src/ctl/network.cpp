#include "action.h"

namespace ctl {

namespace {

/// A switch of networking as a whole, and the state that it leads to.
struct SwitchRow
{
    const char* name;
    const char* description;
    CMPath path;
    OrvaNetworkState state;
};

struct SwitchOptions
{
    CMPath path;
    OrvaNetworkState state;
};

Result flip(Context& context, const SwitchOptions& options)
{
    const auto reached = [&options](const OrvaNetworkInfo& info) {
        return info.state() == options.state;
    };
    return activateAndWait(context, options.path, {}, whenInfo(reached));
}

} // namespace

void addNetworkCommands(CommandLine& commands)
{
    const SwitchRow rows[] = {
        {"start", "Starts networking", OrvaNetworkStartPath(), OrvaNetworkState::Connected},
        {"stop", "Stops networking", OrvaNetworkStopPath(), OrvaNetworkState::Disconnected},
        {"restart", "Stops and starts it", OrvaNetworkRestartPath(), OrvaNetworkState::Connected},
        {"shutdown", "Announces that the network goes down, and stops it later",
         OrvaNetworkShutdownPath(), OrvaNetworkState::Disconnected},
    };
    CLI::App& network =
        CommandLine::group(commands.app(), "network", "Starts and stops networking");
    for (const SwitchRow& row : rows) {
        const auto added = commands.add(network, row.name, row.description, &flip);
        added.options->path = row.path;
        added.options->state = row.state;
        const bool up = row.state == OrvaNetworkState::Connected;
        commands.addTime(*added.app, "--wait",
                         up ? "Also wait until connected, at most SECONDS"
                            : "Also wait until disconnected, at most SECONDS");
    }
}

} // namespace ctl
