// SPDX-License-Identifier: Apache-2.0
#include "softap/softapstatus.h"

#include "softap/softapsettings.h"

namespace {

OrvaNetworkSoftApRequestStatus statusOf(const LiveSoftApRequest& live, const QString& interface,
                                        const SoftAp& softAp)
{
    OrvaNetworkSoftApRequestStatus status;
    status.setName(live.request.name());
    status.setInterface(interface);
    status.setSettings(maskedSoftApSettings(live.request.settings()));
    status.setApplied(maskedSoftApSettings(softAp.sent));
    status.setHold(live.request.holdSoftAp());
    status.setBound(live.request.bound());
    status.setExpiresAtMs(live.due.value_or(0));
    status.setRunning(softAp.link == OrvaNetworkState::Connected);
    return status;
}

} // namespace

OrvaList<OrvaNetworkSoftApRequestStatus> softApRequestStatuses(const SoftApsByInterface& softAps)
{
    OrvaList<OrvaNetworkSoftApRequestStatus> rows;
    for (auto softAp = softAps.begin(); softAp != softAps.end(); ++softAp) {
        for (const LiveSoftApRequest& live : softAp->table.requests())
            rows << statusOf(live, softAp.key(), *softAp);
    }
    return rows;
}
