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
        Listening, ///< for radar, a minute or more, before it may send
        Moved,     ///< to another channel, away from radar
    };

    Kind kind = Kind::Enabled;
    QString station; ///< hardware address, lower case
    int channel = 0; ///< where it is now; 0: not said
};

/// Reads one datagram of the socket: an event, or the answer to STATUS, which may say that it is
/// enabled and where, or listens for radar. Nothing for one that is of no interest or impossible.
[[nodiscard]] std::optional<AccessPointEvent> parseAccessPointEvent(const QByteArray& datagram);

/// False for a line of its output that is in all its ends: what made it end stands before.
[[nodiscard]] bool tellsWhy(const QString& line);
