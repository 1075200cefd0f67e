#pragma once

#include "radioworld.h"

#include <algorithm>
#include <map>

/// The shared soft access point: requests, folding, hold, expiry, pending answers, the fallback,
/// and of links, start and stop what concerns it. The profile has one wireless network.
class SoftApModel : public Model
{
public:
    /// Which requesters and networks are played with.
    static NodeValues nodeValues()
    {
        return {{OrvaNetworkCurrentProfileSettingsPath(),
                 toValue(profileWith({QStringLiteral("Home")}))},
                {OrvaNetworkSoftApConfigSettingsPath(),
                 R"({"networkProfile": {"softApSettings": [
                     {"apInterface": "uap0", "ssid": "Box", "vendorSpecificData": "v"},
                     {"apInterface": "uap1"}]}})"_value}};
    }

    explicit SoftApModel(std::shared_ptr<RadioWorld> world)
        : m_world(std::move(world))
        , m_fixture(m_world->fixture)
    {
        m_aps["uap0"].configured = R"({"apInterface": "uap0", "ssid": "Box", "vendorSpecificData":
            "v"})"_hash;
        m_aps["uap1"].configured = R"({"apInterface": "uap1"})"_hash;
    }

    QString step(Driver&, Rng& rng) override
    {
        const QString did = act(rng);
        m_fixture.settle();
        return did;
    }

    QString check(Driver&) override
    {
        const auto& started = m_fixture.backend->startedSoftAps;
        if (started.size() != m_starts || m_fixture.backend->stoppedSoftAps.size() != m_stops)
            return QStringLiteral("not %1 starts and %2 stops").arg(m_starts).arg(m_stops);
        if (m_starts > 0 && started.last() != OrvaHash(m_lastStart))
            return QStringLiteral("started with other settings");
        if (m_fixture.timer(QStringLiteral("m_softApTimer"))->isActive() != m_fallbackDue)
            return QStringLiteral("the fallback is due: %1").arg(m_fallbackDue);
        const QTimer* const expiry = m_fixture.timer(QStringLiteral("m_softApTimeoutTimer"));
        const Request* const next = nextExpiring().first;
        if (expiry->isActive() != (next != nullptr) ||
            (next && expiry->interval() < next->deadline - m_world->now))
            return QStringLiteral("the next expiry");
        const QString published = live();
        if (published != expectedLive())
            return published + QStringLiteral(" instead of ") + expectedLive();
        return m_asks.check() + m_world->check();
    }

    void finish(Driver&) override { stop(); }

private:
    struct Request
    {
        QString name;
        QVariantHash settings;
        bool hold = false;
        qint64 deadline = 0; ///< on a clock that does not wrap; 0 for none
    };
    struct Ap
    {
        QVariantHash configured;
        QVector<Request> requests;
        QVariantHash active;
        QVector<int> pending;
    };

    QString act(Rng& rng)
    {
        const QString interface = rng.chance(80) ? QStringLiteral("uap0") : QStringLiteral("uap1");
        const QStringList names{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
        switch (rng.below(10)) {
        case 0:
            return rng.chance(60) ? start() : stop();
        case 1:
            return setLink(rng.chance(50) ? QStringLiteral("eth0") : QStringLiteral("wlan0"),
                           rng.chance(50));
        case 2:
            m_fixture.worker->setLinkStatus(interface, true);
            m_asks.end(ap(interface).pending);
            return interface + QStringLiteral(" up");
        case 3:
            if (m_fixture.fire(QStringLiteral("m_softApTimer")))
                activateLocal();
            m_fallbackDue = false;
            return QStringLiteral("fallback");
        case 4:
            m_world->release();
            return QStringLiteral("release");
        case 5:
        case 6:
            return letTimePass(rng.below(300) * 10);
        case 7:
            return revoke(rng.pick(names), interface);
        }
        return request(rng.pick(names), interface, rng);
    }

    Ap& ap(const QString& interface) { return m_aps[interface.toStdString()]; }

    QString request(const QString& name, const QString& interface, Rng& rng)
    {
        QVariantHash settings{{QStringLiteral("apInterface"), interface}};
        if (rng.chance(60))
            settings.insert(QStringLiteral("ssid"), QString(QChar('A' + rng.below(2))));
        if (rng.chance(30))
            settings.insert(QStringLiteral("vendorSpecificData"), QStringLiteral("w"));
        if (rng.chance(30))
            settings.insert(QStringLiteral("channel"), rng.below(3));
        const int timeout = rng.chance(50) ? (1 + rng.below(200)) * 10 : 0;
        const bool hold = timeout > 0 && rng.chance(40);

        const OrvaValue value = softApRequest(name, settings, timeout, hold);
        const int id = m_asks.add(m_fixture.send(OrvaNetworkRequestSoftApPath(), value));
        receive({name, settings, hold, timeout > 0 ? m_world->now + timeout : 0}, interface, id);
        return QStringLiteral("request ") + orvaToLog(value.__variant());
    }

    void receive(const Request& request, const QString& interface, int id = -1)
    {
        if (!m_started)
            return id < 0 ? void() : m_asks.end(id, notStarted);
        auto& requests = ap(interface).requests;
        const auto old = find(requests, request.name);
        if (old == requests.end())
            requests.append(request);
        else
            *old = request;
        const bool changed = apply(interface);
        if (id >= 0 && changed)
            ap(interface).pending << id;
        else if (id >= 0)
            m_asks.end(id);
    }

    QString revoke(const QString& name, const QString& interface)
    {
        const OrvaValue value = softApRequest(name, {{QStringLiteral("apInterface"), interface}});
        const int id = m_asks.add(m_fixture.send(OrvaNetworkRevokeSoftApPath(), value));
        m_asks.end(id, m_started ? QString() : notStarted);
        drop(name, interface);
        return QStringLiteral("revoke %1 on %2").arg(name, interface);
    }

    void drop(const QString& name, const QString& interface)
    {
        if (!m_started)
            return;
        auto& requests = ap(interface).requests;
        const auto old = find(requests, name);
        if (old != requests.end()) {
            requests.erase(old);
            m_hold = m_hold && !requests.isEmpty();
        }
        apply(interface);
        m_asks.end(ap(interface).pending, QStringLiteral("error: SoftAp request revoked"));
    }

    static QVector<Request>::iterator find(QVector<Request>& requests, const QString& name)
    {
        return std::find_if(requests.begin(), requests.end(),
                            [&](const Request& request) { return request.name == name; });
    }

    bool apply(const QString& interface)
    {
        Ap& own = ap(interface);
        if (own.requests.isEmpty()) {
            const bool ran = !own.active.isEmpty();
            m_stops += ran ? 1 : 0;
            own.active.clear();
            if (m_aps["uap0"].active.isEmpty() && m_aps["uap1"].active.isEmpty())
                m_world->claim(2, false);
            return ran;
        }
        QVariantHash folded = own.configured;
        QVariantHash sticky = own.active;
        sticky.remove(QStringLiteral("vendorSpecificData"));
        folded.insert(sticky);
        const bool held = std::exchange(m_hold, false);
        for (const Request& request : qAsConst(own.requests)) {
            folded.insert(request.settings);
            m_hold = m_hold || request.hold;
        }
        if (orvaStrictlyEqual(folded, std::exchange(own.active, folded)) || held)
            return false;
        m_world->claim(2, true);
        ++m_starts;
        m_lastStart = folded;
        return true;
    }

    QString letTimePass(int ms)
    {
        m_world->now += ms;
        const QString timer = QStringLiteral("m_softApTimeoutTimer");
        m_fixture.fire(timer); // early, or the first of those that are due
        for (;;) {
            const auto [next, interface] = nextExpiring();
            if (!next || next->deadline > m_world->now)
                return QStringLiteral("%1 ms pass").arg(ms);
            drop(QString(next->name), interface);
            m_fixture.fire(timer);
        }
    }

    [[nodiscard]] std::pair<const Request*, QString> nextExpiring() const
    {
        std::pair<const Request*, QString> next{nullptr, {}};
        for (const auto& [interface, own] : m_aps)
            for (const Request& request : own.requests)
                if (request.deadline > 0 &&
                    (!next.first || request.deadline < next.first->deadline))
                    next = {&request, QString::fromStdString(interface)};
        return next;
    }

    void activateLocal()
    {
        m_localActive = m_started;
        receive(
            {m_fixture.worker->name(), {{QStringLiteral("apInterface"), QStringLiteral("uap0")}}},
            QStringLiteral("uap0"));
    }

    void deactivateLocal()
    {
        m_localActive = false;
        drop(m_fixture.worker->name(), QStringLiteral("uap0"));
    }

    QString start()
    {
        const int id = m_asks.add(m_fixture.send(OrvaNetworkStartPath()));
        m_asks.end(id, m_started ? QStringLiteral("Error: start_req called while already started!")
                                 : QString());
        if (std::exchange(m_started, true))
            return QStringLiteral("start");
        m_world->claim(1, true);
        if (!std::exchange(m_startedOnce, true))
            deactivateLocal();
        m_fallbackDue = m_fallbackDue || (!m_localActive && m_linksUp.empty());
        return QStringLiteral("start");
    }

    QString stop()
    {
        m_asks.end(m_asks.add(m_fixture.send(OrvaNetworkStopPath())));
        for (auto& [interface, own] : m_aps) {
            m_stops += own.active.isEmpty() ? 0 : 1;
            own.requests.clear();
            own.active.clear();
            m_asks.end(own.pending,
                       QStringLiteral("Error: Cannot start softAp, stopping all softAps"));
        }
        m_hold = false;
        deactivateLocal();
        m_started = false;
        m_fallbackDue = false;
        for (const int submodule : {1, 2, 3})
            m_world->claim(submodule, false);
        m_fixture.settle();
        return QStringLiteral("stop");
    }

    QString setLink(const QString& interface, bool up)
    {
        m_fixture.worker->setLinkStatus(interface, up);
        if (up) {
            m_fallbackDue = false;
            deactivateLocal();
            m_linksUp.insert(interface.toStdString());
        } else {
            m_linksUp.erase(interface.toStdString());
        }
        m_fallbackDue = m_fallbackDue || (m_linksUp.empty() && !m_localActive);
        if (m_linksUp.count("eth0") > 0)
            m_world->claim(1, false);
        return interface + (up ? QStringLiteral(" up") : QStringLiteral(" down"));
    }

    /// The live requests with whether they run, as published and as expected.
    QString live()
    {
        QStringList rows;
        const auto requests = m_fixture.value(OrvaNetworkSoftApRequestsPath()).softApRequests();
        for (const auto& row : requests)
            rows << row.interface() + row.name() + QString::number(row.running());
        return rows.join(QLatin1Char(' '));
    }
    [[nodiscard]] QString expectedLive() const
    {
        QStringList rows;
        for (const auto& [interface, own] : m_aps)
            for (const Request& request : own.requests)
                rows << QString::fromStdString(interface) + request.name +
                            QString::number(!own.active.isEmpty());
        return rows.join(QLatin1Char(' '));
    }

    const QString notStarted = QStringLiteral("error: Networking is not started.");
    std::shared_ptr<RadioWorld> m_world;
    WorkerFixture& m_fixture;
    Asks m_asks;
    std::map<std::string, Ap> m_aps;
    std::set<std::string> m_linksUp;
    QVariantHash m_lastStart;
    int m_starts = 0;
    int m_stops = 0;
    bool m_hold = false;
    bool m_started = false;
    bool m_startedOnce = false;
    bool m_localActive = false;
    bool m_fallbackDue = true;
};
