// SPDX-License-Identifier: Apache-2.0
#include "scan/scanrow.h"

OrvaRoles scanRow(const OrvaNetworkScanResult& result)
{
    const QString ssid = result.ssid();
    OrvaRoles row;
    row.setId(QString::fromLatin1(ssid.toUtf8().toHex()));
    row.setTitle(ssid);
    row.setType(OrvaRolesType::WirelessScan);
    row.setValue(OrvaValue::of(result));
    return row;
}
