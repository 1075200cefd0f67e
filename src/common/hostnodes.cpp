// SPDX-License-Identifier: Apache-2.0
#include "common/hostnodes.h"

ORVA_HOST_NODES(ORVA_NODE_PATH_DEFINITION)

const CMNodeRow& hostNode(const CMPath& path)
{
    static constexpr CMNodeRow table[] = {ORVA_HOST_NODES(ORVA_NODE_ROW)};
    return CMNodeRow::find(table, path);
}
