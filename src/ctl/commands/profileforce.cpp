// SPDX-License-Identifier: Apache-2.0
#include "commands/profileforce.h"

#include "commands/joining.h"

#include "network/networkrules.h"

#include <algorithm>

namespace ctl {

namespace {

/// The interface that the command is about: that whose address it sets, else the profile's.
OrvaNetworkProfileType::Value subject(const OrvaNetworkProfile& profile, const Arguments& given)
{
    if (!asksForAddress(given))
        return profile.type();
    return given.text("--interface") == QLatin1String("wireless") ? OrvaNetworkProfileType::Wireless
                                                                  : OrvaNetworkProfileType::Wired;
}

bool holds(const OrvaList<OrvaNetworkAddress>& addresses, const QString& ip)
{
    return std::any_of(addresses.begin(), addresses.end(),
                       [&](const OrvaNetworkAddress& address) { return address.ip() == ip; });
}

/// True if there is the address that `wanted` asks for. Of a DHCP server's all are right.
bool hasAddress(const OrvaList<OrvaNetworkAddress>& addresses, const OrvaNetworkInterface& wanted)
{
    return std::any_of(addresses.begin(), addresses.end(), [&](const OrvaNetworkAddress& address) {
        return wanted.dhcp() ? address.dhcp()
                             : address.ip() == wanted.ip() &&
                                   orvaPrefixToNetmask(address.prefix()) == wanted.netmask();
    });
}

/// True if the interface is up with what was asked for, which is `wanted`.
template <typename Interface>
bool isUpAsAsked(const OrvaNetworkInfo& info, const Interface& interface,
                 const OrvaNetworkInterface& wanted, const Arguments& given)
{
    if (interface.state() != OrvaNetworkState::Connected)
        return false;
    if (!asksForAddress(given))
        return true;
    const QStringList servers = wanted.dns();
    const auto isServer = [&](const QString& server) { return holds(info.dns(), server); };
    const bool hasRoute = wanted.gateway().isEmpty() || holds(info.gateways(), wanted.gateway());
    return hasAddress(interface.addresses(), wanted) &&
           (wanted.dhcp() || (hasRoute && std::all_of(servers.begin(), servers.end(), isServer)));
}

} // namespace

bool asksForAddress(const Arguments& given)
{
    return given.flag("--dhcp") || !given.text("--ip").isEmpty() ||
           !given.text("--netmask").isEmpty() || !given.text("--gateway").isEmpty() ||
           !given.texts("--dns").isEmpty();
}

bool isInForce(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile,
               const Arguments& given)
{
    switch (subject(profile, given)) {
    case OrvaNetworkProfileType::Wired:
        return isUpAsAsked(info, info.wired(), profile.wired(), given);
    case OrvaNetworkProfileType::Wireless:
        return isUpAsAsked(info, info.wireless(), profile.wireless(), given);
    case OrvaNetworkProfileType::Auto:
        // Wi-Fi may be up from before, and give way to the cable once that has its address.
        return info.wired().state() == OrvaNetworkState::Connected ||
               (isConnected(info) && !info.wired().cableConnected());
    }
    return false;
}

std::optional<Result> isForLater(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile,
                                 const Arguments& given)
{
    const auto about = subject(profile, given);
    if (about == OrvaNetworkProfileType::Auto && isConnected(info))
        return Result(); // by Wi-Fi: the cable gives no address
    std::optional<Result> why;
    if (about == OrvaNetworkProfileType::Wireless)
        why = noWireless(info, profile);
    else if (about == OrvaNetworkProfileType::Auto)
        why = noNetwork(info, profile);
    else if (!info.wired().cableConnected())
        why = Failure{ExitStatus::NoNetwork, QStringLiteral("There is no cable.")};
    if (!why)
        return std::nullopt;
    return Failure{why->error().status,
                   QStringLiteral("The profile is set, for later: %1").arg(why->error().text)};
}

} // namespace ctl
