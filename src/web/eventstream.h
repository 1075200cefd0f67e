// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QMap>

#include <functional>

#include <sys/types.h>

struct MHD_Connection;
struct MHD_Response;

/// One event stream on its way to a browser. It belongs to its response.
class EventStream
{
    Q_DISABLE_COPY(EventStream)

public:
    /// The owner is told: `resume` where there is something to send again, `ended` at its end.
    struct Owner
    {
        std::function<void(MHD_Connection*)> resume;
        std::function<void(EventStream*)> ended;
    };

    EventStream(MHD_Connection* connection, const QHostAddress& local, const QHostAddress& peer,
                QByteArray beginning, Owner owner);

    /// The response that sends it, and ends it with itself.
    [[nodiscard]] MHD_Response* response();
    /// Sends the event, in place of one of that name that still waits.
    void put(const QByteArray& event, const QByteArray& data);
    /// Has the library go on with the connection.
    void wake();

    [[nodiscard]] const QHostAddress& local() const { return m_local; }
    [[nodiscard]] const QHostAddress& peer() const { return m_peer; }

private:
    static ssize_t read(void* self, uint64_t, char* buffer, size_t size);
    static void end(void* self);

    MHD_Connection* const m_connection;
    const QHostAddress m_local;
    const QHostAddress m_peer;
    const Owner m_owner;
    QByteArray m_sending;
    QMap<QByteArray, QByteArray> m_waiting;
    bool m_isSuspended = false;
};
