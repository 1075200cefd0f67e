// SPDX-License-Identifier: Apache-2.0
#include "world/real/link/dhcpevent.h"

#include <QHash>
#include <QHostAddress>

namespace {

using Environment = QHash<QByteArray, QByteArray>;

Environment environmentOf(const QByteArray& datagram)
{
    Environment environment;
    for (const auto& variable : datagram.split('\0')) {
        const int equals = variable.indexOf('=');
        if (equals > 0)
            environment.insert(variable.left(equals), variable.mid(equals + 1));
    }
    return environment;
}

DhcpEvent::Source sourceOf(const QByteArray& protocol)
{
    if (protocol == "dhcp" || protocol == "static")
        return DhcpEvent::Source::Dhcp;
    if (protocol == "ra")
        return DhcpEvent::Source::RouterAdvert;
    return protocol == "dhcp6" ? DhcpEvent::Source::Dhcp6 : DhcpEvent::Source::Other;
}

bool isHostName(const QByteArray& text)
{
    constexpr int longest = 253;
    const auto isAllowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '-' || c == '.' || c == '_';
    };
    return text.size() <= longest && std::all_of(text.begin(), text.end(), isAllowed);
}

/// Name servers stand under one name for a lease and DHCPv6, and under one for each
/// advertisement, nd1_rdnss1_servers say.
QStringList serversOf(const Environment& environment, DhcpEvent::Source source)
{
    QStringList keys;
    for (const auto& key : environment.keys()) {
        const bool advertised = key.startsWith("nd") && key.endsWith("_servers");
        if (source == DhcpEvent::Source::RouterAdvert
                ? advertised
                : key == "new_domain_name_servers" || key == "new_dhcp6_name_servers")
            keys.append(QString::fromLatin1(key));
    }
    keys.sort();
    QStringList servers;
    for (const auto& key : std::as_const(keys))
        for (const auto& text : environment.value(key.toLatin1()).split(' '))
            if (QHostAddress address(QString::fromLatin1(text)); !address.isNull()) {
                address.setScopeId({}); // dhcpcd adds the interface to a link-local one
                servers.append(address.toString());
            }
    servers.removeDuplicates();
    return servers;
}

} // namespace

std::optional<DhcpEvent> parseDhcpEvent(const QByteArray& datagram)
{
    const auto environment = environmentOf(datagram);
    DhcpEvent event;
    event.interface = QString::fromUtf8(environment.value("interface"));
    if (event.interface.isEmpty())
        return std::nullopt;
    event.start = environment.value("LUMOD_START").toInt();
    event.source = sourceOf(environment.value("protocol"));
    event.up = environment.value("if_up") == "true";
    if (!event.up)
        return event;
    const QHostAddress address(QString::fromLatin1(environment.value("new_ip_address")));
    if (address.protocol() == QAbstractSocket::IPv4Protocol)
        event.address = address.toString();
    event.servers = serversOf(environment, event.source);
    if (const auto domain = environment.value("new_domain_name"); isHostName(domain))
        event.domain = QString::fromLatin1(domain);
    return event;
}
