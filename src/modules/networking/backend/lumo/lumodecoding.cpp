// SPDX-License-Identifier: Apache-2.0
#include "backend/lumo/lumodecoding.h"

#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumolog.h"
#include "backend/softapinterface.h"
#include "network/networkrules.h"

#include <QHash>
#include <QHostAddress>

#include <algorithm>
#include <optional>

namespace {

using Encryption = OrvaNetworkProfileWirelessEncryption;

std::optional<OrvaNetworkAddressProtocol> protocolOf(const QString& ip)
{
    if (!orvaIPv4Address(ip).isEmpty())
        return OrvaNetworkAddressProtocol::IPv4;
    if (QHostAddress(ip).protocol() == QAbstractSocket::IPv6Protocol)
        return OrvaNetworkAddressProtocol::IPv6;
    return std::nullopt;
}

bool isAddress(const OrvaNetworkAddress& address, const QString& record)
{
    const bool known = address.__contains(OrvaNetworkAddress::Protocol());
    if (!known)
        LOG4CPLUS_WARN(lumoLogger(), "Got an address from LUMO that is none: " << record);
    return known;
}

/// The last word of a text that was cut may be half of one, and is left out.
QStringList words(const QString& text)
{
    QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (text.size() >= lumoTextLimit - 1 && !words.isEmpty())
        words.removeLast();
    return words;
}

OrvaNetworkState state(const QVariantMap& details, const char* key)
{
    return lumoField<bool>(details, key) ? OrvaNetworkState::Connected
                                         : OrvaNetworkState::Disconnected;
}

OrvaNetworkAddress gateway(const QString& ip, OrvaNetworkAddressProtocol protocol)
{
    OrvaNetworkAddress address;
    address.setIp(ip);
    address.setProtocol(protocol);
    return address;
}

OrvaList<OrvaNetworkAddress> parseGateways(const QVariantMap& details)
{
    OrvaList<OrvaNetworkAddress> gateways;
    const auto four = orvaIPv4Address(lumoField<QString>(details, "Gateway"));
    if (!four.isEmpty())
        gateways.append(gateway(four, OrvaNetworkAddressProtocol::IPv4));
    const auto six = lumoField<QString>(details, "Gateway6");
    if (protocolOf(six) == OrvaNetworkAddressProtocol::IPv6)
        gateways.append(gateway(six, OrvaNetworkAddressProtocol::IPv6));
    return gateways;
}

OrvaList<OrvaNetworkAddress> parseNameServers(const QVariantMap& details)
{
    OrvaList<OrvaNetworkAddress> servers;
    const QStringList records = words(lumoField<QString>(details, "Dns"));
    for (const QString& record : records) {
        const OrvaNetworkAddress server = parseIpRecord(record);
        if (isAddress(server, record))
            servers.append(server);
    }
    return servers;
}

OrvaNetworkWiredInterface parseWired(const QString& name, const QVariantMap& details)
{
    OrvaNetworkWiredInterface wired;
    wired.setName(name);
    wired.setMac(lumoField<QString>(details, "Mac"));
    wired.setState(state(details, "Connected"));
    wired.setCableConnected(lumoField<bool>(details, "CableStatus"));
    wired.setAddresses(parseAddresses(details));
    return wired;
}

OrvaNetworkWirelessInterface parseWireless(const QString& name, const QVariantMap& details)
{
    const bool isWpa = lumoField<QString>(details, "Encryption").contains(QLatin1String("wpa"));
    OrvaNetworkWirelessInterface wireless;
    wireless.setName(name);
    wireless.setMac(lumoField<QString>(details, "Mac"));
    wireless.setState(state(details, "Connected"));
    wireless.setAddresses(parseAddresses(details));
    wireless.setSsid(lumoField<QString>(details, "Ssid"));
    wireless.setBssid(lumoField<QString>(details, "Bssid"));
    wireless.setEncryption(isWpa ? Encryption::WpaPsk : Encryption::None);
    wireless.setFrequency(lumoField<qint32>(details, "Frequency"));
    wireless.setSignalLevel(lumoField<qint32>(details, "Signal"));
    wireless.setChannel(lumoField<qint32>(details, "Channel"));
    return wireless;
}

OrvaNetworkSoftAp parseSoftAp(const QString& name, const QVariantMap& details)
{
    OrvaNetworkSoftAp ap;
    ap.setName(name);
    ap.setAddresses(parseAddresses(details));
    ap.setBssid(lumoField<QString>(details, "Mac"));
    return ap;
}

void addSoftAp(OrvaNetworkInfo& info, const QString& name, const QVariantMap& details)
{
    OrvaNetworkSoftApInterface softAp = info.softAp();
    softAp.setAps(softAp.aps() << parseSoftAp(name, details));
    if (lumoField<bool>(details, "SoftApUp"))
        softAp.setState(OrvaNetworkState::Connected);
    info.setSoftAp(softAp);
}

/// The security of a scanned network by its "type"; nothing for one that cannot be joined.
std::optional<Encryption> scannedSecurity(const QString& type)
{
    if (type == QLatin1String("unsecured"))
        return Encryption(Encryption::None);
    if (type == QLatin1String("wpa_psk"))
        return Encryption(Encryption::WpaPsk);
    return std::nullopt;
}

void warnOfDropped(const QString& type)
{
    if (type == QLatin1String("wep"))
        LOG4CPLUS_WARN(lumoLogger(), "Got unsupported auth type WEP from LUMO!");
    else
        LOG4CPLUS_WARN(lumoLogger(), "Got unknown auth type from LUMO: " << type);
}

QString unsupportedSecurity(const QString& type)
{
    static const QHash<QString, QString> names{
        {QStringLiteral("wep"), QStringLiteral("wep")},
        {QStringLiteral("wpa_eap"), QStringLiteral("enterprise")},
        {QStringLiteral("owe"), QStringLiteral("enhanced-open")}};
    return names.value(type, QStringLiteral("unknown"));
}

OrvaNetworkScanResult parseScanResult(const QString& ssid, const QVariantHash& network)
{
    OrvaNetworkScanResult result;
    result.setSsid(ssid);
    result.setSignal(lumoField<qint32>(network, "signal"));
    result.setBssid(lumoField<QString>(network, "bssid").toUpper());
    result.setChannel(lumoField<qint32>(network, "channel"));
    result.setFrequency(lumoField<qint32>(network, "frequency"));
    const QVariant elements = network.value(QStringLiteral("ies"));
    if (elements.userType() == QMetaType::QByteArray)
        result.setIes(QString::fromLatin1(elements.toByteArray().toHex()));
    if (lumoField<bool>(network, "wpa3"))
        result.setWpa3(true);
    return result;
}

/// The interfaces in the order in which they set the name servers and gateways, which they share:
/// the last one prevails.
QStringList inOrderOfPreference(const QMap<QString, QVariantMap>& details, const QString& wired,
                                const QString& wireless)
{
    const auto rank = [&](const QString& name) {
        const bool connected = lumoField<bool>(details.value(name), "Connected");
        return (connected ? 4 : 0) + (name == wired ? 2 : name == wireless ? 1 : 0);
    };
    QStringList names = details.keys();
    std::stable_sort(names.begin(), names.end(), [&](const QString& left, const QString& right) {
        return rank(left) < rank(right);
    });
    return names;
}

} // namespace

OrvaNetworkAddress parseIpRecord(const QString& record)
{
    const bool isLinkLocal = record.endsWith(QLatin1Char('l'));
    const QStringList parts =
        (isLinkLocal ? record.chopped(1) : record).split(QLatin1Char('/'), Qt::KeepEmptyParts);
    OrvaNetworkAddress address;
    address.setScope(isLinkLocal ? OrvaNetworkAddressScope::LinkLocal
                                 : OrvaNetworkAddressScope::Global);
    const QString ip = parts.first().toLower();
    const QString normalIPv4 = orvaIPv4Address(ip);
    address.setIp(normalIPv4.isEmpty() ? ip : normalIPv4);
    if (parts.size() > 1)
        address.setPrefix(parts.at(1).toInt());
    if (const auto protocol = protocolOf(address.ip()))
        address.setProtocol(*protocol);
    return address;
}

OrvaList<OrvaNetworkAddress> parseAddresses(const QVariantMap& details)
{
    const auto dhcp = lumoField<bool>(details, "Dhcp");
    OrvaList<OrvaNetworkAddress> four;
    OrvaList<OrvaNetworkAddress> six;
    const QStringList records = words(lumoField<QString>(details, "Ips"));
    for (const QString& record : records) {
        OrvaNetworkAddress address = parseIpRecord(record);
        const bool isGlobal = address.scope() == OrvaNetworkAddressScope::Global;
        if (isGlobal && dhcp)
            address.setDhcp(true);
        if (!isAddress(address, record))
            continue;
        if (address.protocol() == OrvaNetworkAddressProtocol::IPv4)
            four.prepend(address);
        else if (isGlobal)
            six.append(address);
    }
    return four + six;
}

bool parsePresent(const QVariantMap& details)
{
    const QVariant present = details.value(QStringLiteral("Present"));
    if (present.userType() == QMetaType::Bool)
        return present.toBool();
    return lumoField<qint32>(details, "Present") != 0;
}

OrvaNetworkInfo parseNetworkState(const QMap<QString, QVariantMap>& details,
                                  const QString& wiredInterface, const QString& wirelessInterface)
{
    OrvaNetworkSoftApInterface softAp;
    softAp.setState(OrvaNetworkState::Disconnected);
    softAp.setAps({});
    OrvaNetworkInfo info;
    info.setSoftAp(softAp);
    const QStringList names = inOrderOfPreference(details, wiredInterface, wirelessInterface);
    for (const QString& name : names) {
        const QVariantMap& interface = *details.constFind(name);
        const bool isSoftAp = isSoftApInterface(name);
        const bool isOurs = isSoftAp || name == wiredInterface || name == wirelessInterface;
        if (!isOurs || !parsePresent(interface))
            continue;
        info.setDns(parseNameServers(interface));
        info.setGateways(parseGateways(interface));
        if (name == wiredInterface)
            info.setWired(parseWired(name, interface));
        else if (isSoftAp)
            addSoftAp(info, name, interface);
        else
            info.setWireless(parseWireless(name, interface));
    }
    return info;
}

QVector<OrvaNetworkScanResult> parseScanResults(const QVariantMap& results)
{
    QVector<OrvaNetworkScanResult> networks;
    for (auto entry = results.begin(); entry != results.end(); ++entry) {
        const QVariantHash network = entry.value().toHash();
        const auto type = lumoField<QString>(network, "type");
        const auto security = scannedSecurity(type);
        if (!security) {
            warnOfDropped(type);
            continue;
        }
        networks.append(parseScanResult(entry.key(), network));
        networks.last().setEncryption(*security);
    }
    return networks;
}

QVector<OrvaNetworkScanResult> parseUnsupportedNetworks(const QVariantMap& results)
{
    QVector<OrvaNetworkScanResult> networks;
    for (auto entry = results.begin(); entry != results.end(); ++entry) {
        const QVariantHash network = entry.value().toHash();
        const auto type = lumoField<QString>(network, "type");
        if (network.isEmpty() || scannedSecurity(type))
            continue;
        networks.append(parseScanResult(entry.key(), network));
        networks.last().setUnsupported(unsupportedSecurity(type));
    }
    return networks;
}

OrvaNetworkInterface parseWpsCredentials(const QVariantMap& credentials)
{
    const auto type = lumoField<QString>(credentials, "type");
    OrvaNetworkInterface network;
    network.setDhcp(true);
    network.setSsid(lumoField<QString>(credentials, "ssid"));
    network.setEncryption(Encryption::None);
    if (type == QLatin1String("wpa-psk")) {
        network.setKey(lumoField<QString>(credentials, "wpa_psk"));
        network.setEncryption(Encryption::WpaPsk);
    } else if (type != QLatin1String("unsecured")) {
        LOG4CPLUS_WARN(lumoLogger(),
                       "Unknown encryption type returned by WPS session, assuming unencrypted.");
    }
    return network;
}
