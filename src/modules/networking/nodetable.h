// SPDX-License-Identifier: Apache-2.0
#pragma once

class CMNodes;
class CMNodesWorker;

/// Creates the nodes of the network manager in `worker`, in the order in which clients see them,
/// without values and bound to nothing. Their owners find them by their paths.
CMNodes& createNodes(CMNodesWorker& worker);
