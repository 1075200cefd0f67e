#pragma once

#include "network/networkrecords.h"

/// The live soft-AP requests of one interface, one for each requester name. They iterate in the
/// order in which their names first asked: a request that replaces an older one of its name keeps
/// its place.
class SoftApTable
{
public:
    /// Records the request under its name.
    void set(const OrvaNetworkProfileSoftApRequest& request);
    /// Drops the request of that name; harmless where there is none.
    void remove(const QString& name);

    [[nodiscard]] bool isEmpty() const { return m_requests.isEmpty(); }
    [[nodiscard]] int size() const { return m_requests.size(); }
    [[nodiscard]] bool contains(const QString& name) const;
    [[nodiscard]] const QVector<OrvaNetworkProfileSoftApRequest>& requests() const
    {
        return m_requests;
    }

private:
    QVector<OrvaNetworkProfileSoftApRequest> m_requests;
};
