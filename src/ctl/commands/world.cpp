// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "context.h"
#include "output/valuetext.h"
#include "secret.h"
#include "worldinterface.h"

#include <limits>

namespace ctl {

namespace {

/// The world that the daemon plays; where it drives real interfaces these commands fail.
class World : public OrgOrvaLumodWorldInterface
{
public:
    explicit World(const Context& context)
        : OrgOrvaLumodWorldInterface(QStringLiteral("org.orva.lumod"),
                                     QStringLiteral("/org/orva/lumod"), context.bus.connection())
    {
        setTimeout(std::numeric_limits<int>::max());
    }
};

Result showWorld(Context& context, const Arguments&)
{
    const auto snapshot = context.bus.await<QString>(World(context).Snapshot());
    if (!snapshot)
        return snapshot.error();
    const auto state = parseObject(snapshot->toUtf8());
    if (!state)
        return Failure{ExitStatus::Other, state.error().text};
    context.out.document(*state);
    context.out.line(toIndentedJson(*state));
    return {};
}

/// The settings given for an access point, each option by the key of its setting.
Outcome<QVariantMap> settingsOf(const Arguments& given)
{
    QVariantMap settings;
    for (const char* key : {"bssid", "security", "network"}) {
        const QString value = given.text(std::string("--") + key);
        if (!value.isEmpty())
            settings.insert(QLatin1String(key), value);
    }
    for (const char* key : {"channel", "frequency", "signal"}) {
        if (const auto value = given.integer(std::string("--") + key))
            settings.insert(QLatin1String(key), *value);
    }
    for (const char* ability : {"wpa3", "wps", "hidden"})
        if (const auto has = given.truth(std::string("--") + ability))
            settings.insert(QLatin1String(ability), *has);
    if (given.text("--key-file").isEmpty())
        return settings;
    const auto key = readKey(given.text("--key-file"), {});
    if (!key)
        return key.error();
    settings.insert(QStringLiteral("key"), *key);
    return settings;
}

Result addPoint(Context& context, const Arguments& given)
{
    const auto described = settingsOf(given);
    if (!described)
        return described.error();
    QVariantMap settings = *described;
    settings.insert(QStringLiteral("ssid"), given.text("SSID"));
    const auto bssid = context.bus.await<QString>(World(context).AddAccessPoint(settings));
    if (!bssid)
        return bssid.error();
    context.out.document({{QStringLiteral("bssid"), *bssid}});
    context.out.line(printable(*bssid));
    return {};
}

Result changePoint(Context& context, const QString& point, const QVariantMap& settings)
{
    return context.bus.finish(World(context).ChangeAccessPoint(point, settings));
}

Result changePoint(Context& context, const Arguments& given)
{
    const auto settings = settingsOf(given);
    return settings ? changePoint(context, given.text("AP"), *settings) : settings.error();
}

Result setKey(Context& context, const Arguments& given)
{
    const auto key = readKey(given.text("--key-file"), QStringLiteral("New key: "));
    return key ? changePoint(context, given.text("AP"), {{QStringLiteral("key"), *key}})
               : key.error();
}

Result joinStation(Context& context, const Arguments& given)
{
    return context.bus.finish(
        World(context).JoinStation(given.text("--interface"), given.text("MAC")));
}

Result crash(Context& context, const Arguments&)
{
    const Result result = context.bus.finish(World(context).Crash());
    // The daemon is gone without an answer: that is what was asked for.
    return result.error().status == ExitStatus::NotRunning ? Result() : result;
}

const Parameter accessPoint =
    Parameter{"AP", "BSSID, or SSID for the strongest one with it"}.required();
const Parameter milliseconds =
    Parameter{"MILLISECONDS", "How long", Parameter::Kind::Natural}.required();
const Parameter pin = Parameter{"PIN", "The PIN that the device shows"}.required();
const Parameter reason = Parameter{"TEXT", "Why"}.required();
const Parameter station = Parameter{"MAC", "Hardware address of the station"}.required();
const Parameter step =
    Parameter{"STEP", "Which"}
        .oneOf({"scan", "associate", "dhcp", "leave", "softAp", "wps", "wpsWalk", "retry"})
        .required();
const Parameter fault =
    Parameter{"KIND", "In which way; none ends it"}
        .oneOf({"none", "wrong-types", "missing-keys", "oversized", "other-widths"})
        .required();

/// A command that calls one method with its arguments, in their order.
Command methodCommand(const char* words, const char* description, const char* method,
                      const std::vector<Parameter>& parameters)
{
    return {words, description, parameters,
            [method, parameters](Context& context, const Arguments& given) {
                QVariantList arguments;
                for (const Parameter& parameter : parameters) {
                    if (parameter.kind == Parameter::Kind::Natural)
                        arguments.append(given.natural(parameter.name).value_or(0));
                    else
                        arguments.append(given.text(parameter.name));
                }
                World world(context);
                return context.bus.finish(
                    world.asyncCallWithArgumentList(QLatin1String(method), arguments));
            }};
}

Parameter keyFile()
{
    return Parameter{"--key-file", "File with the key; - reads standard input"}.of("FILE");
}

/// The parameters of a command that describes the access point `point`.
std::vector<Parameter> describing(const Parameter& point)
{
    using Kind = Parameter::Kind;
    return {
        point,
        Parameter{"--bssid", "Hardware address"}.of("MAC"),
        {"--channel", "Channel", Kind::Integer},
        Parameter{"--frequency", "Frequency", Kind::Integer}.of("MHZ"),
        Parameter{"--signal", "Signal level", Kind::Integer}.of("DBM"),
        Parameter{"--security", "Security"}.oneOf({"open", "wpa-psk", "wep", "enterprise"}),
        keyFile(),
        {"--wpa3", "Whether it speaks WPA3 too", Kind::Truth},
        {"--wps", "Whether it speaks WPS", Kind::Truth},
        {"--hidden", "Whether scans do not see it", Kind::Truth},
        Parameter{"--network", "The network behind it, a name of the world file"}.of("NAME"),
    };
}

Commands pointCommands()
{
    const Parameter ssid = Parameter{"SSID", "Name of the network"}.required();
    return {
        {"world ap add", "Adds an access point and tells its BSSID", describing(ssid), &addPoint},
        {"world ap change", "Changes an access point", describing(accessPoint),
         qOverload<Context&, const Arguments&>(&changePoint)},
        {"world ap key",
         "Changes the key, asked for without echo",
         {accessPoint, keyFile()},
         &setKey},
        methodCommand("world ap remove", "Removes an access point", "RemoveAccessPoint",
                      {accessPoint}),
    };
}

} // namespace

Commands worldCommands()
{
    Commands commands = {
        {"world", "Changes the world that lumod plays instead of driving interfaces"},
        {"world show", "Shows the world", {}, &showWorld},
        {"world crash", "Ends the daemon at once", {}, &crash},
        {"world ap", "Access points"},
        {"world wps", "WPS on the side of the access points"},
        {"world station", "Stations of the soft access points"},
        {"world station join",
         "Joins a station",
         {station, Parameter{"--interface", "Soft-AP interface"}.of("NAME").usually("uap0")},
         &joinStation},
        methodCommand("world plug", "Puts the cable in", "Plug", {}),
        methodCommand("world unplug", "Pulls the cable", "Unplug", {}),
        methodCommand("world delay", "Sets how long a step takes", "SetDelay",
                      {step, milliseconds}),
        methodCommand("world hang", "Lets the daemon answer nothing for a while", "Hang",
                      {milliseconds}),
        methodCommand("world garbage", "Spoils what the daemon sends", "Garble", {fault}),
        methodCommand("world wps press", "Presses the WPS button", "PressWps", {accessPoint}),
        methodCommand("world wps pin", "Types the device's PIN", "EnterWpsPin", {accessPoint, pin}),
        methodCommand("world wps fail", "Fails the session that runs", "FailWps", {reason}),
        methodCommand("world station leave", "Takes a station away", "LeaveStation", {station}),
    };
    const Commands points = pointCommands();
    commands.insert(commands.end(), points.begin(), points.end());
    return commands;
}

} // namespace ctl
