// SPDX-License-Identifier: Apache-2.0
#include "core/cmnoderow.h"

#include <algorithm>

const CMNodeRow& CMNodeRow::find(const CMNodeRow* begin, const CMNodeRow* end, const CMPath& path)
{
    const auto* row = std::find_if(begin, end, [&path](const CMNodeRow& candidate) {
        return path.toString() == QLatin1String(candidate.path);
    });
    if (row == end)
        qFatal("no row for the node %s", qPrintable(path.toString()));
    return *row;
}
