// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QIODevice>

/// True if the root file system is a network file system, by a mount table in the form of
/// /proc/mounts. The first line for "/" that is not of the initial "rootfs" decides; without such a
/// line it is not.
[[nodiscard]] bool isRootOnNetwork(QIODevice& mountTable);
