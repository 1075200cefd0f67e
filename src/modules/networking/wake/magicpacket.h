// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <optional>

/// The protocol and port on which a magic packet comes as a datagram.
constexpr quint8 wakeProtocol = 17; ///< UDP
constexpr quint16 wakePort = 9;     ///< discard, by custom the port of wake-on-LAN

/// The 102 bytes that wake the device with the hardware address `mac`: six 0xFF, then the address
/// sixteen times. Characters of `mac` that are not hexadecimal digits are skipped; nothing when the
/// rest is not six bytes.
[[nodiscard]] std::optional<QByteArray> magicPattern(const QString& mac);

/// Whether the `size` bytes at `packet`, which begin with an IPv4 header, are for the port of
/// wake-on-LAN. Tells version, protocol and destination port, and nothing else: a fragment is read
/// as if it began a datagram. A field that lies beyond `size` refuses the packet.
[[nodiscard]] bool isWakeDatagram(const uchar* packet, std::size_t size);
