#include "action.h"

namespace ctl {

namespace {

using Criteria = OrvaNetworkWifiRestartCriteria;

/// The shortest sampling interval at which the watchdog runs.
constexpr int shortestIntervalMs = 10000;

struct SetOptions
{
    std::optional<double> interval;
    std::optional<int> threshold;
    std::string path;
};

Outcome<Criteria> criteria(Host& host)
{
    const auto value = host.value(OrvaNetworkWifiRestartCriteriaPath());
    return value ? Outcome<Criteria>(value->wifiRestartCriteria()) : value.failure();
}

QString description(const Criteria& criteria)
{
    if (criteria.checkIntervalMs() < shortestIntervalMs)
        return QStringLiteral("off");
    if (criteria.restartActivatePath().isEmpty())
        return QStringLiteral("off: no node to restart Wi-Fi with");
    if (!criteria.__contains(Criteria::MaxTxIncreaseNoRxIncreaseThreshold()))
        return QStringLiteral("off: no threshold");
    return QStringLiteral("on: looks every %1 s, restarts through %2 after %3 stuck samples")
        .arg(criteria.checkIntervalMs() / 1000.0)
        .arg(printable(criteria.restartActivatePath().toString()))
        .arg(criteria.maxTxIncreaseNoRxIncreaseThreshold());
}

Result status(Context& context, const NoOptions&)
{
    const auto value = context.host.value(OrvaNetworkWifiRestartCriteriaPath());
    if (!value)
        return value.failure();
    context.out.document(value->__hash());
    context.out.line(QStringLiteral("Watchdog  %1").arg(description(value->wifiRestartCriteria())));
    // Only a host that counts the restarts has this node.
    const auto count = context.host.value(CMPath(QStringLiteral("wifi-restart/count")));
    if (count)
        context.out.line(QStringLiteral("Restarts  %1").arg(count->i32_()));
    return {};
}

Result restart(Context& context, const NoOptions&)
{
    return activate(context, OrvaNetworkRequestWifiRestartPath(), {}).result();
}

Result write(Context& context, const Criteria& criteria)
{
    return context.host.setValue(OrvaNetworkWifiRestartCriteriaPath(),
                                 valueOf(OrvaValue::WifiRestartCriteria(), criteria.__variant()));
}

Result set(Context& context, const SetOptions& options)
{
    if (!options.interval && !options.threshold && options.path.empty())
        return {ExitStatus::Usage, QStringLiteral("Nothing to change: see --help.")};
    const auto present = criteria(context.host);
    if (!present)
        return present.failure();
    Criteria changed = *present;
    if (options.interval)
        changed.setCheckIntervalMs(qRound(qMin(*options.interval, 1e6) * 1000));
    if (options.threshold)
        changed.setMaxTxIncreaseNoRxIncreaseThreshold(*options.threshold);
    if (!options.path.empty())
        changed.setRestartActivatePath(CMPath(text(options.path)));
    return write(context, changed);
}

Result off(Context& context, const NoOptions&)
{
    const auto present = criteria(context.host);
    if (!present)
        return present.failure();
    Criteria changed = *present;
    changed.setCheckIntervalMs(0);
    return write(context, changed);
}

} // namespace

void addWatchdogCommands(CommandLine& commands)
{
    CLI::App& watchdog = CommandLine::group(commands.app(), "watchdog",
                                            "The watchdog that restarts a stuck Wi-Fi link");
    commands.add(watchdog, "status", "Shows the criteria", &status);

    const auto setter = commands.add(watchdog, "set", "Changes the criteria that are named", &set);
    setSeconds(*setter.app->add_option("--interval", setter.options->interval,
                                       "Time between two samples; below 10 it is off"));
    setter.app->add_option("--threshold", setter.options->threshold,
                           "Stuck samples in a row that lead to a restart");
    setter.app->add_option("--path", setter.options->path, "The node that restarts Wi-Fi")
        ->type_name("ACTION-NODE");

    commands.add(watchdog, "off", "Switches it off and keeps the other criteria", &off);
    const auto restarter = commands.add(watchdog, "restart", "Restarts Wi-Fi now", &restart);
    commands.addTime(*restarter.app, "--wait", "Wait at most SECONDS for the answer");
}

} // namespace ctl
