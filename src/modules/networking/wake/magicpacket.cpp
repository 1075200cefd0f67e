// SPDX-License-Identifier: Apache-2.0
#include "wake/magicpacket.h"

#include <QtEndian>

namespace {

constexpr int macLength = 6;
constexpr int macRepeats = 16;
constexpr std::size_t protocolOffset = 9;
constexpr std::size_t destinationPortOffset = 2; // from the end of the IPv4 header

std::size_t headerLength(const uchar* packet)
{
    return (packet[0] & 0x0FU) * std::size_t{4};
}

} // namespace

std::optional<QByteArray> magicPattern(const QString& mac)
{
    const QByteArray address = QByteArray::fromHex(mac.toUtf8());
    if (address.size() != macLength)
        return std::nullopt;
    return QByteArray(macLength, '\xFF') + address.repeated(macRepeats);
}

bool isWakeDatagram(const uchar* packet, std::size_t size)
{
    if (size <= protocolOffset)
        return false;
    if (packet[0] >> 4U != 4 || packet[protocolOffset] != wakeProtocol)
        return false;
    const std::size_t portOffset = headerLength(packet) + destinationPortOffset;
    if (size < portOffset + sizeof(quint16))
        return false;
    return qFromBigEndian<quint16>(packet + portOffset) == wakePort;
}
