#include "lumo_encoding.h"

#include "lumo_log.h"

#include <QtNetwork/QHostAddress>

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
    if (QHostAddress(interface.ip()).protocol() != QAbstractSocket::IPv4Protocol)
        return QVariantMap();
    return {{QStringLiteral("Ip"), interface.ip()},
            {QStringLiteral("Dns"), interface.dns().join(QLatin1Char(' '))},
            {QStringLiteral("Gateway"), interface.gateway()},
            {QStringLiteral("Netmask"), interface.netmask()}};
}
