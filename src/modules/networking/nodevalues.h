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

// What a node holds, made of a plain value.

[[nodiscard]] inline OrvaValue toValue(bool value)
{
    OrvaValue result;
    result.setBool_(value);
    return result;
}

OrvaValue toValue(int) = delete; // It would sooner become a bool than an i32.

[[nodiscard]] inline OrvaValue toValue(const QString& value)
{
    OrvaValue result;
    result.setString_(value);
    return result;
}

[[nodiscard]] inline OrvaValue toValue(const QStringList& value)
{
    OrvaValue result;
    result.setStringList(value);
    return result;
}

[[nodiscard]] inline OrvaValue toValue(OrvaNetworkState value)
{
    OrvaValue result;
    result.setNetworkState(value);
    return result;
}

// An enumerator would sooner become a bool than the class of its enumeration.
[[nodiscard]] inline OrvaValue toValue(OrvaNetworkState::Value value)
{
    return toValue(OrvaNetworkState(value));
}

[[nodiscard]] inline OrvaValue toValue(const OrvaNetworkInfo& value)
{
    OrvaValue result;
    result.setNetworkInfo(value);
    return result;
}

[[nodiscard]] inline OrvaValue toValue(const OrvaNetworkProfile& value)
{
    OrvaValue result;
    result.setNetworkProfile(value);
    return result;
}
