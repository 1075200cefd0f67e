// SPDX-License-Identifier: Apache-2.0
#include "nodetable.h"

#include "core/orva.h"
#include "network/networkpaths.h"
#include "wake/wakeonlan.h"

namespace {

/// The translation context of the worker's own titles.
constexpr auto titleContext = "Networking::Networking(const QVariantHash&)";

void create(CMNodes& nodes, const CMNodeRow& row)
{
    switch (row.kind) {
    case CMNodeRow::Value:
    case CMNodeRow::ReadOnly:
        CMValueNode::create(nodes, row);
        break;
    case CMNodeRow::Action:
        CMActivateNode::create(nodes, row);
        break;
    case CMNodeRow::Rows:
        CMListRowsNode::create(nodes, row);
        break;
    }
}

QVector<CMPath> pathsInOrder()
{
    return {OrvaNetworkStateConnected(),
            OrvaNetworkInfoPath(),
            OrvaNetworkStatePath(),
            OrvaNetworkConnectingMessage(),
            OrvaNetworkScanResultsPath(),
            OrvaNetworkCurrentStatePath(),
            OrvaNetworkStateEthernetMAC(),
            OrvaNetworkStateWirelessMAC(),
            OrvaNetworkStateCurrentMAC(),
            OrvaNetworkStateCurrentCableStatus(),
            OrvaNetworkProfilePath(),
            OrvaNetworkLocalWebserverUrlPath(),
            OrvaNetworkLocalWebserverLocalhostUrlPath(),
            OrvaNetworkConnectedSoftApStationsPath(),
            OrvaNetworkStartPath(),
            OrvaNetworkRestartPath(),
            OrvaNetworkShutdownPath(),
            OrvaNetworkStopPath(),
            OrvaNetworkForceWifiReconnectPath(),
            OrvaNetworkSetNetworkProfilePath(),
            OrvaNetworkRemoveWirelessNetworkPath(),
            OrvaNetworkScanPath(),
            OrvaNetworkPerformWpsPbcPath(),
            OrvaNetworkPerformWpsPinPath(),
            OrvaNetworkGenerateWpsPinPath(),
            OrvaNetworkApplyWpsPath(),
            OrvaNetworkWirelessRssiPath(),
            OrvaNetworkRequestSoftApPath(),
            OrvaNetworkRevokeSoftApPath()};
}

} // namespace

CMNodes& createNodes(CMNodesWorker& worker)
{
    CMNodes& nodes = worker.nodes();
    const auto paths = pathsInOrder();
    for (const CMPath& path : paths)
        create(nodes, orvaNetworkNode(path));
    new WakeOnLan(&worker); // brings its own node
    create(nodes, orvaNetworkNode(OrvaNetworkRequestWifiRestartPath()));
    const CMPath airplaneModePath = OrvaNetworkAirplaneModePath();
    const CMNodeRow& airplaneMode = orvaNetworkNode(airplaneModePath);
    CMValueNode::create(nodes, airplaneMode)
        ->setTitle(TrString(trExtractContext(titleContext), airplaneMode.title));
    for (const CMPath& path :
         {OrvaNetworkSoftApRequestsPath(), OrvaNetworkLastJoinPath(), OrvaNetworkStateOnlinePath(),
          OrvaNetworkPendingProfilePath(), OrvaNetworkTryNetworkProfilePath(),
          OrvaNetworkConfirmProfilePath(), OrvaNetworkRollbackProfilePath(),
          OrvaNetworkRestoreBackupPath(), OrvaNetworkCancelWpsPath()})
        create(nodes, orvaNetworkNode(path));
    return nodes;
}
