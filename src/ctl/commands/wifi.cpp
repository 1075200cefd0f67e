// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "commands/joining.h"
#include "commands/profileedit.h"
#include "interrupt.h"
#include "output/names.h"
#include "output/valuetext.h"
#include "secret.h"

namespace ctl {

namespace {

using Encryption = OrvaNetworkProfileWirelessEncryption;

/// The security of the network as the last scan saw it.
std::optional<Encryption> seenEncryption(Host& host, const QString& ssid)
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

/// Fails for a network that the last scan saw and that the device cannot join.
Result checkSupport(Host& host, const QString& ssid)
{
    const auto rows = host.rows(OrvaNetworkUnsupportedNetworksPath());
    if (!rows)
        return {}; // a host that tells of none
    for (const OrvaRoles& row : *rows) {
        const OrvaNetworkScanResult result = row.value().networkScanResult();
        if (result.ssid() == ssid)
            return Failure{ExitStatus::Failed,
                           QStringLiteral("The security of \"%1\" is %2, which the device does not "
                                          "support.")
                               .arg(printableName(ssid), unsupportedName(result.unsupported())),
                           Reason::unsupported};
    }
    return {};
}

/// The network as it is on the air: nothing where it is hidden, or where nobody waits for it.
Outcome<std::optional<Encryption>> look(Context& context, const Arguments& given)
{
    const QString ssid = given.text("SSID");
    auto seen = seenEncryption(context.host, ssid);
    auto supported = seen ? Result() : checkSupport(context.host, ssid);
    if (!supported)
        return supported.error();
    if (seen || !context.waits || given.flag("--hidden"))
        return seen;
    if (Output::stderrIsTerminal())
        context.out.note(QStringLiteral("Scanning…"));
    const auto scanned = context.host.invoke(OrvaNetworkScanPath(), {}, scanPatience);
    if (!scanned && scanned.error().status != ExitStatus::Failed)
        return scanned.error();
    seen = seenEncryption(context.host, ssid);
    if (seen || !scanned)
        return seen;
    supported = checkSupport(context.host, ssid);
    if (!supported)
        return supported.error();
    return Failure{ExitStatus::NotInRange,
                   QStringLiteral("No scan sees a network \"%1\"; --hidden joins one that hides "
                                  "its name.")
                       .arg(printableName(ssid))};
}

/// The network with its key: a known one keeps its key unless another is given, and one that the
/// scan or the person calls open needs none.
Outcome<OrvaNetworkInterface> networkToJoin(Bus& bus, const OrvaNetworkProfile& profile,
                                            const std::optional<Encryption>& seen,
                                            const Arguments& given)
{
    const QString ssid = given.text("SSID");
    const auto known = knownNetwork(profile, ssid);
    const bool keyIsGiven = !given.text("--key-file").isEmpty() || given.flag("--ask-key");
    if (known && !keyIsGiven && !given.flag("--open"))
        return *known;

    OrvaNetworkInterface network = known.value_or(OrvaNetworkInterface());
    if (!known) {
        network.setSsid(ssid);
        network.setDhcp(true);
    }
    const bool seenOpen = seen && *seen == Encryption::None;
    if (given.flag("--open") || (seenOpen && !keyIsGiven)) {
        network.setKey({});
        network.setEncryption(Encryption::None);
        return network;
    }
    const auto key = [&] {
        const Bus::Pause pause(bus);
        return readKey(given.text("--key-file"),
                       QStringLiteral("Key of \"%1\": ").arg(printable(ssid)));
    }();
    if (!key)
        return key.error();
    network.setKey(*key);
    network.setEncryption(seen && !seenOpen ? *seen : Encryption(Encryption::WpaPsk));
    return network;
}

/// Fails where the network cannot be tried at present; never with --keep.
Result checkHindrance(Context& context, const OrvaNetworkProfile& profile, const Arguments& given)
{
    if (!context.waits || given.flag("--keep"))
        return {};
    const auto info = context.host.value(OrvaNetworkInfoPath());
    if (!info)
        return info.error();
    const auto why = hindrance(info->networkInfo(), profile);
    if (!why)
        return {};
    return Failure{why->status, why->text + QStringLiteral(" --keep sets it for later.")};
}

Outcome<OrvaNetworkProfile> profileWith(Context& context, const OrvaNetworkProfile& before,
                                        const Arguments& given)
{
    const Result free = checkHindrance(context, before, given);
    if (!free)
        return free.error();
    const auto seen = look(context, given);
    if (!seen)
        return seen.error();
    const auto network = networkToJoin(context.bus, before, *seen, given);
    if (!network)
        return network.error();
    OrvaNetworkProfile profile = before;
    profile.setWireless(*network);
    return profile;
}

/// The host may act on a request whose answer nobody awaits any more.
bool mayBeCarriedOut(const Failure& failure)
{
    return failure.status == ExitStatus::TimedOut || failure.status == ExitStatus::Interrupted;
}

void goBack(Context& context, const OrvaNetworkProfile& before, const OrvaNetworkInterface& tried,
            const Arguments& given)
{
    if (!given.seconds("--confirm"))
        return takeBack(context, before, tried);
    context.bus.tidyUp(std::chrono::seconds(10));
    const auto back = context.host.invoke(OrvaNetworkRollbackProfilePath(), {});
    context.out.note(back ? QStringLiteral("The profile is as it was before; --keep leaves it on "
                                           "trial.")
                          : QStringLiteral("The profile could not be set back: %1")
                                .arg(printable(back.error().text)));
}

/// Sets the profile, waits for the network, and goes back where it was not joined.
Result join(Context& context, const OrvaNetworkProfile& profile, const Arguments& given)
{
    const auto before = profileToKeep(context.host);
    if (!before)
        return before.error();
    const Interrupt interrupt;
    const Action setting = settingOf(profile, given);
    const auto set = context.host.invoke(setting.path, setting.value);
    Result joined = set ? waitForJoining(context, profile, given.text("SSID")) : Result(set);
    const bool stays =
        joined || given.flag("--keep") || joined.error().status == ExitStatus::NotRunning;
    if (!stays && (set || mayBeCarriedOut(set.error())))
        goBack(context, *before, profile.wireless(), given);
    if (stays && set)
        noteTrial(context.out, given);
    // Not before: whose output is lost ends there, and leaves nothing half done.
    if (joined)
        context.out.document(set->__hash());
    return joined;
}

Result connectTo(Context& context, const Arguments& given)
{
    if (given.text("SSID").isEmpty())
        return Failure{ExitStatus::Usage, QStringLiteral("A network has a name.")};
    const auto published = publishedProfile(context.host);
    if (!published)
        return published.error();
    const auto profile = profileWith(context, *published, given);
    if (!profile)
        return profile.error();
    if (profile->type() == OrvaNetworkProfileType::Wired && !context.waits)
        context.out.note(QStringLiteral("The profile is for the wired interface alone; \"orvactl "
                                        "profile set --type auto\" lets the network be joined."));
    return join(context, *profile, given);
}

Result forget(Context& context, const Arguments& given)
{
    const OrvaValue ssid = OrvaValue::of(given.text("SSID"));
    return activate(context, OrvaNetworkRemoveWirelessNetworkPath(), ssid);
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

Result known(Context& context, const Arguments&)
{
    const auto profile = publishedProfile(context.host);
    if (!profile)
        return profile.error();
    const auto info = context.host.value(OrvaNetworkInfoPath());
    if (!info)
        return info.error();
    QVector<QStringList> table;
    for (const OrvaNetworkInterface& network : profile->wirelessNetworks()) {
        context.out.document({{OrvaValue::NetworkInterface(), network.__variant()}});
        table.append({printableName(network.ssid()), securityName(network.encryption()),
                      remarkOn(info->networkInfo(), network.ssid())});
    }
    context.out.table(context.columns, table);
    return {};
}

std::vector<Parameter> connectParameters()
{
    using Kind = Parameter::Kind;
    return {
        Parameter{"SSID", "Name of the network"}.required().of("NETWORK"),
        Parameter{"--key-file", "File with the key; - reads standard input"}.of("FILE"),
        {"--ask-key", "Ask for the key also where the network is known", Kind::Flag},
        Parameter{"--open", "Join it without a key, as an open network", Kind::Flag}.without(
            {"--key-file", "--ask-key"}),
        {"--hidden", "It hides its name, so that no scan sees it", Kind::Flag},
        {"--keep", "Keep it as the preferred network also where it is not joined", Kind::Flag},
        confirmTime(),
        resultTime(),
    };
}

} // namespace

Commands wifiCommands()
{
    return {
        {"wifi", "Wireless networks"},
        {"wifi connect",
         "Joins a network, and goes back where that fails; asks for an unknown one's key",
         connectParameters(), &connectTo},
        {"wifi forget",
         "Forgets a known network",
         {Parameter{"SSID", "Name of the network"}.required().of("KNOWN")},
         &forget},
        Command{"wifi known", "Lists the known networks, most preferred first", {}, &known}.writing(
            {"SSID", "SECURITY", "REMARK"}),
    };
}

} // namespace ctl
