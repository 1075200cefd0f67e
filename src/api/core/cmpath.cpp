// SPDX-License-Identifier: Apache-2.0
#include "core/cmpath.h"

#include "core/orvalogtext.h"

#include <ostream>

std::ostream& operator<<(std::ostream& stream, const CMPath& path)
{
    return stream << orvaLogText(path.toString()).toUtf8().constData();
}
