// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"
#include "network/networkrecords.h"

/// The value of any node of the tree, another worker's or a setting; empty where it has none.
[[nodiscard]] inline OrvaValue readValue(const CMPath& path)
{
    return OrvaValue(CMRoot()->getValue(path).toHash());
}

/// The node at `path`, which the worker has created before its rooms. A path without one of that
/// kind is our own mistake (fatal).
template <class Node>
[[nodiscard]] Node* nodeAt(const CMNodes& nodes, const CMPath& path)
{
    auto* const node = qobject_cast<Node*>(nodes.find(path));
    if (!node)
        qFatal("no such node at %s", qPrintable(path.toString()));
    return node;
}

/// The value node at `path`.
[[nodiscard]] inline CMValueNode* valueNode(const CMNodes& nodes, const CMPath& path)
{
    return nodeAt<CMValueNode>(nodes, path);
}
