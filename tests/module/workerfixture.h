// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scriptedbackend.h"

#include "networking.h"
#include "nodelookup.h"
#include "values.h"
#include "workerhost.h"

#include <QTemporaryDir>
#include <QtTest>

/// A network manager in a node tree of its own, over a backend that the test plays. Radios are left
/// alone: rfkill is a stand-in that records its calls.
class WorkerFixture : public WorkerHost
{
public:
    using Prepare = std::function<void(ScriptedBackend& backend)>;

    /// `values` replace those of settings and other workers' nodes; `prepare` sets the backend's
    /// answers before the worker asks.
    explicit WorkerFixture(const NodeValues& values = {}, const Prepare& prepare = {});
    /// The same over the backend that `createBackend` makes; `backend` is null then.
    WorkerFixture(const NodeValues& values, const Networking::BackendFactory& createBackend);
    Q_DISABLE_COPY(WorkerFixture)

    Networking* worker = nullptr;
    ScriptedBackend* backend = nullptr;

    [[nodiscard]] OrvaNetworkInfo info();
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
