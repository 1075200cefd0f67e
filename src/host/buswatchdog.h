// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QTimer>

#include <optional>

/// Notices that the host hears nothing any more: pings its name over a connection of its own.
///
/// A host that is left alone cannot go deaf, so some seconds after something was heard is when it
/// asks. Where the service manager wants to be told that the host is well (`WatchdogSec`), it asks
/// as often as that needs too, and passes the answer on.
class BusWatchdog : public QObject
{
    Q_OBJECT
public:
    /// Watches over the owner of `service`.
    explicit BusWatchdog(const QString& service);
    ~BusWatchdog() override;
    Q_DISABLE_COPY(BusWatchdog)

    /// Begins to watch.
    void start();
    /// Something was heard: asks in a while.
    void note();

Q_SIGNALS:
    /// The ping was not answered in time.
    void deaf();

private:
    void ask();
    void judge(bool answered);

    const QString m_service;
    QDBusConnection m_connection;
    int m_interval = 0; ///< ms between two pings for the service manager; 0 where it wants none.
    int m_patience;     ///< ms from a ping to its answer.
    QTimer m_next;
    QTimer m_limit;
    std::optional<QDBusPendingCall> m_ping;
};
