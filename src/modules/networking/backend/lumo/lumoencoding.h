// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

/// The known networks as the daemon's property `WirelessNetworks` has them: by SSID, the first of
/// the list with the highest priority, which is the list's length. A network without SSID is left
/// out with a warning; of two with the same SSID the later one counts.
[[nodiscard]] QVariantMap lumoWirelessNetworks(const OrvaList<OrvaNetworkInterface>& networks);

/// The static addresses of an interface as the daemon's properties `WiredIpSettings` and
/// `WirelessIpSettings` have them. Empty, which means DHCP, for an interface that asks for DHCP or
/// has no IPv4 address.
[[nodiscard]] QVariantMap lumoIpSettings(const OrvaNetworkInterface& interface);
