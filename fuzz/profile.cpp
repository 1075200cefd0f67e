// SPDX-License-Identifier: Apache-2.0
// A profile as somebody stored it, on its way to the daemon.
#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumoencoding.h"
#include "core/orvaplainvalue.h"
#include "target.h"

#include <QStringList>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QStringList keys =
        QStringLiteral("wired wireless wirelessNetworks ssid bssid key encryption dhcp ip netmask "
                       "gateway dns")
            .split(QLatin1Char(' '));
    const QVariantMap foreign = ForeignValues(data, size, keys).takeMap();
    const OrvaNetworkProfile profile(OrvaPlain::hashFromBus(foreign).value_or(QVariantHash()));
    const QVariantMap networks = lumoWirelessNetworks(profile.wirelessNetworks());
    for (const QVariant& network : networks)
        require(network.toMap().value(QStringLiteral("priority")).toInt() > 0);
    const QVariantMap settings = lumoIpSettings(profile.wired());
    require(settings.isEmpty() || settings.size() == 4);
    return 0;
}
