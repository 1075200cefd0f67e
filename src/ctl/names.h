// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

namespace ctl {

/// "open", "WEP" or "WPA-PSK".
[[nodiscard]] QString securityName(OrvaNetworkProfileWirelessEncryption encryption);

/// The band of a frequency in MHz, such as "5 GHz"; empty where the frequency is not known.
[[nodiscard]] QString bandName(qint32 frequency);

/// Addresses with their prefix and whether they came by DHCP, in one line.
[[nodiscard]] QString addressesText(const OrvaList<OrvaNetworkAddress>& addresses);

} // namespace ctl
