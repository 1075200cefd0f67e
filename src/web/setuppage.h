// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "access.h"
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
    void followTrial(const CMPath& path);
    void handle(const HttpRequest& request, const HttpReply& reply);
    void handleForeign(const HttpRequest& request, WayIn way, const HttpReply& reply) const;
    void handleApi(const HttpRequest& request, WayIn way, const HttpReply& reply);
    /// The page's URL for who comes by that address of the device.
    [[nodiscard]] QByteArray pageBy(const QHostAddress& local) const;
    /// True if phones need not be led to the page any more.
    [[nodiscard]] bool isReleased() const;
    [[nodiscard]] QByteArray stateJson() const;
    [[nodiscard]] QByteArray networksJson() const;
    [[nodiscard]] QByteArray events() const;
    void announce();
    void countReaders();
    [[nodiscard]] WayIn wayOf(const QHostAddress& local, const QHostAddress& peer) const;

    const WebSettings m_settings;
    Access m_access;
    HostLink m_host;
    SoftApKeeper m_softAp;
    Actions m_actions;
    HttpServer m_server;
    QTimer m_announceTimer;
    quint16 m_port = 0;
    bool m_isSeenStale = false;
};
