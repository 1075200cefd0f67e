// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "world/played/accesspoint.h"

#include <QMap>

/// The steps that take their time.
struct Delays
{
    /// Names as in the world file, milliseconds, the file's `timeFactor` applied.
    QMap<QString, int> values{
        {QStringLiteral("scan"), 2500},      {QStringLiteral("associate"), 1500},
        {QStringLiteral("dhcp"), 1000},      {QStringLiteral("leave"), 100},
        {QStringLiteral("softAp"), 1200},    {QStringLiteral("wps"), 3000},
        {QStringLiteral("wpsWalk"), 120000}, {QStringLiteral("retry"), 5000},
    };

    [[nodiscard]] int of(const char* step) const { return values.value(QLatin1String(step)); }
};

/// An IP network behind the cable or an access point.
struct Subnet
{
    QString subnet = QStringLiteral("192.168.1.0");
    int prefix = 24;
    QString subnet6; ///< a /64, empty: none
    QString gateway = QStringLiteral("192.168.1.1");
    QString gateway6;
    QStringList dns{QStringLiteral("192.168.1.1")};
    bool dhcp = true; ///< somebody answers DHCP
};

/// The lease of the host with the number `host` on `network`: by DHCP, or `fixed`. Nothing when
/// nobody answers DHCP.
std::optional<Lease> lease(const Subnet& network, const std::optional<StaticIp>& fixed, int host,
                           const QString& mac);

/// The world as the world file gives it, and as it is changed later.
struct WorldDescription
{
    QString startMode; ///< the mode to be in from the start; empty: off
    Delays delays;
    QString wired = QStringLiteral("eth0"); ///< name; empty: no such hardware
    QString wiredMac = QStringLiteral("02:00:00:00:10:01");
    QString wireless = QStringLiteral("wlan0");
    QString wirelessMac = QStringLiteral("02:00:00:00:10:02");
    QMap<QString, QString> softAps{{QStringLiteral("uap0"), QStringLiteral("02:00:00:00:10:03")}};
    bool plugged = true;
    QString cableNetwork;
    QMap<QString, Subnet> networks;
    QVector<AccessPoint> accessPoints;

    /// The network of that name, a home network's usual values for an unknown one.
    [[nodiscard]] Subnet network(const QString& name) const { return networks.value(name); }
    /// Index of the access point with that BSSID, else of the strongest with that SSID, else -1.
    [[nodiscard]] int find(const QString& accessPoint) const;
    /// Adds an access point, with a free BSSID when `settings` give none. Gives its BSSID.
    Result<QString> addAccessPoint(const QVariantMap& settings);
    /// Changes the access point at `index`; leaves it as it is when that cannot be.
    Result<> changeAccessPoint(int index, const QVariantMap& changes);
};

/// Reads a world file: JSON in which lines that begin with "//" are comments. An impossible value
/// is logged and left at its default. Fails where there is no such file, or it is not JSON.
Result<WorldDescription> readWorldFile(const QString& fileName);
