#pragma once

#include <core/orvaplainvalue.h>
#include <network/networkpaths.h>
#include <workerfixture.h>

/// A hash from JSON.
inline QVariantHash operator""_hash(const char* json, std::size_t size)
{
    return OrvaPlain::fromJson(QByteArray(json, static_cast<int>(size)))
        .value_or(QVariant())
        .toHash();
}

/// A value from JSON.
inline OrvaValue operator""_value(const char* json, std::size_t size)
{
    return OrvaValue(operator""_hash(json, size));
}

/// The value of a soft-AP request.
inline OrvaValue softApRequest(const QString& name, const QVariantHash& settings, int timeout = 0,
                               bool hold = false)
{
    OrvaNetworkProfileSoftApRequest request;
    request.setName(name);
    request.setSettings(OrvaNetworkProfileSoftApSettings(settings));
    request.setTimeout(timeout);
    request.setHoldSoftAp(hold);
    OrvaValue value;
    value.setNetworkSoftApRequest(request);
    return value;
}

/// What the power manager was asked for, in order: "+" for a request, "-" for a release.
inline QString powerRequests(WorkerFixture& fixture)
{
    WorkerFixture::settle();
    const auto reply = CMReply<QVariant>::create();
    fixture.root.request(CMGetRowsRequest{CMPath(QStringLiteral("power/requests")), reply});
    QString actions;
    const QVariantList rows = reply.value().toList();
    for (const QVariant& row : rows) {
        const OrvaRoles request(row.toHash());
        const QVariant action = request.value().__hash().value(QStringLiteral("action"));
        actions += action == QVariant(1) ? QLatin1Char('+') : QLatin1Char('-');
    }
    return actions;
}

/// The outcomes of requests, joined by "; ": "ok" for success.
inline QString outcomes(const QVector<CMReply<QVariant>>& replies)
{
    QStringList texts;
    for (const auto& reply : replies) {
        const QString text = WorkerFixture::outcome(reply);
        texts << (text.isEmpty() ? QStringLiteral("ok") : text);
    }
    return texts.join(QStringLiteral("; "));
}
