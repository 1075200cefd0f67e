#include "commandline.h"
#include "secret.h"
#include "valuetext.h"
#include "worldinterface.h"

#include <limits>

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

QString text(const std::string& argument)
{
    return QString::fromStdString(argument);
}

Result show(Context& context, const NoOptions&)
{
    const auto snapshot = Bus::await<QString>(World(context).Snapshot());
    if (!snapshot)
        return snapshot.failure();
    const auto state = parseObject(snapshot->toUtf8());
    if (!state)
        return {ExitStatus::Other, state.failure().text};
    context.out.document(*state);
    context.out.line(toIndentedJson(*state));
    return {};
}

Result plug(Context& context, const NoOptions&)
{
    return Bus::finish(World(context).Plug());
}

Result unplug(Context& context, const NoOptions&)
{
    return Bus::finish(World(context).Unplug());
}

/// What can be said of an access point; what is not said is left to the world.
struct AccessPoint
{
    std::string name;
    std::optional<std::string> bssid;
    std::optional<int> channel;
    std::optional<int> frequency;
    std::optional<int> signal;
    std::optional<std::string> security;
    std::optional<bool> wps;
    std::optional<std::string> network;
    std::string keyFile;
};

void addAccessPointOptions(CLI::App& command, AccessPoint& point)
{
    command.add_option("--bssid", point.bssid, "Hardware address")->type_name("MAC");
    command.add_option("--channel", point.channel, "Channel");
    command.add_option("--frequency", point.frequency, "Frequency")->type_name("MHZ");
    command.add_option("--signal", point.signal, "Signal level")->type_name("DBM");
    setChoices(*command.add_option("--security", point.security, "Security"),
               {"open", "wpa-psk", "wep"});
    command.add_option("--key-file", point.keyFile, "File with the key; - reads standard input")
        ->type_name("FILE");
    command.add_option("--wps", point.wps, "Whether it speaks WPS")->type_name("{true,false}");
    command
        .add_option("--network", point.network, "The network behind it, a name of the world file")
        ->type_name("NAME");
}

template <typename T>
void put(QVariantMap& settings, const char* key, const std::optional<T>& value)
{
    if (!value)
        return;
    if constexpr (std::is_same_v<T, std::string>)
        settings.insert(QLatin1String(key), text(*value));
    else
        settings.insert(QLatin1String(key), *value);
}

Outcome<QVariantMap> settingsOf(const AccessPoint& point)
{
    QVariantMap settings;
    put(settings, "bssid", point.bssid);
    put(settings, "channel", point.channel);
    put(settings, "frequency", point.frequency);
    put(settings, "signal", point.signal);
    put(settings, "security", point.security);
    put(settings, "wps", point.wps);
    put(settings, "network", point.network);
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
    const auto bssid = Bus::await<QString>(World(context).AddAccessPoint(settings));
    if (!bssid)
        return bssid.failure();
    context.out.document({{QStringLiteral("bssid"), *bssid}});
    context.out.line(*bssid);
    return {};
}

Result changePoint(Context& context, const AccessPoint& point)
{
    const auto settings = settingsOf(point);
    return settings ? Bus::finish(World(context).ChangeAccessPoint(text(point.name), *settings))
                    : settings.failure();
}

struct SignalOptions
{
    std::string point;
    int signal = 0;
};

Result setSignal(Context& context, const SignalOptions& options)
{
    return Bus::finish(World(context).ChangeAccessPoint(
        text(options.point), {{QStringLiteral("signal"), options.signal}}));
}

struct KeyOptions
{
    std::string point;
    std::string file;
};

Result setKey(Context& context, const KeyOptions& options)
{
    const auto key = readKey(text(options.file), QStringLiteral("New key: "));
    return key ? Bus::finish(World(context).ChangeAccessPoint(text(options.point),
                                                              {{QStringLiteral("key"), *key}}))
               : key.failure();
}

struct NameOptions
{
    std::string name;
};

Result removePoint(Context& context, const NameOptions& options)
{
    return Bus::finish(World(context).RemoveAccessPoint(text(options.name)));
}

Result pressWps(Context& context, const NameOptions& options)
{
    return Bus::finish(World(context).PressWps(text(options.name)));
}

Result failWps(Context& context, const NameOptions& options)
{
    return Bus::finish(World(context).FailWps(text(options.name)));
}

struct PinOptions
{
    std::string point;
    std::string pin;
};

Result enterPin(Context& context, const PinOptions& options)
{
    return Bus::finish(World(context).EnterWpsPin(text(options.point), text(options.pin)));
}

struct StationOptions
{
    std::string mac;
    std::string interface = "uap0";
};

Result joinStation(Context& context, const StationOptions& options)
{
    return Bus::finish(World(context).JoinStation(text(options.interface), text(options.mac)));
}

Result leaveStation(Context& context, const StationOptions& options)
{
    return Bus::finish(World(context).LeaveStation(text(options.mac)));
}

struct DelayOptions
{
    std::string step;
    unsigned milliseconds = 0;
};

Result setDelay(Context& context, const DelayOptions& options)
{
    return Bus::finish(World(context).SetDelay(text(options.step), options.milliseconds));
}

Result crash(Context& context, const NoOptions&)
{
    const Result result = Bus::finish(World(context).Crash());
    // The daemon is gone without an answer: that is what was asked for.
    return result.status == ExitStatus::NotRunning ? Result() : result;
}

Result hang(Context& context, const DelayOptions& options)
{
    return Bus::finish(World(context).Hang(options.milliseconds));
}

Result garble(Context& context, const NameOptions& options)
{
    return Bus::finish(World(context).Garble(text(options.name)));
}

void addPointCommands(CommandLine& commands, CLI::App& world)
{
    CLI::App& ap = CommandLine::group(world, "ap", "Access points of the world");
    const char naming[] = "BSSID, or SSID for the strongest one with it";

    const auto add = commands.add(ap, "add", "Adds an access point and tells its BSSID", &addPoint);
    add.app->add_option("SSID", add.options->name, "Name of the network")->required();
    addAccessPointOptions(*add.app, *add.options);

    const auto change = commands.add(ap, "change", "Changes an access point", &changePoint);
    change.app->add_option("AP", change.options->name, naming)->required();
    addAccessPointOptions(*change.app, *change.options);

    const auto signal = commands.add(ap, "signal", "Changes the signal level", &setSignal);
    signal.app->add_option("AP", signal.options->point, naming)->required();
    signal.app->add_option("DBM", signal.options->signal, "Signal level")->required();

    const auto key = commands.add(ap, "key", "Changes the key, asked for without echo", &setKey);
    key.app->add_option("AP", key.options->point, naming)->required();
    key.app
        ->add_option("--key-file", key.options->file, "File with the key; - reads standard input")
        ->type_name("FILE");

    const auto remove = commands.add(ap, "remove", "Removes an access point", &removePoint);
    remove.app->add_option("AP", remove.options->name, naming)->required();
}

void addWorldWpsCommands(CommandLine& commands, CLI::App& world)
{
    CLI::App& wps = CommandLine::group(world, "wps", "WPS on the side of the access points");
    const char naming[] = "BSSID or SSID";

    const auto press = commands.add(wps, "press", "Presses the WPS button", &pressWps);
    press.app->add_option("AP", press.options->name, naming)->required();

    const auto pin = commands.add(wps, "pin", "Types the device's PIN", &enterPin);
    pin.app->add_option("AP", pin.options->point, naming)->required();
    pin.app->add_option("PIN", pin.options->pin, "The PIN that the device shows")->required();

    const auto fail = commands.add(wps, "fail", "Fails the session that runs", &failWps);
    fail.app->add_option("TEXT", fail.options->name, "Why")->required();
}

void addStationCommands(CommandLine& commands, CLI::App& world)
{
    CLI::App& station = CommandLine::group(world, "station", "Stations of the soft access points");

    const auto join = commands.add(station, "join", "Joins a station", &joinStation);
    join.app->add_option("MAC", join.options->mac, "Hardware address of the station")->required();
    join.app->add_option("--interface", join.options->interface, "Soft-AP interface")
        ->type_name("NAME")
        ->capture_default_str();

    const auto leave = commands.add(station, "leave", "Takes a station away", &leaveStation);
    leave.app->add_option("MAC", leave.options->mac, "Hardware address of the station")->required();
}

void addFaultCommands(CommandLine& commands, CLI::App& world)
{
    const auto delay = commands.add(world, "delay", "Sets how long a step takes", &setDelay);
    setChoices(*delay.app->add_option("STEP", delay.options->step, "The step")->required(),
               {"scan", "associate", "dhcp", "leave", "softAp", "wps", "wpsWalk", "retry"});
    delay.app->add_option("MILLISECONDS", delay.options->milliseconds, "How long")->required();

    commands.add(world, "crash", "Ends the daemon at once", &crash);

    const auto stall =
        commands.add(world, "hang", "Lets the daemon answer nothing for a while", &hang);
    stall.app->add_option("MILLISECONDS", stall.options->milliseconds, "How long")->required();

    const auto garbage = commands.add(world, "garbage", "Spoils what the daemon sends", &garble);
    setChoices(
        *garbage.app->add_option("KIND", garbage.options->name, "How; none ends it")->required(),
        {"none", "wrong-types", "missing-keys", "oversized"});
}

} // namespace

void addWorldCommands(CommandLine& commands)
{
    CLI::App& world = CommandLine::group(commands.app(), "world",
                                         "Changes the world that the stand-in daemon plays");
    commands.add(world, "show", "Shows the world", &show);
    commands.add(world, "plug", "Puts the cable in", &plug);
    commands.add(world, "unplug", "Pulls the cable", &unplug);
    addPointCommands(commands, world);
    addWorldWpsCommands(commands, world);
    addStationCommands(commands, world);
    addFaultCommands(commands, world);
}

} // namespace ctl
