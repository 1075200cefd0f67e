// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

/// The profile with the network of a WPS session as its wireless network, by DHCP. Its type becomes
/// automatic and its soft-AP settings an empty list; of the credentials only SSID, key and
/// encryption are taken.
[[nodiscard]] OrvaNetworkProfile withWpsCredentials(OrvaNetworkProfile profile,
                                                    const OrvaNetworkInterface& credentials);
