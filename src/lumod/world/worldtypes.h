// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// The phase of an interface, as `InterfaceStatusChanged` carries it. Clients need only know 2.
enum class InterfaceStatus {
    Absent = 0,     ///< there is no such interface
    NoCarrier = 1,  ///< the wired interface has no cable, the soft access point is not up
    Idle = 2,       ///< up and usable, joined or not; a scan may start
    Scanning = 3,   ///< the radio is scanning
    Connecting = 4, ///< associating, coming up or being left; wired: asking for an address
    Wps = 5,        ///< a WPS session runs
    Addressing = 6, ///< the radio has joined, and asks for an address
};

/// The interfaces that `SetNormalMode` brings up.
enum class NetworkMode {
    Auto,     ///< the cable, and Wi-Fi while the cable gives no network
    Wired,    ///< the cable alone
    Wireless, ///< Wi-Fi alone
};

/// The security of an access point.
enum class Security {
    Open,
    WpaPsk, ///< WPA, WPA2 or WPA3 with a pass phrase
    Wep,
    Enterprise,   ///< WPA with an account; never joined
    EnhancedOpen, ///< encrypted without a key; never joined
};

/// A static IPv4 configuration.
struct StaticIp
{
    QString address;
    int prefix = 0; ///< 0 to 32
    QString gateway;
    QStringList dns;

    bool operator==(const StaticIp& other) const
    {
        return address == other.address && prefix == other.prefix && gateway == other.gateway &&
               dns == other.dns;
    }
};

/// A wireless network that may be joined.
struct KnownNetwork
{
    QString ssid;
    QString bssid; ///< the only access point to join; empty: any
    std::optional<Security>
        security; ///< empty when neither "unsecured" nor a key came: never joined
    QString key;
    int priority = 0; ///< higher is preferred
};

/// All that `SetNormalMode` puts into effect.
struct NetworkConfiguration
{
    NetworkMode mode = NetworkMode::Auto;
    QVector<KnownNetwork> networks;
    std::optional<StaticIp> wired; ///< empty: DHCP
    std::optional<StaticIp> wireless;
};

/// Settings of a soft access point, defaults filled in.
struct SoftApSettings
{
    QString ssid;
    QString passphrase; ///< of WPA2, 8 to 63 printable ASCII characters; empty: an open one
    QString bssid;      ///< empty: the interface's own address
    int channel = 1;
    QString country; ///< two capital letters; empty: as the radio has it
    QString address;
    int prefix = 24;
    QString dhcpFrom; ///< the addresses that stations get; empty: some of the network
    QString dhcpTo;
    QString domain;            ///< the name under which stations find `address`; empty: none
    QByteArray vendorElements; ///< whole information elements, for the beacon
};

/// The addresses of an interface, as address records ("10.0.0.2/24", "fe80::1/64l").
struct Lease
{
    bool dhcp = false;
    QStringList ips;
    QStringList dns;
    QString gateway;
    QString gateway6;
};

/// The content of `InterfaceDetails`. Fields that do not apply to the kind keep their defaults.
struct InterfaceDetails
{
    enum class Kind { Absent, Wired, Wireless, SoftAp };

    Kind kind = Kind::Absent;
    QString mac;
    bool connected = false;
    Lease lease;
    bool cable = false; ///< wired: a cable is in
    std::optional<Security> security;
    QString ssid;
    QString bssid;
    int frequency = 0; ///< MHz
    int signal = 0;    ///< dBm
    int channel = 0;
};

/// One network that a scan has seen.
struct ScannedNetwork
{
    QString ssid;
    QString bssid;
    Security security = Security::Open;
    int signal = 0; ///< dBm
    int channel = 0;
    int frequency = 0; ///< MHz
    QByteArray informationElements;
    bool wpa3 = false; ///< offered too
};

/// The credentials that a WPS session has learnt.
struct WpsCredentials
{
    QString ssid;
    Security security = Security::Open; ///< `Open` or `WpaPsk`
    QString key;
};
