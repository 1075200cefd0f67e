// SPDX-License-Identifier: Apache-2.0
#include "buscallers.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <unistd.h>

BusCallers::BusCallers(const QDBusConnection& connection, QObject* parent)
    : QObject(parent)
    , m_connection(connection)
{
    m_leaving.setConnection(connection);
    m_leaving.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_leaving, &QDBusServiceWatcher::serviceUnregistered, this,
            [this](const QString& caller) {
                m_trusted.remove(caller);
                m_leaving.removeWatchedService(caller);
            });
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
        const QDBusPendingReply<uint> uid = *answer;
        learn(caller, !uid.isError(), uid.isError() ? 0 : uid.value());
    });
}

void BusCallers::learn(const QString& caller, bool found, uint uid)
{
    const bool trusted = found && (uid == 0 || uid == ::geteuid());
    if (found)
        m_trusted.insert(caller, trusted);
    else
        m_leaving.removeWatchedService(caller);
    const auto waiting = m_waiting.take(caller);
    for (const Callback& callback : waiting)
        callback(trusted);
}
