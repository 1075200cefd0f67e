// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QVector>

#include <functional>
#include <optional>

/// The users behind the callers on the bus. Asks the bus once for each caller, and forgets those
/// that leave.
class BusCallers : public QObject
{
    Q_OBJECT
public:
    using Callback = std::function<void(bool trusted)>;

    explicit BusCallers(const QDBusConnection& connection, QObject* parent = nullptr);

    /// Tells whether the caller of that unique name may see secrets: root and the host's own user
    /// may. Answers at once for a known caller, else when the bus has answered.
    void askTrusted(const QString& caller, const Callback& callback);

private:
    void lookUp(const QString& caller);
    void learn(const QString& caller, bool found, uint uid);

    QDBusConnection m_connection;
    QDBusServiceWatcher m_leaving;
    QHash<QString, bool> m_trusted;
    QHash<QString, QVector<Callback>> m_waiting;
};
