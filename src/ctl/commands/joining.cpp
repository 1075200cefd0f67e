// SPDX-License-Identifier: Apache-2.0
#include "commands/joining.h"

#include "commands/profileedit.h"
#include "output/names.h"

#include "core/orvamask.h"

#include <algorithm>

namespace ctl {

namespace {

std::optional<Result> judge(const OrvaNetworkInfo& info, const QString& ssid)
{
    const OrvaNetworkWirelessInterface wireless = info.wireless();
    if (wireless.state() == OrvaNetworkState::Connected && wireless.ssid() == ssid)
        return Result();
    for (const OrvaNetworkWirelessInterface& network : info.wirelessNetworks()) {
        if (network.ssid() == ssid && network.credentialsSuspect())
            return Failure{ExitStatus::KeyRefused, QStringLiteral("The network refused the key.")};
    }
    return std::nullopt;
}

/// Before the first of those that follow it in `before`, else at the end: a network that somebody
/// put first meanwhile stays first.
void insertAtRank(QVector<OrvaNetworkInterface>& networks, const OrvaNetworkInterface& network,
                  const OrvaNetworkProfile& before)
{
    QStringList order;
    for (const OrvaNetworkInterface& known : before.wirelessNetworks())
        order.append(known.ssid());
    const int rank = order.indexOf(network.ssid());
    const auto follows = [&](const OrvaNetworkInterface& other) {
        return order.indexOf(other.ssid()) > rank;
    };
    networks.insert(std::find_if(networks.begin(), networks.end(), follows), network);
}

OrvaNetworkProfile withNetwork(OrvaNetworkProfile profile, const OrvaNetworkInterface& network,
                               const OrvaNetworkProfile& before)
{
    auto networks = profile.wirelessNetworks();
    const auto isSame = [&](const OrvaNetworkInterface& other) {
        return other.ssid() == network.ssid();
    };
    networks.erase(std::remove_if(networks.begin(), networks.end(), isSame), networks.end());
    insertAtRank(networks, network, before);
    profile.setWirelessNetworks(networks);
    profile.setWireless(networks.first());
    return profile;
}

/// `network` is what it was before. One that somebody has removed meanwhile stays away.
Result putBack(Host& host, const OrvaNetworkInterface& network, bool isKeyLost,
               const OrvaNetworkProfile& before)
{
    const auto profile = publishedProfile(host);
    if (!profile)
        return profile.error();
    const auto now = knownNetwork(*profile, network.ssid());
    if (!now)
        return {};
    const auto wanted = withNetwork(*profile, isKeyLost ? *now : network, before);
    return host.invoke(OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(wanted));
}

std::optional<ExitStatus> statusOf(OrvaNetworkJoinReason reason)
{
    switch (reason) {
    case OrvaNetworkJoinReason::None:
        break;
    case OrvaNetworkJoinReason::NotInRange:
        return ExitStatus::NotInRange;
    case OrvaNetworkJoinReason::KeyRefused:
        return ExitStatus::KeyRefused;
    case OrvaNetworkJoinReason::NoAddress:
        return ExitStatus::NoAddress;
    case OrvaNetworkJoinReason::Refused:
        return ExitStatus::RefusedByNetwork;
    case OrvaNetworkJoinReason::CableFirst:
        return ExitStatus::CableFirst;
    case OrvaNetworkJoinReason::AirplaneMode:
        return ExitStatus::AirplaneMode;
    }
    return std::nullopt;
}

} // namespace

std::optional<Failure> hindrance(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile)
{
    if (info.airplaneMode())
        return Failure{ExitStatus::AirplaneMode,
                       QStringLiteral("Airplane mode has the radio blocked; \"orvactl airplane "
                                      "off\" ends it.")};
    if (profile.type() == OrvaNetworkProfileType::Wired)
        return Failure{ExitStatus::CableFirst,
                       QStringLiteral("The profile is for the wired interface alone; \"orvactl "
                                      "profile set --type auto\" lets the network be joined.")};
    const bool hasCable = info.wired().state() == OrvaNetworkState::Connected;
    if (hasCable && profile.type() == OrvaNetworkProfileType::Auto)
        return Failure{ExitStatus::CableFirst,
                       QStringLiteral("The cable has precedence, and no wireless network is joined "
                                      "beside it; \"orvactl profile set --type wireless\" leaves "
                                      "the cable out.")};
    return std::nullopt;
}

std::optional<Result> noWireless(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile)
{
    if (const auto why = hindrance(info, profile))
        return *why;
    const auto known = info.wirelessNetworks();
    if (known.isEmpty())
        return Failure{ExitStatus::NoNetwork, QStringLiteral("No wireless network is known.")};
    const auto isRefused = [](const OrvaNetworkWirelessInterface& network) {
        return network.credentialsSuspect();
    };
    if (std::all_of(known.begin(), known.end(), isRefused))
        return Failure{ExitStatus::KeyRefused,
                       QStringLiteral("The network refused the key; of those that are known none "
                                      "took its own.")};
    return std::nullopt;
}

std::optional<Result> noNetwork(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile)
{
    if (info.wired().cableConnected())
        return std::nullopt;
    if (profile.type() == OrvaNetworkProfileType::Wired)
        return Failure{ExitStatus::NoNetwork, QStringLiteral("There is no cable.")};
    const auto why = noWireless(info, profile);
    if (!why)
        return std::nullopt;
    return Failure{why->error().status,
                   QStringLiteral("There is no cable. %1").arg(why->error().text)};
}

JoinWatch::JoinWatch(Context& context, const QString& ssid)
{
    QObject::connect(&context.host, &Host::valueChanged, &m_guard,
                     [this, ssid](const CMPath& path, const OrvaValue& value) {
                         if (path != OrvaNetworkLastJoinPath())
                             return;
                         const auto join = value.networkLastJoin();
                         if (statusOf(join.reason()) && (ssid.isEmpty() || join.ssid() == ssid))
                             m_failed = join;
                     });
}

Result JoinWatch::explained(const Result& result) const
{
    const auto status = statusOf(m_failed.reason());
    if (!status || result.error().status != ExitStatus::TimedOut)
        return result;
    return Failure{*status,
                   QStringLiteral("\"%1\" was not joined: %2.")
                       .arg(printableName(m_failed.ssid()), reasonText(m_failed.reason()))};
}

Result waitForJoining(Context& context, const OrvaNetworkProfile& profile, const QString& ssid)
{
    const JoinWatch watch(context, ssid);
    const auto verdict = [&](const OrvaNetworkInfo& info) { return judge(info, ssid); };
    const auto settled = [&](const OrvaNetworkInfo& info) -> std::optional<Result> {
        const auto why = hindrance(info, profile);
        return why ? std::optional<Result>(*why) : std::nullopt;
    };
    Result result = watch.explained(waitForInfo(context, verdict, settled));
    if (result.error().status != ExitStatus::TimedOut)
        return result;
    return Failure{ExitStatus::NotJoined,
                   QStringLiteral("The network was not joined in the time given.")};
}

void takeBack(Context& context, const OrvaNetworkProfile& before, const OrvaNetworkInterface& tried)
{
    context.bus.tidyUp(std::chrono::seconds(10));
    const auto known = knownNetwork(before, tried.ssid());
    // By now the mask stands for the key that was tried.
    const bool isKeyLost = known && known->key() == orvaMask() && tried.key() != orvaMask();
    const Result back = known ? putBack(context.host, *known, isKeyLost, before)
                              : context.host.invoke(OrvaNetworkRemoveWirelessNetworkPath(),
                                                    OrvaValue::of(tried.ssid()));
    if (!back)
        context.out.note(
            QStringLiteral("The profile could not be set back: %1").arg(printable(back.why())));
    else if (isKeyLost)
        context.out.note(
            QStringLiteral("The key that \"%1\" had before could not be put back, since "
                           "this user may not read it: give it again.")
                .arg(printable(tried.ssid())));
    else
        context.out.note(QStringLiteral("The profile is as it was before; --keep leaves it."));
}

Outcome<OrvaNetworkProfile> profileToKeep(Host& host)
{
    const auto stored = host.value(OrvaNetworkCurrentProfileSettingsPath());
    if (stored && !stored->isEmpty())
        return stored->networkProfile();
    return publishedProfile(host);
}

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

} // namespace ctl
