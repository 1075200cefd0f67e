#include "softApStatus.h"

#include "softApDeadline.h"
#include "softApSettings.h"

namespace {

/// An overdue request has 1 ms left: 0 says that it does not expire.
OrvaNetworkSoftApRequestStatus statusOf(const OrvaNetworkProfileSoftApRequest& request,
                                        const QString& interface, bool running, qint64 nowMs)
{
    OrvaNetworkSoftApRequestStatus status;
    status.setName(request.name());
    status.setInterface(interface);
    // The known fields alone: whatever else a requester sends along may be a key.
    status.setSettings(mergeSoftApSettings(request.settings(), {}));
    status.setHold(request.holdSoftAp());
    status.setExpiresInMs(
        request.timeout() == 0 ? 0 : qMax(1, millisecondsTo(request.timeout(), nowMs)));
    status.setRunning(running);
    return status;
}

} // namespace

OrvaList<OrvaNetworkSoftApRequestStatus>
softApRequestStatuses(const QMap<QString, SoftApTable>& tables,
                      const QMap<QString, OrvaNetworkProfileSoftApSettings>& active, qint64 nowMs)
{
    OrvaList<OrvaNetworkSoftApRequestStatus> rows;
    for (auto table = tables.begin(); table != tables.end(); ++table) {
        const bool running = !active.value(table.key()).isEmpty();
        for (const OrvaNetworkProfileSoftApRequest& request : table->requests())
            rows << statusOf(request, table.key(), running, nowMs);
    }
    return rows;
}
