// SPDX-License-Identifier: Apache-2.0
#include "core/model/cmnodesworker.h"

#include "core/dbglog.h"
#include "core/model/nodes/cmvaluenode.h"

namespace {
ORVA_LOGGER(nodesWorkerLogger, "CMNodesWorker")
} // namespace

CMNodesWorker::CMNodesWorker(const QVariantHash& config, const QString& name, QObject* parent)
    : CMAbstractWorker(parent)
    , m_config(config)
    , m_name(name)
{
    connect(&m_nodes, &CMNodes::valueChanged, this, &CMNodesWorker::valueChanged);
    connect(&m_nodes, &CMNodes::rowsChanged, this, &CMNodesWorker::rowsChanged);
    connect(&m_nodes, &CMNodes::nodeAdded, this,
            [this](const CMUINode* node) { Q_EMIT nodeAdded(node->path()); });
}

void CMNodesWorker::trace()
{
    for (const CMUINode* node : m_nodes.all()) {
        const auto* valueNode = qobject_cast<const CMValueNode*>(node);
        LOG4CPLUS_DEBUG(nodesWorkerLogger(), m_name
                                                 << ": " << node->path() << " "
                                                 << (valueNode ? valueNode->value() : OrvaValue()));
    }
}

QVector<CMNodeInfo> CMNodesWorker::nodeInfos() const
{
    QVector<CMNodeInfo> infos;
    for (const CMUINode* node : m_nodes.all())
        infos.append(node->info());
    return infos;
}

bool CMNodesWorker::isSecret(const CMPath& path) const
{
    const CMUINode* node = m_nodes.find(path);
    return node && node->isSecret();
}

bool CMNodesWorker::route(const CMPath& path, const CMRequest& request)
{
    CMUINode* node = m_nodes.find(path);
    if (node)
        node->request(request);
    return node;
}
