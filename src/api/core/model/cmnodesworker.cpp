#include "core/model/cmnodesworker.h"

#include "core/dbglog.h"
#include "core/model/nodes/cmvaluenode.h"

CMNodesWorker::CMNodesWorker(const QVariantHash& config, const QString& name, QObject* parent)
    : CMAbstractWorker(parent)
    , m_config(config)
    , m_name(name)
{
    connect(&m_nodes, &CMNodes::valueChanged, this, &CMNodesWorker::valueChanged);
    connect(&m_nodes, &CMNodes::rowsChanged, this, &CMNodesWorker::rowsChanged);
    connect(&m_nodes, &CMNodes::nodeAdded, this,
            [this](const CMUINode* node) { Q_EMIT nodeAdded(node->path()); });
    connect(this, &CMNodesWorker::valueChanged, this,
            [this](const CMPath& path, const OrvaValue& value) { m_changes.notify(path, value); });
}

void CMNodesWorker::trace()
{
    const auto logger = log4cplus::Logger::getInstance("CMNodesWorker");
    for (const CMUINode* node : m_nodes.all()) {
        const auto* valueNode = qobject_cast<const CMValueNode*>(node);
        LOG4CPLUS_DEBUG(logger, m_name << ": " << node->path() << " "
                                       << (valueNode ? valueNode->value() : OrvaValue()));
    }
}

void CMNodesWorker::getDataRequest(const CMGetDataRequest& request)
{
    if (CMUINode* node = m_nodes.find(request.path))
        node->getData(request);
    else
        request.reply.setError(CMError::unknownPath(request.path));
}

void CMNodesWorker::getRowsRequest(const CMGetRowsRequest& request)
{
    if (CMUINode* node = m_nodes.find(request.path))
        node->getRows(request);
    else
        request.reply.setError(CMError::unknownPath(request.path));
}

void CMNodesWorker::matchRowRequest(const CMMatchRowRequest& request)
{
    if (CMUINode* node = m_nodes.find(request.path))
        node->matchRow(request);
    else
        request.reply.setError(CMError::unknownPath(request.path));
}

void CMNodesWorker::setDataRequest(const CMSetDataRequest& request)
{
    if (CMUINode* node = m_nodes.find(request.path()))
        node->setData(request);
    else
        request.fail(CMError::unknownPath(request.path()));
}

void CMNodesWorker::connectChange(const CMPath& path, CMChangeListener* listener)
{
    m_changes.add(path, listener);
}

void CMNodesWorker::disconnectChange(const CMPath& path, CMChangeListener* listener)
{
    m_changes.remove(path, listener);
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
