// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// Kills at once every process that has `word` in its command line: an engine that lost its keeper,
/// or is left of a lumod that was killed. The word, the name of a file of ours say, is in no other.
void killProcessesWith(const QString& word);
