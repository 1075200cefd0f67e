// SPDX-License-Identifier: Apache-2.0
// The result of a scan.
#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumodecoding.h"
#include "target.h"

#include <QStringList>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QStringList keys =
        QStringLiteral("type signal bssid channel frequency ies").split(QLatin1Char(' '));
    const QVariantMap foreign = ForeignValues(data, size, keys).takeMap();
    const auto results = parseScanResults(lumoPlainMap(foreign));
    require(results.size() <= foreign.size());
    for (const OrvaNetworkScanResult& result : results)
        require(orvaMalformedField(OrvaNetworkScanResult::fields(), result.__hash()).isEmpty());
    return 0;
}
