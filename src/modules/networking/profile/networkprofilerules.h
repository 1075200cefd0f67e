// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"
#include "core/orvaresult.h"
#include "network/networkrecords.h"

// The rules of the configured profile, from plain values to plain values. Where a field is absent
// it differs from one that is present and empty, and stays absent.

/// Checks the keys of `wireless` and the list. A profile whose `wireless` has no SSID always
/// passes. The error is for a person.
[[nodiscard]] OrvaResult<void> verifyProfile(const OrvaNetworkProfile& profile);

/// A copy with every key that is not empty replaced by "****", at every level.
[[nodiscard]] OrvaNetworkProfile hidePassword(const OrvaNetworkProfile& profile);

/// A copy with every key "****" replaced by the one that `stored` has for the SSID: that of the
/// first network of its list with the SSID, or of its `wireless` where the list has none. A masked
/// wired key comes from the stored wired interface, a soft AP's pass phrase from the one on the
/// same interface. What is not stored keeps "****".
[[nodiscard]] OrvaNetworkProfile restorePassword(const OrvaNetworkProfile& profile,
                                                 const OrvaNetworkProfile& stored);

/// The profile that results from setting `newProfile` over `oldProfile`: the network set goes first
/// and is listed once, a missing list is taken from the old profile, and of two or more networks at
/// most `maximum` stay. A `maximum` of 0 or less sets no limit.
[[nodiscard]] OrvaNetworkProfile computeNewNetworkProfile(const OrvaNetworkProfile& newProfile,
                                                          const OrvaNetworkProfile& oldProfile,
                                                          qint32 maximum);

/// Logs a profile whose `wireless` is not the first of its networks; changes nothing.
void checkNetworkProfileInvariants(const OrvaNetworkProfile& profile);

/// A profile of an older layout, which has a `wireless` and no list, with the list made of it.
[[nodiscard]] OrvaNetworkProfile withNetworkList(const OrvaNetworkProfile& profile);

/// The profile without the networks of that SSID. If that is the one in use, the first one left
/// takes its place; if none is left, `wireless` keeps nothing but DHCP.
[[nodiscard]] OrvaNetworkProfile withoutNetwork(const OrvaNetworkProfile& profile,
                                                const QString& ssid);

/// The profile without any wireless network.
[[nodiscard]] OrvaNetworkProfile withoutNetworks(const OrvaNetworkProfile& profile);

/// The profile with the wireless networks of `backup` behind its own; those that it has stay as
/// they are.
[[nodiscard]] OrvaNetworkProfile withNetworksOf(const OrvaNetworkProfile& profile,
                                                const OrvaNetworkProfile& backup);

/// True if the profile has a wireless network, in use or listed.
[[nodiscard]] bool hasNetwork(const OrvaNetworkProfile& profile);

/// True if the profile asks for a wireless connection.
[[nodiscard]] bool isWirelessConfigured(const OrvaNetworkProfile& profile);

/// True if the profile asks for a wired connection.
[[nodiscard]] bool isWiredConfigured(const OrvaNetworkProfile& profile);
