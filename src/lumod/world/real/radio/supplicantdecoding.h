// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/worldtypes.h"

#include <QVariantMap>

/// The words of wpa_supplicant on the bus, as plain values. Most of them have come over the air: a
/// value of a wrong type, or an impossible one, counts as absent.
namespace supplicant {

/// The state of the interface.
enum class State {
    Away,    ///< joined to nothing
    Joining, ///< talking to an access point, or renewing a key with the one that is joined
    Joined,
};

/// An access point that was heard.
struct Bss
{
    QByteArray ssid;  ///< as in the beacon; empty for one that hides it
    QByteArray bssid; ///< six bytes
    bool privacy = false;
    QStringList wpaWays; ///< of key management, as WPA names them
    QStringList rsnWays; ///< the same for WPA2 and WPA3
    int frequency = 0;   ///< MHz
    int signal = 0;      ///< dBm
    QByteArray informationElements;

    [[nodiscard]] Security security() const;
    [[nodiscard]] bool offersWpa3() const;
};

/// The state of that name; nothing for a name that nobody knows.
[[nodiscard]] std::optional<State> state(const QVariant& value);

/// The object path in it; empty for none.
[[nodiscard]] QString objectPath(const QVariant& value);

/// Takes what properties of a BSS say into `bss`, and leaves what they do not say.
void take(const QVariantMap& properties, Bss& bss);

/// The name as text; nothing for bytes that are not UTF-8, for a NUL among them, and for none.
[[nodiscard]] std::optional<QString> nameOf(const QByteArray& ssid);

/// "02:00:00:00:01:00"
[[nodiscard]] QString addressText(const QByteArray& bssid);

/// The number of the channel; 0 for a frequency outside of the bands.
[[nodiscard]] int channelOf(int frequency);

/// The signal level that a poll has found, in dBm.
[[nodiscard]] std::optional<int> signalLevel(const QVariant& poll);

/// The credentials that a WPS session has brought; nothing when they cannot be used to join.
[[nodiscard]] std::optional<WpsCredentials> wpsCredentials(const QVariantMap& map);

/// Why a WPS session has failed, for a person; empty when the event is not a failure.
[[nodiscard]] QString wpsFailure(const QString& event, const QVariantMap& details);

/// A network as it is given to wpa_supplicant.
[[nodiscard]] QVariantMap networkProperties(const KnownNetwork& network, bool backgroundScan);

/// A key of 64 hexadecimal digits, which is no pass phrase.
[[nodiscard]] bool isRawKey(const QString& key);

} // namespace supplicant
