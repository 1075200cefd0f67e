// SPDX-License-Identifier: Apache-2.0
#include "standins/standinnodes.h"

ORVA_STANDIN_NODES(ORVA_NODE_PATH_DEFINITION)

const CMNodeRow& standinNode(const CMPath& path)
{
    static constexpr CMNodeRow table[] = {ORVA_STANDIN_NODES(ORVA_NODE_ROW)};
    return CMNodeRow::find(table, path);
}
