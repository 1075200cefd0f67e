// SPDX-License-Identifier: Apache-2.0
// The datagrams of the DHCP client's event program, with values that come from the network.
#include "target.h"

#include "world/real/link/dhcpevent.h"

#include <QHostAddress>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray datagram(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const auto event = parseDhcpEvent(datagram);
    if (!event)
        return 0;
    require(!event->interface.isEmpty());
    require(event->address.isEmpty() || !QHostAddress(event->address).isNull());
    for (const auto& server : event->servers)
        require(!QHostAddress(server).isNull() && !server.contains(QLatin1Char('\n')));
    require(!event->domain.contains(QLatin1Char('\n')) &&
            !event->domain.contains(QLatin1Char(' ')));
    require(event->up || (event->servers.isEmpty() && event->address.isEmpty()));
    return 0;
}
