// SPDX-License-Identifier: Apache-2.0
#include "softap/softapstatus.h"

namespace {

OrvaNetworkSoftApRequestStatus statusOf(const LiveSoftApRequest& live, const QString& interface,
                                        bool running)
{
    OrvaNetworkSoftApRequestStatus status;
    status.setName(live.request.name());
    status.setInterface(interface);
    status.setSettings(live.request.settings());
    status.setHold(live.request.holdSoftAp());
    status.setExpiresAtMs(live.due.value_or(0));
    status.setRunning(running);
    return status;
}

} // namespace

OrvaList<OrvaNetworkSoftApRequestStatus> softApRequestStatuses(const SoftApsByInterface& softAps)
{
    OrvaList<OrvaNetworkSoftApRequestStatus> rows;
    for (auto softAp = softAps.begin(); softAp != softAps.end(); ++softAp) {
        const bool running = softAp->link == OrvaNetworkState::Connected;
        for (const LiveSoftApRequest& live : softAp->table.requests())
            rows << statusOf(live, softAp.key(), running);
    }
    return rows;
}
