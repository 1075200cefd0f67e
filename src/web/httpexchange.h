// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "http.h"

#include <functional>
#include <memory>

struct MHD_Connection;
struct MHD_Response;

/// One request on its way to its answer.
class HttpExchange : public std::enable_shared_from_this<HttpExchange>
{
    Q_DISABLE_COPY(HttpExchange)

public:
    /// The part of the server that an exchange needs.
    struct Server
    {
        HttpHandler handler;
        std::function<void(MHD_Connection*)> resume;
        /// Begins an event stream; null where there are too many.
        std::function<MHD_Response*(const HttpExchange& exchange, const QByteArray& beginning)>
            stream;
    };

    /// Takes the headers of a request that came in on the socket `fd`.
    HttpExchange(const Server& server, MHD_Connection* connection, const char* url,
                 const char* method, int fd);

    /// Answers at once where the headers announce too large a body.
    [[nodiscard]] bool refuseLarge();
    /// Takes a piece of the body; false where it is too large.
    [[nodiscard]] bool append(const char* data, size_t size);
    /// The request is complete: has it handled, once, and sends the answer or waits for it. False
    /// where the library fails.
    [[nodiscard]] bool proceed();

    [[nodiscard]] MHD_Connection* connection() const { return m_connection; }
    [[nodiscard]] const HttpRequest& request() const { return m_request; }

private:
    void handle();
    [[nodiscard]] bool send(const HttpAnswer& answer) const;

    const Server& m_server;
    MHD_Connection* const m_connection;
    HttpRequest m_request;
    HttpAnswer m_answer;
    bool m_isHandled = false;
    bool m_isAnswered = false;
    bool m_isSuspended = false;
};
