// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QIODevice>

/// Whether the root file system is a network file system, by a mount table as /proc/mounts has it.
/// The first line for "/" decides that is not of the initial "rootfs"; without one it is not.
[[nodiscard]] bool isRootOnNetwork(QIODevice& mountTable);
