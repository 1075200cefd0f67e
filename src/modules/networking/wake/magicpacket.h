// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <optional>

// The protocol and port on which a magic packet comes as a datagram.
constexpr quint8 wakeProtocol = 17; ///< UDP.
constexpr quint16 wakePort = 9;     ///< Discard, by custom the port of wake-on-LAN.

/// The 102 bytes that wake the device with the hardware address `mac`: six 0xFF, then the address
/// sixteen times. Characters of `mac` that are not hexadecimal digits are skipped; nothing when the
/// rest is not six bytes.
[[nodiscard]] std::optional<QByteArray> magicPattern(const QString& mac);

/// True for `size` bytes at `packet`, from the IP header on, that are a datagram of IPv4 for the
/// port of wake-on-LAN. Looks at version, protocol and destination port alone: a fragment is read
/// as if it began a datagram. A packet that ends before one of these fields is none.
[[nodiscard]] bool isWakeDatagram(const uchar* packet, std::size_t size);
