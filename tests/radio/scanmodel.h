#pragma once

#include "radioworld.h"

/// Scans: overlap, busy interface, refusal, time-out, late results, airplane mode.
class ScanModel : public Model
{
public:
    explicit ScanModel(std::shared_ptr<RadioWorld> world)
        : m_world(std::move(world))
        , m_fixture(m_world->fixture)
    {
    }

    QString step(Driver&, Rng& rng) override
    {
        const QString did = act(rng.below(8));
        m_fixture.settle();
        return did;
    }

    QString check(Driver&) override
    {
        const QTimer* const timer = m_fixture.timer(QStringLiteral("m_scanTimer"));
        const bool waiting = !m_pending.isEmpty() || !m_queue.isEmpty();
        if (timer->isActive() != waiting || (waiting && timer->interval() != m_interval))
            return QStringLiteral("scan timer: %1 ms").arg(timer->interval());
        if (m_fixture.backend->commands.count(scan) != m_scans)
            return QStringLiteral("not %1 scans").arg(m_scans);
        return m_asks.check();
    }

    void finish(Driver&) override
    {
        if (m_fixture.fire(QStringLiteral("m_scanTimer")))
            timeOut();
    }

private:
    QString act(int what)
    {
        switch (what) {
        case 0:
            m_refused = !m_refused;
            m_fixture.backend->refused.removeAll(scan);
            if (m_refused)
                m_fixture.backend->refused << scan;
            return QStringLiteral("scans are refused: %1").arg(m_refused);
        case 1:
            m_airplane = !m_airplane;
            m_fixture.root.setValue(OrvaNetworkAirplaneModePath(), toValue(m_airplane), {});
            return QStringLiteral("airplane mode: %1").arg(m_airplane);
        case 2:
            return setBusy(!m_busy);
        case 3:
            Q_EMIT m_fixture.backend->ScanResults({});
            deliver();
            return QStringLiteral("scan results");
        case 4:
            if (m_fixture.fire(QStringLiteral("m_scanTimer")))
                timeOut();
            return QStringLiteral("scan time-out");
        }
        ask(m_asks.add(m_fixture.send(OrvaNetworkScanPath())), m_world->now);
        return QStringLiteral("scan");
    }

    void ask(int id, qint64 arrived)
    {
        if (m_airplane)
            return m_asks.end(id, QStringLiteral("error: Scan network request failed as "
                                                 "airplaneMode is enabled!"));
        if (m_pending.isEmpty() && m_queue.isEmpty() && !m_draining)
            m_interval = 30000;
        m_world->claim(3, true);
        if (m_busy)
            return m_queue.append({id, arrived});
        m_scans += m_pending.isEmpty() ? 1 : 0;
        if (!m_refused || !m_pending.isEmpty())
            return m_pending.append(id);
        m_world->claim(3, false);
        m_asks.end(id, QStringLiteral("error: Scan networks request failed."));
    }

    QString setBusy(bool busy)
    {
        m_busy = busy;
        m_fixture.backend->status = busy ? Networking_LowLevel::Unknown : Networking_LowLevel::Idle;
        Q_EMIT m_fixture.backend->InterfaceStatusChanged(QStringLiteral("wlan0"),
                                                         m_fixture.backend->status);
        const auto queue = std::exchange(m_queue, busy ? m_queue : decltype(m_queue)());
        m_draining = !busy;
        for (const auto& [id, arrived] : qAsConst(queue))
            if (!busy)
                ask(id, arrived);
        m_draining = false;
        if (!busy && !queue.isEmpty() && m_pending.isEmpty() && m_world->claims.count(3) > 0)
            m_world->claim(3, false);
        return QStringLiteral("interface busy: %1").arg(busy);
    }

    void deliver()
    {
        m_asks.end(m_pending);
        if (!m_queue.isEmpty())
            m_interval =
                static_cast<int>(qMax<qint64>(0, 30000 - (m_world->now - m_queue.first().second)));
        m_world->claim(3, false);
    }

    void timeOut()
    {
        for (const auto& [id, arrived] : qAsConst(m_queue))
            m_pending << id;
        m_queue.clear();
        m_asks.end(m_pending, QStringLiteral("error: Scan request timed out"));
    }

    const QString scan = QStringLiteral("scanNetworks");
    std::shared_ptr<RadioWorld> m_world;
    WorkerFixture& m_fixture;
    Asks m_asks;
    QVector<int> m_pending;
    QVector<QPair<int, qint64>> m_queue; ///< the request and when it arrived
    bool m_busy = false;
    bool m_refused = false;
    bool m_airplane = false;
    bool m_draining = false;
    int m_interval = 0;
    int m_scans = 0;
};
