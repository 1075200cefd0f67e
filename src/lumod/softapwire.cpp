// SPDX-License-Identifier: Apache-2.0
#include "softapwire.h"

#include "api/core/orvamask.h"
#include "log.h"
#include "wire.h"

#include <algorithm>

namespace {

const QString passphraseKey = QStringLiteral("passphrase");

bool isPassphrase(const QString& text)
{
    constexpr int shortest = 8;
    constexpr int longest = 63;
    const auto isPrintable = [](QChar c) { return c >= QLatin1Char(' ') && c <= QLatin1Char('~'); };
    return text.size() >= shortest && text.size() <= longest &&
           std::all_of(text.begin(), text.end(), isPrintable);
}

/// Six bytes, and not those of a group.
bool isStationAddress(const QString& text)
{
    constexpr int bytes = 6;
    const auto address = QByteArray::fromHex(text.toLatin1());
    return address.size() == bytes && QString::fromLatin1(address.toHex(':')) == text.toLower() &&
           (address.at(0) & 1) == 0 && address.count('\0') != bytes;
}

bool isCountry(const QString& text)
{
    const auto isLetter = [](QChar c) {
        return c.toUpper() >= QLatin1Char('A') && c.toUpper() <= QLatin1Char('Z');
    };
    return text.size() == 2 && std::all_of(text.begin(), text.end(), isLetter);
}

bool isLabel(const QString& text)
{
    constexpr int longest = 63;
    const auto isInside = [](QChar c) {
        return c.unicode() < 0x80 && (c.isLetterOrNumber() || c == QLatin1Char('-'));
    };
    return !text.isEmpty() && text.size() <= longest && !text.startsWith(QLatin1Char('-')) &&
           !text.endsWith(QLatin1Char('-')) && std::all_of(text.begin(), text.end(), isInside);
}

bool isDomain(const QString& text)
{
    constexpr int longest = 253;
    const auto labels = text.split(QLatin1Char('.'));
    return text.size() <= longest && std::all_of(labels.begin(), labels.end(), isLabel);
}

/// Hexadecimal digits of whole elements: a number, a length, and so many bytes.
bool isElements(const QString& text)
{
    constexpr int longest = 512; // beside what else a beacon has to hold
    const auto bytes = QByteArray::fromHex(text.toLatin1());
    if (QString::fromLatin1(bytes.toHex()) != text.toLower() || bytes.size() > longest)
        return false;
    int at = 0;
    while (at + 1 < bytes.size())
        at += 2 + static_cast<uchar>(bytes.at(at + 1));
    return at == bytes.size();
}

/// A channel of 2.4 or 5 GHz.
bool isChannel(int number)
{
    return (number >= 1 && number <= 14) || (number >= 36 && number <= 144 && number % 4 == 0) ||
           (number >= 149 && number <= 177 && number % 4 == 1);
}

/// One of a network that stations fit into.
bool isNetmask(const QString& text)
{
    constexpr int widest = 8;
    constexpr int narrowest = 30; // two addresses: the device's and one station's
    const int prefix = wire::prefixOf(text);
    return prefix >= widest && prefix <= narrowest;
}

/// The text under `key` if it fits; none, with a remark if there is another.
QString fitting(const QVariantMap& map, const char* key, bool (*fits)(const QString& text))
{
    const auto text = wire::text(map, key).value_or(QString());
    if (text.isEmpty() || fits(text))
        return text;
    qCWarning(lcLumod, "The soft AP's \"%s\" is unusable, ignoring it", key);
    return {};
}

void takeAddresses(const QVariantMap& map, SoftApSettings& settings)
{
    const auto address = fitting(map, "apAddress", wire::isIpv4);
    settings.address = address.isEmpty() ? QStringLiteral("192.168.4.1") : address;
    if (const auto mask = fitting(map, "apNetmask", isNetmask); !mask.isEmpty())
        settings.prefix = wire::prefixOf(mask);
    settings.dhcpFrom = fitting(map, "dhcpRangeFrom", wire::isIpv4);
    settings.dhcpTo = fitting(map, "dhcpRangeTo", wire::isIpv4);
}

} // namespace

Result<SoftApSettings> softApSettings(const QVariantMap& map)
{
    SoftApSettings settings;
    settings.ssid = wire::text(map, "ssid").value_or(QStringLiteral("lumod"));
    if (!wire::isSsid(settings.ssid))
        return Failure{QStringLiteral("The soft AP's SSID does not have 1 to 32 bytes")};
    settings.passphrase = wire::text(map, "passphrase").value_or(QString());
    if (map.contains(passphraseKey) && !isPassphrase(settings.passphrase))
        return Failure{QStringLiteral("The soft AP's pass phrase does not have 8 to 63 printable "
                                      "ASCII characters")};
    settings.bssid = fitting(map, "bssid", isStationAddress).toLower();
    if (const auto channel = wire::integer(map, "channel"); channel && isChannel(*channel))
        settings.channel = *channel;
    else if (channel)
        qCWarning(lcLumod, "The soft AP's \"channel\" is unusable, ignoring it");
    settings.country = fitting(map, "countryCode", isCountry).toUpper();
    takeAddresses(map, settings);
    settings.domain = fitting(map, "domainName", isDomain);
    settings.vendorElements =
        QByteArray::fromHex(fitting(map, "vendorSpecificData", isElements).toLatin1());
    return settings;
}

QVariantMap maskedSoftApSettings(const QVariantMap& map)
{
    QVariantMap masked = map;
    if (const auto found = masked.find(passphraseKey); found != masked.end())
        *found = orvaMask();
    return masked;
}
