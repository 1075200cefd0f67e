// SPDX-License-Identifier: Apache-2.0
#include "hostlink.h"

#include "common/bustypes.h"
#include "core/orvaplainvalue.h"
#include "core/orvaroles.h"
#include "host1interface.h"
#include "network/networkpaths.h"

#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

namespace {

using namespace std::chrono_literals;

constexpr OrvaPlain::Limits answerLimits = {32, 16 << 20};
constexpr std::chrono::seconds patience = 25s;

/// The names of D-Bus's own errors are long; those of the host's end in a word for a program.
CMError errorOf(const QDBusError& error)
{
    const QString name = error.name();
    if (error.type() == QDBusError::ServiceUnknown || error.type() == QDBusError::Disconnected)
        return {QStringLiteral("absent"), TrString(error.message())};
    if (error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout)
        return {QStringLiteral("late"), TrString(error.message())};
    return {name.mid(name.lastIndexOf(QLatin1Char('.')) + 1), TrString(error.message())};
}

} // namespace

HostLink::HostLink(const QDBusConnection& bus, QVector<CMPath> values)
    : m_paths(std::move(values))
    , m_proxy(std::make_unique<OrgOrvaHost1Interface>(QStringLiteral("org.orva.Host1"),
                                                      QStringLiteral("/org/orva/Host1"), bus))
    , m_seen{OrvaNetworkScanResultsPath(), {}}
    , m_unsupported{OrvaNetworkUnsupportedNetworksPath(), {}}
{
    registerBusTypes();
    auto* watcher = new QDBusServiceWatcher(m_proxy->service(), bus,
                                            QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                setPresent(!owner.isEmpty());
            });
    connect(m_proxy.get(), &OrgOrvaHost1Interface::ValueChanged, this,
            [this](const QString& path, const QVariantMap& value) {
                const auto plain = OrvaPlain::hashFromBus(value, answerLimits);
                if (plain && m_paths.contains(CMPath(path)))
                    store(CMPath(path), OrvaValue(*plain));
            });
    connect(m_proxy.get(), &OrgOrvaHost1Interface::RowsChanged, this, [this](const QString& path) {
        for (Rows* rows : {&m_seen, &m_unsupported}) {
            if (path == rows->path.toString())
                readRows(*rows);
        }
    });
    readAll();
}

HostLink::~HostLink() = default;

void HostLink::setPresent(bool present)
{
    m_values.clear();
    m_seen.networks.clear();
    m_unsupported.networks.clear();
    m_isPresent = present;
    Q_EMIT presenceChanged();
    if (present)
        readAll();
}

void HostLink::readAll()
{
    for (const CMPath& path : m_paths) {
        finish(m_proxy->GetValue(path.toString()), [this, path](const auto& answer) {
            if (answer)
                store(path, *answer);
        });
    }
    readRows(m_seen);
    readRows(m_unsupported);
}

void HostLink::readRows(Rows& rows)
{
    rows.isStale = rows.isReading;
    if (rows.isReading)
        return;
    rows.isReading = true;
    const QDBusPendingCall call = m_proxy->GetRows(rows.path.toString());
    auto* watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, &rows] {
        watcher->deleteLater();
        rows.isReading = false;
        const QDBusPendingReply<OrvaBusRows> answer = *watcher;
        if (answer.isError())
            return;
        rows.networks.clear();
        for (const QVariantMap& row : answer.value()) {
            const auto plain = OrvaPlain::hashFromBus(row, answerLimits);
            rows.networks.append(
                OrvaRoles(plain.value_or(QVariantHash())).value().networkScanResult());
        }
        Q_EMIT seenChanged();
        if (rows.isStale)
            readRows(rows);
    });
}

void HostLink::store(const CMPath& path, const OrvaValue& value)
{
    m_values.insert(path, value);
    if (!m_isPresent) {
        m_isPresent = true;
        Q_EMIT presenceChanged();
    }
    Q_EMIT valueChanged(path);
}

void HostLink::invoke(const CMPath& path, const OrvaValue& value, std::chrono::seconds atMost,
                      const Done& done)
{
    m_proxy->setTimeout(static_cast<int>(std::chrono::milliseconds(atMost).count()));
    finish(m_proxy->Invoke(path.toString(), OrvaBusValue{value.__hash()}), done);
    m_proxy->setTimeout(static_cast<int>(std::chrono::milliseconds(patience).count()));
}

void HostLink::setValue(const CMPath& path, const OrvaValue& value, const Done& done)
{
    finish(m_proxy->SetValue(path.toString(), OrvaBusValue{value.__hash()}), done);
}

void HostLink::finish(const QDBusPendingCall& call, const Done& done)
{
    auto* watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, done] {
        watcher->deleteLater();
        if (watcher->isError())
            return done(errorOf(watcher->error()));
        const QDBusMessage answer = watcher->reply();
        const QVariantMap map = qdbus_cast<QVariantMap>(answer.arguments().value(0));
        const auto plain = OrvaPlain::hashFromBus(map, answerLimits);
        done(OrvaValue(plain.value_or(QVariantHash())));
    });
}
