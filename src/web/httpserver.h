// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/orvaresult.h"
#include "httpexchange.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <vector>

class EventStream;
struct MHD_Connection;
struct MHD_Daemon;
struct MHD_Response;

/// An HTTP server on the event loop of its thread. Requests are bounded in number, size and time;
/// answers forbid the page everything that it does not need.
class HttpServer : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(HttpServer)

public:
    /// Connections at a time, in all and of one address.
    static constexpr unsigned maxConnections = 64;
    static constexpr unsigned maxConnectionsOfOne = 24;
    /// Event streams at a time.
    static constexpr int maxStreams = 16;
    /// The time in which a request must come in, in seconds.
    static constexpr int requestSeconds = 15;

    explicit HttpServer(HttpHandler handler, QObject* parent = nullptr);
    ~HttpServer() override;

    /// Listens on that address too; port 0 stands for a free one. Gives the port.
    [[nodiscard]] OrvaResult<quint16> listen(const QHostAddress& address, quint16 port);

    /// Sends an event to each stream. A slow reader gets only the last of the waiting events of one
    /// name.
    void broadcast(const QByteArray& event, const QByteArray& data);
    /// The addresses of the streams' readers: local, peer.
    [[nodiscard]] QVector<QPair<QHostAddress, QHostAddress>> streams() const;

Q_SIGNALS:
    /// A stream began or ended.
    void streamsChanged();

private:
    struct Socket;
    struct Callbacks;

    void run(MHD_Daemon* daemon, QTimer* timer);
    void resume(MHD_Connection* connection);
    MHD_Response* beginStream(const HttpExchange& exchange, const QByteArray& beginning);
    void endOverdue();

    const HttpExchange::Server m_exchanges;
    std::vector<MHD_Daemon*> m_daemons;
    /// The next run of each daemon.
    std::vector<QTimer*> m_timers;
    QSet<Socket*> m_sockets;
    QSet<EventStream*> m_streams;
    QTimer m_overdueTimer;
    QTimer m_aliveTimer;
    QElapsedTimer m_clock;
};
