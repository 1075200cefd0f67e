// SPDX-License-Identifier: Apache-2.0
#include "network/networkpaths.h"

ORVA_NETWORK_NODES(ORVA_NODE_PATH_DEFINITION)

QString OrvaNetworkName()
{
    return QStringLiteral("Networking");
}

int OrvaNetworkSoftApTimeout()
{
    return 60000;
}
