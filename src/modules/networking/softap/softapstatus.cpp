#include "softap/softapstatus.h"

#include "softap/softapdeadline.h"

namespace {

OrvaNetworkSoftApRequestStatus statusOf(const OrvaNetworkProfileSoftApRequest& request,
                                        const QString& interface, bool running, qint64 nowMs)
{
    OrvaNetworkSoftApRequestStatus status;
    status.setName(request.name());
    status.setInterface(interface);
    status.setSettings(request.settings());
    status.setHold(request.holdSoftAp());
    status.setExpiresAtMs(
        request.timeout() == 0 ? 0 : nowMs + millisecondsTo(request.timeout(), nowMs));
    status.setRunning(running);
    return status;
}

} // namespace

OrvaList<OrvaNetworkSoftApRequestStatus>
softApRequestStatuses(const QMap<QString, SoftApTable>& tables,
                      const QHash<QString, OrvaNetworkState>& links, qint64 nowMs)
{
    OrvaList<OrvaNetworkSoftApRequestStatus> rows;
    for (auto table = tables.begin(); table != tables.end(); ++table) {
        const bool running = links.value(table.key()) == OrvaNetworkState::Connected;
        for (const OrvaNetworkProfileSoftApRequest& request : table->requests())
            rows << statusOf(request, table.key(), running, nowMs);
    }
    return rows;
}
