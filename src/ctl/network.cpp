#include "action.h"

namespace ctl {

namespace {

Result reach(Context& context, const CMPath& path, const Wait& wait, OrvaNetworkState state)
{
    return activateAndWait(context, path, {}, wait, whenInfo([state](const OrvaNetworkInfo& info) {
                               return info.state() == state;
                           }));
}

Result start(Context& context, const Wait& wait)
{
    return reach(context, OrvaNetworkStartPath(), wait, OrvaNetworkState::Connected);
}

Result stop(Context& context, const Wait& wait)
{
    return reach(context, OrvaNetworkStopPath(), wait, OrvaNetworkState::Disconnected);
}

Result restart(Context& context, const Wait& wait)
{
    return reach(context, OrvaNetworkRestartPath(), wait, OrvaNetworkState::Connected);
}

Result shutdown(Context& context, const Wait& wait)
{
    return reach(context, OrvaNetworkShutdownPath(), wait, OrvaNetworkState::Disconnected);
}

} // namespace

void addNetworkCommands(CommandLine& commands)
{
    CLI::App& network =
        CommandLine::group(commands.app(), "network", "Starts and stops networking");
    const std::string up = "Also wait until connected, at most SECONDS";
    const std::string down = "Also wait until disconnected, at most SECONDS";

    const auto starter = commands.add(network, "start", "Starts networking", &start);
    starter.options->addTo(*starter.app, up);
    const auto stopper = commands.add(network, "stop", "Stops networking", &stop);
    stopper.options->addTo(*stopper.app, down);
    const auto restarter = commands.add(network, "restart", "Stops and starts it", &restart);
    restarter.options->addTo(*restarter.app, up);
    const auto ender = commands.add(
        network, "shutdown", "Announces that the network goes down, and stops it later", &shutdown);
    ender.options->addTo(*ender.app, down);
}

} // namespace ctl
