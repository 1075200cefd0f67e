#include "names.h"
#include "profileedit.h"
#include "secret.h"
#include "valuetext.h"

namespace ctl {

namespace {

struct ConnectOptions
{
    std::string ssid;
    std::string keyFile;
    bool askKey = false;
    bool open = false;
};

struct SsidOptions
{
    std::string ssid;
};

std::optional<OrvaNetworkInterface> knownNetwork(const OrvaNetworkProfile& profile,
                                                 const QString& ssid)
{
    for (const OrvaNetworkInterface& network : profile.wirelessNetworks()) {
        if (network.ssid() == ssid)
            return network;
    }
    const OrvaNetworkInterface inUse = profile.wireless();
    return inUse.ssid() == ssid ? std::optional(inUse) : std::nullopt;
}

/// The security of the network as the last scan saw it.
std::optional<OrvaNetworkProfileWirelessEncryption> seenEncryption(Host& host, const QString& ssid)
{
    const auto rows = host.rows(OrvaNetworkScanResultsPath());
    if (!rows)
        return std::nullopt;
    for (const OrvaRoles& row : *rows) {
        const OrvaNetworkScanResult result = row.value().networkScanResult();
        if (result.ssid() == ssid)
            return result.encryption();
    }
    return std::nullopt;
}

/// The network with its key: a known one keeps its key unless another is given, and one that the
/// scan or the person calls open needs none.
Outcome<OrvaNetworkInterface> networkToJoin(Context& context, const OrvaNetworkProfile& profile,
                                            const ConnectOptions& options)
{
    using Encryption = OrvaNetworkProfileWirelessEncryption;
    const QString ssid = text(options.ssid);
    const auto known = knownNetwork(profile, ssid);
    const bool keyIsGiven = !options.keyFile.empty() || options.askKey;
    if (known && !keyIsGiven && !options.open)
        return *known;

    OrvaNetworkInterface network = known.value_or(OrvaNetworkInterface());
    if (!known) {
        network.setSsid(ssid);
        network.setDhcp(true);
    }
    const auto seen = seenEncryption(context.host, ssid);
    const bool seenOpen = seen && *seen == Encryption::None;
    if (options.open || (seenOpen && !keyIsGiven)) {
        network.setKey({});
        network.setEncryption(Encryption::None);
        return network;
    }
    const auto key =
        readKey(text(options.keyFile), QStringLiteral("Key of \"%1\": ").arg(printable(ssid)));
    if (!key)
        return key.failure();
    network.setKey(*key);
    network.setEncryption(seen && !seenOpen ? *seen : Encryption(Encryption::WpaPsk));
    return network;
}

std::optional<Result> judgeJoining(const OrvaNetworkInfo& info, const QString& ssid)
{
    const OrvaNetworkWirelessInterface wireless = info.wireless();
    if (wireless.state() == OrvaNetworkState::Connected && wireless.ssid() == ssid)
        return Result();
    for (const OrvaNetworkWirelessInterface& network : info.wirelessNetworks()) {
        if (network.ssid() == ssid && network.credentialsSuspect())
            return Result{ExitStatus::Failed, QStringLiteral("The network refused the key.")};
    }
    return std::nullopt;
}

Result connectTo(Context& context, const ConnectOptions& options)
{
    const QString ssid = text(options.ssid);
    if (ssid.isEmpty())
        return {ExitStatus::Usage, QStringLiteral("A network has a name.")};
    const auto published = publishedProfile(context.host);
    if (!published)
        return published.failure();
    const auto network = networkToJoin(context, *published, options);
    if (!network)
        return network.failure();
    OrvaNetworkProfile profile = *published;
    profile.setWireless(*network);
    if (profile.type() == OrvaNetworkProfileType::Wired)
        context.out.note(QStringLiteral("The profile is for the wired interface alone; \"orvactl "
                                        "profile set --type auto\" lets the network be joined."));
    return setProfile(context, profile,
                      [ssid](const OrvaNetworkInfo& info) { return judgeJoining(info, ssid); });
}

Result forget(Context& context, const SsidOptions& options)
{
    const OrvaValue ssid = valueOf(OrvaValue::String(), text(options.ssid));
    return activate(context, OrvaNetworkRemoveWirelessNetworkPath(), ssid).result();
}

QString remarkOn(const OrvaNetworkInfo& info, const QString& ssid)
{
    if (info.wireless().state() == OrvaNetworkState::Connected && info.wireless().ssid() == ssid)
        return Output::styled(QStringLiteral("connected"), Output::Style::Good);
    for (const OrvaNetworkWirelessInterface& network : info.wirelessNetworks()) {
        if (network.ssid() == ssid && network.credentialsSuspect())
            return Output::styled(QStringLiteral("key refused"), Output::Style::Bad);
    }
    return {};
}

Result known(Context& context, const NoOptions&)
{
    const auto profile = publishedProfile(context.host);
    if (!profile)
        return profile.failure();
    const auto info = context.host.value(OrvaNetworkInfoPath());
    if (!info)
        return info.failure();
    QVector<QStringList> table = {{QStringLiteral("SSID"), QStringLiteral("SECURITY"), QString()}};
    for (const OrvaNetworkInterface& network : profile->wirelessNetworks()) {
        context.out.document({{OrvaValue::NetworkInterface(), network.__variant()}});
        table.append({printable(network.ssid()), securityName(network.encryption()),
                      remarkOn(info->networkInfo(), network.ssid())});
    }
    context.out.table(table);
    return {};
}

Result rssi(Context& context, const NoOptions&)
{
    const auto level = activate(context, OrvaNetworkWirelessRssiPath(), {});
    if (!level)
        return level.failure();
    context.out.line(QStringLiteral("%1 dBm").arg(level->double_()));
    return {};
}

Result reconnect(Context& context, const NoOptions&)
{
    return activateAndWait(context, OrvaNetworkForceWifiReconnectPath(), {},
                           whenInfo([](const OrvaNetworkInfo& info) {
                               return info.wireless().state() == OrvaNetworkState::Connected;
                           }));
}

void addConnectCommand(CommandLine& commands, CLI::App& wifi)
{
    const auto joiner = commands.add(
        wifi, "connect", "Joins a network; asks for the key of an unknown one", &connectTo);
    joiner.app->add_option("SSID", joiner.options->ssid, "Name of the network")->required();
    CLI::Option* keyFile = joiner.app->add_option("--key-file", joiner.options->keyFile,
                                                  "File with the key; - reads standard input");
    keyFile->type_name("FILE");
    CLI::Option* askKey = joiner.app->add_flag("--ask-key", joiner.options->askKey,
                                               "Ask for the key also where the network is known");
    joiner.app
        ->add_flag("--open", joiner.options->open, "Join it without a key, as an open network")
        ->excludes(keyFile)
        ->excludes(askKey);
    commands.addTime(*joiner.app, "--wait", "Also wait until it is joined, at most SECONDS");
}

} // namespace

void addWifiCommands(CommandLine& commands)
{
    CLI::App& wifi = CommandLine::group(commands.app(), "wifi", "Wireless networks");
    addConnectCommand(commands, wifi);
    const auto forgetter = commands.add(wifi, "forget", "Forgets a known network", &forget);
    forgetter.app->add_option("SSID", forgetter.options->ssid, "Name of the network")->required();
    commands.add(wifi, "known", "Lists the known networks, most preferred first", &known);
    addScanCommands(commands, wifi);
    addWpsCommands(commands, wifi);
    commands.add(wifi, "rssi", "Shows the signal level of the network in use", &rssi);
    const auto again =
        commands.add(wifi, "reconnect", "Leaves the network and joins again", &reconnect);
    commands.addTime(*again.app, "--wait", "Also wait until connected, at most SECONDS");
}

} // namespace ctl
