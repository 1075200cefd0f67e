// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "api/core/orvaresult.h"

/// Why a step failed, in words for a person.
struct Failure
{
    QString text;

    [[nodiscard]] QString message() const { return text; }
};

/// What a step comes to: its value, where it has one, or why it failed.
template <class T = void>
using Result = OrvaResult<T, Failure>;
