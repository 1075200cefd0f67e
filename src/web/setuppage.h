// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "actions.h"
#include "admission.h"
#include "httpserver.h"
#include "websettings.h"

/// The page that people see: admits requests, serves the page's files, tells its state and has
/// actions done.
class SetupPage : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(SetupPage)

public:
    SetupPage(const QDBusConnection& bus, WebSettings settings);

Q_SIGNALS:
    /// Nothing can be listened on, or the port has changed: a fresh start is due.
    void failed();

private:
    void listenOnce();
    void handle(const HttpRequest& request, const HttpReply& reply);
    void handleForeign(const HttpRequest& request, WayIn way, const HttpReply& reply) const;
    void handleApi(const HttpRequest& request, const HttpReply& reply);
    [[nodiscard]] HttpAnswer tokenFor(const HttpRequest& request);
    [[nodiscard]] QByteArray stateJson() const;
    [[nodiscard]] QByteArray events() const;
    void announce();
    void countReaders();
    [[nodiscard]] WayIn wayOf(const QHostAddress& local, const QHostAddress& peer) const;

    const WebSettings m_settings;
    /// The secret that a page of ours knows and others do not.
    const QByteArray m_token;
    HostLink m_host;
    SoftApKeeper m_softAp;
    Actions m_actions;
    HttpServer m_server;
    QTimer m_announceTimer;
    QElapsedTimer m_sinceWrongCode;
    int m_wrongCodes = 0;
    quint16 m_port = 0;
    bool m_isSeenStale = false;
};
