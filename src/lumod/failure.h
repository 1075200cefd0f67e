// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "api/core/orvaresult.h"

/// The reason of a step's failure, in words for a person.
struct Failure
{
    QString text;

    [[nodiscard]] QString message() const { return text; }
};

/// The outcome of a step: its value, where it has one, or the reason of its failure.
template <class T = void>
using Result = OrvaResult<T, Failure>;
