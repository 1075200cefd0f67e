// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "driver.h"

/// The shared soft access point: requests, folding, hold, expiry, pending answers, the fallback,
/// and of links, start and stop what concerns it. The profile has one wireless network.
class SoftApModel : public Model
{
public:
    static QString given()
    {
        return R"(given networks Home; given settings/network/softap-config {"networkProfile":{"softApSettings":[)"
               R"({"apInterface":"uap0","ssid":"Box","vendorSpecificData":"v"},{"apInterface":"uap1"}]}})"_s;
    }

    explicit SoftApModel(Driver& driver)
        : m_driver(driver)
        , m_fixture(driver.fixture)
    {
        const auto configured = m_fixture.value(OrvaNetworkSoftApConfigSettingsPath());
        for (const auto& settings : configured.networkProfile().softApSettings())
            m_aps[settings.apInterface()].configured = settings.__hash();
        fallBack();
    }

    void step(Rng& rng) override
    {
        act(rng);
        HeldClock::settle();
        planExpiry();
    }

    QString check() override
    {
        const auto& started = m_fixture.backend->startedSoftAps;
        if (started.size() != m_starts || m_fixture.backend->stoppedSoftAps.size() != m_stops)
            return "not %1 starts and %2 stops"_s.arg(m_starts).arg(m_stops);
        if (m_starts > 0 && started.last() != OrvaHash(m_lastStart))
            return "started with other settings"_s;
        QStringList live;
        const auto rows = m_fixture.value(OrvaNetworkSoftApRequestsPath()).softApRequests();
        for (const auto& row : rows)
            live << row.interface() + row.name() + QString::number(row.running());
        return live == expectedLive() ? m_driver.checkPlan() : live.join(" "_s) + " live"_s;
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

    void act(Rng& rng)
    {
        const QString interface = rng.chance(80) ? "uap0"_s : "uap1"_s;
        const QString name = rng.pick(QStringList{"a"_s, "b"_s, "c"_s});
        switch (rng.below(8)) {
        case 0:
            return rng.chance(60) ? start() : stop();
        case 1:
            return setLink(rng.chance(50) ? "eth0"_s : "wlan0"_s, rng.chance(50));
        case 2:
            return setSoftApLink(interface, rng.below(3));
        case 3:
        case 4:
            return m_driver.pass(rng);
        case 5:
            return revoke({name, {{"apInterface"_s, interface}}});
        }
        request(name, interface, rng);
    }

    static QString text(const Request& request)
    {
        return request.name + " "_s +
               QString::fromUtf8(OrvaPlain::toJson(QVariant(request.settings)));
    }

    void request(const QString& name, const QString& interface, Rng& rng)
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
        const Request request{name, settings, hold, timeout > 0 ? HeldClock::now() + timeout : 0};

        const int ask = m_driver.ask(
            "ask %1 %2%3"_s.arg(text(request)).arg(timeout).arg(hold ? " hold"_s : QString()));
        if (!m_started)
            m_driver.end(ask, notStarted);
        else if (receive(request))
            m_aps[interface].pending << ask;
        else
            m_driver.end(ask);
    }

    void revoke(const Request& request)
    {
        m_driver.end(m_driver.ask("revoke "_s + text(request)), m_started ? QString() : notStarted);
        drop(request);
    }

    /// A started network manager takes the request. True if it waits for its interface.
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
        m_driver.end(ap.pending, "error: SoftAp request revoked"_s);
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
                m_driver.claim(2, false);
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
        m_driver.claim(2, true);
        ++m_starts;
        m_lastStart = folded;
        return true;
    }

    void planExpiry()
    {
        const Request next = nextExpiring();
        if (next.deadline == 0)
            return m_driver.callOff("expiry"_s);
        const auto ms = qMax(Q_INT64_C(0), next.deadline - HeldClock::now());
        m_driver.plan("expiry"_s, static_cast<int>(ms), [this, next] {
            drop(next);
            planExpiry();
        });
    }

    void fallBack()
    {
        m_driver.plan("fallback"_s, OrvaNetworkSoftApTimeout(), [this] {
            m_localActive = m_started;
            if (m_started)
                receive(own());
        });
    }

    /// The first of the requests that expire the soonest; one without a deadline where none
    /// expires.
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
        return {m_fixture.worker->name(), {{"apInterface"_s, "uap0"_s}}};
    }

    void deactivateLocal()
    {
        m_localActive = false;
        drop(own());
    }

    void start()
    {
        m_driver.end(m_driver.ask("start"_s),
                     m_started ? "Error: start_req called while already started!"_s : QString());
        if (std::exchange(m_started, true))
            return;
        m_driver.claim(1, true);
        if (!std::exchange(m_startedOnce, true))
            deactivateLocal();
        if (!m_localActive && m_linksUp.isEmpty())
            fallBack();
    }

    void stop()
    {
        m_driver.end(m_driver.ask("stop"_s));
        for (Ap& ap : m_aps) {
            m_stops += std::exchange(ap.active, {}).isEmpty() ? 0 : 1;
            ap.requests.clear();
            ap.sent.clear();
            ap.held = false;
            m_driver.end(ap.pending, "Error: Cannot start softAp, stopping all softAps"_s);
        }
        deactivateLocal();
        m_started = false;
        m_driver.callOff("fallback"_s);
        for (const int submodule : {1, 2, 3})
            m_driver.claim(submodule, false);
        HeldClock::settle();
        planExpiry();
    }

    void setSoftApLink(const QString& interface, int state)
    {
        m_aps[interface].up = state == 1;
        m_driver.play(QStringList{"down "_s, "up "_s, "leave "_s}.at(state) + interface);
        if (state == 1)
            m_driver.end(m_aps[interface].pending);
    }

    void setLink(const QString& interface, bool up)
    {
        m_driver.play((up ? "up "_s : "down "_s) + interface);
        m_linksUp.removeAll(interface);
        if (up) {
            m_linksUp << interface;
            m_driver.callOff("fallback"_s);
            deactivateLocal();
        } else if (m_linksUp.isEmpty() && !m_localActive) {
            fallBack();
        }
        if (m_linksUp.contains("eth0"_s))
            m_driver.claim(1, false);
    }

    [[nodiscard]] QStringList expectedLive() const
    {
        QStringList rows;
        for (auto ap = m_aps.begin(); ap != m_aps.end(); ++ap)
            for (const Request& request : ap->requests)
                rows << ap.key() + request.name + QString::number(ap->up);
        return rows;
    }

    Driver& m_driver;
    WorkerFixture& m_fixture;
    const QString notStarted = "error: Networking is not started."_s;
    QMap<QString, Ap> m_aps;
    QStringList m_linksUp;
    QVariantHash m_lastStart;
    int m_starts = 0;
    int m_stops = 0;
    bool m_started = false;
    bool m_startedOnce = false;
    bool m_localActive = false;
};
