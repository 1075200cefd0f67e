// SPDX-License-Identifier: Apache-2.0
#include "core/model/nodes/cmnodes.h"

void CMNodes::add(CMUINode* node)
{
    if (m_byPath.contains(node->path()))
        qFatal("two nodes at %s", qPrintable(node->path().toString()));
    m_byPath.insert(node->path(), node);
    m_inOrder.append(node);
    Q_EMIT nodeAdded(node);
}
