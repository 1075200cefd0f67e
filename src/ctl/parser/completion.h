// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "parser/command.h"

#include <QStringList>

namespace ctl {

/// The words that may stand for the last of `words`, which are those after "orvactl", one on a
/// line with a tab and what it means; the exit status. Live ones are asked of the host, two seconds
/// at most. What does not print, or is two lines, is left out.
int complete(const Program& program, const QStringList& words);

/// The status that has the shell complete names of files.
constexpr int completesFiles = 10;

/// The script that has a shell ask complete(): "bash", "zsh" or "fish". It evaluates nothing that
/// it is told.
std::string completionScript(const std::string& shell);

} // namespace ctl
