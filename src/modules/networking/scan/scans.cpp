#include "networking.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "scan/scanrow.h"

#include <utility>

namespace {

/// How long the first request of a batch waits for results.
constexpr int scanTimeoutMs = 30000;

/// The translation context of what a scan request is answered.
constexpr const char* requestSignature =
    "void Networking::on_scanNetworks_req(const CMSetDataRequest&)";

QString idsOf(const QVector<OrvaRoles>& rows)
{
    QStringList ids;
    for (const OrvaRoles& row : rows)
        ids << row.id();
    return ids.join(QStringLiteral(", "));
}

} // namespace

void Networking::on_scanNetworks_req(const CMSetDataRequest& request)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    scanNetworks({request, m_clock()});
    stopIdleScanTimer();
}

void Networking::scanNetworks(const QueuedScan& scan)
{
    if (info().airplaneMode()) {
        LOG4CPLUS_INFO(networkingLogger(),
                       "Scan requested but airplaneMode is enabled, cannot scan at this time!");
        scan.request.fail(networkingError(
            requestSignature, "Scan network request failed as airplaneMode is enabled!"));
        return;
    }
    if (!m_scanTimer.isActive()) {
        Q_ASSERT(m_pendingScanReplies.isEmpty());
        Q_ASSERT(m_queueScanRequests.isEmpty());
        m_scanTimer.start(scanTimeoutMs);
    }
    m_wifiResource.requestWifiResource(WifiResource::Scan, true);
    if (m_lowlevel->interfaceStatus(info().wireless().name()) == Networking_LowLevel::Idle)
        startScan(scan.request);
    else
        m_queueScanRequests.append(scan);
}

void Networking::startScan(const CMSetDataRequest& request)
{
    clearScanResults();
    // The reply waits before the backend is asked, which may bring its results at once.
    m_pendingScanReplies.append(request.reply());
    const bool running = m_pendingScanReplies.size() > 1;
    if (running || m_lowlevel->scanNetworks())
        return;
    refuseScan();
}

void Networking::refuseScan()
{
    LOG4CPLUS_ERROR(networkingLogger(), "Scan failed.");
    clearScanResults();
    m_wifiResource.requestWifiResource(WifiResource::Scan, false);
    const auto refused = std::exchange(m_pendingScanReplies, {});
    for (const CMReply<QVariant>& reply : refused)
        reply.setError(networkingError(requestSignature, "Scan networks request failed."));
}

void Networking::stopIdleScanTimer()
{
    if (m_pendingScanReplies.isEmpty() && m_queueScanRequests.isEmpty())
        m_scanTimer.stop();
}

void Networking::clearScanResults()
{
    const QVector<OrvaRoles> cleared = m_scanResultsNode->rows();
    m_scanResultsNode->rowsClear();
    LOG4CPLUS_DEBUG(networkingLogger(), "ScanResults cleared: (" << idsOf(cleared) << ")");
}

void Networking::on_lowlevel_ScanResults(const QVector<OrvaNetworkScanResult>& results)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), Q_FUNC_INFO);
    m_scanTimer.stop();
    guardQueuedScans();
    const auto answered = std::exchange(m_pendingScanReplies, {});
    for (const OrvaNetworkScanResult& result : results)
        m_scanResultsNode->rowsSetById(scanRow(result));
    OrvaValue value;
    value.setNetworkScanResults(results);
    for (const CMReply<QVariant>& reply : answered)
        reply.finish(value.__variant());
    m_wifiResource.requestWifiResource(WifiResource::Scan, false);
}

/// The oldest request stands first in the queue, and waits no longer because of others' results.
void Networking::guardQueuedScans()
{
    if (m_queueScanRequests.isEmpty())
        return;
    const qint64 waitedMs = m_clock() - m_queueScanRequests.first().arrivedMs;
    m_scanTimer.start(
        static_cast<int>(qBound(qint64{0}, scanTimeoutMs - waitedMs, qint64{scanTimeoutMs})));
}

void Networking::startQueuedScans()
{
    if (m_queueScanRequests.isEmpty())
        return;
    const auto queued = std::exchange(m_queueScanRequests, {});
    for (const QueuedScan& scan : queued) {
        LOG4CPLUS_DEBUG(networkingLogger(), "Starting queued scan (InterfaceStatusChanged)");
        scanNetworks(scan);
    }
    stopIdleScanTimer();
    // What airplane mode refused leaves the claim that it made when it was queued.
    if (!m_scanTimer.isActive() && m_wifiResource.isActive(WifiResource::Scan))
        m_wifiResource.requestWifiResource(WifiResource::Scan, false);
}

void Networking::on_scanTimer_timeout()
{
    m_lowlevel->forgetScan();
    auto cancelled = std::exchange(m_pendingScanReplies, {});
    const auto queued = std::exchange(m_queueScanRequests, {});
    for (const QueuedScan& scan : queued)
        cancelled.append(scan.request.reply());
    if (cancelled.isEmpty())
        return;
    LOG4CPLUS_ERROR(networkingLogger(),
                    "Scan request timed out, cancelling " << cancelled.size() << " requests");
    for (const CMReply<QVariant>& reply : std::as_const(cancelled))
        reply.setError(networkingError(Q_FUNC_INFO, "Scan request timed out"));
}
