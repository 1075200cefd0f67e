// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/nodes/cmuinode.h"

#include <QHash>

/// A node that holds a list of rows, each with an id of its own.
class ORVA_API CMListRowsNode : public CMUINode
{
    Q_OBJECT
public:
    /// Creates the node in `nodes`, which owns it.
    static CMListRowsNode* create(CMNodes& nodes, const CMPath& path);

    /// Creates the node that the row of the table describes, which must be a list.
    static CMListRowsNode* create(CMNodes& nodes, const CMNodeRow& row);

    /// The rows in the order in which their ids first came.
    [[nodiscard]] const QVector<OrvaRoles>& rows() const { return m_rows; }
    /// Takes all rows out.
    void rowsClear();
    /// Appends the row, or puts it in the place of the one with its id.
    void rowsSetById(const OrvaRoles& row);
    /// Takes the row with the id out, if there is one.
    void rowsRemoveById(const QString& id);

    /// "rows".
    [[nodiscard]] QString kind() const override;
    /// Always: only the worker changes rows.
    [[nodiscard]] bool isReadOnly() const override { return true; }
    /// Answers with all rows, in their order.
    void getRows(const CMGetRowsRequest& request) override;
    /// Answers with the row of the id that is asked for.
    void matchRow(const CMMatchRowRequest& request) override;

Q_SIGNALS:
    /// The rows changed. Comes once from the event loop, however many rows one event changed.
    void rowsChanged();

private:
    using CMUINode::CMUINode;
    void announce();

    QVector<OrvaRoles> m_rows;
    QHash<QString, int> m_indexById;
    bool m_announced = false;
};
