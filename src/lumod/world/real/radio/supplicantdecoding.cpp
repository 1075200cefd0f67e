// SPDX-License-Identifier: Apache-2.0
#include "world/real/radio/supplicantdecoding.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QHash>

#include <algorithm>
#include <limits>

namespace {

constexpr int longestName = 32;
constexpr int addressBytes = 6;

std::optional<int> number(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
        return value.toInt();
    case QMetaType::UInt:
        if (value.toUInt() <= static_cast<uint>(std::numeric_limits<int>::max()))
            return value.toInt();
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

std::optional<QByteArray> bytes(const QVariant& value)
{
    return value.userType() == QMetaType::QByteArray ? std::optional(value.toByteArray())
                                                     : std::nullopt;
}

QVariantMap map(const QVariant& value)
{
    if (value.userType() == QMetaType::QVariantMap)
        return value.toMap();
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    return argument.currentSignature() == QLatin1String("a{sv}") ? qdbus_cast<QVariantMap>(argument)
                                                                 : QVariantMap();
}

QStringList texts(const QVariant& value)
{
    return value.userType() == QMetaType::QStringList ? value.toStringList() : QStringList();
}

bool isPassPhrase(const QByteArray& key)
{
    constexpr int shortest = 8;
    constexpr int longest = 63;
    return key.size() >= shortest && key.size() <= longest && supplicant::nameOf(key);
}

} // namespace

namespace supplicant {

/// A pass phrase opens WPA, WPA2 and WPA3 networks alike.
Security Bss::security() const
{
    const auto ways = wpaWays + rsnWays;
    const auto has = [&ways](const char* part) {
        return std::any_of(ways.begin(), ways.end(), [part](const QString& way) {
            return way.contains(QLatin1String(part));
        });
    };
    if (has("psk") || has("sae"))
        return Security::WpaPsk;
    if (has("eap"))
        return Security::Enterprise;
    if (has("owe"))
        return Security::EnhancedOpen;
    return privacy || !ways.isEmpty() ? Security::Wep : Security::Open;
}

bool Bss::offersWpa3() const
{
    return std::any_of(rsnWays.begin(), rsnWays.end(),
                       [](const QString& way) { return way.contains(QLatin1String("sae")); });
}

std::optional<State> state(const QVariant& value)
{
    static const QHash<QString, State> states{{QStringLiteral("disconnected"), State::Away},
                                              {QStringLiteral("inactive"), State::Away},
                                              {QStringLiteral("interface_disabled"), State::Away},
                                              {QStringLiteral("scanning"), State::Away},
                                              {QStringLiteral("authenticating"), State::Joining},
                                              {QStringLiteral("associating"), State::Joining},
                                              {QStringLiteral("associated"), State::Joining},
                                              {QStringLiteral("4way_handshake"), State::Joining},
                                              {QStringLiteral("group_handshake"), State::Joining},
                                              {QStringLiteral("completed"), State::Joined}};
    const auto found = states.constFind(value.toString());
    return found == states.constEnd() ? std::nullopt : std::optional(*found);
}

QString objectPath(const QVariant& value)
{
    const auto path = value.value<QDBusObjectPath>().path();
    return path == QLatin1String("/") ? QString() : path;
}

void take(const QVariantMap& properties, Bss& bss)
{
    const auto value = [&properties](const char* name) {
        return properties.value(QLatin1String(name));
    };
    if (const auto ssid = bytes(value("SSID")); ssid && ssid->size() <= longestName)
        bss.ssid = *ssid;
    if (const auto address = bytes(value("BSSID")); address && address->size() == addressBytes)
        bss.bssid = *address;
    if (const auto elements = bytes(value("IEs")))
        bss.informationElements = *elements;
    bss.frequency = number(value("Frequency")).value_or(bss.frequency);
    bss.signal = number(value("Signal")).value_or(bss.signal);
    if (value("Privacy").userType() == QMetaType::Bool)
        bss.privacy = value("Privacy").toBool();
    if (value("WPA").isValid())
        bss.wpaWays = texts(map(value("WPA")).value(QStringLiteral("KeyMgmt")));
    if (value("RSN").isValid())
        bss.rsnWays = texts(map(value("RSN")).value(QStringLiteral("KeyMgmt")));
}

std::optional<QString> nameOf(const QByteArray& ssid)
{
    const auto text = QString::fromUtf8(ssid);
    if (ssid.isEmpty() || ssid.contains('\0') || text.toUtf8() != ssid)
        return std::nullopt;
    return text;
}

QString addressText(const QByteArray& bssid)
{
    return QString::fromLatin1(bssid.toHex(':'));
}

int channelOf(int frequency)
{
    struct Band
    {
        int first; ///< MHz
        int last;
        int zero; ///< where channel 0 would be
    };
    constexpr Band bands[] = {{2412, 2472, 2407}, {5160, 5885, 5000}, {5955, 7115, 5950}};
    if (frequency == 2484)
        return 14;
    if (frequency == 5935)
        return 2;
    for (const auto& band : bands)
        if (frequency >= band.first && frequency <= band.last)
            return (frequency - band.zero) / 5;
    return 0;
}

std::optional<int> signalLevel(const QVariant& poll)
{
    return number(map(poll).value(QStringLiteral("rssi")));
}

std::optional<WpsCredentials> wpsCredentials(const QVariantMap& map)
{
    const auto ssid = bytes(map.value(QStringLiteral("SSID"))).value_or(QByteArray());
    const auto key = bytes(map.value(QStringLiteral("Key"))).value_or(QByteArray());
    const auto ways = texts(map.value(QStringLiteral("AuthType")));
    const auto name = nameOf(ssid);
    if (!name || ssid.size() > longestName)
        return std::nullopt;
    if (ways == QStringList{QStringLiteral("open")} && key.isEmpty())
        return WpsCredentials{*name, Security::Open, {}};
    const bool psk = std::any_of(ways.begin(), ways.end(), [](const QString& way) {
        return way.contains(QLatin1String("psk"));
    });
    if (psk && (isPassPhrase(key) || isRawKey(QString::fromLatin1(key))))
        return WpsCredentials{*name, Security::WpaPsk, QString::fromUtf8(key)};
    return std::nullopt;
}

QString wpsFailure(const QString& event, const QVariantMap& details)
{
    constexpr int timedOut = 16;
    constexpr int wrongPin = 18;
    if (event == QLatin1String("pbc-overlap"))
        return QStringLiteral("WPS push buttons of two access points overlap");
    if (event == QLatin1String("timeout"))
        return QStringLiteral("WPS timed out");
    if (event != QLatin1String("fail"))
        return {};
    const int error = number(details.value(QStringLiteral("config_error"))).value_or(0);
    if (error == timedOut)
        return QStringLiteral("WPS timed out");
    if (error == wrongPin)
        return QStringLiteral("The access point was given another WPS PIN");
    return QStringLiteral("WPS failed with error %1").arg(error);
}

bool isRawKey(const QString& key)
{
    constexpr int digits = 64;
    const auto latin = key.toLatin1();
    return latin.size() == digits && QByteArray::fromHex(latin).toHex() == latin.toLower();
}

QVariantMap networkProperties(const KnownNetwork& network, bool backgroundScan)
{
    QVariantMap properties{{QStringLiteral("ssid"), network.ssid.toUtf8()},
                           {QStringLiteral("priority"), network.priority},
                           {QStringLiteral("scan_ssid"), 1}}; // it may hide its name
    if (!network.bssid.isEmpty())
        properties.insert(QStringLiteral("bssid"), network.bssid);
    if (backgroundScan)
        properties.insert(QStringLiteral("bgscan"), QStringLiteral("simple:30:-65:300"));
    auto ways = QStringLiteral("NONE");
    if (network.security == Security::WpaPsk) {
        const bool raw = isRawKey(network.key); // WPA3 wants the pass phrase
        ways = raw ? QStringLiteral("WPA-PSK WPA-PSK-SHA256")
                   : QStringLiteral("WPA-PSK WPA-PSK-SHA256 SAE");
        properties.insert(QStringLiteral("psk"),
                          raw ? QVariant(QByteArray::fromHex(network.key.toLatin1()))
                              : QVariant(network.key));
        properties.insert(QStringLiteral("ieee80211w"), 1);
    }
    properties.insert(QStringLiteral("key_mgmt"), ways);
    return properties;
}

} // namespace supplicant
