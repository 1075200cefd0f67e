// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

namespace ctl {

/// "open", "WPA-PSK, WPA3" or "enterprise (not supported)".
QString securityName(const OrvaNetworkScanResult& network);
/// "enterprise", for a network that the device cannot join.
QString unsupportedName(const QString& security);
/// "open", "WEP" or "WPA-PSK".
[[nodiscard]] QString securityName(OrvaNetworkProfileWirelessEncryption encryption);

/// The band of a frequency in MHz, such as "5 GHz"; empty where the frequency is not known.
[[nodiscard]] QString bandName(qint32 frequency);

/// Addresses with their prefix and whether they came by DHCP, in one line.
[[nodiscard]] QString addressesText(const OrvaList<OrvaNetworkAddress>& addresses);

/// Now on the system's monotonic clock, in milliseconds; the host's moments are on it.
[[nodiscard]] qint64 monotonicNow();

/// The time since a moment on the monotonic clock, "3 minutes ago".
[[nodiscard]] QString agoText(qint64 monotonicMs);

/// The time until a moment on the monotonic clock, "in 3 minutes".
[[nodiscard]] QString untilText(qint64 monotonicMs);

/// Why a network was not joined, in words; empty where nothing says so.
[[nodiscard]] QString reasonText(OrvaNetworkJoinReason reason);

} // namespace ctl
