// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "literals.h"

#include "core/orvaplainvalue.h"
#include "core/orvavalue.h"

/// A value from its JSON text.
inline OrvaValue json(const QByteArray& text)
{
    return OrvaValue(OrvaPlain::fromJson(text)->toHash());
}
