// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "heldclock.h"
#include "rootworker.h"

/// Paths and the values that nodes have at first.
using NodeValues = QHash<CMPath, OrvaValue>;

/// All other workers, as a test plays them: their values, in memory, and their actions.
class ValueStore : public CMNodesWorker
{
    Q_OBJECT
public:
    explicit ValueStore(const NodeValues& values);

    /// Adds an action that answers its requests with success.
    void addAction(const CMPath& path);

    /// Every write and every activation in order, those that change nothing too.
    QVector<QPair<CMPath, OrvaValue>> writes;
    /// True if writes are refused, as on a full disk.
    bool full = false;
    /// True if writes are kept and never answered.
    bool mute = false;

    void setDataRequest(const CMSetDataRequest& request) override;

private:
    QVector<CMSetDataRequest> m_kept;
};

/// A host in the test's process: a tree of nodes that the test plays, and of those of the workers
/// that it adds. What is sent is handled when the event loop runs, or `HeldClock` lets time pass.
class WorkerHost
{
public:
    /// `values` are the nodes of all other workers.
    explicit WorkerHost(const NodeValues& values);
    Q_DISABLE_COPY(WorkerHost)

    RootWorker root;
    ValueStore* store = nullptr;

    /// Takes a worker in, as the host does after `worker_create`; it lives as long as the host.
    template <class Worker>
    Worker& add(std::unique_ptr<Worker> worker)
    {
        Worker& added = *worker;
        root.addWorker(std::move(worker));
        HeldClock::settle();
        return added;
    }

    /// The value of any node.
    [[nodiscard]] OrvaValue value(const CMPath& path);
    /// Every value written to a node of `store`, and sent to an action of it, in order.
    [[nodiscard]] QVector<OrvaValue> writes(const CMPath& path) const;

    /// Sends a request to an action. It is handled when the event loop runs.
    CMReply<QVariant> send(const CMPath& path, const OrvaValue& value = {});
    /// The outcome of a request: the name and the message of its error, "name: message"; empty for
    /// success, "no answer" where it stays open.
    [[nodiscard]] static QString outcome(const CMVoidReply& reply);
};
