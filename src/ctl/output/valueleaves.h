// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvavalue.h"

#include <QMap>

namespace ctl {

/// One thing in a value that can change, as a person reads it: a scalar, or a record that comes or
/// goes.
struct Leaf
{
    QString text;
    QVariant value; ///< the same for a machine, with the numbers of enumerations
    QString parent; ///< place of the record around it; empty for none
    bool isRecord = false;
};

/// A value taken apart: what is in it, by its place.
using Leaves = QMap<QString, Leaf>;

/// The places in a record start below its type; a scalar's place is empty.
[[nodiscard]] Leaves leavesOf(const OrvaValue& value);

} // namespace ctl
