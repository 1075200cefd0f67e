// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// The beginning of the names of all soft-AP interfaces.
inline QLatin1String softApPrefix()
{
    return QLatin1String("uap");
}

/// The soft-AP interface of a request that names none.
[[nodiscard]] inline QString defaultSoftApInterface()
{
    return softApPrefix() + QLatin1Char('0');
}

/// True if the interface of that name carries a soft access point.
[[nodiscard]] inline bool isSoftApInterface(const QString& interface)
{
    return interface.startsWith(softApPrefix());
}
