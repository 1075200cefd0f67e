// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/nodes/cmuinode.h"

/// A node that is activated: each activation calls the slot that is bound to it.
class ORVA_API CMActivateNode : public CMUINode
{
    Q_OBJECT
public:
    /// Creates the node in `nodes`, which owns it.
    static CMActivateNode* create(CMNodes& nodes, const CMPath& path);

    /// Creates the node that the row describes, which must be an action.
    static CMActivateNode* create(CMNodes& nodes, const CMNodeRow& row);

    /// Binds the node to a slot. A missing receiver is our own mistake (fatal). The requests of a
    /// receiver that goes away are dropped, and their requesters are told so.
    template <class Receiver>
    void setInvoke(Receiver* receiver, void (Receiver::*slot)(const CMSetDataRequest&),
                   Qt::ConnectionType type)
    {
        if (!receiver)
            qFatal("no receiver for %s", qPrintable(path().toString()));
        connect(this, &CMActivateNode::invoked, receiver, slot, type);
    }

    /// Refuses activations whose value has none of these type keys, so that a slot does not take a
    /// value of another type for an empty one. Without a list any value passes.
    void setAccepts(const QStringList& typeKeys) { setType(typeKeys.join(QLatin1Char('|'))); }

    /// "activate".
    [[nodiscard]] QString kind() const override;
    /// Passes an activation to the slot; refuses a write, and a value of a type that is not taken.
    void setData(const CMSetDataRequest& request) override;

Q_SIGNALS:
    /// The node was activated; what `setInvoke` binds.
    void invoked(const CMSetDataRequest& request);

private:
    using CMUINode::CMUINode;
};
