// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/nodes/cmuinode.h"

#include <QHash>

/// The nodes of one worker, in the order of their creation. Owns them.
class ORVA_API CMNodes : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// The node at `path`; null when there is none.
    [[nodiscard]] CMUINode* find(const CMPath& path) const { return m_byPath.value(path); }
    /// All nodes, in the order of their creation.
    [[nodiscard]] const QVector<CMUINode*>& all() const { return m_inOrder; }

    /// Takes a fresh node in. Two nodes of one path are our own mistake (fatal).
    void add(CMUINode* node);

Q_SIGNALS:
    /// The container has a node more.
    void nodeAdded(CMUINode* node);
    /// A value node of the container changed.
    void valueChanged(const CMPath& path, const OrvaValue& value);
    /// The rows of a list node of the container changed.
    void rowsChanged(const CMPath& path);

private:
    QHash<CMPath, CMUINode*> m_byPath;
    QVector<CMUINode*> m_inOrder;
};
