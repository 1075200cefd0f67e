// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A change that hostapd's control socket tells.
struct AccessPointEvent
{
    enum class Kind {
        Enabled,  ///< beacons are sent
        Disabled, ///< the radio has been taken from under it
        Joined,   ///< `station` has joined, with the right key where one is needed
        Left,
    };

    Kind kind = Kind::Enabled;
    QString station; ///< hardware address, lower case
};

/// Reads one datagram of the socket: an event, or the answer to STATUS, which may say that it is
/// enabled. Nothing for one that is of no interest or impossible.
[[nodiscard]] std::optional<AccessPointEvent> parseAccessPointEvent(const QByteArray& datagram);
