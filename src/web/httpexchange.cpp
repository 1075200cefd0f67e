// SPDX-License-Identifier: Apache-2.0
#include "httpexchange.h"

#include <utility>

#include <microhttpd.h>
#include <sys/socket.h>

namespace {

/// Most bytes of a request's body.
constexpr int maxBody = 16 << 10;

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

HttpExchange::HttpExchange(const Server& server, MHD_Connection* connection, const char* url,
                           const char* method, int fd)
    : m_server(server)
    , m_connection(connection)
{
    m_request.method = method;
    m_request.path = url;
    m_request.host = valueOf(connection, MHD_HEADER_KIND, "Host");
    m_request.origin = valueOf(connection, MHD_HEADER_KIND, "Origin");
    m_request.site = valueOf(connection, MHD_HEADER_KIND, "Sec-Fetch-Site");
    m_request.accept = valueOf(connection, MHD_HEADER_KIND, "Accept");
    m_request.contentType = valueOf(connection, MHD_HEADER_KIND, "Content-Type");
    m_request.token = valueOf(connection, MHD_HEADER_KIND, "X-Orva-Token");
    if (m_request.token.isEmpty())
        m_request.token = valueOf(connection, MHD_GET_ARGUMENT_KIND, "token");
    m_request.local = addressOf(fd, &::getsockname);
    m_request.peer = addressOf(fd, &::getpeername);
}

bool HttpExchange::refuseLarge()
{
    const QByteArray length = valueOf(m_connection, MHD_HEADER_KIND, "Content-Length");
    return length.toLongLong() > maxBody && send({413, "text/plain", "Too large.\n"});
}

bool HttpExchange::append(const char* data, size_t size)
{
    if (m_request.body.size() + static_cast<qint64>(size) > maxBody)
        return false;
    m_request.body.append(data, static_cast<int>(size));
    return true;
}

bool HttpExchange::proceed()
{
    if (!std::exchange(m_isHandled, true))
        handle();
    if (m_isAnswered)
        return send(m_answer);
    m_isSuspended = true;
    MHD_suspend_connection(m_connection);
    return true;
}

void HttpExchange::handle()
{
    m_server.handler(m_request, [weak = weak_from_this()](const HttpAnswer& answer) {
        const auto open = weak.lock();
        if (!open || open->m_isAnswered)
            return;
        open->m_answer = answer;
        open->m_isAnswered = true;
        if (open->m_isSuspended)
            open->m_server.resume(open->m_connection);
    });
}

bool HttpExchange::send(const HttpAnswer& answer) const
{
    MHD_Response* response =
        answer.stream ? m_server.stream(*this, answer.body) : ownResponse(answer.body);
    const bool isFull = !response;
    if (isFull)
        response = ownResponse("Too many.\n");
    addHeaders(response, answer);
    const auto status = static_cast<unsigned>(isFull ? 503 : answer.status);
    const MHD_Result result = MHD_queue_response(m_connection, status, response);
    MHD_destroy_response(response);
    return result == MHD_YES;
}
