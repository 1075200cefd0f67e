// SPDX-License-Identifier: Apache-2.0
#include "joining.h"

#include "profileedit.h"

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
                                      "beside it.")};
    return std::nullopt;
}

Result waitForJoining(Context& context, const OrvaNetworkProfile& profile, const QString& ssid)
{
    OrvaNetworkInfo last;
    const auto verdict = [&](const OrvaNetworkInfo& info) {
        last = info;
        return judge(info, ssid);
    };
    const auto settled = [&](const OrvaNetworkInfo& info) -> std::optional<Result> {
        const auto why = hindrance(info, profile);
        return why ? std::optional<Result>(*why) : std::nullopt;
    };
    Result result = waitForInfo(context, verdict, settled);
    if (result.error().status != ExitStatus::TimedOut)
        return result;
    const auto why = hindrance(last, profile);
    if (why)
        return *why;
    return Failure{
        ExitStatus::NotJoined,
        QStringLiteral("The network is in range, and was not joined or gave no address in "
                       "the time given.")};
}

void takeBack(Context& context, const OrvaNetworkProfile& before, const QString& ssid)
{
    context.bus.tidyUp(std::chrono::seconds(10));
    const Result back =
        knownNetwork(before, ssid)
            ? context.host.invoke(OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(before))
            : context.host.invoke(OrvaNetworkRemoveWirelessNetworkPath(), OrvaValue::of(ssid));
    if (back)
        context.out.note(QStringLiteral("The profile is as it was before; --keep leaves it."));
    else
        context.out.note(
            QStringLiteral("The profile could not be set back: %1").arg(printable(back.why())));
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
