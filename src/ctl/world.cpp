#include "commandline.h"
#include "secret.h"
#include "valuetext.h"
#include "worldinterface.h"

#include <deque>
#include <limits>
#include <map>

namespace ctl {

namespace {

/// The stand-in daemon's world. Only the stand-in has it: on a device these commands fail.
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

Result show(Context& context, const NoOptions&)
{
    const auto snapshot = context.bus.await<QString>(World(context).Snapshot());
    if (!snapshot)
        return snapshot.failure();
    const auto state = parseObject(snapshot->toUtf8());
    if (!state)
        return {ExitStatus::Other, state.failure().text};
    context.out.document(*state);
    context.out.line(toIndentedJson(*state));
    return {};
}

/// What is said of an access point, by the key of its setting.
struct AccessPoint
{
    std::string name;
    std::map<std::string, std::optional<std::string>> texts;
    std::map<std::string, std::optional<int>> numbers;
    std::optional<bool> wps;
    std::string keyFile;
};

void addKeyFile(CLI::App& command, AccessPoint& point)
{
    command.add_option("--key-file", point.keyFile, "File with the key; - reads standard input")
        ->type_name("FILE");
}

void addAccessPointOptions(CLI::App& command, AccessPoint& point)
{
    command.add_option("--bssid", point.texts["bssid"], "Hardware address")->type_name("MAC");
    command.add_option("--channel", point.numbers["channel"], "Channel");
    command.add_option("--frequency", point.numbers["frequency"], "Frequency")->type_name("MHZ");
    command.add_option("--signal", point.numbers["signal"], "Signal level")->type_name("DBM");
    setChoices(*command.add_option("--security", point.texts["security"], "Security"),
               {"open", "wpa-psk", "wep"});
    addKeyFile(command, point);
    command.add_option("--wps", point.wps, "Whether it speaks WPS")->type_name("{true,false}");
    command
        .add_option("--network", point.texts["network"],
                    "The network behind it, a name of the world file")
        ->type_name("NAME");
}

Outcome<QVariantMap> settingsOf(const AccessPoint& point)
{
    QVariantMap settings;
    for (const auto& [key, value] : point.texts) {
        if (value)
            settings.insert(text(key), text(*value));
    }
    for (const auto& [key, value] : point.numbers) {
        if (value)
            settings.insert(text(key), *value);
    }
    if (point.wps)
        settings.insert(QStringLiteral("wps"), *point.wps);
    if (point.keyFile.empty())
        return settings;
    const auto key = readKey(text(point.keyFile), {});
    if (!key)
        return key.failure();
    settings.insert(QStringLiteral("key"), *key);
    return settings;
}

Result addPoint(Context& context, const AccessPoint& point)
{
    const auto given = settingsOf(point);
    if (!given)
        return given.failure();
    QVariantMap settings = *given;
    settings.insert(QStringLiteral("ssid"), text(point.name));
    const auto bssid = context.bus.await<QString>(World(context).AddAccessPoint(settings));
    if (!bssid)
        return bssid.failure();
    context.out.document({{QStringLiteral("bssid"), *bssid}});
    context.out.line(printable(*bssid));
    return {};
}

Result changePoint(Context& context, const AccessPoint& point)
{
    const auto settings = settingsOf(point);
    return settings
               ? context.bus.finish(World(context).ChangeAccessPoint(text(point.name), *settings))
               : settings.failure();
}

Result setKey(Context& context, const AccessPoint& point)
{
    const auto key = readKey(text(point.keyFile), QStringLiteral("New key: "));
    return key ? context.bus.finish(World(context).ChangeAccessPoint(
                     text(point.name), {{QStringLiteral("key"), *key}}))
               : key.failure();
}

struct JoinOptions
{
    std::string mac;
    std::string interface = "uap0";
};

Result joinStation(Context& context, const JoinOptions& options)
{
    return context.bus.finish(
        World(context).JoinStation(text(options.interface), text(options.mac)));
}

Result crash(Context& context, const NoOptions&)
{
    const Result result = context.bus.finish(World(context).Crash());
    // The daemon is gone without an answer: that is what was asked for.
    return result.status == ExitStatus::NotRunning ? Result() : result;
}

/// An argument that a method takes as it is given.
struct Argument
{
    const char* name;
    const char* description;
    std::vector<std::string> choices;
    bool isNumber = false;
};

const Argument accessPoint = {"AP", "BSSID, or SSID for the strongest one with it", {}};
const Argument milliseconds = {"MILLISECONDS", "How long", {}, true};
const Argument pin = {"PIN", "The PIN that the device shows", {}};
const Argument reason = {"TEXT", "Why", {}};
const Argument station = {"MAC", "Hardware address of the station", {}};
const Argument step = {"STEP",
                       "The step",
                       {"scan", "associate", "dhcp", "leave", "softAp", "wps", "wpsWalk", "retry"}};
const Argument fault = {
    "KIND", "How; none ends it", {"none", "wrong-types", "missing-keys", "oversized"}};

template <typename T>
void addArgument(CLI::App& command, const Argument& argument, T& value)
{
    CLI::Option* option = command.add_option(argument.name, value, argument.description);
    option->required();
    if (!argument.choices.empty())
        setChoices(*option, argument.choices);
}

/// A command that calls one method with its arguments, in their order.
struct MethodRow
{
    const char* group;
    const char* name;
    const char* description;
    const char* method;
    std::vector<Argument> arguments;
};

const MethodRow methodRows[] = {
    {"", "plug", "Puts the cable in", "Plug", {}},
    {"", "unplug", "Pulls the cable", "Unplug", {}},
    {"", "delay", "Sets how long a step takes", "SetDelay", {step, milliseconds}},
    {"", "hang", "Lets the daemon answer nothing for a while", "Hang", {milliseconds}},
    {"", "garbage", "Spoils what the daemon sends", "Garble", {fault}},
    {"ap", "remove", "Removes an access point", "RemoveAccessPoint", {accessPoint}},
    {"wps", "press", "Presses the WPS button", "PressWps", {accessPoint}},
    {"wps", "pin", "Types the device's PIN", "EnterWpsPin", {accessPoint, pin}},
    {"wps", "fail", "Fails the session that runs", "FailWps", {reason}},
    {"station", "leave", "Takes a station away", "LeaveStation", {station}},
};

struct MethodOptions
{
    const char* method = nullptr;
    std::deque<std::string> texts;
    std::deque<unsigned> numbers;
};

/// No method takes a text after a number.
Result callMethod(Context& context, const MethodOptions& options)
{
    QVariantList arguments;
    for (const std::string& argument : options.texts)
        arguments.append(text(argument));
    for (const unsigned argument : options.numbers)
        arguments.append(argument);
    World world(context);
    return context.bus.finish(
        world.asyncCallWithArgumentList(QLatin1String(options.method), arguments));
}

void addMethod(CommandLine& commands, CLI::App& parent, const MethodRow& row)
{
    const auto added = commands.add(parent, row.name, row.description, &callMethod);
    MethodOptions& options = *added.options;
    options.method = row.method;
    for (const Argument& argument : row.arguments) {
        if (argument.isNumber)
            addArgument(*added.app, argument, options.numbers.emplace_back());
        else
            addArgument(*added.app, argument, options.texts.emplace_back());
    }
}

void addPointCommands(CommandLine& commands, CLI::App& group)
{
    const auto add =
        commands.add(group, "add", "Adds an access point and tells its BSSID", &addPoint);
    add.app->add_option("SSID", add.options->name, "Name of the network")->required();
    addAccessPointOptions(*add.app, *add.options);

    const auto change = commands.add(group, "change", "Changes an access point", &changePoint);
    addArgument(*change.app, accessPoint, change.options->name);
    addAccessPointOptions(*change.app, *change.options);

    const auto key = commands.add(group, "key", "Changes the key, asked for without echo", &setKey);
    addArgument(*key.app, accessPoint, key.options->name);
    addKeyFile(*key.app, *key.options);
}

void addJoinCommand(CommandLine& commands, CLI::App& group)
{
    const auto join = commands.add(group, "join", "Joins a station", &joinStation);
    addArgument(*join.app, station, join.options->mac);
    join.app->add_option("--interface", join.options->interface, "Soft-AP interface")
        ->type_name("NAME")
        ->capture_default_str();
}

} // namespace

void addWorldCommands(CommandLine& commands)
{
    CLI::App& world = CommandLine::group(commands.app(), "world",
                                         "Changes the world that the stand-in daemon plays");
    commands.add(world, "show", "Shows the world", &show);
    commands.add(world, "crash", "Ends the daemon at once", &crash);
    std::map<std::string, CLI::App*> groups = {
        {"", &world},
        {"ap", &CommandLine::group(world, "ap", "Access points")},
        {"wps", &CommandLine::group(world, "wps", "WPS on the side of the access points")},
        {"station", &CommandLine::group(world, "station", "Stations of the soft access points")},
    };
    addPointCommands(commands, *groups["ap"]);
    addJoinCommand(commands, *groups["station"]);
    for (const MethodRow& row : methodRows)
        addMethod(commands, *groups[row.group], row);
}

} // namespace ctl
