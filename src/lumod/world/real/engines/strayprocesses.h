// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// Kills at once every process of that name with `word`, the name of a file of ours say, in its
/// command line: an engine that lost its keeper, or is left of a lumod that was killed.
void killProcesses(const QString& name, const QString& word);
