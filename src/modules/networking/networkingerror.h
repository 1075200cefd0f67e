// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"

/// The error named "error" with a translatable text, raised by the function whose signature
/// (`Q_FUNC_INFO`) is given.
[[nodiscard]] inline CMError networkingError(const char* signature, const char* text)
{
    return CMError(QStringLiteral("error"), TrString(trExtractContext(signature), text));
}
