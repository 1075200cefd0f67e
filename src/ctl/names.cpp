#include "names.h"

#include "output.h"

#include "core/orvaplainvalue.h"
#include "network/networkenums.h"

#include <QHash>

namespace ctl {

namespace {

template <typename Enumeration>
QString nameOf(const QVariant& value)
{
    const auto known = OrvaCodec<Enumeration>::decode(value);
    return known ? Enumeration::toString(*known) : value.toString();
}

using Namer = QString (*)(const QVariant&);

/// The fields that hold the same enumeration wherever they occur.
const QHash<QString, Namer>& namers()
{
    static const QHash<QString, Namer> table = {
        {QStringLiteral("state"), &nameOf<OrvaNetworkState>},
        {QStringLiteral("networkState"), &nameOf<OrvaNetworkState>},
        {QStringLiteral("connectingStatus"), &nameOf<OrvaNetworkConnectingStatus>},
        {QStringLiteral("status"), &nameOf<OrvaNetworkWpsStatus>},
        {QStringLiteral("encryption"), &nameOf<OrvaNetworkProfileWirelessEncryption>},
        {QStringLiteral("protocol"), &nameOf<OrvaNetworkAddressProtocol>},
        {QStringLiteral("scope"), &nameOf<OrvaNetworkAddressScope>},
        {QStringLiteral("airplaneModeType"), &nameOf<OrvaAirplaneModeType>},
    };
    return table;
}

} // namespace

QString readableValue(const QString& field, const QVariant& value)
{
    const Namer name = namers().value(field);
    if (name)
        return name(value);
    return value.userType() == QMetaType::QString ? value.toString()
                                                  : QString::fromUtf8(OrvaPlain::toJson(value));
}

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

} // namespace ctl
