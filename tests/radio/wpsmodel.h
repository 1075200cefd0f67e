#pragma once

#include "radioworld.h"

/// WPS sessions: one at a time, refused, successful, failed.
class WpsModel : public Model
{
public:
    explicit WpsModel(std::shared_ptr<RadioWorld> world)
        : m_world(std::move(world))
        , m_fixture(m_world->fixture)
    {
    }

    QString step(Driver&, Rng& rng) override
    {
        const QString did = act(rng.below(6));
        m_fixture.settle();
        return did;
    }

    QString check(Driver&) override { return m_asks.check() + m_world->check(); }
    void finish(Driver& driver) override
    {
        act(0);
        driver.fixture.settle();
    }

private:
    QString act(int what)
    {
        const QStringList starts{QStringLiteral("performWpsPbc"), QStringLiteral("performWpsPin")};
        switch (what) {
        case 0:
            m_fixture.backend->wpsReply.finish(OrvaNetworkInterface());
            end(QString());
            return QStringLiteral("WPS succeeds");
        case 1:
            m_fixture.backend->wpsReply.setError(
                CMError(QStringLiteral("WpsError"), TrString("no router")));
            end(QStringLiteral("WpsError: no router"));
            return QStringLiteral("WPS fails");
        case 2:
            m_refused = !m_refused;
            for (const QString& start : starts) {
                m_fixture.backend->refused.removeAll(start);
                if (m_refused)
                    m_fixture.backend->refused << start;
            }
            return QStringLiteral("WPS is refused: %1").arg(m_refused);
        case 3:
            start(m_fixture.send(OrvaNetworkPerformWpsPbcPath()), true);
            return QStringLiteral("WPS by button");
        }
        const QString pin = what == 4 ? QStringLiteral("12345670") : QString(8, QChar(0x0661));
        start(m_fixture.send(OrvaNetworkPerformWpsPinPath(), toValue(pin)), what == 4);
        return QStringLiteral("WPS by PIN ") + pin;
    }

    void start(const CMReply<QVariant>& reply, bool valid)
    {
        const int id = m_asks.add(reply);
        if (m_running >= 0)
            return m_asks.end(id, QStringLiteral("error: WPS in progress, ignoring request."));
        if (!valid)
            return m_asks.end(id, QStringLiteral("error: WPS PIN needs to be exactly 8 digits"));
        m_world->claim(4, true);
        if (!m_refused) {
            m_running = id;
            return;
        }
        m_world->claim(4, false);
        m_asks.end(id, QStringLiteral("error: WPS request failed."));
    }

    void end(const QString& outcome)
    {
        m_fixture.backend->wpsReply = {};
        if (m_running < 0)
            return;
        m_world->claim(4, false);
        m_asks.end(std::exchange(m_running, -1), outcome);
    }

    std::shared_ptr<RadioWorld> m_world;
    WorkerFixture& m_fixture;
    Asks m_asks;
    int m_running = -1; ///< the session's request
    bool m_refused = false;
};
