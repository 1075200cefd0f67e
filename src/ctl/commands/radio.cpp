// SPDX-License-Identifier: Apache-2.0
#include "commands/action.h"
#include "commands/families.h"

namespace ctl {

namespace {

bool isOn(const Arguments& given)
{
    return given.text("STATE") == QLatin1String("on");
}

Result showAirplane(Context& context)
{
    const auto value = context.host.value(OrvaNetworkAirplaneModePath());
    if (!value)
        return value.error();
    context.out.document(value->__hash());
    context.out.line(value->bool_() ? QStringLiteral("on") : QStringLiteral("off"));
    return {};
}

Result airplane(Context& context, const Arguments& given)
{
    if (given.text("STATE").isEmpty())
        return showAirplane(context);
    const bool on = isOn(given);
    Result set = context.host.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(on));
    if (!set)
        return set;
    return waitForInfo(
        context, whenInfo([on](const OrvaNetworkInfo& info) { return info.airplaneMode() == on; }));
}

Result wakeOnLan(Context& context, const Arguments& given)
{
    const OrvaValue value = OrvaValue::of(isOn(given));
    return activate(context, OrvaNetworkWakeOnLanSetEnabledPath(), value);
}

} // namespace

Commands radioCommands()
{
    const Parameter state = Parameter{"STATE", "What it is to be"}.oneOf({"on", "off"});
    return {
        {"airplane",
         "Switches airplane mode; shows it where STATE is not given",
         {state, resultTime()},
         &airplane},
        {"wol", "Switches wake-on-LAN", {state.required()}, &wakeOnLan},
    };
}

} // namespace ctl
