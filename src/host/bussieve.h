// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "busledger.h"

#include <QDBusConnection>
#include <QObject>

#include <atomic>
#include <memory>

struct DBusConnection;
struct DBusMessage;
struct DBusWatch;

/// Refuses what is too large or too much before QtDBus unpacks it, on the thread that reads.
///
/// QtDBus reads in a thread of its own, unpacks a message wholly and hands it to the thread of the
/// object that it is for. libdbus stops to read while some tens of megabytes wait there, and goes
/// on when they are freed; but they are freed on the other thread, from which QtDBus cannot switch
/// its socket notifier on again: the connection would be deaf for ever. So the sieve takes the
/// place of QtDBus's notifiers, looks at each message before QtDBus does, and answers
/// org.freedesktop.DBus.Error.LimitsExceeded to a caller that passes a limit. As that bounds what
/// can wait, reading never stops.
///
/// Lives on the thread of the connection and as long as the connection.
class BusSieve : public QObject
{
    Q_OBJECT
public:
    /// Puts a sieve before the connection, which must be one to a bus.
    static BusSieve* install(const QDBusConnection& connection,
                             const BusLimits& limits = BusLimits());
    Q_DISABLE_COPY(BusSieve)

    /// Has the next message tell `heard` again.
    void listen() { m_heard = false; }

Q_SIGNALS:
    /// Something came from the bus. Told once, and again after `listen()`.
    void heard();

private:
    BusSieve(DBusConnection* connection, const BusLimits& limits);

    void takeOver();
    static unsigned addWatch(DBusWatch* watch, void* sieve);
    static void removeWatch(DBusWatch* watch, void* sieve);
    static void toggleWatch(DBusWatch* watch, void* sieve);
    void handle(DBusWatch* watch);
    void sift();
    /// Fails where the message is to be refused; else counts it in.
    [[nodiscard]] OrvaResult<void> admit(DBusMessage* message);
    void refuse(DBusMessage* message, const CMError& error);

    DBusConnection* m_connection;
    std::shared_ptr<BusLedger> m_ledger;
    std::atomic_bool m_heard = false;
};
