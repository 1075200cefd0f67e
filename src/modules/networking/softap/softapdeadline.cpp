#include "softap/softapdeadline.h"

namespace {

/// Milliseconds from `from` to `to` on a clock that wraps.
qint32 difference(quint32 from, quint32 to)
{
    return static_cast<qint32>(to - from);
}

bool isEarlier(qint32 left, qint32 right)
{
    return difference(static_cast<quint32>(left), static_cast<quint32>(right)) > 0;
}

} // namespace

qint32 softApDeadline(qint64 nowMs, qint32 timeoutMs)
{
    if (timeoutMs <= 0)
        return 0;
    const auto deadline =
        static_cast<qint32>(static_cast<quint32>(nowMs) + static_cast<quint32>(timeoutMs));
    return deadline == 0 ? 1 : deadline;
}

qint32 millisecondsTo(qint32 deadline, qint64 nowMs)
{
    return difference(static_cast<quint32>(nowMs), static_cast<quint32>(deadline));
}

OrvaNetworkProfileSoftApRequest nextExpiringSoftApRequest(const QMap<QString, SoftApTable>& tables)
{
    OrvaNetworkProfileSoftApRequest next;
    for (const SoftApTable& table : tables) {
        for (const OrvaNetworkProfileSoftApRequest& request : table.requests()) {
            if (request.timeout() == 0)
                continue;
            if (next.isEmpty() || isEarlier(request.timeout(), next.timeout()))
                next = request;
        }
    }
    return next;
}
