// SPDX-License-Identifier: Apache-2.0
#include "output/names.h"

#include "output/output.h"

#include <chrono>

namespace ctl {

namespace {

QString spanText(qint64 ms)
{
    const struct
    {
        qint64 ms;
        const char* name;
    } units[] = {{86400000, "day"}, {3600000, "hour"}, {60000, "minute"}, {1000, "second"}};
    for (const auto& unit : units) {
        const qint64 count = ms / unit.ms;
        if (count > 0)
            return QStringLiteral("%1 %2%3").arg(count).arg(QLatin1String(unit.name),
                                                            QLatin1String(count > 1 ? "s" : ""));
    }
    return QStringLiteral("less than a second");
}

} // namespace

QString securityName(OrvaNetworkProfileWirelessEncryption encryption)
{
    switch (encryption) {
    case OrvaNetworkProfileWirelessEncryption::None:
        return QStringLiteral("open");
    case OrvaNetworkProfileWirelessEncryption::Wep:
        return QStringLiteral("WEP");
    case OrvaNetworkProfileWirelessEncryption::WpaPsk:
        return QStringLiteral("WPA-PSK");
    }
    return {};
}

QString unsupportedName(const QString& security)
{
    if (security == QLatin1String("wep"))
        return QStringLiteral("WEP");
    return printable(security);
}

QString securityName(const OrvaNetworkScanResult& network)
{
    if (!network.unsupported().isEmpty())
        return unsupportedName(network.unsupported()) + QStringLiteral(" (not supported)");
    const QString name = securityName(network.encryption());
    return network.wpa3() ? name + QStringLiteral(", WPA3") : name;
}

QString bandName(qint32 frequency)
{
    if (frequency <= 0)
        return {};
    if (frequency < 3000)
        return QStringLiteral("2.4 GHz");
    return frequency < 5925 ? QStringLiteral("5 GHz") : QStringLiteral("6 GHz");
}

QString addressesText(const OrvaList<OrvaNetworkAddress>& addresses)
{
    QStringList texts;
    for (const OrvaNetworkAddress& address : addresses) {
        QString text = address.ip();
        if (address.prefix() > 0)
            text += QStringLiteral("/%1").arg(address.prefix());
        if (address.dhcp())
            text += QStringLiteral(" (DHCP)");
        texts.append(text);
    }
    return printable(texts.join(QStringLiteral(", ")));
}

qint64 monotonicNow()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

QString agoText(qint64 monotonicMs)
{
    return spanText(monotonicNow() - monotonicMs) + QStringLiteral(" ago");
}

QString untilText(qint64 monotonicMs)
{
    return QStringLiteral("in ") + spanText(monotonicMs - monotonicNow());
}

QString reasonText(OrvaNetworkJoinReason reason)
{
    switch (reason) {
    case OrvaNetworkJoinReason::None:
        break;
    case OrvaNetworkJoinReason::NotInRange:
        return QStringLiteral("it is not in range");
    case OrvaNetworkJoinReason::KeyRefused:
        return QStringLiteral("it refused the key");
    case OrvaNetworkJoinReason::NoAddress:
        return QStringLiteral("it gave no address");
    case OrvaNetworkJoinReason::Refused:
        return QStringLiteral("it refused the device");
    case OrvaNetworkJoinReason::CableFirst:
        return QStringLiteral("the cable has precedence");
    case OrvaNetworkJoinReason::AirplaneMode:
        return QStringLiteral("airplane mode has the radio blocked");
    }
    return {};
}

} // namespace ctl
