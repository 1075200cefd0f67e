// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QVariantMap>
#include <QVector>

/// The settings in lumod.conf, with defaults for those that it leaves out.
struct RealSettings
{
    /// The writer of the name servers.
    enum class NameServerOwner {
        Auto,       ///< the program `resolvconf` where it exists, else as `File`
        File,       ///< lumod, into `resolvConf`
        Resolvconf, ///< the program `resolvconf`
        Nobody,
    };

    QString wired = QStringLiteral("eth0"); ///< interface names; empty: there is none
    QString wireless = QStringLiteral("wlan0");
    QString softAp = QStringLiteral("uap0");
    QString dhcpcd = QStringLiteral("/usr/sbin/dhcpcd");
    QString resolvconf = QStringLiteral("/usr/sbin/resolvconf");
    QString wpaSupplicant = QStringLiteral("/usr/sbin/wpa_supplicant");
    QString hostapd = QStringLiteral("/usr/sbin/hostapd");
    QString dnsmasq = QStringLiteral("/usr/sbin/dnsmasq");
    QString helperDirectory = QStringLiteral(ORVA_HELPER_DIR); ///< of dhcp-event and lumod-keep
    QString runtimeDirectory = QStringLiteral("/run/lumod");
    int dhcpDeadline = 10000; ///< ms after which a silent server is reported
    int wiredMetric = 100;
    int wirelessMetric = 600;
    QString country;             ///< two letters; empty: as the kernel has it
    bool powerSave = false;      ///< the radio sleeps between beacons
    bool backgroundScan = false; ///< look for a better access point while the signal is weak
    QVector<int> frequencies;    ///< MHz, all that are listened to; empty: what the country allows
    bool captivePortal = true;   ///< a phone that joins the soft access point is led to its page
    bool probeAddresses = false; ///< ask whether somebody else holds an address
    NameServerOwner nameServers = NameServerOwner::Auto;
    QString resolvConf = QStringLiteral("/run/lumod/resolv.conf");
};

/// Takes what `file` says. A value that cannot be is logged and left at its default; so is a key
/// that nobody knows, and an interface that is named twice.
[[nodiscard]] RealSettings realSettings(const QVariantMap& file);
