// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "parser/command.h"

namespace ctl {

/// Why the command line cannot be understood, for a person: what is mistyped and what was probably
/// meant, else what the parser says of it in `fault`. A surplus argument that may be a key is not
/// repeated.
[[nodiscard]] QString usageFault(const Program& program, const QStringList& arguments,
                                 const QString& fault, bool hasSurplus);

} // namespace ctl
