// SPDX-License-Identifier: Apache-2.0
#include "families.h"
#include "names.h"
#include "profileedit.h"
#include "secret.h"
#include "valuetext.h"

namespace ctl {

namespace {

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
                                            const Arguments& given)
{
    using Encryption = OrvaNetworkProfileWirelessEncryption;
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
    const auto seen = seenEncryption(context.host, ssid);
    const bool seenOpen = seen && *seen == Encryption::None;
    if (given.flag("--open") || (seenOpen && !keyIsGiven)) {
        network.setKey({});
        network.setEncryption(Encryption::None);
        return network;
    }
    const auto key =
        readKey(given.text("--key-file"), QStringLiteral("Key of \"%1\": ").arg(printable(ssid)));
    if (!key)
        return key.error();
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
            return Failure{ExitStatus::Failed, QStringLiteral("The network refused the key.")};
    }
    return std::nullopt;
}

Result connectTo(Context& context, const Arguments& given)
{
    const QString ssid = given.text("SSID");
    if (ssid.isEmpty())
        return Failure{ExitStatus::Usage, QStringLiteral("A network has a name.")};
    const auto published = publishedProfile(context.host);
    if (!published)
        return published.error();
    const auto network = networkToJoin(context, *published, given);
    if (!network)
        return network.error();
    OrvaNetworkProfile profile = *published;
    profile.setWireless(*network);
    if (profile.type() == OrvaNetworkProfileType::Wired)
        context.out.note(QStringLiteral("The profile is for the wired interface alone; \"orvactl "
                                        "profile set --type auto\" lets the network be joined."));
    return setProfile(context, profile,
                      [ssid](const OrvaNetworkInfo& info) { return judgeJoining(info, ssid); });
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
    QVector<QStringList> table = {{QStringLiteral("SSID"), QStringLiteral("SECURITY"), QString()}};
    for (const OrvaNetworkInterface& network : profile->wirelessNetworks()) {
        context.out.document({{OrvaValue::NetworkInterface(), network.__variant()}});
        table.append({printableName(network.ssid()), securityName(network.encryption()),
                      remarkOn(info->networkInfo(), network.ssid())});
    }
    context.out.table(table);
    return {};
}

std::vector<Parameter> connectParameters()
{
    using Kind = Parameter::Kind;
    return {
        Parameter{"SSID", "Name of the network"}.required(),
        Parameter{"--key-file", "File with the key; - reads standard input"}.of("FILE"),
        {"--ask-key", "Ask for the key also where the network is known", Kind::Flag},
        Parameter{"--open", "Join it without a key, as an open network", Kind::Flag}.without(
            {"--key-file", "--ask-key"}),
        {"--wait", "Also wait until it is joined, at most SECONDS", Kind::Time},
    };
}

} // namespace

Commands wifiCommands()
{
    return {
        {"wifi", "Wireless networks"},
        {"wifi connect", "Joins a network; asks for the key of an unknown one", connectParameters(),
         &connectTo},
        {"wifi forget",
         "Forgets a known network",
         {Parameter{"SSID", "Name of the network"}.required()},
         &forget},
        {"wifi known", "Lists the known networks, most preferred first", {}, &known},
    };
}

} // namespace ctl
