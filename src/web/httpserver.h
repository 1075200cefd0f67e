// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "http.h"

#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <memory>
#include <vector>

struct MHD_Connection;
struct MHD_Daemon;

/// An HTTP server on the event loop of its thread. What it takes is bounded in number, size and
/// time; what it sends forbids the page everything that it does not need.
class HttpServer : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(HttpServer)

public:
    /// Most bytes of a request's body.
    static constexpr int MaxBody = 16 << 10;
    /// Connections at a time, in all and of one address.
    static constexpr unsigned MaxConnections = 64;
    static constexpr unsigned MaxConnectionsOfOne = 24;
    /// Event streams at a time.
    static constexpr int MaxStreams = 16;
    /// How long a request may take to come in, in seconds.
    static constexpr int RequestSeconds = 15;

    explicit HttpServer(HttpHandler handler, QObject* parent = nullptr);
    ~HttpServer() override;

    /// Listens there too, port 0 being a free one. Answers the port; 0 with the reason in `why`
    /// where that cannot be.
    [[nodiscard]] quint16 listen(const QHostAddress& address, quint16 port, QString* why);

    /// Sends an event to each stream; of those with one name that wait for a slow reader the last
    /// one alone.
    void broadcast(const QByteArray& event, const QByteArray& data);
    /// The addresses of the streams' readers: local, peer.
    [[nodiscard]] QVector<QPair<QHostAddress, QHostAddress>> streams() const;

Q_SIGNALS:
    /// A stream began or ended.
    void streamsChanged();

private:
    struct Socket;
    struct Exchange;
    struct Stream;
    struct Callbacks;

    void run(MHD_Daemon* daemon, QTimer* timer);
    void resume(MHD_Connection* connection);
    void endOverdue();

    const HttpHandler m_handler;
    std::vector<MHD_Daemon*> m_daemons;
    /// When each daemon wants to run next.
    std::vector<QTimer*> m_timers;
    QSet<Socket*> m_sockets;
    QSet<Stream*> m_streams;
    QTimer m_overdueTimer;
    QTimer m_keepAliveTimer;
    QElapsedTimer m_clock;
};
