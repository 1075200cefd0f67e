#include "nodetable.h"

#include "core/orva.h"
#include "network/networkpaths.h"
#include "wake/wakeonlan.h"

namespace {

/// The translation context of the worker's own titles.
constexpr auto titleContext = "Networking::Networking(const QVariantHash&, const BackendFactory&)";

CMValueNode* addValue(CMNodes& nodes, const CMPath& path, const TrString& title = TrString())
{
    CMValueNode* const node = CMValueNode::create(nodes, path);
    node->setTitle(title);
    return node;
}

void addStateNodes(CMNodes& nodes)
{
    addValue(nodes, OrvaNetworkStateConnected());
    addValue(nodes, OrvaNetworkInfoPath())->setReadOnly(true);
    addValue(nodes, OrvaNetworkStatePath());
    addValue(nodes, OrvaNetworkConnectingMessage());
    CMListRowsNode::create(nodes, OrvaNetworkScanResultsPath());
    addValue(nodes, OrvaNetworkCurrentStatePath());
    addValue(nodes, OrvaNetworkStateEthernetMAC());
    addValue(nodes, OrvaNetworkStateWirelessMAC());
    addValue(nodes, OrvaNetworkStateCurrentMAC());
    addValue(nodes, OrvaNetworkStateCurrentCableStatus(), QStringLiteral("Current cable status"));
    addValue(nodes, OrvaNetworkProfilePath(), QStringLiteral("Network profile"))->setReadOnly(true);
    addValue(nodes, OrvaNetworkLocalWebserverUrlPath(), QStringLiteral("Local Webserver URL"));
    addValue(nodes, OrvaNetworkLocalWebserverLocalhostUrlPath(),
             QStringLiteral("Local Webserver URL (localhost)"));
    CMValueNode* const stations = addValue(nodes, OrvaNetworkConnectedSoftApStationsPath(),
                                           QStringLiteral("Connected SoftAp stations"));
    stations->setReadOnly(true);
    stations->setPermission(OrvaPermission::Service);
}

struct Action
{
    CMPath path;
    QStringList accepts = {};
};

void addActions(CMNodes& nodes)
{
    const Action actions[] = {
        {OrvaNetworkStartPath()},
        {OrvaNetworkRestartPath()},
        {OrvaNetworkShutdownPath()},
        {OrvaNetworkStopPath()},
        {OrvaNetworkForceWifiReconnectPath()},
        {OrvaNetworkSetNetworkProfilePath(), {OrvaValue::NetworkProfile()}},
        {OrvaNetworkRemoveWirelessNetworkPath(), {OrvaValue::String()}},
        {OrvaNetworkScanPath()},
        {OrvaNetworkPerformWpsPbcPath()},
        {OrvaNetworkPerformWpsPinPath(), {OrvaValue::String()}},
        {OrvaNetworkGenerateWpsPinPath()},
        {OrvaNetworkApplyWpsPath(), {OrvaValue::NetworkInterface()}},
        {OrvaNetworkWirelessRssiPath()},
        {OrvaNetworkRequestSoftApPath(), {OrvaValue::NetworkSoftApRequest()}},
        {OrvaNetworkRevokeSoftApPath(), {OrvaValue::NetworkSoftApRequest(), OrvaValue::String()}},
    };
    for (const Action& action : actions)
        CMActivateNode::create(nodes, action.path)->setAccepts(action.accepts);
}

} // namespace

CMNodes& createNodes(CMNodesWorker& worker)
{
    CMNodes& nodes = worker.nodes();
    addStateNodes(nodes);
    addActions(nodes);
    new WakeOnLan(&worker);
    CMActivateNode::create(nodes, OrvaNetworkRequestWifiRestartPath());
    addValue(nodes, OrvaNetworkAirplaneModePath(),
             TrString(trExtractContext(titleContext), "Airplane Mode"));
    addValue(nodes, OrvaNetworkSoftApRequestsPath())->setReadOnly(true);
    return nodes;
}
