// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bus/bus.h"
#include "common/bustypes.h"

#include "core/cmpath.h"
#include "core/orvaroles.h"

#include <QDBusPendingCall>
#include <QObject>
#include <QSet>

#include <memory>
#include <optional>

class OrgOrvaHost1Interface;

namespace ctl {

/// The host's node tree as orvactl sees it. An empty value is that of a node without one.
class Host : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Host)

public:
    explicit Host(const Bus& bus);
    ~Host() override;

    /// Fails where the host is of a version that may understand words of orvactl's differently:
    /// one with another major or minor number. A host that cannot be asked fits.
    Result checkVersion() const;

    Outcome<OrvaValue> value(const CMPath& path);
    Result setValue(const CMPath& path, const OrvaValue& value);
    /// Answers when the request is answered; `atMost` where the person gave no time.
    Outcome<OrvaValue> invoke(const CMPath& path, const OrvaValue& value,
                              std::chrono::seconds atMost = Bus::patience);
    /// Hands a request over and does not wait for what comes of it: fails where it is refused at
    /// once.
    Result handOver(const CMPath& path, const OrvaValue& value);
    /// Whether the host has taken up what invoke() has given up last, and is still at it.
    Outcome<bool> isAtIt();
    Outcome<QVector<OrvaRoles>> rows(const CMPath& path);
    Outcome<OrvaBusNodes> nodes();
    /// The one of them at `path`.
    Outcome<OrvaBusNode> node(const CMPath& path);

    /// Judges a value: nothing means wait on, a result is what to end with.
    using Verdict = std::function<std::optional<Result>(const OrvaValue& value)>;

    /// Looks at the node's value now and at each change until `verdict` has a result, the deadline
    /// is over or an Interrupt came.
    Result waitFor(const CMPath& path, const Verdict& verdict, const QDeadlineTimer& deadline);

    /// Delivers signals until the host or the bus goes away.
    Result follow();

Q_SIGNALS:
    void valueChanged(const CMPath& path, const OrvaValue& value);
    /// Comes only while following, and once for a burst of changes, so that a slot may read the
    /// rows.
    void rowsChanged(const CMPath& path);

private:
    [[nodiscard]] bool isGone() const;
    /// Has the host look at all that was invoked before.
    Result reach();
    /// `failure` of a call for the node at `path`, with what would have been right.
    [[nodiscard]] Failure explained(Failure failure, const CMPath& path);
    Outcome<OrvaValue> valueOrWhy(const Outcome<QVariantMap>& answer, const CMPath& path);

    const Bus& m_bus;
    std::unique_ptr<OrgOrvaHost1Interface> m_proxy;
    std::optional<QDBusPendingCall> m_lastInvoked;
    QSet<CMPath> m_changedRows;
    bool m_lost = false;
};

} // namespace ctl
