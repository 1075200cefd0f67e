// SPDX-License-Identifier: Apache-2.0
#include "httpserver.h"

#include "core/model/cmerror.h"
#include "eventstream.h"
#include "httpexchange.h"

#include <cstring>
#include <utility>

#include <microhttpd.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <QSocketNotifier>

namespace {

constexpr int overdueCheckMs = 2000;
constexpr int aliveMs = 3000;
constexpr unsigned lostReaderMs = 20000;
constexpr size_t connectionMemory = 16 << 10;
constexpr qint64 never = -1;

} // namespace

/// One connection.
struct HttpServer::Socket
{
    int fd = -1;
    /// The moment by which the request must be there, on the server's clock.
    qint64 due = never;
};

/// The functions that the library calls.
struct HttpServer::Callbacks
{
    using Holder = std::shared_ptr<HttpExchange>;

    static void connectionChanged(void* self, MHD_Connection* connection, void** context,
                                  MHD_ConnectionNotificationCode code)
    {
        auto* server = static_cast<HttpServer*>(self);
        if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
            auto* socket = static_cast<Socket*>(*context);
            server->m_sockets.remove(socket);
            delete socket;
            return;
        }
        const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
        auto* socket = new Socket{info->connect_fd, server->m_clock.elapsed()};
        // A phone that has gone never says so.
        ::setsockopt(socket->fd, IPPROTO_TCP, TCP_USER_TIMEOUT, &lostReaderMs, sizeof lostReaderMs);
        expectRequest(server, socket);
        server->m_sockets.insert(socket);
        *context = socket;
    }

    static void expectRequest(HttpServer* server, Socket* socket)
    {
        socket->due = server->m_clock.elapsed() + qint64{requestSeconds} * 1000;
        if (!server->m_overdueTimer.isActive())
            server->m_overdueTimer.start(overdueCheckMs);
    }

    static Socket* socketOf(MHD_Connection* connection)
    {
        const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
        return static_cast<Socket*>(info->socket_context);
    }

    static MHD_Result take(void* self, MHD_Connection* connection, const char* url,
                           const char* method, const char*, const char* data, size_t* size,
                           void** context)
    {
        auto* holder = static_cast<Holder*>(*context);
        Socket* socket = socketOf(connection);
        if (!holder) {
            const auto& server = static_cast<HttpServer*>(self)->m_exchanges;
            holder = new Holder(
                std::make_shared<HttpExchange>(server, connection, url, method, socket->fd));
            *context = holder;
            // Said before the body comes: afterwards nobody would listen.
            (void)(*holder)->refuseLarge();
            return MHD_YES;
        }
        if (*size > 0) {
            if (!(*holder)->append(data, std::exchange(*size, 0)))
                return MHD_NO;
            return MHD_YES;
        }
        socket->due = never;
        return (*holder)->proceed() ? MHD_YES : MHD_NO;
    }

    static void completed(void* self, MHD_Connection* connection, void** context,
                          MHD_RequestTerminationCode)
    {
        delete static_cast<Holder*>(*context);
        *context = nullptr;
        if (auto* socket = socketOf(connection))
            expectRequest(static_cast<HttpServer*>(self), socket);
    }
};

HttpServer::HttpServer(HttpHandler handler, QObject* parent)
    : QObject(parent)
    , m_exchanges{std::move(handler), [this](MHD_Connection* connection) { resume(connection); },
                  [this](const HttpExchange& exchange, const QByteArray& beginning) {
                      return beginStream(exchange, beginning);
                  }}
{
    m_clock.start();
    connect(&m_overdueTimer, &QTimer::timeout, this, &HttpServer::endOverdue);
    // A page notices by them that the device has gone: a connection without a way lives on.
    connect(&m_aliveTimer, &QTimer::timeout, this, [this] { broadcast("alive", "1"); });
    connect(this, &HttpServer::streamsChanged, this, [this] {
        if (m_streams.isEmpty())
            m_aliveTimer.stop();
        else if (!m_aliveTimer.isActive())
            m_aliveTimer.start(aliveMs);
    });
}

HttpServer::~HttpServer()
{
    // The library wants nothing suspended at its end.
    for (EventStream* stream : std::as_const(m_streams))
        stream->wake();
    for (MHD_Daemon* daemon : m_daemons)
        MHD_stop_daemon(daemon);
}

OrvaResult<quint16> HttpServer::listen(const QHostAddress& address, quint16 port)
{
    const bool isIPv6 = address.protocol() == QAbstractSocket::IPv6Protocol;
    sockaddr_in6 six = {};
    sockaddr_in four = {};
    six.sin6_family = AF_INET6;
    six.sin6_port = four.sin_port = htons(port);
    four.sin_family = AF_INET;
    four.sin_addr.s_addr = htonl(address.toIPv4Address());
    const Q_IPV6ADDR bytes = address.toIPv6Address();
    std::memcpy(&six.sin6_addr, &bytes, sizeof six.sin6_addr);
    const sockaddr* where =
        isIPv6 ? reinterpret_cast<sockaddr*>(&six) : reinterpret_cast<sockaddr*>(&four);
    const unsigned family = isIPv6 ? MHD_USE_IPv6 : 0;
    MHD_Daemon* daemon = MHD_start_daemon(
        MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | family, port, nullptr, nullptr, &Callbacks::take,
        this, MHD_OPTION_SOCK_ADDR, where, MHD_OPTION_CONNECTION_LIMIT, maxConnections,
        MHD_OPTION_PER_IP_CONNECTION_LIMIT, maxConnectionsOfOne, MHD_OPTION_CONNECTION_TIMEOUT,
        unsigned(requestSeconds), MHD_OPTION_CONNECTION_MEMORY_LIMIT, connectionMemory,
        MHD_OPTION_NOTIFY_CONNECTION, &Callbacks::connectionChanged, this,
        MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::completed, this,
        MHD_OPTION_LISTENING_ADDRESS_REUSE, 1U, MHD_OPTION_END);
    if (!daemon)
        return CMError::failed(QString::fromLocal8Bit(std::strerror(errno)));
    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, [this, daemon, timer] { run(daemon, timer); });
    const int fd = MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
    auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this,
            [this, daemon, timer] { run(daemon, timer); });
    m_daemons.push_back(daemon);
    m_timers.push_back(timer);
    return quint16{MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)->port};
}

void HttpServer::run(MHD_Daemon* daemon, QTimer* timer)
{
    MHD_run(daemon);
    MHD_UNSIGNED_LONG_LONG milliseconds = 0;
    if (MHD_get_timeout(daemon, &milliseconds) == MHD_YES)
        timer->start(static_cast<int>(qMin<quint64>(milliseconds, quint64{requestSeconds} * 1000)));
    else
        timer->stop();
}

void HttpServer::resume(MHD_Connection* connection)
{
    MHD_resume_connection(connection);
    // Without threads the library does not wake itself up.
    for (QTimer* timer : m_timers)
        timer->start(0);
}

MHD_Response* HttpServer::beginStream(const HttpExchange& exchange, const QByteArray& beginning)
{
    if (m_streams.size() >= maxStreams)
        return nullptr;
    const auto ended = [this](EventStream* stream) {
        m_streams.remove(stream);
        QMetaObject::invokeMethod(this, &HttpServer::streamsChanged, Qt::QueuedConnection);
    };
    auto* stream = new EventStream(exchange.connection(), exchange.request().local,
                                   exchange.request().peer, beginning, {m_exchanges.resume, ended});
    m_streams.insert(stream);
    QMetaObject::invokeMethod(this, &HttpServer::streamsChanged, Qt::QueuedConnection);
    return stream->response();
}

void HttpServer::broadcast(const QByteArray& event, const QByteArray& data)
{
    for (EventStream* stream : std::as_const(m_streams))
        stream->put(event, data);
}

QVector<QPair<QHostAddress, QHostAddress>> HttpServer::streams() const
{
    QVector<QPair<QHostAddress, QHostAddress>> readers;
    for (const EventStream* stream : m_streams)
        readers.append({stream->local(), stream->peer()});
    return readers;
}

void HttpServer::endOverdue()
{
    // The library counts from the last byte, so that one byte a second would last for ever.
    for (const Socket* socket : std::as_const(m_sockets)) {
        if (socket->due != never && socket->due < m_clock.elapsed())
            ::shutdown(socket->fd, SHUT_RDWR);
    }
    if (m_sockets.isEmpty())
        m_overdueTimer.stop();
}
