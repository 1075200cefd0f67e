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
/// published as rows and given to all that wait; what got none within 30 s of its arrival is
/// refused. Whenever the timer stands still, nobody waits.
class Scans : public QObject
{
    Q_OBJECT
public:
    /// `nodes` has the node of the results. Backend and picture must outlive this object.
    Scans(const CMNodes& nodes, Networking_LowLevel& backend, const Picture& picture,
          QObject* parent);

    /// Runs the scan requests that waited for the wireless interface, which is idle now.
    void startQueuedScans();

Q_SIGNALS:
    /// Whether scans need the radio. May be told again without a change; results end the need, also
    /// while requests wait for the interface.
    void wifiNeeded(bool needed);
    /// The requests that had waited for the interface were run, and nobody waits any more.
    void drained();

public Q_SLOTS:
    void on_scanNetworks_req(const CMSetDataRequest& request);
    void on_lowlevel_ScanResults(const QVector<OrvaNetworkScanResult>& results);
    void on_scanTimer_timeout();

private:
    struct QueuedScan
    {
        CMSetDataRequest request;
        qint64 arrivedMs; ///< On the monotonic clock.
    };

    void scanNetworks(const QueuedScan& scan);
    void startScan(const CMSetDataRequest& request);
    void refuseScan();
    void clearScanResults();
    void stopIdleScanTimer();
    void guardQueuedScans();

    Networking_LowLevel& m_lowlevel;
    const Picture& m_picture;
    CMListRowsNode* const m_scanResultsNode;
    /// They wait for the scan that runs.
    QVector<CMReply<QVariant>> m_pendingScanReplies;
    /// They wait for the interface; the oldest one stands first.
    QVector<QueuedScan> m_queueScanRequests;
    QTimer m_scanTimer{this};
};
