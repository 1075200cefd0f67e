// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/model/cmcaller.h"

#include <QDBusConnection>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QVector>

#include <functional>
#include <memory>

/// The callers on the bus: the users behind them, and when they leave. Asks the bus once for each
/// user, and forgets those that leave.
class BusCallers : public QObject
{
    Q_OBJECT
public:
    using Callback = std::function<void(bool trusted)>;

    explicit BusCallers(const QDBusConnection& connection, QObject* parent = nullptr);

    /// Tells whether the caller of that unique name may see secrets: root and the host's own user
    /// may. Answers at once for a known caller, else when the bus has answered.
    void askTrusted(const QString& caller, const Callback& callback);

    /// The caller of that unique name, as workers see it.
    [[nodiscard]] std::shared_ptr<CMCaller> caller(const QString& name);
    /// See `CMCaller::whenGone`.
    void whenGone(const QString& caller, QObject* context, const std::function<void()>& gone);

private:
    struct Follower
    {
        QPointer<QObject> context;
        std::function<void()> gone;
    };
    void lookUp(const QString& caller);
    void learn(const QString& caller, const QDBusPendingReply<uint>& uid);
    void left(const QString& caller);

    QDBusConnection m_connection;
    QDBusServiceWatcher m_leaving;
    QHash<QString, bool> m_trusted;
    QHash<QString, QVector<Callback>> m_waiting;
    QHash<QString, QVector<Follower>> m_followers;
};
