// SPDX-License-Identifier: Apache-2.0
#include "wire.h"

#include "log.h"

#include <QDBusArgument>
#include <QHostAddress>

#include <limits>

namespace {

constexpr int maxSsidBytes = 32;

constexpr auto maxInt = std::numeric_limits<int>::max();
constexpr auto minInt = std::numeric_limits<int>::min();

bool fitsInteger(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
        return true;
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return value.toULongLong() <= maxInt;
    case QMetaType::LongLong:
        return value.toLongLong() >= minInt && value.toLongLong() <= maxInt;
    default:
        return false;
    }
}

/// The value under `key` if it has the type, a remark if it has another.
template <typename Matches>
std::optional<QVariant> typed(const QVariantMap& map, const char* key, Matches matches)
{
    const auto found = map.constFind(QLatin1String(key));
    if (found == map.constEnd())
        return std::nullopt;
    if (matches(*found))
        return *found;
    qCWarning(lcLumod, "\"%s\" has a wrong type or value, ignoring it", key);
    return std::nullopt;
}

bool isBasic(int type)
{
    switch (type) {
    case QMetaType::Bool:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString:
    case QMetaType::QByteArray:
        return true;
    default:
        return false;
    }
}

QVariantMap plainMap(const QVariantMap& map, int depth);

/// Some value for a basic type; for a map too while `depth` allows. The bus lets values in that are
/// nested so deep that it drops whoever sends them back: kept values are flat.
std::optional<QVariant> plainValue(const QVariant& value, int depth)
{
    const int type = value.userType();
    if (isBasic(type))
        return value;
    if (depth == 0 || type != qMetaTypeId<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a{sv}"))
        return std::nullopt;
    return plainMap(qdbus_cast<QVariantMap>(argument), depth - 1);
}

QVariantMap plainMap(const QVariantMap& map, int depth)
{
    QVariantMap result;
    for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry) {
        if (const auto value = plainValue(entry.value(), depth))
            result.insert(entry.key(), *value);
        else
            qCWarning(lcLumod) << "A value of a type never used here, leaving it out:"
                               << entry.key();
    }
    return result;
}

KnownNetwork knownNetwork(const QString& ssid, const QVariantMap& map)
{
    KnownNetwork network;
    network.ssid = ssid;
    network.bssid = wire::text(map, "bssid").value_or(QString());
    network.priority = wire::integer(map, "priority").value_or(0);
    if (const auto key = wire::text(map, "wpa_psk")) {
        network.security = Security::WpaPsk;
        network.key = *key;
    } else if (wire::boolean(map, "unsecured").value_or(false)) {
        network.security = Security::Open;
    }
    return network;
}

QString scanType(Security security)
{
    switch (security) {
    case Security::Open:
        return QStringLiteral("unsecured");
    case Security::WpaPsk:
        return QStringLiteral("wpa_psk");
    case Security::Wep:
        return QStringLiteral("wep");
    case Security::Enterprise:
        return QStringLiteral("wpa_eap");
    case Security::EnhancedOpen:
        return QStringLiteral("owe");
    }
    return {};
}

QVariantMap wirelessPart(const InterfaceDetails& details)
{
    const bool wpa = details.security == Security::WpaPsk;
    return {
        {QStringLiteral("Encryption"), wpa ? QStringLiteral("wpa-psk") : QStringLiteral("none")},
        {QStringLiteral("Ssid"), details.ssid},
        {QStringLiteral("Bssid"), details.bssid},
        {QStringLiteral("Frequency"), details.frequency},
        {QStringLiteral("Signal"), details.signal},
        {QStringLiteral("Channel"), details.channel}};
}

QVariantMap partOfKind(const InterfaceDetails& details)
{
    switch (details.kind) {
    case InterfaceDetails::Kind::Absent:
        break;
    case InterfaceDetails::Kind::Wired:
        return {{QStringLiteral("CableStatus"), details.cable}};
    case InterfaceDetails::Kind::Wireless:
        return wirelessPart(details);
    case InterfaceDetails::Kind::SoftAp:
        return {{QStringLiteral("SoftApUp"), details.connected},
                {QStringLiteral("Ssid"), details.ssid},
                {QStringLiteral("Channel"), details.channel}};
    }
    return {};
}

QVariantMap toMap(const ScannedNetwork& network)
{
    return {{QStringLiteral("type"), scanType(network.security)},
            {QStringLiteral("signal"), network.signal},
            {QStringLiteral("bssid"), network.bssid},
            {QStringLiteral("channel"), network.channel},
            {QStringLiteral("frequency"), network.frequency},
            {QStringLiteral("ies"), network.informationElements},
            {QStringLiteral("wpa3"), network.wpa3}};
}

} // namespace

namespace wire {

QVariantMap plain(const QVariantMap& map)
{
    constexpr int depth = 1;
    return plainMap(map, depth);
}

std::optional<QString> text(const QVariantMap& map, const char* key)
{
    const auto isText = [](const QVariant& value) {
        return value.userType() == QMetaType::QString;
    };
    const auto value = typed(map, key, isText);
    return value ? std::optional(value->toString()) : std::nullopt;
}

std::optional<int> integer(const QVariantMap& map, const char* key)
{
    const auto value = typed(map, key, fitsInteger);
    return value ? std::optional(value->toInt()) : std::nullopt;
}

std::optional<bool> boolean(const QVariantMap& map, const char* key)
{
    const auto isBoolean = [](const QVariant& value) {
        return value.userType() == QMetaType::Bool;
    };
    const auto value = typed(map, key, isBoolean);
    return value ? std::optional(value->toBool()) : std::nullopt;
}

bool isSsid(const QString& ssid)
{
    const auto size = ssid.toUtf8().size();
    return size > 0 && size <= maxSsidBytes;
}

bool isIpv4(const QString& text)
{
    const QHostAddress address(text);
    return address.protocol() == QAbstractSocket::IPv4Protocol && address.toString() == text;
}

int prefixOf(const QString& netmask)
{
    return isIpv4(netmask) ? QHostAddress::parseSubnet(QStringLiteral("0.0.0.0/") + netmask).second
                           : -1;
}

QVector<KnownNetwork> knownNetworks(const QVariantMap& map)
{
    QVector<KnownNetwork> networks;
    for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry) {
        const auto& value = entry.value();
        if (!isSsid(entry.key()))
            qCWarning(lcLumod) << "Dropping a network whose SSID does not have 1 to 32 bytes:"
                               << entry.key().left(maxSsidBytes);
        else if (value.userType() != QMetaType::QVariantMap)
            qCWarning(lcLumod) << "Dropping a network that is not a map:" << entry.key();
        else
            networks.append(knownNetwork(entry.key(), value.toMap()));
    }
    return networks;
}

std::optional<StaticIp> staticIp(const QVariantMap& map)
{
    if (map.isEmpty())
        return std::nullopt;
    StaticIp settings;
    settings.address = text(map, "Ip").value_or(QString());
    settings.prefix = prefixOf(text(map, "Netmask").value_or(QString()));
    settings.gateway = text(map, "Gateway").value_or(QString());
    settings.dns = text(map, "Dns").value_or(QString()).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (isIpv4(settings.address) && settings.prefix >= 0)
        return settings;
    qCWarning(lcLumod) << "IP settings without a valid address and netmask, using DHCP";
    return std::nullopt;
}

QVariantMap toMap(const InterfaceDetails& details)
{
    if (details.kind == InterfaceDetails::Kind::Absent)
        return {{QStringLiteral("Present"), 0}};
    const auto& lease = details.lease;
    QVariantMap map = partOfKind(details);
    map.insert(QStringLiteral("Present"), 1);
    map.insert(QStringLiteral("Mac"), details.mac);
    map.insert(QStringLiteral("Connected"), details.connected);
    map.insert(QStringLiteral("Dhcp"), lease.dhcp);
    map.insert(QStringLiteral("Ips"), lease.ips.join(QLatin1Char(' ')));
    map.insert(QStringLiteral("Dns"), lease.dns.join(QLatin1Char(' ')));
    map.insert(QStringLiteral("Gateway"), lease.gateway);
    map.insert(QStringLiteral("Gateway6"), lease.gateway6);
    return map;
}

QVariantMap toMap(const QVector<ScannedNetwork>& networks)
{
    QHash<QString, int> strongest;
    QVariantMap map;
    for (const auto& network : networks) {
        const auto known = strongest.constFind(network.ssid);
        if (known != strongest.constEnd() && *known >= network.signal)
            continue;
        strongest.insert(network.ssid, network.signal);
        map.insert(network.ssid, ::toMap(network));
    }
    return map;
}

QVariantMap toMap(const WpsCredentials& credentials)
{
    const bool wpa = credentials.security == Security::WpaPsk;
    QVariantMap map{
        {QStringLiteral("ssid"), credentials.ssid},
        {QStringLiteral("type"), wpa ? QStringLiteral("wpa-psk") : QStringLiteral("unsecured")}};
    if (wpa)
        map.insert(QStringLiteral("wpa_psk"), credentials.key);
    return map;
}

} // namespace wire
