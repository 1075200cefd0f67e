// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "output/outcome.h"

namespace ctl {

/// The text in the file `file`, or on standard input where it is "-", without the line end that
/// closes it.
Outcome<QString> readText(const QString& file);

/// A key from the file `file`, from standard input where it is "-", or, where it is empty, from a
/// prompt on the terminal that shows nothing of what is typed. An empty key is an error.
Outcome<QString> readKey(const QString& file, const QString& prompt);

} // namespace ctl
