// SPDX-License-Identifier: Apache-2.0
#include "network/networkrules.h"

#include "core/orvamask.h"

#include <QHostAddress>

#include <algorithm>

namespace {

bool isPrintableAscii(QChar character)
{
    return character >= QLatin1Char(' ') && character <= QLatin1Char('~');
}

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

bool isHexDigit(QChar character)
{
    return isDigit(character) || (character >= QLatin1Char('a') && character <= QLatin1Char('f')) ||
           (character >= QLatin1Char('A') && character <= QLatin1Char('F'));
}

QString checkPreSharedKey(const QString& key)
{
    if (key == orvaMask())
        return QStringLiteral("The key of this network is not known. Please enter it.");
    if (key.size() == 64 && std::all_of(key.begin(), key.end(), isHexDigit))
        return QString();
    if (key.size() < 8 || key.size() > 63)
        return QStringLiteral("A WPA key has 8 to 63 characters, or 64 hexadecimal digits.");
    if (!std::all_of(key.begin(), key.end(), isPrintableAscii))
        return QStringLiteral("A WPA key has printable ASCII characters only.");
    return QString();
}

/// Five or thirteen characters, or twice as many hexadecimal digits.
QString checkWepKey(const QString& key)
{
    const bool isText = (key.size() == 5 || key.size() == 13) &&
                        std::all_of(key.begin(), key.end(), isPrintableAscii);
    const bool isHex =
        (key.size() == 10 || key.size() == 26) && std::all_of(key.begin(), key.end(), isHexDigit);
    return isText || isHex
               ? QString()
               : QStringLiteral(
                     "A WEP key has 5 or 13 characters, or 10 or 26 hexadecimal digits.");
}

} // namespace

QString orvaNetworkIsKeyValid(const QString& key, OrvaNetworkProfileWirelessEncryption encryption)
{
    switch (encryption) {
    case OrvaNetworkProfileWirelessEncryption::None:
        return key.isEmpty() ? QString() : QStringLiteral("An unsecured network takes no key.");
    case OrvaNetworkProfileWirelessEncryption::Wep:
        return checkWepKey(key);
    case OrvaNetworkProfileWirelessEncryption::WpaPsk:
        return checkPreSharedKey(key);
    }
    return QStringLiteral("The security of this network is not known.");
}

QString orvaPrefixToNetmask(qint32 prefix)
{
    const int bits = qBound(0, prefix, 32);
    const quint32 mask = bits == 0 ? 0 : ~quint32(0) << (32 - bits);
    return QHostAddress(mask).toString();
}

QString orvaIPv4Address(const QString& text)
{
    QStringList numbers = text.split(QLatin1Char('.'));
    if (numbers.size() != 4)
        return QString();
    for (QString& number : numbers) {
        const bool isNumber = !number.isEmpty() && number.size() <= 3 &&
                              std::all_of(number.begin(), number.end(), isDigit);
        if (!isNumber || number.toInt() > 255)
            return QString();
        number = QString::number(number.toInt());
    }
    return numbers.join(QLatin1Char('.'));
}

QString orvaNetworkInfoToGateway4(const OrvaNetworkInfo& info)
{
    const auto gateways = info.gateways();
    const auto first =
        std::find_if(gateways.begin(), gateways.end(), [](const OrvaNetworkAddress& gateway) {
            return gateway.protocol() == OrvaNetworkAddressProtocol::IPv4 &&
                   !gateway.ip().isEmpty();
        });
    return first != gateways.end() ? first->ip() : QString();
}
