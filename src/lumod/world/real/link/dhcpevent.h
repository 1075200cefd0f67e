// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// The event that dhcpcd has told about one interface.
struct DhcpEvent
{
    /// The way to an address that it is about.
    enum class Source {
        Dhcp,         ///< a lease, or the static address
        RouterAdvert, ///< IPv6 autoconfiguration
        Dhcp6,        ///< DHCPv6, of which only name servers are used
        Other,        ///< the carrier, the program's start and end
    };

    QString interface;
    int start = 0; ///< which start of the program says so
    Source source = Source::Other;
    bool up = false;     ///< the source gives something now
    QString address;     ///< the lease's; empty for none
    QStringList servers; ///< name servers, each an address
    QString domain;      ///< the lease's search domain; empty for none
};

/// Reads what the event program has sent. The values come from the network: a name server that is
/// no address and a domain that is no host name are left out. Nothing when it names no interface.
[[nodiscard]] std::optional<DhcpEvent> parseDhcpEvent(const QByteArray& datagram);
