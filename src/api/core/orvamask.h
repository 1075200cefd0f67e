// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// The text in the place of a key that is not shown, in logs and in published values.
[[nodiscard]] inline QString orvaMask()
{
    return QStringLiteral("****");
}
