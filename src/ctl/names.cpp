// SPDX-License-Identifier: Apache-2.0
#include "names.h"

#include "output.h"

namespace ctl {

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
