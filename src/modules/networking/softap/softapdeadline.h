// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "softap/softap.h"

/// When a request ends that arrives at `nowMs` and asks for `timeoutMs`; nothing where that is 0 or
/// less.
[[nodiscard]] std::optional<qint64> softApDeadline(qint64 nowMs, qint32 timeoutMs);

/// The live request that ends the soonest, the first one found of several; nothing where none ends.
[[nodiscard]] std::optional<LiveSoftApRequest>
nextExpiringSoftApRequest(const SoftApsByInterface& softAps);
