#pragma once

#include "network/networkpaths.h"
#include "workerfixture.h"

// The timers of the radio.
inline const QString expiryTimer = "m_softApTimeoutTimer"_s;
inline const QString fallbackTimer = "m_softApTimer"_s;
inline const QString releaseTimer = "m_releaseWifiResourceTimer"_s;

/// The value of a soft-AP request.
inline OrvaValue softApRequest(const QString& name, const QVariantHash& settings = {},
                               int timeout = 0, bool hold = false)
{
    OrvaNetworkProfileSoftApRequest request;
    request.setName(name);
    request.setSettings(OrvaNetworkProfileSoftApSettings(settings));
    request.setTimeout(timeout);
    request.setHoldSoftAp(hold);
    return OrvaValue::of(request);
}

/// What the power manager was asked for, in order: "+" for a request, "-" for a release.
inline QString powerRequests(WorkerFixture& fixture)
{
    WorkerFixture::settle();
    const auto reply = CMReply<QVariant>::create();
    fixture.root.request(CMGetRowsRequest{CMPath("power/requests"_s), reply});
    QString actions;
    const QVariantList rows = reply.value().toList();
    for (const QVariant& row : rows)
        actions += OrvaRoles(row.toHash()).value().__hash()["action"_s] == 1 ? "+"_s : "-"_s;
    return actions;
}

/// The outcomes of requests, joined by "; ": "ok" for success.
inline QString outcomes(const QVector<CMReply<QVariant>>& replies)
{
    QStringList texts;
    for (const auto& reply : replies) {
        const QString text = WorkerFixture::outcome(reply);
        texts << (text.isEmpty() ? "ok"_s : text);
    }
    return texts.join("; "_s);
}
