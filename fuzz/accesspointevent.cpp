// SPDX-License-Identifier: Apache-2.0
// The datagrams of hostapd's control socket, with what stations send in them.
#include "target.h"

#include "world/real/softap/accesspointevent.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Kind = AccessPointEvent::Kind;
    const QByteArray datagram(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto event = parseAccessPointEvent(datagram);
    if (!event)
        return 0;
    const bool ofStation = event->kind == Kind::Joined || event->kind == Kind::Left;
    require(event->station.size() == (ofStation ? 17 : 0));
    require(datagram.startsWith('<') || event->kind == Kind::Enabled);
    return 0;
}
