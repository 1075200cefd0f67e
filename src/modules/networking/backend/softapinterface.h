// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// What the names of all soft-AP interfaces begin with.
inline QLatin1String softApPrefix()
{
    return QLatin1String("uap");
}

/// The soft-AP interface of a request that names none.
[[nodiscard]] inline QString defaultSoftApInterface()
{
    return softApPrefix() + QLatin1Char('0');
}

/// Whether the interface of that name carries a soft access point.
[[nodiscard]] inline bool isSoftApInterface(const QString& interface)
{
    return interface.startsWith(softApPrefix());
}
