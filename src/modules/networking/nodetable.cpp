// SPDX-License-Identifier: Apache-2.0
#include "nodetable.h"

#include "core/orva.h"
#include "network/networknodes.h"
#include "network/networkpaths.h"
#include "nodelookup.h"

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

} // namespace

CMNodes& createNodes(CMNodesWorker& worker)
{
    static constexpr CMNodeRow table[] = {ORVA_NETWORK_MANAGER_NODES(ORVA_NODE_ROW)};
    CMNodes& nodes = worker.nodes();
    for (const CMNodeRow& row : table)
        create(nodes, row);
    const CMPath airplaneMode = OrvaNetworkAirplaneModePath();
    valueNode(nodes, airplaneMode)
        ->setTitle(TrString(trExtractContext(titleContext), orvaNetworkNode(airplaneMode).title));
    return nodes;
}
