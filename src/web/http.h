// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QPair>
#include <QVector>

#include <functional>

/// One request, with what the page looks at.
struct HttpRequest
{
    QByteArray method;
    /// Without the query.
    QByteArray path;
    QByteArray host;
    QByteArray origin;
    /// The header Sec-Fetch-Site.
    QByteArray site;
    QByteArray accept;
    QByteArray contentType;
    /// The header X-Orva-Token or, for an event stream, which cannot send one, the query's "token".
    QByteArray token;
    QByteArray body;
    QHostAddress local;
    QHostAddress peer;
};

/// An answer to a browser.
struct HttpAnswer
{
    int status = 200;
    QByteArray type = "application/json";
    QByteArray body;
    QVector<QPair<QByteArray, QByteArray>> headers = {};
    /// An event stream, which goes on after the body.
    bool stream = false;
};

/// Answers a request, now or later; once. Does nothing where the browser has gone.
using HttpReply = std::function<void(const HttpAnswer& answer)>;
using HttpHandler = std::function<void(const HttpRequest& request, const HttpReply& reply)>;
