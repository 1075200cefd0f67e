// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "failure.h"
#include "world/worldtypes.h"

#include <QVariantMap>

/// An access point of the played world.
struct AccessPoint
{
    QString ssid; ///< 1 to 32 bytes
    QString bssid;
    int channel = 6;
    int frequency = 2437; ///< MHz
    int signal = -55;     ///< dBm
    Security security = Security::Open;
    QString key;
    bool wpa3 = false;   ///< speaks WPA3 too
    bool wps = false;    ///< has a WPS button
    bool hidden = false; ///< says its name to nobody who does not ask by it
    QString network;     ///< the network behind it, by name
};

/// `point` with `changes` applied, keys as in the world file: ssid, bssid, channel, frequency,
/// signal, security, key, wpa3, wps, hidden, network. A new channel without a frequency brings its
/// own.
Result<AccessPoint> changed(AccessPoint point, const QVariantMap& changes);

/// The centre frequency of a Wi-Fi channel in MHz, 0 for one that does not exist.
int frequencyOf(int channel);

/// The information elements of its beacon: SSID, channel, RSN, WPS.
QByteArray informationElements(const AccessPoint& point);

/// "open", "wpa-psk", "wep" or "enterprise"; "enhanced-open", which is not played.
QString toString(Security security);

/// True for six hexadecimal pairs with colons.
bool isHardwareAddress(const QString& text);
