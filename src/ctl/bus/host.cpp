// SPDX-License-Identifier: Apache-2.0
#include "bus/host.h"

#include "host1interface.h"
#include "interrupt.h"
#include "parser/suggestion.h"

#include "common/hostnodes.h"
#include "core/orvaplainvalue.h"

#include <QDBusServiceWatcher>
#include <QVersionNumber>

#include <limits>
#include <utility>

namespace ctl {

namespace {

/// An answer, such as the list of all networks in reach, may be far larger than a client's value.
constexpr OrvaPlain::Limits answerLimits = {32, 128 << 20};

Outcome<OrvaValue> plainValue(const QVariantMap& fromBus)
{
    const auto hash = OrvaPlain::hashFromBus(fromBus, answerLimits);
    if (hash)
        return OrvaValue(*hash);
    return Failure{ExitStatus::Other,
                   QStringLiteral("The host's answer is no value: %1.").arg(hash.why())};
}

/// The part of a version that changes with the interface.
QVersionNumber interfaceVersion(const QString& version)
{
    const auto number = QVersionNumber::fromString(version);
    return {number.majorVersion(), number.minorVersion()};
}

QString noSuchNode(const CMPath& path, const QStringList& paths)
{
    return QStringLiteral("There is no node \"%1\".").arg(path.toString()) +
           didYouMean(path.toString(), paths);
}

/// The kind of the node, and the command for it.
QString whatItIs(const OrvaBusNode& node)
{
    if (node.kind == QLatin1String("activate"))
        return QStringLiteral("%1 is an action: \"orvactl invoke %1\" activates it.")
            .arg(node.path);
    if (node.kind == QLatin1String("rows"))
        return QStringLiteral("%1 is a list: \"orvactl rows %1\" shows it.").arg(node.path);
    return QStringLiteral("%1 is a value: \"orvactl get %1\" shows it.").arg(node.path);
}

Failure lostHost()
{
    return Failure{ExitStatus::NotRunning, QStringLiteral("The host has left the bus.")};
}

} // namespace

Host::Host(const Bus& bus)
    : m_bus(bus)
    , m_proxy(std::make_unique<OrgOrvaHost1Interface>(
          QStringLiteral("org.orva.Host1"), QStringLiteral("/org/orva/Host1"), bus.connection()))
{
    m_proxy->setTimeout(std::numeric_limits<int>::max());
    auto* watcher = new QDBusServiceWatcher(m_proxy->service(), bus.connection(),
                                            QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { m_lost = true; });
    connect(m_proxy.get(), &OrgOrvaHost1Interface::ValueChanged, this,
            [this](const QString& path, const QVariantMap& value) {
                const auto plain = plainValue(value);
                if (plain)
                    Q_EMIT valueChanged(CMPath(path), *plain);
            });
    connect(m_proxy.get(), &OrgOrvaHost1Interface::RowsChanged, this,
            [this](const QString& path) { m_changedRows.insert(CMPath(path)); });
}

Host::~Host() = default;

Result Host::checkVersion() const
{
    auto get = QDBusMessage::createMethodCall(m_proxy->service(), m_proxy->path(),
                                              QStringLiteral("org.freedesktop.DBus.Properties"),
                                              QStringLiteral("Get"));
    get.setArguments({m_proxy->interface(), QStringLiteral("Version")});
    const auto answer =
        m_bus.await<QDBusVariant>(m_proxy->connection().asyncCall(get, m_proxy->timeout()));
    if (!answer) // The command meets most faults again and tells them.
        return answer.error().status == ExitStatus::TimedOut ? answer.error() : Result();
    const QString ours = QStringLiteral(ORVA_VERSION);
    const QString theirs = answer->variant().toString();
    if (interfaceVersion(theirs) == interfaceVersion(ours))
        return {};
    return Failure{
        ExitStatus::Other,
        QStringLiteral("orvactl %1 and the host %2 do not understand each other: install both "
                       "in the same version.")
            .arg(ours, theirs)};
}

Failure Host::explained(Failure failure, const CMPath& path)
{
    if (failure.status != ExitStatus::NoSuchNode && failure.reason != Reason::wrongKind)
        return failure;
    const auto all = nodes();
    if (!all)
        return failure;
    QStringList paths;
    for (const OrvaBusNode& node : *all) {
        paths.append(node.path);
        if (node.path == path.toString())
            failure.text = whatItIs(node);
    }
    if (failure.status == ExitStatus::NoSuchNode)
        failure.text = noSuchNode(path, paths);
    return failure;
}

Outcome<OrvaValue> Host::valueOrWhy(const Outcome<QVariantMap>& answer, const CMPath& path)
{
    return answer ? plainValue(*answer) : explained(answer.error(), path);
}

Outcome<OrvaValue> Host::value(const CMPath& path)
{
    return valueOrWhy(m_bus.await<QVariantMap>(m_proxy->GetValue(path.toString())), path);
}

Result Host::setValue(const CMPath& path, const OrvaValue& value)
{
    const Result set =
        m_bus.finish(m_proxy->SetValue(path.toString(), OrvaBusValue{value.__hash()}));
    return set ? set : explained(set.error(), path);
}

Outcome<OrvaValue> Host::invoke(const CMPath& path, const OrvaValue& value,
                                std::chrono::seconds atMost)
{
    const auto call = m_proxy->Invoke(path.toString(), OrvaBusValue{value.__hash()});
    m_lastInvoked = call;
    return valueOrWhy(m_bus.await<QVariantMap>(call, atMost), path);
}

Result Host::reach()
{
    // The host starts a client's questions of nodes in their order: a refusal comes before this
    // answer. What is asked of the host itself, such as its nodes, waits for nothing.
    return value(HostSettingsFaultPath());
}

Result Host::handOver(const CMPath& path, const OrvaValue& value)
{
    const auto call = m_proxy->Invoke(path.toString(), OrvaBusValue{value.__hash()});
    const Result reached = reach();
    if (!reached || !call.isFinished())
        return reached;
    const Result refused = m_bus.finish(call);
    return refused ? refused : explained(refused.error(), path);
}

Outcome<bool> Host::isAtIt()
{
    const Result reached = reach();
    if (!reached)
        return reached.error();
    return m_lastInvoked && !m_lastInvoked->isFinished();
}

Outcome<QVector<OrvaRoles>> Host::rows(const CMPath& path)
{
    const auto answer = m_bus.await<OrvaBusRows>(m_proxy->GetRows(path.toString()));
    if (!answer)
        return explained(answer.error(), path);
    QVector<OrvaRoles> rows;
    for (const QVariantMap& row : *answer) {
        const auto plain = plainValue(row);
        if (!plain)
            return plain.error();
        rows.append(OrvaRoles(*plain));
    }
    return rows;
}

Outcome<OrvaBusNodes> Host::nodes()
{
    return m_bus.await<OrvaBusNodes>(m_proxy->ListNodes());
}

Outcome<OrvaBusNode> Host::node(const CMPath& path)
{
    const auto all = nodes();
    if (!all)
        return all.error();
    QStringList paths;
    for (const OrvaBusNode& node : *all) {
        if (node.path == path.toString())
            return node;
        paths.append(node.path);
    }
    return Failure{ExitStatus::NoSuchNode, noSuchNode(path, paths)};
}

Result Host::waitFor(const CMPath& path, const Verdict& verdict, const QDeadlineTimer& deadline)
{
    std::optional<Result> end;
    // The signal is connected before the first look, so that no change between the two is missed.
    const QObject guard;
    connect(this, &Host::valueChanged, &guard, [&](const CMPath& changed, const OrvaValue& value) {
        if (changed == path && !end)
            end = verdict(value);
    });
    const auto now = value(path);
    if (!now)
        return now.error();
    if (!end)
        end = verdict(*now);
    const auto done = [&] { return end || isGone() || Interrupt::received() != 0; };
    const bool isDone = Bus::runUntil(done, deadline);
    if (end)
        return *end;
    if (!isDone)
        return Failure{ExitStatus::TimedOut,
                       QStringLiteral("Timed out waiting for %1.").arg(path.toString())};
    return Interrupt::received() != 0 ? Failure{ExitStatus::Interrupted, {}} : lostHost();
}

Result Host::follow()
{
    while (!isGone()) {
        const auto wake = [this] { return isGone() || !m_changedRows.isEmpty(); };
        static_cast<void>(Bus::runUntil(wake, QDeadlineTimer::Forever));
        for (const CMPath& path : std::exchange(m_changedRows, {}))
            Q_EMIT rowsChanged(path);
    }
    return lostHost();
}

bool Host::isGone() const
{
    return m_lost || !m_proxy->connection().isConnected();
}

} // namespace ctl
