// SPDX-License-Identifier: Apache-2.0
#include "bussieve.h"

#include <QDBusConnectionInterface>
#include <QSocketNotifier>

#include <dbus/dbus.h>

#include <limits>

namespace {

/// Rides on a message for as long as anybody has it.
struct Ticket
{
    std::shared_ptr<BusLedger> ledger;
    QByteArray caller;
    qint64 bytes;
};

void giveBack(void* data)
{
    const std::unique_ptr<Ticket> ticket(static_cast<Ticket*>(data));
    ticket->ledger->leave(ticket->caller, ticket->bytes);
}

dbus_int32_t ticketSlot()
{
    static const dbus_int32_t slot = [] {
        dbus_int32_t allocated = -1;
        if (!dbus_message_allocate_data_slot(&allocated))
            qFatal("no memory");
        return allocated;
    }();
    return slot;
}

qint64 sizeOnWire(DBusMessage* message)
{
    char* wire = nullptr;
    int size = 0;
    if (!dbus_message_marshal(message, &wire, &size))
        return std::numeric_limits<qint64>::max();
    dbus_free(wire);
    return size;
}

QSocketNotifier* notifierOf(DBusWatch* watch)
{
    return static_cast<QSocketNotifier*>(dbus_watch_get_data(watch));
}

} // namespace

BusSieve* BusSieve::install(const QDBusConnection& connection, const BusLimits& limits)
{
    auto* handle = static_cast<DBusConnection*>(connection.internalPointer());
    auto* sieve = new BusSieve(handle, limits);
    // QtDBus's object for the bus lives on the connection's thread.
    QDBusConnectionInterface* bus = connection.interface();
    sieve->moveToThread(bus->thread());
    QMetaObject::invokeMethod(
        bus, [sieve] { sieve->takeOver(); }, Qt::BlockingQueuedConnection);
    return sieve;
}

BusSieve::BusSieve(DBusConnection* connection, const BusLimits& limits)
    : m_connection(connection)
    , m_ledger(std::make_shared<BusLedger>(limits))
{
}

void BusSieve::takeOver()
{
    // The ledger bounds what waits; libdbus's own bound would stop the reading.
    dbus_connection_set_max_received_size(m_connection, std::numeric_limits<long>::max());
    // A socket has one notifier a direction: QtDBus's go first.
    dbus_connection_set_watch_functions(m_connection, nullptr, nullptr, nullptr, nullptr, nullptr);
    dbus_connection_set_watch_functions(m_connection, addWatch, removeWatch, toggleWatch, this,
                                        [](void* sieve) { delete static_cast<BusSieve*>(sieve); });
    sift();
}

unsigned BusSieve::addWatch(DBusWatch* watch, void* sieve)
{
    auto* self = static_cast<BusSieve*>(sieve);
    const bool reads = (dbus_watch_get_flags(watch) & DBUS_WATCH_READABLE) != 0;
    auto* notifier =
        new QSocketNotifier(dbus_watch_get_unix_fd(watch),
                            reads ? QSocketNotifier::Read : QSocketNotifier::Write, self);
    dbus_watch_set_data(watch, notifier, nullptr);
    connect(notifier, &QSocketNotifier::activated, self, [self, watch] { self->handle(watch); });
    toggleWatch(watch, sieve);
    return TRUE;
}

void BusSieve::removeWatch(DBusWatch* watch, void*)
{
    // It may be the one that is being handled.
    QSocketNotifier* notifier = notifierOf(watch);
    notifier->setEnabled(false);
    notifier->disconnect();
    notifier->deleteLater();
}

void BusSieve::toggleWatch(DBusWatch* watch, void*)
{
    // From another thread, this waits for the notifier's own.
    QMetaObject::invokeMethod(notifierOf(watch), "setEnabled",
                              Q_ARG(bool, dbus_watch_get_enabled(watch) != FALSE));
}

void BusSieve::handle(DBusWatch* watch)
{
    const unsigned reads = dbus_watch_get_flags(watch) & DBUS_WATCH_READABLE;
    dbus_watch_handle(watch, reads ? DBUS_WATCH_READABLE : DBUS_WATCH_WRITABLE);
    if (reads)
        sift();
}

void BusSieve::sift()
{
    bool any = false;
    while (DBusMessage* message = dbus_connection_borrow_message(m_connection)) {
        // A ping that looks whether the host hears is no reason to look again.
        any = any || !dbus_message_has_interface(message, DBUS_INTERFACE_PEER);
        const auto admitted = admit(message);
        if (admitted) {
            dbus_connection_return_message(m_connection, message);
            dbus_connection_dispatch(m_connection); // To QtDBus.
        } else {
            dbus_connection_steal_borrowed_message(m_connection, message);
            refuse(message, admitted.error());
            dbus_message_unref(message);
        }
    }
    if (any && !m_heard.exchange(true))
        Q_EMIT heard();
}

OrvaResult<void> BusSieve::admit(DBusMessage* message)
{
    const int type = dbus_message_get_type(message);
    const char* caller = dbus_message_get_sender(message);
    const bool foreign = caller && qstrcmp(caller, DBUS_SERVICE_DBUS) != 0;
    // The rest is what the host asked for.
    if (!foreign || (type != DBUS_MESSAGE_TYPE_METHOD_CALL && type != DBUS_MESSAGE_TYPE_SIGNAL))
        return {};
    if (dbus_message_contains_unix_fds(message))
        return CMError::failed(QStringLiteral("no file descriptors are taken"));
    const qint64 bytes = sizeOnWire(message);
    if (bytes > m_ledger->limits().message)
        return CMError::failed(QStringLiteral("the message is too large"));
    if (type == DBUS_MESSAGE_TYPE_SIGNAL)
        return {};
    if (dbus_connection_get_outgoing_size(m_connection) > m_ledger->limits().unsent)
        return CMError::failed(QStringLiteral("too many answers wait for the bus"));
    const auto entered = m_ledger->enter(caller, bytes);
    if (entered)
        dbus_message_set_data(message, ticketSlot(), new Ticket{m_ledger, caller, bytes}, giveBack);
    return entered;
}

void BusSieve::refuse(DBusMessage* message, const CMError& error)
{
    const bool answers =
        dbus_connection_get_outgoing_size(m_connection) <= m_ledger->limits().unsent;
    if (!answers || dbus_message_get_type(message) != DBUS_MESSAGE_TYPE_METHOD_CALL ||
        dbus_message_get_no_reply(message))
        return;
    const QByteArray text = QStringLiteral("Refused: %1.").arg(error.message()).toUtf8();
    DBusMessage* answer =
        dbus_message_new_error(message, DBUS_ERROR_LIMITS_EXCEEDED, text.constData());
    if (!answer)
        return;
    dbus_connection_send(m_connection, answer, nullptr);
    dbus_message_unref(answer);
}
