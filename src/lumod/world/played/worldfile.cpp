// SPDX-License-Identifier: Apache-2.0
#include "world/played/worldfile.h"

#include "jsonfile.h"
#include "log.h"
#include "wire.h"

#include <QHostAddress>

namespace {

QVariantMap part(const QVariantMap& map, const char* key)
{
    return map.value(QLatin1String(key)).toMap();
}

void readInterface(const QVariantMap& interfaces, const char* key, QString& name, QString& mac)
{
    if (interfaces.isEmpty())
        return;
    const auto map = part(interfaces, key);
    name = wire::text(map, "name").value_or(QString());
    mac = wire::text(map, "mac").value_or(mac);
}

void readSoftAps(const QVariantMap& interfaces, WorldDescription& world)
{
    if (interfaces.isEmpty())
        return;
    world.softAps.clear();
    for (const auto& entry : interfaces.value(QStringLiteral("softAp")).toList()) {
        const auto map = entry.toMap();
        world.softAps.insert(wire::text(map, "name").value_or(QStringLiteral("uap0")),
                             wire::text(map, "mac").value_or(world.wirelessMac));
    }
}

Subnet readSubnet(const QVariantMap& map)
{
    Subnet network;
    const auto subnet = QHostAddress::parseSubnet(wire::text(map, "subnet").value_or(QString()));
    if (subnet.second >= 0) {
        network.subnet = subnet.first.toString();
        network.prefix = subnet.second;
    }
    network.subnet6 = wire::text(map, "subnet6").value_or(QString());
    network.gateway = wire::text(map, "gateway").value_or(network.gateway);
    network.gateway6 = wire::text(map, "gateway6").value_or(QString());
    network.dhcp = wire::boolean(map, "dhcp").value_or(true);
    if (map.contains(QStringLiteral("dns")))
        network.dns = map.value(QStringLiteral("dns")).toStringList();
    return network;
}

void readDelays(const QVariantMap& file, Delays& delays)
{
    bool ok = false;
    double factor = file.value(QStringLiteral("timeFactor"), 1.0).toDouble(&ok);
    if (!ok || factor < 0) {
        qCWarning(lcLumod) << "timeFactor must be a number that is not negative, using 1";
        factor = 1;
    }
    const auto given = part(file, "delays");
    for (auto step = delays.values.begin(); step != delays.values.end(); ++step) {
        const int delay = wire::integer(given, step.key().toUtf8()).value_or(step.value());
        step.value() = qRound(qMax(0, delay) * factor);
    }
}

void readAccessPoints(const QVariantList& list, WorldDescription& world)
{
    for (const auto& entry : list) {
        const auto added = world.addAccessPoint(entry.toMap());
        if (!added)
            qCWarning(lcLumod).noquote() << "Leaving out an access point:" << added.why();
    }
}

WorldDescription describe(const QVariantMap& file)
{
    WorldDescription world;
    world.startMode = wire::text(file, "startMode").value_or(QString());
    readDelays(file, world.delays);
    const auto interfaces = part(file, "interfaces");
    readInterface(interfaces, "wired", world.wired, world.wiredMac);
    readInterface(interfaces, "wireless", world.wireless, world.wirelessMac);
    readSoftAps(interfaces, world);
    const auto cable = part(file, "cable");
    world.plugged = wire::boolean(cable, "plugged").value_or(world.plugged);
    world.cableNetwork = wire::text(cable, "network").value_or(QString());
    const auto networks = part(file, "networks");
    for (auto entry = networks.begin(); entry != networks.end(); ++entry)
        world.networks.insert(entry.key(), readSubnet(entry.value().toMap()));
    readAccessPoints(file.value(QStringLiteral("accessPoints")).toList(), world);
    return world;
}

/// The link-local address that a host makes from its hardware address.
QString linkLocal(const QString& mac)
{
    constexpr int universalBit = 0x02;
    auto id = QByteArray::fromHex(mac.toLatin1()).leftJustified(6, '\0', true);
    id[0] = static_cast<char>(id.at(0) ^ universalBit);
    id.insert(3, "\xff\xfe");
    const auto bytes = QByteArray::fromHex("fe80000000000000") + id;
    const QHostAddress address(reinterpret_cast<const quint8*>(bytes.constData()));
    return address.toString() + QStringLiteral("/64l");
}

} // namespace

std::optional<Lease> lease(const Subnet& network, const std::optional<StaticIp>& fixed, int host,
                           const QString& mac)
{
    Lease lease;
    if (fixed) {
        lease.ips = QStringList{QStringLiteral("%1/%2").arg(fixed->address).arg(fixed->prefix)};
        lease.gateway = fixed->gateway;
        lease.dns = fixed->dns;
    } else if (network.dhcp) {
        const QHostAddress address(QHostAddress(network.subnet).toIPv4Address() +
                                   static_cast<quint32>(host));
        lease.ips =
            QStringList{QStringLiteral("%1/%2").arg(address.toString()).arg(network.prefix)};
        lease.gateway = network.gateway;
        lease.dns = network.dns;
        lease.dhcp = true;
    } else {
        return std::nullopt;
    }
    lease.gateway6 = network.gateway6;
    lease.ips.append(linkLocal(mac));
    if (!network.subnet6.isEmpty())
        lease.ips.append(QStringLiteral("%1%2/64").arg(network.subnet6).arg(host));
    return lease;
}

int WorldDescription::find(const QString& accessPoint) const
{
    int best = -1;
    for (int i = 0; i < accessPoints.size(); ++i) {
        const auto& point = accessPoints.at(i);
        if (point.bssid.compare(accessPoint, Qt::CaseInsensitive) == 0)
            return i;
        if (point.ssid == accessPoint && (best < 0 || point.signal > accessPoints.at(best).signal))
            best = i;
    }
    return best;
}

Result<QString> WorldDescription::addAccessPoint(const QVariantMap& settings)
{
    AccessPoint point;
    for (int i = 1; point.bssid.isEmpty() || find(point.bssid) >= 0; ++i)
        point.bssid = QStringLiteral("02:00:00:00:%1:%2")
                          .arg(0x20 + i / 0x100, 2, 16, QLatin1Char('0'))
                          .arg(i % 0x100, 2, 16, QLatin1Char('0'));
    const auto added = changed(point, settings);
    if (!added)
        return added.error();
    if (find(added->bssid) >= 0)
        return Failure{QStringLiteral("there is one with this bssid")};
    accessPoints.append(*added);
    return added->bssid;
}

Result<> WorldDescription::changeAccessPoint(int index, const QVariantMap& changes)
{
    const auto point = changed(accessPoints.at(index), changes);
    if (!point)
        return point.error();
    const int other = find(point->bssid);
    if (other >= 0 && other != index)
        return Failure{QStringLiteral("there is another one with this bssid")};
    accessPoints[index] = *point;
    return {};
}

Result<WorldDescription> readWorldFile(const QString& fileName)
{
    const auto file = readJsonFile(fileName);
    if (!file)
        return file.error();
    return describe(*file);
}
