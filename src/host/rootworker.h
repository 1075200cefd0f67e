// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orva.h"

#include <memory>
#include <vector>

/// The root of the host's node tree: hands each request to the worker that has a node at its path.
///
/// Is `CMRoot()` from its construction to the end of its destruction, so that the workers can use
/// it in their own. Owns the workers, which go in the reverse order of their coming.
class RootWorker : public CMAbstractWorker
{
    Q_OBJECT
public:
    RootWorker();
    ~RootWorker() override;
    Q_DISABLE_COPY(RootWorker)

    /// Takes a worker in. Its nodes can be reached from now on, and listeners that waited for one
    /// of their values are told. Where two workers have a node of one path, the first keeps it;
    /// this is logged.
    void addWorker(std::unique_ptr<CMAbstractWorker> worker);

    bool ping() override;
    void trace() override;
    void setDataRequest(const CMSetDataRequest& request) override;
    /// The nodes of all workers, in the order of the workers.
    [[nodiscard]] QVector<CMNodeInfo> nodeInfos() const override;
    [[nodiscard]] bool isSecret(const CMPath& path) const override;

private:
    bool route(const CMPath& path, const CMRequest& request) override;
    /// False when another worker has a node at `path`.
    bool claim(const CMPath& path, CMAbstractWorker* worker);
    [[nodiscard]] CMAbstractWorker* ownerOf(const CMPath& path) const;

    std::vector<std::unique_ptr<CMAbstractWorker>> m_workers;
    QHash<CMPath, CMAbstractWorker*> m_owners;
};
