#pragma once

#include "radioworld.h"

/// Scans: overlap, busy interface, refusal, time-out, late results, airplane mode.
class ScanModel : public RadioModel
{
public:
    using RadioModel::RadioModel;

    QString check() override
    {
        const QTimer* const timer = fixture.timer("m_scanTimer"_s);
        const bool waiting = !m_pending.isEmpty() || !m_queue.isEmpty();
        if (timer->isActive() != waiting || (waiting && timer->interval() != m_interval))
            return "scan timer: %1 ms"_s.arg(timer->interval());
        return fixture.backend->commands.count("scanNetworks"_s) == m_scans
                   ? QString()
                   : "not %1 scans"_s.arg(m_scans);
    }

    void finish() override { timeOut(); }

private:
    QString act(Rng& rng) override
    {
        switch (rng.below(8)) {
        case 0:
            m_refused = !m_refused;
            refuse({"scanNetworks"_s}, m_refused);
            return "scans are refused: %1"_s.arg(m_refused);
        case 1:
            m_airplane = !m_airplane;
            fixture.root.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(m_airplane), {});
            return "airplane mode: %1"_s.arg(m_airplane);
        case 2:
            setBusy(!m_busy);
            return "interface busy: %1"_s.arg(m_busy);
        case 3:
            Q_EMIT fixture.backend->ScanResults({});
            deliver();
            return "scan results"_s;
        case 4:
            timeOut();
            return "scan time-out"_s;
        }
        receive({driver.ask(OrvaNetworkScanPath()), world.now});
        return "scan"_s;
    }

    struct Scan
    {
        int ask;
        qint64 arrived;
    };

    void receive(const Scan& scan)
    {
        if (m_airplane)
            return driver.end(scan.ask,
                              "error: Scan network request failed as airplaneMode is enabled!"_s);
        if (m_pending.isEmpty() && m_queue.isEmpty() && !m_draining)
            m_interval = 30000;
        world.claim(3, true);
        if (m_busy)
            return m_queue.append(scan);
        m_scans += m_pending.isEmpty() ? 1 : 0;
        if (!m_refused || !m_pending.isEmpty())
            return m_pending.append(scan.ask);
        world.claim(3, false);
        driver.end(scan.ask, "error: Scan networks request failed."_s);
    }

    void setBusy(bool busy)
    {
        m_busy = busy;
        fixture.backend->status = busy ? Networking_LowLevel::Unknown : Networking_LowLevel::Idle;
        Q_EMIT fixture.backend->InterfaceStatusChanged("wlan0"_s, fixture.backend->status);
        if (busy)
            return;
        m_draining = true;
        const auto queue = std::exchange(m_queue, {});
        for (const Scan& scan : queue)
            receive(scan);
        m_draining = false;
        if (!queue.isEmpty() && m_pending.isEmpty() && world.claims.count(3) > 0)
            world.claim(3, false);
    }

    void deliver()
    {
        driver.end(m_pending);
        if (!m_queue.isEmpty())
            m_interval = qMax(0, static_cast<int>(30000 + m_queue.first().arrived - world.now));
        world.claim(3, false);
    }

    void timeOut()
    {
        if (!fixture.fire("m_scanTimer"_s))
            return;
        for (const Scan& scan : std::exchange(m_queue, {}))
            m_pending << scan.ask;
        driver.end(m_pending, "error: Scan request timed out"_s);
    }

    QVector<int> m_pending;
    QVector<Scan> m_queue;
    bool m_busy = false;
    bool m_refused = false;
    bool m_airplane = false;
    bool m_draining = false;
    int m_interval = 0;
    int m_scans = 0;
};
