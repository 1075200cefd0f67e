// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/worldtypes.h"

#include <QVariant>

/// The daemon's maps, to and from plain values. What comes in is foreign: a value of a wrong type
/// counts as absent and is logged, nothing else of the map is harmed.
namespace wire {

/// The map with its nested maps unpacked, one level deep; containers of any other type are left
/// out.
QVariantMap plain(const QVariantMap& map);

std::optional<QString> text(const QVariantMap& map, const char* key);
/// Any integer type whose value fits.
std::optional<int> integer(const QVariantMap& map, const char* key);
std::optional<bool> boolean(const QVariantMap& map, const char* key);

/// True for 1 to 32 bytes of UTF-8, what a beacon can carry.
bool isSsid(const QString& ssid);

/// The wireless networks map, made plain; networks whose SSID no beacon can carry are left out.
QVector<KnownNetwork> knownNetworks(const QVariantMap& map);
/// The IP settings map: empty for DHCP, and for one that is not a valid IPv4 configuration.
std::optional<StaticIp> staticIp(const QVariantMap& map);
/// True if the text is an IPv4 address in its normal form; "10" would be read as 0.0.0.10.
bool isIpv4(const QString& text);
/// The prefix of a dotted netmask, -1 when it is none.
int prefixOf(const QString& netmask);

/// The interface details map.
QVariantMap toMap(const InterfaceDetails& details);
/// The scan results map; of several networks of one SSID the strongest.
QVariantMap toMap(const QVector<ScannedNetwork>& networks);
/// The WPS credentials map.
QVariantMap toMap(const WpsCredentials& credentials);

} // namespace wire
