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
