#pragma once

#include "radiosupport.h"

#include <driver.h>

#include <memory>
#include <set>

/// What the models of the radio share: the clock, and who claims the radio.
struct RadioWorld
{
    explicit RadioWorld(WorkerFixture& workerFixture, qint64 start)
        : fixture(workerFixture)
        , now(start)
    {
        fixture.worker->setClock([this] { return now; });
    }

    WorkerFixture& fixture;
    qint64 now;
    std::set<int> claims;
    int powerRequests = 0;
    bool releaseDue = false;

    void claim(int submodule, bool enable)
    {
        if (enable)
            claims.insert(submodule);
        else
            claims.erase(submodule);
        releaseDue = claims.empty();
        powerRequests += claims.empty() ? 0 : 1;
    }

    /// What is wrong with the claims; empty when the worker agrees.
    [[nodiscard]] QString check() const
    {
        const auto timer = fixture.timer(QStringLiteral("m_releaseWifiResourceTimer"));
        if (timer->isActive() != releaseDue)
            return QStringLiteral("the release is due: %1").arg(releaseDue);
        const bool last = has(powerRequests) || powerRequests == 0;
        return last && !has(powerRequests + 1)
                   ? QString()
                   : QStringLiteral("not %1 power requests").arg(powerRequests);
    }

    void release()
    {
        powerRequests += fixture.fire(QStringLiteral("m_releaseWifiResourceTimer")) ? 1 : 0;
        releaseDue = false;
    }

private:
    [[nodiscard]] bool has(int request) const
    {
        const auto reply = CMReply<QVariant>::create();
        fixture.root.request(CMMatchRowRequest{CMPath(QStringLiteral("power/requests")),
                                               QString::number(request), reply});
        return !reply.value().toHash().isEmpty();
    }
};

/// A request and what its outcome must be now.
struct Ask
{
    CMReply<QVariant> reply;
    QString outcome = QStringLiteral("no answer");
};

/// Every request of one model.
class Asks
{
public:
    int add(const CMReply<QVariant>& reply)
    {
        m_asks.append({reply});
        return m_asks.size() - 1;
    }
    /// The requests end so; success where `outcome` is empty.
    void end(QVector<int>& asks, const QString& outcome = QString())
    {
        for (const int ask : qAsConst(asks))
            m_asks[ask].outcome = outcome;
        asks.clear();
    }
    void end(int ask, const QString& outcome = QString()) { m_asks[ask].outcome = outcome; }

    [[nodiscard]] QString check() const
    {
        for (const Ask& ask : m_asks) {
            const QString outcome = WorkerFixture::outcome(ask.reply);
            if (outcome != ask.outcome)
                return QStringLiteral("\"%1\" instead of \"%2\"").arg(outcome, ask.outcome);
        }
        return QString();
    }

private:
    QVector<Ask> m_asks;
};
