// SPDX-License-Identifier: Apache-2.0
// The credentials that a WPS session brought.
#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumodecoding.h"
#include "target.h"

#include <QStringList>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QStringList keys = QStringLiteral("ssid type wpa_psk").split(QLatin1Char(' '));
    const OrvaNetworkInterface network =
        parseWpsCredentials(lumoPlainMap(ForeignValues(data, size, keys).takeMap()));
    require(network.dhcp());
    require(network.key().isEmpty() ||
            network.encryption() == OrvaNetworkProfileWirelessEncryption::WpaPsk);
    return 0;
}
