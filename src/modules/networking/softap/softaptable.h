// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "network/networkrecords.h"

#include <QObject>

#include <memory>
#include <optional>

/// A live soft-AP request, and when it ends.
struct LiveSoftApRequest
{
    OrvaNetworkProfileSoftApRequest request;
    /// In milliseconds on the monotonic clock; none where the request lives until it is revoked.
    std::optional<qint64> due;
    /// Goes with the request; its client is followed for as long. Null where it is not bound.
    std::shared_ptr<QObject> binding = {};
};

/// The live soft-AP requests of one interface, one for each requester name. They iterate in the
/// order in which their names first asked: a request that replaces an older one of its name keeps
/// its place.
class SoftApTable
{
public:
    /// Records the request under its name.
    void set(const LiveSoftApRequest& live);
    /// Binds the live request of that name.
    void bind(const QString& name, const std::shared_ptr<QObject>& binding);
    /// Drops the request of that name; harmless where there is none.
    void remove(const QString& name);

    [[nodiscard]] bool isEmpty() const { return m_requests.isEmpty(); }
    [[nodiscard]] int size() const { return m_requests.size(); }
    [[nodiscard]] bool contains(const QString& name) const;
    [[nodiscard]] const QVector<LiveSoftApRequest>& requests() const { return m_requests; }

private:
    QVector<LiveSoftApRequest> m_requests;
};
