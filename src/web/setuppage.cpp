// SPDX-License-Identifier: Apache-2.0
#include "setuppage.h"

#include "answers.h"
#include "core/orvaplainvalue.h"
#include "log.h"
#include "network/networkpaths.h"
#include "picture.h"
#include "portal.h"

#include <QUrl>

namespace {

constexpr int defaultPort = 80;
/// Changes come in bursts.
constexpr int announceDelayMs = 50;

int statusOf(const QString& error)
{
    static const QHash<QString, int> statuses = {{QStringLiteral("malformed"), 400},
                                                 {QStringLiteral("absent"), 503},
                                                 {QStringLiteral("late"), 504}};
    return statuses.value(error, 409);
}

} // namespace

SetupPage::SetupPage(const QDBusConnection& bus, WebSettings settings)
    : m_settings(std::move(settings))
    , m_access(m_settings.accessCode)
    , m_host(bus, picturePaths())
    , m_softAp(m_host)
    , m_actions(m_host, m_softAp)
    , m_server([this](const auto& request, const auto& reply) { handle(request, reply); })
{
    m_announceTimer.setSingleShot(true);
    m_announceTimer.setInterval(announceDelayMs);
    connect(&m_announceTimer, &QTimer::timeout, this, &SetupPage::announce);
    const auto announceSoon = [this] {
        if (!m_announceTimer.isActive())
            m_announceTimer.start();
    };
    connect(&m_host, &HostLink::presenceChanged, this, announceSoon);
    connect(&m_host, &HostLink::valueChanged, this, announceSoon);
    connect(&m_host, &HostLink::valueChanged, this, &SetupPage::listenOnce);
    connect(&m_host, &HostLink::valueChanged, this, &SetupPage::followTrial);
    connect(&m_host, &HostLink::seenChanged, this, [this, announceSoon] {
        m_isSeenStale = true;
        announceSoon();
    });
    connect(&m_server, &HttpServer::streamsChanged, this, &SetupPage::countReaders);
    // Once the event loop runs, so that a failure is heard.
    QMetaObject::invokeMethod(this, &SetupPage::listenOnce, Qt::QueuedConnection);
}

void SetupPage::listenOnce()
{
    const OrvaValue published = m_host.value(OrvaWebserverPortPath());
    const bool isKnown = m_settings.port > 0 || !published.isEmpty();
    const int port = m_settings.port > 0    ? m_settings.port
                     : published.i32_() > 0 ? published.i32_()
                                            : defaultPort;
    if (!isKnown || port == m_port)
        return;
    if (m_port != 0) {
        qCInfo(lcWeb) << "The port has changed to" << port;
        Q_EMIT failed();
        return;
    }
    for (const QString& address : m_settings.listen) {
        const auto listening = m_server.listen(QHostAddress(address), static_cast<quint16>(port));
        if (listening)
            m_port = static_cast<quint16>(port);
        else
            qCWarning(lcWeb).noquote() << "Cannot listen on" << address << port << listening.why();
    }
    if (m_port == 0)
        Q_EMIT failed();
    else
        qCInfo(lcWeb) << "The page is on port" << m_port;
}

void SetupPage::followTrial(const CMPath& path)
{
    if (path == OrvaNetworkPendingProfilePath() &&
        m_host.value(path).networkPendingProfile().untilMs() == 0)
        m_actions.endTrial();
}

WayIn SetupPage::wayOf(const QHostAddress& local, const QHostAddress& peer) const
{
    return wayIn(local, peer, m_host.value(OrvaNetworkInfoPath()).networkInfo(),
                 m_settings.homeNetwork);
}

void SetupPage::handle(const HttpRequest& request, const HttpReply& reply)
{
    const WayIn way = wayOf(request.local, request.peer);
    if (way == WayIn::Refused)
        return reply({403, "text/plain", "Not by this network.\n"});
    if (!isOwnHost(request.host, request.local, m_settings.names))
        return handleForeign(request, way, reply);
    if (request.path.startsWith("/api/"))
        return handleApi(request, way, reply);
    const bool asksForCaptive =
        request.path == "/" && request.accept.contains("application/captive+json");
    if (request.path == "/captive" || asksForCaptive)
        return reply(captiveAnswer(pageBy(request.local), way != WayIn::SoftAp || isReleased()));
    reply(pageFile(request));
}

void SetupPage::handleForeign(const HttpRequest& request, WayIn way, const HttpReply& reply) const
{
    const HttpAnswer misdirected = {421, "text/plain", "Another device has that name.\n"};
    if (way != WayIn::SoftAp || request.method != "GET")
        return reply(misdirected);
    reply(portalAnswer(request.path, pageBy(request.local), isReleased()).value_or(misdirected));
}

QByteArray SetupPage::pageBy(const QHostAddress& local) const
{
    QUrl page;
    page.setScheme(QStringLiteral("http"));
    page.setHost(local.toString());
    page.setPort(m_port == defaultPort ? -1 : m_port);
    page.setPath(QStringLiteral("/"));
    return page.toEncoded();
}

bool SetupPage::isReleased() const
{
    return m_softAp.isDone() ||
           m_host.value(OrvaNetworkInfoPath()).networkInfo().state() == OrvaNetworkState::Connected;
}

void SetupPage::handleApi(const HttpRequest& request, WayIn way, const HttpReply& reply)
{
    if (!isSameOrigin(request.host, request.origin, request.site))
        return reply(refusal(403, QStringLiteral("origin")));
    const bool isRead = request.method == "GET";
    if (!isRead && request.method != "POST")
        return reply(refusal(405, QStringLiteral("method")));
    if (!isRead && !request.contentType.startsWith("application/json"))
        return reply(refusal(415, QStringLiteral("type")));
    if (request.path == "/api/token")
        return reply(m_access.answer(request));
    if (!m_access.isGranted(request))
        return reply(refusal(403, QStringLiteral("token")));
    if (isRead && request.path == "/api/events")
        return reply({200, "text/event-stream", events(), {}, true});
    const QByteArray name = request.path.mid(int(qstrlen("/api/")));
    if (isRead || !Actions::contains(name))
        return reply(refusal(404, QStringLiteral("path")));
    m_actions.run(name, request.body, way, [reply](const OrvaResult<QVariantHash>& result) {
        if (result)
            return reply(jsonAnswer(*result));
        const QString error = result.error().name();
        reply(refusal(statusOf(error), error, result.why()));
    });
}

QByteArray SetupPage::stateJson() const
{
    return OrvaPlain::toJson(
        statePicture(m_host, m_settings.homeNetwork, m_settings.names, m_actions.trial()));
}

QByteArray SetupPage::networksJson() const
{
    return OrvaPlain::toJson(networksPicture(m_host.seen(), m_host.unsupported()));
}

QByteArray SetupPage::events() const
{
    return "retry: 2000\nevent: state\ndata: " + stateJson() +
           "\n\nevent: networks\ndata: " + networksJson() + "\n\n";
}

void SetupPage::announce()
{
    countReaders(); // an access point may have come or gone beneath them
    m_server.broadcast("state", stateJson());
    if (m_isSeenStale)
        m_server.broadcast("networks", networksJson());
    m_isSeenStale = false;
}

void SetupPage::countReaders()
{
    const auto readers = m_server.streams();
    const auto through = std::count_if(readers.begin(), readers.end(), [this](const auto& reader) {
        return wayOf(reader.first, reader.second) == WayIn::SoftAp;
    });
    m_softAp.setReaders(readers.size(), static_cast<int>(through));
}
