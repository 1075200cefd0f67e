// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/nodes/cmuinode.h"

class QMutex;

/// A node that holds one value.
class ORVA_API CMValueNode : public CMUINode
{
    Q_OBJECT
public:
    /// Creates the node in `nodes`, which owns it. The mutex is taken for hosts that read from
    /// other threads; this one has a single thread and takes no lock.
    static CMValueNode* create(CMNodes& nodes, const CMPath& path, QMutex* mutex = nullptr);

    /// Creates the node that the row describes, which must be one of a value.
    static CMValueNode* create(CMNodes& nodes, const CMNodeRow& row);

    /// Sets the value as the worker. The first value is always announced, a later one when it
    /// differs.
    void setValue(const OrvaValue& value);
    /// The value; empty before the first one.
    [[nodiscard]] const OrvaValue& value() const { return m_value; }

    /// A read-only node refuses the writes of clients; the worker's own stay possible.
    void setReadOnly(bool readOnly) { m_readOnly = readOnly; }

    /// "value".
    [[nodiscard]] QString kind() const override;
    /// The type keys that `setType` was given, else the type of the value.
    [[nodiscard]] QString type() const override;
    /// True if `setReadOnly` was called with true.
    [[nodiscard]] bool isReadOnly() const override { return m_readOnly; }
    /// Answers with the value; with an empty one before the first.
    void getData(const CMGetDataRequest& request) override;
    /// A client's write: refused where the node is read-only or its value is of another type.
    void setData(const CMSetDataRequest& request) override;

Q_SIGNALS:
    /// The value changed, by a client or by the worker.
    void valueChanged(const OrvaValue& value);

private:
    using CMUINode::CMUINode;

    OrvaValue m_value;
    bool m_known = false;
    bool m_readOnly = false;
};
