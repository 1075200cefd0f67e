// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// What stands for a key that is not shown, in the log and in what is published.
[[nodiscard]] inline QString orvaMask()
{
    return QStringLiteral("****");
}
