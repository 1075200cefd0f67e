// SPDX-License-Identifier: Apache-2.0
#include "backend/lumo/lumoencoding.h"

#include "backend/lumo/lumolog.h"
#include "network/networkrules.h"

#include <QHostAddress>

namespace {

/// Adds the security. A number that names none adds nothing: such a network must not pass for an
/// open one.
void addSecurity(QVariantMap& map, const OrvaNetworkInterface& network)
{
    const QVariantHash& fields = network.__hash();
    const auto encryption = fields.constFind(OrvaNetworkInterface::Encryption());
    const auto number =
        encryption == fields.constEnd() ? std::optional(0) : orvaDecodeInt(*encryption);
    if (number == OrvaNetworkProfileWirelessEncryption::None)
        map.insert(QStringLiteral("unsecured"), true);
    else if (number == OrvaNetworkProfileWirelessEncryption::WpaPsk)
        map.insert(QStringLiteral("wpa_psk"), network.key());
}

QVariantMap encodeNetwork(const OrvaNetworkInterface& network, int priority)
{
    QVariantMap map;
    addSecurity(map, network);
    map.insert(QStringLiteral("priority"), priority);
    if (network.__contains(OrvaNetworkInterface::Bssid()))
        map.insert(QStringLiteral("bssid"), network.bssid());
    return map;
}

/// An IPv4 address in its normal form; empty, with a warning, where the text is another.
QString ipv4(const char* what, const QString& text)
{
    QString address = orvaIPv4Address(text);
    if (address.isEmpty() && !text.isEmpty())
        LOG4CPLUS_WARN(lumoLogger(), "Not an IPv4 " << what << ", leaving it out: " << text);
    return address;
}

/// A name server may have an IPv6 address too.
QString nameServer(const QString& text)
{
    const QHostAddress address(text);
    return address.protocol() == QAbstractSocket::IPv6Protocol ? address.toString()
                                                               : ipv4("name server", text);
}

QString nameServers(const QStringList& texts)
{
    QStringList servers;
    std::transform(texts.begin(), texts.end(), std::back_inserter(servers), nameServer);
    servers.removeAll(QString());
    return servers.join(QLatin1Char(' '));
}

} // namespace

QVariantMap lumoWirelessNetworks(const OrvaList<OrvaNetworkInterface>& networks)
{
    QVariantMap map;
    int priority = networks.size();
    for (const OrvaNetworkInterface& network : networks) {
        if (network.ssid().isEmpty()) {
            LOG4CPLUS_WARN(lumoLogger(), "Wireless network is missing SSID, skipping: " << network);
            continue;
        }
        map.insert(network.ssid(), encodeNetwork(network, priority--));
    }
    return map;
}

QVariantMap lumoIpSettings(const OrvaNetworkInterface& interface)
{
    if (interface.dhcp() || interface.ip().isEmpty())
        return QVariantMap();
    const QString ip = ipv4("address", interface.ip());
    if (ip.isEmpty())
        return QVariantMap();
    return {{QStringLiteral("Ip"), ip},
            {QStringLiteral("Dns"), nameServers(interface.dns())},
            {QStringLiteral("Gateway"), ipv4("gateway", interface.gateway())},
            {QStringLiteral("Netmask"), ipv4("netmask", interface.netmask())}};
}
