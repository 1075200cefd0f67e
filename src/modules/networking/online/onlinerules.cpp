// SPDX-License-Identifier: Apache-2.0
#include "online/onlinerules.h"

#include <QRegularExpression>

#include <algorithm>

std::optional<QUrl> probeUrl(const QString& setting)
{
    const QUrl url(setting, QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != QLatin1String("http") || url.host().isEmpty())
        return std::nullopt;
    return url;
}

QByteArray probeRequest(const QUrl& url)
{
    const QByteArray path = url.path(QUrl::FullyEncoded).toLatin1();
    const QByteArray query = url.query(QUrl::FullyEncoded).toLatin1();
    QByteArray host = url.host(QUrl::FullyEncoded).toLatin1();
    if (host.contains(':'))
        host = '[' + host + ']';
    if (url.port(probePort) != probePort)
        host += ':' + QByteArray::number(url.port());
    // Of version 1.0, so that the end of the connection is the end of the body.
    return "GET " + (path.isEmpty() ? "/" : path) + (query.isEmpty() ? "" : "?" + query) +
           " HTTP/1.0\r\nHost: " + host +
           "\r\nConnection: close\r\nCache-Control: no-cache\r\n\r\n";
}

ProbeOutcome judgeProbe(const QByteArray& answer, const QString& body, bool inTime)
{
    static const QRegularExpression statusLine(
        QStringLiteral("\\AHTTP/1\\.[0-9] ([0-9]{3})[ \\r\\n]"));
    const auto status = statusLine.match(QString::fromLatin1(answer.left(64))).captured(1);
    if (status.isEmpty())
        return ProbeOutcome::NoAnswer;
    if (status == QLatin1String("204"))
        return ProbeOutcome::Online;
    const QByteArray end = "\r\n\r\n";
    const int head = answer.indexOf(end);
    const QByteArray expected = body.toUtf8().trimmed();
    const QByteArray found = head < 0 ? QByteArray() : answer.mid(head + end.size()).trimmed();
    if (status != QLatin1String("200") || body.isEmpty() || !expected.startsWith(found))
        return ProbeOutcome::Portal;
    if (head >= 0 && found == expected)
        return ProbeOutcome::Online;
    return inTime ? ProbeOutcome::Portal : ProbeOutcome::NoAnswer;
}

bool hasGateway(const OrvaNetworkInfo& info)
{
    const auto gateways = info.gateways();
    return info.state() == OrvaNetworkState::Connected &&
           std::any_of(gateways.begin(), gateways.end(),
                       [](const OrvaNetworkAddress& gateway) { return !gateway.ip().isEmpty(); });
}

OrvaNetworkOnline onlineState(const OrvaNetworkInfo& info, GatewayEcho echo, ProbeOutcome probe)
{
    if (!hasGateway(info))
        return OrvaNetworkOnline::NoGateway;
    // Some gateways answer no ping.
    if (probe == ProbeOutcome::Online)
        return OrvaNetworkOnline::Online;
    if (probe == ProbeOutcome::Portal)
        return OrvaNetworkOnline::Portal;
    switch (echo) {
    case GatewayEcho::Unknown:
        break;
    case GatewayEcho::Answered:
        return OrvaNetworkOnline::Gateway;
    case GatewayEcho::Silent:
        return OrvaNetworkOnline::NoGateway;
    }
    return OrvaNetworkOnline::Unknown;
}
