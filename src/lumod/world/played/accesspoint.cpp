// SPDX-License-Identifier: Apache-2.0
#include "world/played/accesspoint.h"

#include "wire.h"

#include <QRegularExpression>
#include <QVector>

namespace {

std::optional<Security> securityFrom(const QString& text)
{
    for (const auto security :
         {Security::Open, Security::WpaPsk, Security::Wep, Security::Enterprise})
        if (text == toString(security))
            return security;
    return std::nullopt;
}

/// Fails with the first thing that cannot be.
Result<> check(const AccessPoint& point)
{
    constexpr int weakest = -120;
    constexpr int minKey = 8;
    constexpr int maxKey = 64;
    if (!wire::isSsid(point.ssid))
        return Failure{QStringLiteral("ssid must have 1 to 32 bytes")};
    if (!isHardwareAddress(point.bssid))
        return Failure{QStringLiteral("bssid must be six hexadecimal pairs with colons")};
    if (point.frequency == 0)
        return Failure{QStringLiteral("channel does not exist")};
    if (point.signal < weakest || point.signal > 0)
        return Failure{QStringLiteral("signal must be -120 to 0 dBm")};
    const auto size = point.key.toUtf8().size();
    if (point.security == Security::WpaPsk && (size < minKey || size > maxKey))
        return Failure{QStringLiteral("key must have 8 to 64 bytes")};
    return {};
}

/// True when each key of `changes` is one of an access point's and has its type.
bool isWellTyped(const QVariantMap& changes)
{
    static const QStringList texts{QStringLiteral("ssid"), QStringLiteral("bssid"),
                                   QStringLiteral("security"), QStringLiteral("key"),
                                   QStringLiteral("network")};
    static const QStringList integers{QStringLiteral("channel"), QStringLiteral("frequency"),
                                      QStringLiteral("signal")};
    static const QStringList switches{QStringLiteral("wpa3"), QStringLiteral("wps"),
                                      QStringLiteral("hidden")};
    for (auto entry = changes.begin(); entry != changes.end(); ++entry) {
        const auto key = entry.key().toUtf8();
        const bool fine = texts.contains(entry.key()) ? wire::text(changes, key).has_value()
                          : integers.contains(entry.key())
                              ? wire::integer(changes, key).has_value()
                              : switches.contains(entry.key()) && wire::boolean(changes, key);
        if (!fine)
            return false;
    }
    return true;
}

/// The RSN element: version 1, CCMP for group and pairs, and the ways to authenticate.
QByteArray robustSecurity(const QVector<QByteArray>& ways)
{
    auto content = QByteArray::fromHex("0100000fac040100000fac04");
    content.append(static_cast<char>(ways.size())).append('\0');
    for (const auto& way : ways)
        content += QByteArray::fromHex("000fac") + way;
    return content + QByteArray(2, '\0');
}

QByteArray element(int id, const QByteArray& content)
{
    QByteArray bytes;
    bytes.append(static_cast<char>(id));
    bytes.append(static_cast<char>(content.size()));
    return bytes + content;
}

} // namespace

QString toString(Security security)
{
    switch (security) {
    case Security::Open:
        return QStringLiteral("open");
    case Security::WpaPsk:
        return QStringLiteral("wpa-psk");
    case Security::Wep:
        return QStringLiteral("wep");
    case Security::Enterprise:
        return QStringLiteral("enterprise");
    case Security::EnhancedOpen:
        return QStringLiteral("enhanced-open");
    }
    return {};
}

bool isHardwareAddress(const QString& text)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\A[0-9A-Fa-f]{2}(:[0-9A-Fa-f]{2}){5}\\z"));
    return pattern.match(text).hasMatch();
}

int frequencyOf(int channel)
{
    constexpr int lastOf2GHz = 14;
    constexpr int lastOf5GHz = 177;
    if (channel == lastOf2GHz)
        return 2484;
    if (channel >= 1 && channel < lastOf2GHz)
        return 2407 + 5 * channel;
    if (channel >= 32 && channel <= lastOf5GHz)
        return 5000 + 5 * channel;
    return 0;
}

Result<AccessPoint> changed(AccessPoint point, const QVariantMap& changes)
{
    if (!isWellTyped(changes))
        return Failure{QStringLiteral("an unknown key, or a value of a wrong type")};
    point.ssid = wire::text(changes, "ssid").value_or(point.ssid);
    point.bssid = wire::text(changes, "bssid").value_or(point.bssid);
    if (const auto channel = wire::integer(changes, "channel")) {
        point.channel = *channel;
        point.frequency = frequencyOf(*channel);
    }
    point.frequency = wire::integer(changes, "frequency").value_or(point.frequency);
    point.signal = wire::integer(changes, "signal").value_or(point.signal);
    point.key = wire::text(changes, "key").value_or(point.key);
    point.wpa3 = wire::boolean(changes, "wpa3").value_or(point.wpa3);
    point.wps = wire::boolean(changes, "wps").value_or(point.wps);
    point.hidden = wire::boolean(changes, "hidden").value_or(point.hidden);
    point.network = wire::text(changes, "network").value_or(point.network);
    const auto security =
        securityFrom(wire::text(changes, "security").value_or(toString(point.security)));
    if (!security)
        return Failure{QStringLiteral("security must be open, wpa-psk, wep or enterprise")};
    point.security = *security;
    const auto sound = check(point);
    if (!sound)
        return sound.error();
    return point;
}

QByteArray informationElements(const AccessPoint& point)
{
    constexpr int ssid = 0;
    constexpr int channel = 3;
    constexpr int rsn = 48;
    constexpr int vendor = 221;
    QByteArray elements = element(ssid, point.ssid.toUtf8());
    elements += element(channel, QByteArray(1, static_cast<char>(point.channel)));
    const QByteArray account("\1");
    const QByteArray passPhrase("\2");
    const QByteArray sae("\10");
    if (point.security == Security::WpaPsk)
        elements += element(rsn, robustSecurity(point.wpa3 ? QVector<QByteArray>{passPhrase, sae}
                                                           : QVector<QByteArray>{passPhrase}));
    if (point.security == Security::Enterprise)
        elements += element(rsn, robustSecurity({account}));
    if (point.wps) // version 1.0, configured
        elements += element(vendor, QByteArray::fromHex("0050f204104a0001101044000102"));
    return elements;
}
