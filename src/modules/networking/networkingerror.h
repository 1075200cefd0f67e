// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmerror.h"

/// The error named "error" with a translatable text, raised in the context that is given: the
/// signature of a function.
[[nodiscard]] inline CMError networkingError(const char* signature, const char* text)
{
    return CMError(QStringLiteral("error"), TrString(trExtractContext(signature), text));
}

/// The error named "Error", which programs know from a few of the requests.
[[nodiscard]] inline CMError networkingFailure(const TrString& text)
{
    return CMError(QStringLiteral("Error"), text);
}
