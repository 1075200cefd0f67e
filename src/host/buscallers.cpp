// SPDX-License-Identifier: Apache-2.0
#include "buscallers.h"

#include "core/dbglog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <unistd.h>

namespace {

ORVA_LOGGER(callersLogger, "BusCallers")

/// One caller, who may outlast the callers.
class BusCaller : public CMCaller
{
public:
    BusCaller(BusCallers* callers, const QString& name)
        : m_callers(callers)
        , m_name(name)
    {
    }
    void whenGone(QObject* context, const std::function<void()>& gone) override
    {
        if (m_callers)
            m_callers->whenGone(m_name, context, gone);
    }

private:
    QPointer<BusCallers> m_callers;
    QString m_name;
};

} // namespace

BusCallers::BusCallers(const QDBusConnection& connection, QObject* parent)
    : QObject(parent)
    , m_connection(connection)
{
    m_leaving.setConnection(connection);
    m_leaving.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_leaving, &QDBusServiceWatcher::serviceUnregistered, this, &BusCallers::left);
}

std::shared_ptr<CMCaller> BusCallers::caller(const QString& name)
{
    return std::make_shared<BusCaller>(this, name);
}

void BusCallers::whenGone(const QString& caller, QObject* context,
                          const std::function<void()>& gone)
{
    QVector<Follower>& followers = m_followers[caller];
    const auto isOver = [](const Follower& follower) { return !follower.context; };
    followers.erase(std::remove_if(followers.begin(), followers.end(), isOver), followers.end());
    followers << Follower{context, gone};
    // The question finds one that has left already.
    lookUp(caller);
}

void BusCallers::left(const QString& caller)
{
    m_trusted.remove(caller);
    m_leaving.removeWatchedService(caller);
    const auto followers = m_followers.take(caller);
    for (const Follower& follower : followers) {
        if (follower.context)
            follower.gone();
    }
}

void BusCallers::askTrusted(const QString& caller, const Callback& callback)
{
    const auto known = m_trusted.constFind(caller);
    if (known != m_trusted.constEnd())
        return callback(*known);
    QVector<Callback>& waiting = m_waiting[caller];
    waiting << callback;
    if (waiting.size() == 1)
        lookUp(caller);
}

void BusCallers::lookUp(const QString& caller)
{
    // Watched before it is looked up, so that one that leaves in between is not kept for ever.
    m_leaving.addWatchedService(caller);
    auto request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixUser"));
    request << caller;
    auto* answer = new QDBusPendingCallWatcher(m_connection.asyncCall(request), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, caller] {
        answer->deleteLater();
        learn(caller, *answer);
    });
}

void BusCallers::learn(const QString& caller, const QDBusPendingReply<uint>& uid)
{
    const bool found = !uid.isError();
    const bool trusted = found && (uid.value() == 0 || uid.value() == ::geteuid());
    // Of any other error's caller nothing is known: it is not trusted, and need not have left.
    if (found)
        m_trusted.insert(caller, trusted);
    else if (uid.error().name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"))
        left(caller);
    else
        LOG4CPLUS_WARN(callersLogger(),
                       "The bus does not tell who " << caller << " is: " << uid.error().name());
    const auto waiting = m_waiting.take(caller);
    for (const Callback& callback : waiting)
        callback(trusted);
}
