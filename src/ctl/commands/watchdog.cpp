// SPDX-License-Identifier: Apache-2.0
#include "commands/action.h"
#include "commands/families.h"

namespace ctl {

namespace {

using Criteria = OrvaNetworkWifiRestartCriteria;

/// The shortest sampling interval at which the watchdog runs.
constexpr int shortestIntervalMs = 10000;

Outcome<Criteria> criteria(Host& host)
{
    const auto value = host.value(OrvaNetworkWifiRestartCriteriaPath());
    return value ? Outcome<Criteria>(value->wifiRestartCriteria()) : value.error();
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

Result showCriteria(Context& context, const Arguments&)
{
    const auto value = context.host.value(OrvaNetworkWifiRestartCriteriaPath());
    if (!value)
        return value.error();
    context.out.document(value->__hash());
    context.out.line(QStringLiteral("Watchdog  %1").arg(description(value->wifiRestartCriteria())));
    // Only a host that counts the restarts has this node.
    const auto count = context.host.value(CMPath(QStringLiteral("wifi-restart/count")));
    if (count)
        context.out.line(QStringLiteral("Restarts  %1").arg(count->i32_()));
    return {};
}

Result restart(Context& context, const Arguments&)
{
    return activate(context, OrvaNetworkRequestWifiRestartPath(), {});
}

Result write(Context& context, const Criteria& criteria)
{
    return context.host.setValue(OrvaNetworkWifiRestartCriteriaPath(), OrvaValue::of(criteria));
}

Result setCriteria(Context& context, const Arguments& given)
{
    const auto interval = given.seconds("--interval");
    const auto threshold = given.integer("--threshold");
    const QString path = given.text("--path");
    if (!interval && !threshold && path.isEmpty())
        return Failure{ExitStatus::Usage, QStringLiteral("Nothing to change: see --help.")};
    const auto present = criteria(context.host);
    if (!present)
        return present.error();
    Criteria changed = *present;
    if (interval)
        changed.setCheckIntervalMs(qRound(qMin(*interval, 1e6) * 1000));
    if (threshold)
        changed.setMaxTxIncreaseNoRxIncreaseThreshold(*threshold);
    if (!path.isEmpty())
        changed.setRestartActivatePath(CMPath(path));
    return write(context, changed);
}

Result off(Context& context, const Arguments&)
{
    const auto present = criteria(context.host);
    if (!present)
        return present.error();
    Criteria changed = *present;
    changed.setCheckIntervalMs(0);
    return write(context, changed);
}

} // namespace

Commands watchdogCommands()
{
    using Kind = Parameter::Kind;
    return {
        {"watchdog", "The watchdog that restarts a stuck Wi-Fi link"},
        {"watchdog status", "Shows the criteria", {}, &showCriteria},
        {"watchdog set",
         "Changes the criteria that are named",
         {{"--interval", "Time between two samples; below 10 it is off", Kind::Seconds},
          {"--threshold", "Stuck samples in a row that lead to a restart", Kind::Integer},
          Parameter{"--path", "The node that restarts Wi-Fi"}.of("ACTION")},
         &setCriteria},
        {"watchdog off", "Switches it off and keeps the other criteria", {}, &off},
        {"watchdog restart", "Restarts Wi-Fi now", {answerTime()}, &restart},
    };
}

} // namespace ctl
