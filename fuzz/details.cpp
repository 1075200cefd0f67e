// SPDX-License-Identifier: Apache-2.0
// The details of interfaces, by their names.
#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumodecoding.h"
#include "target.h"

#include <QStringList>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QStringList keys =
        QStringLiteral("eth0 wlan0 uap0 Present Mac Connected CableStatus Dhcp Ips Dns Gateway "
                       "Gateway6 Encryption Ssid Bssid Frequency Signal Channel SoftApUp")
            .split(QLatin1Char(' '));
    const QVariantMap foreign = ForeignValues(data, size, keys).takeMap();
    QMap<QString, QVariantMap> details;
    for (auto entry = foreign.begin(); entry != foreign.end(); ++entry)
        details.insert(entry.key(), lumoPlainMap(entry.value().toMap()));
    const OrvaNetworkInfo info =
        parseNetworkState(details, QStringLiteral("eth0"), QStringLiteral("wlan0"));
    require(info.__contains(OrvaNetworkInfo::SoftAp()));
    require(orvaMalformedField(OrvaNetworkInfo::fields(), info.__hash()).isEmpty());
    return 0;
}
