#pragma once

#include "radioworld.h"

/// The shared soft access point: requests, folding, hold, expiry, pending answers, the fallback,
/// and of links, start and stop what concerns it. The profile has one wireless network.
class SoftApModel : public RadioModel
{
public:
    static NodeValues nodeValues()
    {
        return {
            {OrvaNetworkCurrentProfileSettingsPath(), OrvaValue::of(profileWith({"Home"_s}))},
            {OrvaNetworkSoftApConfigSettingsPath(), json(R"({"networkProfile": {"softApSettings": [
                     {"apInterface": "uap0", "ssid": "Box", "vendorSpecificData": "v"},
                     {"apInterface": "uap1"}]}})")}};
    }

    explicit SoftApModel(RadioWorld& radioWorld)
        : RadioModel(radioWorld)
    {
        const auto configured = nodeValues()[OrvaNetworkSoftApConfigSettingsPath()];
        for (const auto& settings : configured.networkProfile().softApSettings())
            m_aps[settings.apInterface()].configured = settings.__hash();
    }

    QString check() override
    {
        const auto& started = fixture.backend->startedSoftAps;
        if (started.size() != m_starts || fixture.backend->stoppedSoftAps.size() != m_stops)
            return "not %1 starts and %2 stops"_s.arg(m_starts).arg(m_stops);
        if (m_starts > 0 && started.last() != OrvaHash(m_lastStart))
            return "started with other settings"_s;
        if (fixture.timer(fallbackTimer)->isActive() != m_fallbackDue)
            return "the fallback is due: %1"_s.arg(m_fallbackDue);
        const QTimer* const expiry = fixture.timer(expiryTimer);
        const Request next = nextExpiring();
        const bool expires = next.deadline > 0;
        const qint64 remaining = qMax<qint64>(0, next.deadline - world.now);
        // A deadline that would fall on the clock's 0 is one later.
        if (expiry->isActive() != expires || (expires && qAbs(expiry->interval() - remaining) > 1))
            return "the next expiry"_s;
        QStringList live;
        const auto rows = fixture.value(OrvaNetworkSoftApRequestsPath()).softApRequests();
        for (const auto& row : rows)
            live << row.interface() + row.name() + QString::number(row.running());
        return live == expectedLive() ? world.check() : live.join(" "_s) + " live"_s;
    }

    void finish() override { stop(); }

private:
    struct Request
    {
        QString name;
        QVariantHash settings;
        bool hold = false;
        qint64 deadline = 0; ///< on a clock that does not wrap; 0 for none

        [[nodiscard]] QString interface() const { return settings["apInterface"_s].toString(); }
    };
    struct Ap
    {
        QVariantHash configured;
        QVector<Request> requests;
        QVariantHash active;
        QVariantHash sent; ///< differs from `active` while the interface is held
        bool held = false;
        bool up = false;
        QVector<int> pending;
    };

    QString act(Rng& rng) override
    {
        const QString interface = rng.chance(80) ? "uap0"_s : "uap1"_s;
        const QString name = rng.pick(QStringList{"a"_s, "b"_s, "c"_s});
        switch (rng.below(10)) {
        case 0:
            return rng.chance(60) ? start() : stop();
        case 1:
            return setLink(rng.chance(50) ? "eth0"_s : "wlan0"_s, rng.chance(50));
        case 2:
            return setSoftApLink(interface, rng.below(3));
        case 3:
            if (fixture.fire(fallbackTimer))
                activateLocal();
            m_fallbackDue = false;
            return "fallback"_s;
        case 4:
            world.release();
            return "release"_s;
        case 5:
        case 6:
            return letTimePass(rng.below(300) * 10);
        case 7:
            return revoke({name, {{"apInterface"_s, interface}}});
        }
        return request(name, interface, rng);
    }

    QString request(const QString& name, const QString& interface, Rng& rng)
    {
        QVariantHash settings{{"apInterface"_s, interface}};
        if (rng.chance(60))
            settings["ssid"_s] = QString(QChar('A' + rng.below(2)));
        if (rng.chance(30))
            settings["vendorSpecificData"_s] = "w"_s;
        if (rng.chance(30))
            settings["channel"_s] = 1 + rng.below(3);
        const int timeout = rng.chance(50) ? (1 + rng.below(200)) * 10 : 0;
        const bool hold = timeout > 0 && rng.chance(40);

        const OrvaValue value = softApRequest(name, settings, timeout, hold);
        const int ask = driver.ask(OrvaNetworkRequestSoftApPath(), value);
        if (!m_started)
            driver.end(ask, notStarted);
        else if (receive({name, settings, hold, timeout > 0 ? world.now + timeout : 0}))
            m_aps[interface].pending << ask;
        else
            driver.end(ask);
        return "request "_s + orvaToLog(value.__variant());
    }

    QString revoke(const Request& request)
    {
        const int ask = driver.ask(OrvaNetworkRevokeSoftApPath(),
                                   softApRequest(request.name, request.settings));
        driver.end(ask, m_started ? QString() : notStarted);
        drop(request);
        return "revoke %1 on %2"_s.arg(request.name, request.interface());
    }

    /// A started network manager takes the request; whether it waits for its interface.
    bool receive(const Request& request)
    {
        auto& requests = m_aps[request.interface()].requests;
        const auto old = find(requests, request.name);
        if (old == requests.end())
            requests.append(request);
        else
            *old = request;
        return apply(request.interface());
    }

    void drop(const Request& request)
    {
        if (!m_started)
            return;
        Ap& ap = m_aps[request.interface()];
        const auto old = find(ap.requests, request.name);
        if (old != ap.requests.end())
            ap.requests.erase(old);
        apply(request.interface());
        driver.end(ap.pending, "error: SoftAp request revoked"_s);
    }

    static QVector<Request>::iterator find(QVector<Request>& requests, const QString& name)
    {
        return std::find_if(requests.begin(), requests.end(),
                            [&](const Request& request) { return request.name == name; });
    }

    bool apply(const QString& interface)
    {
        Ap& ap = m_aps[interface];
        if (ap.requests.isEmpty()) {
            const bool ran = !std::exchange(ap.active, {}).isEmpty();
            ap.sent.clear();
            ap.held = false;
            m_stops += ran ? 1 : 0;
            if (m_aps["uap0"_s].active.isEmpty() && m_aps["uap1"_s].active.isEmpty())
                world.claim(2, false);
            return ran;
        }
        QVariantHash folded = ap.configured;
        QVariantHash sticky = ap.active;
        sticky.remove("vendorSpecificData"_s);
        folded.insert(sticky);
        const bool held = std::exchange(ap.held, false);
        for (const Request& request : std::as_const(ap.requests)) {
            folded.insert(request.settings);
            ap.held = ap.held || request.hold;
        }
        ap.active = folded;
        if ((held && ap.held) || orvaStrictlyEqual(folded, ap.sent))
            return false;
        ap.sent = folded;
        world.claim(2, true);
        ++m_starts;
        m_lastStart = folded;
        return true;
    }

    QString letTimePass(int ms)
    {
        world.now += ms;
        fixture.fire(expiryTimer); // early, or the first of those that are due
        for (Request next = nextExpiring(); next.deadline > 0 && next.deadline <= world.now;
             next = nextExpiring()) {
            drop(next);
            fixture.fire(expiryTimer);
        }
        return "%1 ms pass"_s.arg(ms);
    }

    /// The first one of those that expire the soonest; without a deadline where none does.
    [[nodiscard]] Request nextExpiring() const
    {
        Request next;
        for (const Ap& ap : m_aps)
            for (const Request& request : ap.requests)
                if (request.deadline > 0 &&
                    (next.deadline == 0 || request.deadline < next.deadline))
                    next = request;
        return next;
    }

    /// The request that the network manager makes for the device itself.
    [[nodiscard]] Request own() const
    {
        return {fixture.worker->name(), {{"apInterface"_s, "uap0"_s}}};
    }

    void activateLocal()
    {
        m_localActive = m_started;
        if (m_started)
            receive(own());
    }

    void deactivateLocal()
    {
        m_localActive = false;
        drop(own());
    }

    QString start()
    {
        driver.end(driver.ask(OrvaNetworkStartPath()),
                   m_started ? "Error: start_req called while already started!"_s : QString());
        if (std::exchange(m_started, true))
            return "start"_s;
        world.claim(1, true);
        if (!std::exchange(m_startedOnce, true))
            deactivateLocal();
        m_fallbackDue = m_fallbackDue || (!m_localActive && m_linksUp.isEmpty());
        return "start"_s;
    }

    QString stop()
    {
        driver.end(driver.ask(OrvaNetworkStopPath()));
        for (Ap& ap : m_aps) {
            m_stops += std::exchange(ap.active, {}).isEmpty() ? 0 : 1;
            ap.requests.clear();
            ap.sent.clear();
            ap.held = false;
            driver.end(ap.pending, "Error: Cannot start softAp, stopping all softAps"_s);
        }
        deactivateLocal();
        m_started = false;
        m_fallbackDue = false;
        for (const int submodule : {1, 2, 3})
            world.claim(submodule, false);
        fixture.settle();
        return "stop"_s;
    }

    QString setSoftApLink(const QString& interface, int state)
    {
        m_aps[interface].up = state == 1;
        if (state == 2)
            fixture.worker->setDisconnecting(interface);
        else
            fixture.worker->setLinkStatus(interface, state == 1);
        if (state == 1)
            driver.end(m_aps[interface].pending);
        return "%1 in state %2"_s.arg(interface).arg(state);
    }

    QString setLink(const QString& interface, bool up)
    {
        fixture.worker->setLinkStatus(interface, up);
        m_linksUp.removeAll(interface);
        if (up) {
            m_linksUp << interface;
            m_fallbackDue = false;
            deactivateLocal();
        }
        m_fallbackDue = m_fallbackDue || (m_linksUp.isEmpty() && !m_localActive);
        if (m_linksUp.contains("eth0"_s))
            world.claim(1, false);
        return "%1 up: %2"_s.arg(interface).arg(up);
    }

    [[nodiscard]] QStringList expectedLive() const
    {
        QStringList rows;
        for (auto ap = m_aps.begin(); ap != m_aps.end(); ++ap)
            for (const Request& request : ap->requests)
                rows << ap.key() + request.name + QString::number(ap->up);
        return rows;
    }

    const QString notStarted = "error: Networking is not started."_s;
    QMap<QString, Ap> m_aps;
    QStringList m_linksUp;
    QVariantHash m_lastStart;
    int m_starts = 0;
    int m_stops = 0;
    bool m_started = false;
    bool m_startedOnce = false;
    bool m_localActive = false;
    bool m_fallbackDue = true;
};
