// SPDX-License-Identifier: Apache-2.0
#include "httpserver.h"

#include <cstring>
#include <utility>

#include <microhttpd.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <QSocketNotifier>

namespace {

constexpr int overdueCheckMs = 2000;
constexpr int keepAliveMs = 15000;
constexpr unsigned lostReaderMs = 20000;
constexpr size_t connectionMemory = 16 << 10;
constexpr qint64 never = -1;

constexpr const char* safeHeaders[][2] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' http:; "
     "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "no-referrer"},
    {"Cache-Control", "no-store"},
};

QHostAddress addressOf(int fd, int (*ask)(int, sockaddr*, socklen_t*))
{
    sockaddr_storage storage = {};
    socklen_t size = sizeof storage;
    auto* address = reinterpret_cast<sockaddr*>(&storage);
    return ask(fd, address, &size) == 0 ? QHostAddress(address) : QHostAddress();
}

QByteArray valueOf(MHD_Connection* connection, MHD_ValueKind kind, const char* name)
{
    return QByteArray(MHD_lookup_connection_value(connection, kind, name));
}

MHD_Response* ownResponse(const QByteArray& body)
{
    return MHD_create_response_from_buffer(static_cast<size_t>(body.size()),
                                           const_cast<char*>(body.constData()),
                                           MHD_RESPMEM_MUST_COPY);
}

void addHeaders(MHD_Response* response, const HttpAnswer& answer)
{
    for (const auto& header : safeHeaders)
        MHD_add_response_header(response, header[0], header[1]);
    if (!answer.type.isEmpty())
        MHD_add_response_header(response, "Content-Type", answer.type.constData());
    for (const auto& header : answer.headers)
        MHD_add_response_header(response, header.first.constData(), header.second.constData());
}

} // namespace

/// One connection.
struct HttpServer::Socket
{
    int fd = -1;
    /// The moment by which the request must be there, on the server's clock.
    qint64 due = never;
};

/// One request on its way to its answer.
struct HttpServer::Exchange
{
    HttpRequest request;
    HttpAnswer answer;
    MHD_Connection* connection = nullptr;
    bool isHandled = false;
    bool isAnswered = false;
    bool isSuspended = false;
};

/// One event stream.
struct HttpServer::Stream
{
    HttpServer* server = nullptr;
    MHD_Connection* connection = nullptr;
    QHostAddress local;
    QHostAddress peer;
    QByteArray sending;
    QMap<QByteArray, QByteArray> waiting;
    bool isSuspended = false;

    void wake()
    {
        if (isSuspended)
            server->resume(connection);
        isSuspended = false;
    }
};

/// The functions that the library calls.
struct HttpServer::Callbacks
{
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
        auto* server = static_cast<HttpServer*>(self);
        auto* holder = static_cast<std::shared_ptr<Exchange>*>(*context);
        if (!holder) {
            holder = new std::shared_ptr<Exchange>(begin(connection, url, method));
            *context = holder;
            const QByteArray length = valueOf(connection, MHD_HEADER_KIND, "Content-Length");
            // Said before the body comes: afterwards nobody would listen.
            return length.toLongLong() > maxBody
                       ? queue(server, **holder, {413, "text/plain", "Too large.\n"})
                       : MHD_YES;
        }
        Exchange& exchange = **holder;
        if (*size > 0) {
            if (exchange.request.body.size() + static_cast<qint64>(*size) > maxBody)
                return MHD_NO;
            exchange.request.body.append(data, static_cast<int>(*size));
            *size = 0;
            return MHD_YES;
        }
        if (!exchange.isHandled)
            handle(server, *holder);
        if (exchange.isAnswered)
            return queue(server, exchange, exchange.answer);
        exchange.isSuspended = true;
        MHD_suspend_connection(connection);
        return MHD_YES;
    }

    static std::shared_ptr<Exchange> begin(MHD_Connection* connection, const char* url,
                                           const char* method)
    {
        auto exchange = std::make_shared<Exchange>();
        exchange->connection = connection;
        HttpRequest& request = exchange->request;
        request.method = method;
        request.path = url;
        request.host = valueOf(connection, MHD_HEADER_KIND, "Host");
        request.origin = valueOf(connection, MHD_HEADER_KIND, "Origin");
        request.site = valueOf(connection, MHD_HEADER_KIND, "Sec-Fetch-Site");
        request.contentType = valueOf(connection, MHD_HEADER_KIND, "Content-Type");
        request.token = valueOf(connection, MHD_HEADER_KIND, "X-Orva-Token");
        if (request.token.isEmpty())
            request.token = valueOf(connection, MHD_GET_ARGUMENT_KIND, "token");
        const int fd = socketOf(connection)->fd;
        request.local = addressOf(fd, &::getsockname);
        request.peer = addressOf(fd, &::getpeername);
        return exchange;
    }

    static void handle(HttpServer* server, const std::shared_ptr<Exchange>& exchange)
    {
        exchange->isHandled = true;
        socketOf(exchange->connection)->due = never;
        const std::weak_ptr<Exchange> weak = exchange;
        server->m_handler(exchange->request, [weak, server](const HttpAnswer& answer) {
            const auto open = weak.lock();
            if (!open || open->isAnswered)
                return;
            open->answer = answer;
            open->isAnswered = true;
            if (open->isSuspended)
                server->resume(open->connection);
        });
    }

    static MHD_Result queue(HttpServer* server, const Exchange& exchange, const HttpAnswer& answer)
    {
        const bool isFull = answer.stream && server->m_streams.size() >= maxStreams;
        MHD_Response* response = isFull          ? ownResponse("Too many.\n")
                                 : answer.stream ? streamOf(server, exchange, answer)
                                                 : ownResponse(answer.body);
        addHeaders(response, answer);
        const auto status = static_cast<unsigned>(isFull ? 503 : answer.status);
        const MHD_Result result = MHD_queue_response(exchange.connection, status, response);
        MHD_destroy_response(response);
        return result;
    }

    static MHD_Response* streamOf(HttpServer* server, const Exchange& exchange,
                                  const HttpAnswer& answer)
    {
        auto* stream = new Stream{server,
                                  exchange.connection,
                                  exchange.request.local,
                                  exchange.request.peer,
                                  answer.body,
                                  {},
                                  false};
        server->m_streams.insert(stream);
        QMetaObject::invokeMethod(server, &HttpServer::streamsChanged, Qt::QueuedConnection);
        return MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 4096, &read, stream, &endStream);
    }

    static ssize_t read(void* self, uint64_t, char* buffer, size_t size)
    {
        auto* stream = static_cast<Stream*>(self);
        for (auto event = stream->waiting.cbegin(); event != stream->waiting.cend(); ++event)
            stream->sending += "event: " + event.key() + "\ndata: " + event.value() + "\n\n";
        stream->waiting.clear();
        if (stream->sending.isEmpty()) {
            stream->isSuspended = true;
            MHD_suspend_connection(stream->connection);
            return 0;
        }
        const int count =
            static_cast<int>(qMin<qint64>(stream->sending.size(), static_cast<qint64>(size)));
        std::memcpy(buffer, stream->sending.constData(), static_cast<size_t>(count));
        stream->sending.remove(0, count);
        return count;
    }

    static void endStream(void* self)
    {
        auto* stream = static_cast<Stream*>(self);
        stream->server->m_streams.remove(stream);
        QMetaObject::invokeMethod(stream->server, &HttpServer::streamsChanged,
                                  Qt::QueuedConnection);
        delete stream;
    }

    static void completed(void* self, MHD_Connection* connection, void** context,
                          MHD_RequestTerminationCode)
    {
        delete static_cast<std::shared_ptr<Exchange>*>(*context);
        *context = nullptr;
        if (auto* socket = socketOf(connection))
            expectRequest(static_cast<HttpServer*>(self), socket);
    }
};

HttpServer::HttpServer(HttpHandler handler, QObject* parent)
    : QObject(parent)
    , m_handler(std::move(handler))
{
    m_clock.start();
    connect(&m_overdueTimer, &QTimer::timeout, this, &HttpServer::endOverdue);
    connect(&m_keepAliveTimer, &QTimer::timeout, this, [this] {
        for (Stream* stream : std::as_const(m_streams)) {
            stream->sending += ":\n\n";
            stream->wake();
        }
    });
    connect(this, &HttpServer::streamsChanged, this, [this] {
        if (m_streams.isEmpty())
            m_keepAliveTimer.stop();
        else if (!m_keepAliveTimer.isActive())
            m_keepAliveTimer.start(keepAliveMs);
    });
}

HttpServer::~HttpServer()
{
    // The library wants nothing suspended at its end.
    for (Stream* stream : std::as_const(m_streams))
        stream->wake();
    for (MHD_Daemon* daemon : m_daemons)
        MHD_stop_daemon(daemon);
}

quint16 HttpServer::listen(const QHostAddress& address, quint16 port, QString* why)
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
    if (!daemon) {
        *why = QString::fromLocal8Bit(std::strerror(errno));
        return 0;
    }
    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, [this, daemon, timer] { run(daemon, timer); });
    const int fd = MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
    auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this,
            [this, daemon, timer] { run(daemon, timer); });
    m_daemons.push_back(daemon);
    m_timers.push_back(timer);
    return MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)->port;
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

void HttpServer::broadcast(const QByteArray& event, const QByteArray& data)
{
    for (Stream* stream : std::as_const(m_streams)) {
        stream->waiting.insert(event, data);
        stream->wake();
    }
}

QVector<QPair<QHostAddress, QHostAddress>> HttpServer::streams() const
{
    QVector<QPair<QHostAddress, QHostAddress>> readers;
    for (const Stream* stream : m_streams)
        readers.append({stream->local, stream->peer});
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
