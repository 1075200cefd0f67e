// SPDX-License-Identifier: Apache-2.0
#include "softap/softapdeadline.h"

std::optional<qint64> softApDeadline(qint64 nowMs, qint32 timeoutMs)
{
    return timeoutMs > 0 ? std::optional(nowMs + timeoutMs) : std::nullopt;
}

std::optional<LiveSoftApRequest> nextExpiringSoftApRequest(const SoftApsByInterface& softAps)
{
    std::optional<LiveSoftApRequest> next;
    for (const SoftAp& softAp : softAps) {
        for (const LiveSoftApRequest& live : softAp.table.requests()) {
            if (live.due && (!next || *live.due < *next->due))
                next = live;
        }
    }
    return next;
}
