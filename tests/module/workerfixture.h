// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scriptedbackend.h"

#include "networking.h"
#include "nodelookup.h"
#include "rootworker.h"
#include "values.h"

#include <QTemporaryDir>
#include <QtTest>

/// Paths and the values that nodes have at first.
using NodeValues = QHash<CMPath, OrvaValue>;

/// The values of everybody else that the network manager reads and writes, kept in memory.
class ValueStore : public CMNodesWorker
{
    Q_OBJECT
public:
    explicit ValueStore(const NodeValues& values);

    /// Every write in order, those that change nothing too.
    QVector<QPair<CMPath, OrvaValue>> writes;
    /// True if writes are refused, as on a full disk.
    bool full = false;
    /// True if writes are kept and never answered.
    bool mute = false;

    void setDataRequest(const CMSetDataRequest& request) override;

private:
    QVector<CMSetDataRequest> m_kept;
};

/// A network manager in a node tree of its own, over a backend that the test plays. Radios are left
/// alone: rfkill is a stand-in that records its calls.
class WorkerFixture
{
public:
    using Prepare = std::function<void(ScriptedBackend& backend)>;

    /// `values` replace those of settings and other workers' nodes; `prepare` sets the backend's
    /// answers before the worker asks.
    explicit WorkerFixture(const NodeValues& values = {}, const Prepare& prepare = {});
    /// The same over the backend that `createBackend` makes; `backend` is null then.
    WorkerFixture(const NodeValues& values, const Networking::BackendFactory& createBackend);
    Q_DISABLE_COPY(WorkerFixture)

    RootWorker root;
    ValueStore* store = nullptr;
    Networking* worker = nullptr;
    ScriptedBackend* backend = nullptr;

    /// The value of any node.
    [[nodiscard]] OrvaValue value(const CMPath& path) { return readValue(path); }
    [[nodiscard]] OrvaNetworkInfo info();
    /// Every value written to a node of `store`, in order.
    [[nodiscard]] QVector<OrvaValue> writes(const CMPath& path) const;

    /// Sends a request. It is handled when the event loop runs.
    CMReply<QVariant> send(const CMPath& path, const OrvaValue& value = {});
    /// The outcome of a request: the name and the message of its error, "name: message"; empty for
    /// success, "no answer" where it stays open.
    [[nodiscard]] static QString outcome(const CMVoidReply& reply);
    /// The calls of rfkill, one an entry.
    [[nodiscard]] QStringList rfkillCalls() const;

private:
    QTemporaryDir m_directory;
};

/// A network with a WPA key, "secret-" and its SSID.
[[nodiscard]] OrvaNetworkInterface wpaNetwork(const QString& ssid);
/// A profile that is at the invariant with these networks, the first one in use.
[[nodiscard]] OrvaNetworkProfile profileWith(const QStringList& ssids);
/// The SSIDs of a profile's networks, or of the known networks of an info.
template <class Record>
[[nodiscard]] QStringList ssidsOf(const Record& record)
{
    QStringList ssids;
    const auto networks = record.wirelessNetworks();
    for (const auto& network : networks)
        ssids << network.ssid();
    return ssids;
}
