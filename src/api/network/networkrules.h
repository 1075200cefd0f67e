// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

/// The reason for which `key` does not suit `encryption`, in words for a person; empty when it
/// suits.
///
/// WPA takes a passphrase of 8 to 63 printable ASCII characters or 64 hexadecimal digits; an
/// unsecured network takes no key. The masked key "****" suits nothing that needs a key.
[[nodiscard]] ORVA_API QString
orvaNetworkIsKeyValid(const QString& key, OrvaNetworkProfileWirelessEncryption encryption);

/// The dotted netmask of an IPv4 prefix length; lengths outside 0 to 32 count as the nearest of
/// these.
[[nodiscard]] ORVA_API QString orvaPrefixToNetmask(qint32 prefix);

/// The IPv4 address that `text` is, without leading zeros; empty where it is none. Only four
/// decimal numbers of one to three digits with dots between them are one: what else the C library
/// takes for an address ("10", "127.1", "0x7f000001") was meant otherwise.
[[nodiscard]] ORVA_API QString orvaIPv4Address(const QString& text);

/// The first IPv4 gateway of `info`; empty when there is none.
[[nodiscard]] ORVA_API QString orvaNetworkInfoToGateway4(const OrvaNetworkInfo& info);
