// SPDX-License-Identifier: Apache-2.0
#include "scan/scans.h"

#include "core/orva.h"
#include "monotonicclock.h"
#include "network/networkpaths.h"
#include "networkingerror.h"
#include "networkinglog.h"
#include "nodelookup.h"
#include "picture/picture.h"
#include "scan/scanrow.h"

#include <utility>

namespace {

/// The time for which the oldest request waits for results.
constexpr int scanTimeoutMs = 30000;

// The names of the slots in the log and in the translations.
constexpr auto requestContext = "void Networking::on_scanNetworks_req(const CMSetDataRequest&)";
constexpr auto resultsContext =
    "void Networking::on_lowlevel_ScanResults(const QVector<OrvaNetworkScanResult>&)";
constexpr auto timeoutContext = "void Networking::on_scanTimer_timeout()";

QString idsOf(const QVector<OrvaRoles>& rows)
{
    QStringList ids;
    for (const OrvaRoles& row : rows)
        ids << row.id();
    return ids.join(QStringLiteral(", "));
}

void failAll(const QVector<CMReply<QVariant>>& replies, const CMError& error)
{
    for (const CMReply<QVariant>& reply : replies)
        reply.setError(error);
}

} // namespace

Scans::Scans(const CMNodes& nodes, Networking_LowLevel& backend, const Picture& picture,
             QObject* parent)
    : QObject(parent)
    , m_lowlevel(backend)
    , m_picture(picture)
    , m_scanResultsNode(nodeAt<CMListRowsNode>(nodes, OrvaNetworkScanResultsPath()))
    , m_unsupportedNode(nodeAt<CMListRowsNode>(nodes, OrvaNetworkUnsupportedNetworksPath()))
{
    m_scanTimer.setSingleShot(true);
    connect(&m_scanTimer, &QTimer::timeout, this, &Scans::on_scanTimer_timeout);
    connect(&backend, &Networking_LowLevel::ScanResults, this, &Scans::on_lowlevel_ScanResults);
    connect(&backend, &Networking_LowLevel::UnsupportedNetworks, this,
            &Scans::on_lowlevel_UnsupportedNetworks);
}

void Scans::on_scanNetworks_req(const CMSetDataRequest& request)
{
    startOrQueue({request, monotonicMs()});
    stopIdleScanTimer();
}

void Scans::startOrQueue(const ScanRequest& scan)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), requestContext);
    if (m_picture.info().airplaneMode()) {
        LOG4CPLUS_INFO(networkingLogger(),
                       "Scan requested but airplaneMode is enabled, cannot scan at this time!");
        return scan.request.fail(networkingError(
            requestContext, "Scan network request failed as airplaneMode is enabled!"));
    }
    if (!m_scanTimer.isActive()) {
        Q_ASSERT(m_pendingScanReplies.isEmpty());
        Q_ASSERT(m_queueScanRequests.isEmpty());
        m_scanTimer.start(scanTimeoutMs);
    }
    Q_EMIT wifiNeeded(true);
    const QString wireless = m_picture.info().wireless().name();
    if (m_lowlevel.interfaceStatus(wireless) == Networking_LowLevel::Idle)
        startScan(scan.request);
    else
        m_queueScanRequests.append(scan);
}

void Scans::startScan(const CMSetDataRequest& request)
{
    clearScanResults();
    // Kept before the backend is asked, which may bring its results inside the call.
    m_pendingScanReplies.append(request.reply());
    const bool running = m_pendingScanReplies.size() > 1;
    if (!running && !m_lowlevel.scanNetworks())
        refuseScan();
}

void Scans::refuseScan()
{
    LOG4CPLUS_ERROR(networkingLogger(), "Scan failed.");
    clearScanResults();
    Q_EMIT wifiNeeded(false);
    failAll(std::exchange(m_pendingScanReplies, {}),
            networkingError(requestContext, "Scan networks request failed."));
}

void Scans::stopIdleScanTimer()
{
    if (m_pendingScanReplies.isEmpty() && m_queueScanRequests.isEmpty())
        m_scanTimer.stop();
}

void Scans::clearScanResults()
{
    const QVector<OrvaRoles> cleared = m_scanResultsNode->rows();
    m_scanResultsNode->rowsClear();
    m_unsupportedNode->rowsClear();
    LOG4CPLUS_DEBUG(networkingLogger(), "ScanResults cleared: (" << idsOf(cleared) << ")");
}

void Scans::on_lowlevel_ScanResults(const QVector<OrvaNetworkScanResult>& results)
{
    const auto trace = dbglog_scopedFunction(networkingLogger(), resultsContext);
    m_scanTimer.stop();
    guardQueuedScans();
    const auto answered = std::exchange(m_pendingScanReplies, {});
    for (const OrvaNetworkScanResult& result : results)
        m_scanResultsNode->rowsSetById(scanRow(result));
    const QVariant value = OrvaValue::of(OrvaList<OrvaNetworkScanResult>(results)).__variant();
    for (const CMReply<QVariant>& reply : answered)
        reply.finish(value);
    Q_EMIT wifiNeeded(false);
}

void Scans::on_lowlevel_UnsupportedNetworks(const QVector<OrvaNetworkScanResult>& networks)
{
    m_unsupportedNode->rowsClear();
    for (const OrvaNetworkScanResult& network : networks)
        m_unsupportedNode->rowsSetById(scanRow(network));
}

// Results for others do not prolong the wait of the queued requests.
void Scans::guardQueuedScans()
{
    if (m_queueScanRequests.isEmpty())
        return;
    const qint64 waitedMs = monotonicMs() - m_queueScanRequests.first().arrivedMs;
    m_scanTimer.start(
        static_cast<int>(qBound(qint64{0}, scanTimeoutMs - waitedMs, qint64{scanTimeoutMs})));
}

void Scans::startQueuedScans()
{
    if (m_queueScanRequests.isEmpty())
        return;
    const auto queued = std::exchange(m_queueScanRequests, {});
    for (const ScanRequest& scan : queued) {
        LOG4CPLUS_DEBUG(networkingLogger(), "Starting queued scan (InterfaceStatusChanged)");
        startOrQueue(scan);
    }
    stopIdleScanTimer();
    if (!m_scanTimer.isActive())
        Q_EMIT drained();
}

void Scans::on_scanTimer_timeout()
{
    m_lowlevel.forgetScan();
    auto cancelled = std::exchange(m_pendingScanReplies, {});
    const auto queued = std::exchange(m_queueScanRequests, {});
    for (const ScanRequest& scan : queued)
        cancelled.append(scan.request.reply());
    if (cancelled.isEmpty())
        return;
    LOG4CPLUS_ERROR(networkingLogger(),
                    "Scan request timed out, cancelling " << cancelled.size() << " requests");
    failAll(cancelled, networkingError(timeoutContext, "Scan request timed out"));
}
