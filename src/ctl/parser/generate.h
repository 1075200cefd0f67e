// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "parser/command.h"

namespace ctl {

/// The manual page orvactl(1), from the description of the commands.
std::string manPage(const Program& program);

} // namespace ctl
