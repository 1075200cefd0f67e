// SPDX-License-Identifier: Apache-2.0
#include "network/networknodes.h"

const CMNodeRow& orvaNetworkNode(const CMPath& path)
{
    static constexpr CMNodeRow table[] = {ORVA_NETWORK_NODES(ORVA_NODE_ROW)};
    return CMNodeRow::find(table, path);
}
