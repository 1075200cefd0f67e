// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "softap/softap.h"

/// The end of a request that arrives at `nowMs` with the time-out `timeoutMs`; none where that is 0
/// or less.
[[nodiscard]] std::optional<qint64> softApDeadline(qint64 nowMs, qint32 timeoutMs);

/// The live request that ends the soonest, the first one found of several; nothing where none ends.
[[nodiscard]] std::optional<LiveSoftApRequest>
nextExpiringSoftApRequest(const SoftApsByInterface& softAps);
