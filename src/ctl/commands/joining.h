// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/action.h"

namespace ctl {

/// The reason that speaks against joining any wireless network at present; nothing where there is
/// none.
std::optional<Failure> hindrance(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile);

/// The reason that speaks against joining any wireless network at present, or why none of those
/// that are known can be; nothing where there is none.
std::optional<Result> noWireless(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile);

/// The reason why there is no network at present, by cable or otherwise; nothing where one may
/// come.
std::optional<Result> noNetwork(const OrvaNetworkInfo& info, const OrvaNetworkProfile& profile);

/// Learns why a network was not joined: `ssid`, or any where that is empty.
class JoinWatch
{
public:
    explicit JoinWatch(Context& context, const QString& ssid = {});

    /// `result`; where that is a time-out, the reason of the join that failed last.
    [[nodiscard]] Result explained(const Result& result) const;

private:
    QObject m_guard;
    OrvaNetworkLastJoin m_failed;
};

/// Waits until the network is joined, or for the reason why it is not. `profile` is what was set.
Result waitForJoining(Context& context, const OrvaNetworkProfile& profile, const QString& ssid);

/// Makes the network `tried`, which was not joined, what it is in `before`. All else in the profile
/// stays as it is by now.
void takeBack(Context& context, const OrvaNetworkProfile& before,
              const OrvaNetworkInterface& tried);

/// The profile with its keys where this user may read them, else as it is published: for
/// takeBack().
Outcome<OrvaNetworkProfile> profileToKeep(Host& host);

/// The network of that name in the profile.
std::optional<OrvaNetworkInterface> knownNetwork(const OrvaNetworkProfile& profile,
                                                 const QString& ssid);

} // namespace ctl
