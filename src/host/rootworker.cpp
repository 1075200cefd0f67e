// SPDX-License-Identifier: Apache-2.0
#include "rootworker.h"

namespace {
ORVA_LOGGER(rootWorkerLogger, "RootWorker")
} // namespace

RootWorker::RootWorker()
{
    CMSetRoot(this);
}

RootWorker::~RootWorker()
{
    while (!m_workers.empty())
        m_workers.pop_back();
    CMSetRoot(nullptr);
}

void RootWorker::addWorker(std::unique_ptr<CMAbstractWorker> worker)
{
    CMAbstractWorker* added = worker.get();
    m_workers.push_back(std::move(worker));
    connect(added, &QObject::destroyed, this, [this, added] {
        for (auto owner = m_owners.begin(); owner != m_owners.end();)
            owner = *owner == added ? m_owners.erase(owner) : std::next(owner);
    });
    connect(added, &CMAbstractWorker::nodeAdded, this, [this, added](const CMPath& path) {
        if (claim(path, added))
            Q_EMIT nodeAdded(path);
    });
    connect(added, &CMAbstractWorker::rowsChanged, this, [this, added](const CMPath& path) {
        if (ownerOf(path) == added)
            Q_EMIT rowsChanged(path);
    });
    connect(added, &CMAbstractWorker::valueChanged, this,
            [this, added](const CMPath& path, const OrvaValue& value) {
                if (ownerOf(path) == added)
                    Q_EMIT valueChanged(path, value);
            });

    QVector<CMPath> claimed;
    const auto infos = added->nodeInfos();
    for (const CMNodeInfo& info : infos) {
        if (claim(info.path, added))
            claimed << info.path;
    }
    // Told when all its nodes can be reached: a listener that hears of one may ask for another.
    for (const CMPath& path : std::as_const(claimed)) {
        const OrvaValue value(getValue(path).toHash());
        if (!value.isEmpty())
            Q_EMIT valueChanged(path, value);
    }
}

bool RootWorker::ping()
{
    return std::all_of(m_workers.begin(), m_workers.end(),
                       [](const auto& worker) { return worker->ping(); });
}

void RootWorker::trace()
{
    for (const auto& worker : m_workers)
        worker->trace();
}

void RootWorker::setDataRequest(const CMSetDataRequest& request)
{
    LOG4CPLUS_TRACE(rootWorkerLogger(), "Request for " << request);
    CMAbstractWorker::setDataRequest(request);
}

QVector<CMNodeInfo> RootWorker::nodeInfos() const
{
    QVector<CMNodeInfo> infos;
    for (const auto& worker : m_workers) {
        const auto own = worker->nodeInfos();
        for (const CMNodeInfo& info : own) {
            if (ownerOf(info.path) == worker.get())
                infos << info;
        }
    }
    return infos;
}

bool RootWorker::isSecret(const CMPath& path) const
{
    const CMAbstractWorker* owner = ownerOf(path);
    return owner && owner->isSecret(path);
}

bool RootWorker::route(const CMPath& path, const CMRequest& request)
{
    CMAbstractWorker* owner = ownerOf(path);
    if (owner)
        owner->request(request);
    return owner;
}

bool RootWorker::claim(const CMPath& path, CMAbstractWorker* worker)
{
    const CMAbstractWorker* owner = ownerOf(path);
    if (owner == worker)
        return false;
    if (owner) {
        LOG4CPLUS_ERROR(rootWorkerLogger(),
                        "Two workers have a node at " << path << ", the first keeps it");
        return false;
    }
    m_owners.insert(path, worker);
    return true;
}

CMAbstractWorker* RootWorker::ownerOf(const CMPath& path) const
{
    return m_owners.value(path);
}
