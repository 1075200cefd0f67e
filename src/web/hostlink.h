// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/cmpath.h"
#include "core/model/cmerror.h"
#include "core/orvaresult.h"
#include "core/orvavalue.h"
#include "network/networkrecords.h"

#include <QDBusConnection>
#include <QHash>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

class OrgOrvaHost1Interface;
class QDBusPendingCall;

/// The host as the page knows it: a picture of some nodes, kept up by the host's signals, and
/// requests. Nothing waits; the host's absence is a state.
class HostLink : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(HostLink)

public:
    using Done = std::function<void(const OrvaResult<OrvaValue>& result)>;

    HostLink(const QDBusConnection& bus, QVector<CMPath> values);
    ~HostLink() override;

    [[nodiscard]] bool isPresent() const { return m_isPresent; }
    /// Empty while it is not known.
    [[nodiscard]] OrvaValue value(const CMPath& path) const { return m_values.value(path); }
    /// The networks that the last scan found.
    [[nodiscard]] const OrvaList<OrvaNetworkScanResult>& seen() const { return m_seen.networks; }
    /// Those that it found and that the device cannot join.
    [[nodiscard]] const OrvaList<OrvaNetworkScanResult>& unsupported() const
    {
        return m_unsupported.networks;
    }

    /// Activates a node; `done` is called once.
    void invoke(const CMPath& path, const OrvaValue& value, std::chrono::seconds atMost,
                const Done& done);
    /// Writes a node.
    void setValue(const CMPath& path, const OrvaValue& value, const Done& done);

Q_SIGNALS:
    void presenceChanged();
    void valueChanged(const CMPath& path);
    void seenChanged();

private:
    /// Rows of a node, read anew after each change, one reading at a time.
    struct Rows
    {
        CMPath path;
        OrvaList<OrvaNetworkScanResult> networks;
        bool isReading = false;
        bool isStale = false;
    };

    void setPresent(bool present);
    void readAll();
    void readRows(Rows& rows);
    void store(const CMPath& path, const OrvaValue& value);
    void finish(const QDBusPendingCall& call, const Done& done);

    const QVector<CMPath> m_paths;
    std::unique_ptr<OrgOrvaHost1Interface> m_proxy;
    QHash<CMPath, OrvaValue> m_values;
    Rows m_seen;
    Rows m_unsupported;
    bool m_isPresent = false;
};
