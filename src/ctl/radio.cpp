#include "action.h"

namespace ctl {

namespace {

struct AirplaneOptions
{
    std::string state;
};

struct WakeOptions
{
    std::string state;
};

Result showAirplane(Context& context)
{
    const auto value = context.host.value(OrvaNetworkAirplaneModePath());
    if (!value)
        return value.failure();
    context.out.document(value->__hash());
    context.out.line(value->bool_() ? QStringLiteral("on") : QStringLiteral("off"));
    return {};
}

Result airplane(Context& context, const AirplaneOptions& options)
{
    if (options.state.empty())
        return showAirplane(context);
    const bool on = options.state == "on";
    Result set =
        context.host.setValue(OrvaNetworkAirplaneModePath(), valueOf(OrvaValue::Bool(), on));
    if (!set.ok())
        return set;
    return waitForInfo(
        context, whenInfo([on](const OrvaNetworkInfo& info) { return info.airplaneMode() == on; }));
}

Result wakeOnLan(Context& context, const WakeOptions& options)
{
    const OrvaValue value = valueOf(OrvaValue::Bool(), options.state == "on");
    return activate(context, OrvaNetworkWakeOnLanSetEnabledPath(), value).result();
}

} // namespace

void addRadioCommands(CommandLine& commands)
{
    const auto switcher =
        commands.add(commands.app(), "airplane", "Switches airplane mode, or shows it", &airplane);
    setChoices(*switcher.app->add_option("STATE", switcher.options->state, "on or off"),
               {"on", "off"});
    commands.addTime(*switcher.app, "--wait", "Also wait until it is in force, at most SECONDS");

    const auto waker = commands.add(commands.app(), "wol", "Switches wake-on-LAN", &wakeOnLan);
    setChoices(*waker.app->add_option("STATE", waker.options->state, "on or off")->required(),
               {"on", "off"});
}

} // namespace ctl
