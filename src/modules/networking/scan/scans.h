// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "backend/networkinglowlevel.h"
#include "core/model/cmrequest.h"
#include "core/model/nodes/cmlistrowsnode.h"

#include <QTimer>

class CMNodes;
class Picture;

/// The scans for wireless networks, of which one runs at a time however many are asked for.
///
/// Requests wait for the scan that runs, or for the wireless interface to be idle. The results are
/// published as rows and answer those that wait for the scan. The oldest request waits 30 s at
/// most; then all that wait are refused with it. Nobody waits while the timer stands still.
class Scans : public QObject
{
    Q_OBJECT
public:
    /// `nodes` has the nodes of the results. Backend and picture must outlive this object.
    Scans(const CMNodes& nodes, Networking_LowLevel& backend, const Picture& picture,
          QObject* parent);

    /// Runs the scan requests that waited for the wireless interface, which is idle now.
    void startQueuedScans();

Q_SIGNALS:
    /// Scans need the radio, or no longer do. May be told again without a change; results end the
    /// need, also while requests wait for the interface.
    void wifiNeeded(bool needed);
    /// The requests that had waited for the interface were run, and nobody waits any more.
    void drained();

public Q_SLOTS:
    void on_scanNetworks_req(const CMSetDataRequest& request);
    void on_lowlevel_ScanResults(const QVector<OrvaNetworkScanResult>& results);
    void on_lowlevel_UnsupportedNetworks(const QVector<OrvaNetworkScanResult>& networks);
    void on_scanTimer_timeout();

private:
    struct ScanRequest
    {
        CMSetDataRequest request;
        qint64 arrivedMs; ///< On the monotonic clock.
    };

    /// Starts the scan, or queues the request while the interface is busy.
    void startOrQueue(const ScanRequest& scan);
    void startScan(const CMSetDataRequest& request);
    void refuseScan();
    void clearScanResults();
    void stopIdleScanTimer();
    void guardQueuedScans();

    Networking_LowLevel& m_lowlevel;
    const Picture& m_picture;
    CMListRowsNode* const m_scanResultsNode;
    CMListRowsNode* const m_unsupportedNode;
    /// The replies that wait for the scan that runs.
    QVector<CMReply<QVariant>> m_pendingScanReplies;
    /// The requests that wait for the interface; the oldest one stands first.
    QVector<ScanRequest> m_queueScanRequests;
    QTimer m_scanTimer{this};
};
