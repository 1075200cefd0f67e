// SPDX-License-Identifier: Apache-2.0
#include "power/powernodes.h"

ORVA_POWER_NODES(ORVA_NODE_PATH_DEFINITION)

const CMNodeRow& orvaPowerNode(const CMPath& path)
{
    static constexpr CMNodeRow table[] = {ORVA_POWER_NODES(ORVA_NODE_ROW)};
    return CMNodeRow::find(table, path);
}
