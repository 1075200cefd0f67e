// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>

#include <optional>

/// The reason that wpa_supplicant's control socket tells about an attempt to join or to scan; D-Bus
/// does not tell it.
struct SupplicantReason
{
    enum class Kind {
        KeyRejected,   ///< WPA3: the access point `bssid` takes the key for a wrong one
        WrongKey,      ///< WPA2: the key of `network` is taken for a wrong one
        Paused,        ///< `network` is left alone for a while, for any other reason
        Joined,        ///< a network is joined
        ScanFailed,    ///< the radio refuses to scan, with `error`
        DriverRefused, ///< the driver does not even try to join
    };

    Kind kind = Kind::Joined;
    int network = -1; ///< the number at the end of the network's object path
    QByteArray bssid; ///< six bytes
    int error = 0;    ///< as errno has it
};

/// Reads one datagram of the socket. Names of networks are in it too, and may say anything: nothing
/// is looked for where a name can stand. Nothing for a datagram that is of no interest or
/// impossible.
[[nodiscard]] std::optional<SupplicantReason> parseSupplicantReason(const QByteArray& datagram);
