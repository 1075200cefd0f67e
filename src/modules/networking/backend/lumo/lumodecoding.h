// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

#include <QMap>
#include <QVector>

// The connection daemon's maps as this system's records. All are functions of plain values
// (backend/lumo/lumoborder.h); an absent key, or a value of another type, reads as its type's
// default.

/// An address record: the address, optionally "/" and a prefix length, optionally "l" for
/// link-local.
[[nodiscard]] OrvaNetworkAddress parseIpRecord(const QString& record);

/// The addresses in an interface's details: IPv4 in the reverse of their order, then IPv6.
/// Link-local IPv6 addresses, and texts that are no address, are left out.
[[nodiscard]] OrvaList<OrvaNetworkAddress> parseAddresses(const QVariantMap& details);

/// True when the details are those of an interface that exists.
[[nodiscard]] bool parsePresent(const QVariantMap& details);

/// The network state from the details of each interface that was asked, by its name. Interfaces
/// that are not present, or none of ours, are left out. Name servers and gateways are those of the
/// wired interface when it is connected, else of the wireless one when that is. The soft-AP part is
/// always there.
[[nodiscard]] OrvaNetworkInfo parseNetworkState(const QMap<QString, QVariantMap>& details,
                                                const QString& wiredInterface,
                                                const QString& wirelessInterface);

/// The networks that a scan found, by SSID. Those of unsupported or unknown security are dropped
/// with a warning.
[[nodiscard]] QVector<OrvaNetworkScanResult> parseScanResults(const QVariantMap& results);
/// The networks that were dropped there for their security, with what it is.
[[nodiscard]] QVector<OrvaNetworkScanResult> parseUnsupportedNetworks(const QVariantMap& results);

/// The network that a WPS session brought.
[[nodiscard]] OrvaNetworkInterface parseWpsCredentials(const QVariantMap& credentials);
