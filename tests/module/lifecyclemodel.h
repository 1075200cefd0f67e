// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "driver.h"

/// Starts and stops, profiles, links, cables and failures: the life cycle and the published state.
class LifecycleModel : public Model
{
public:
    explicit LifecycleModel(Driver& driver)
        : m_driver(driver)
        , m_fixture(driver.fixture)
    {
        // As a backend does that takes the links down inside the call.
        m_fixture.backend->onCommand = [this](const QString& command) {
            const bool down = command == "disconnect"_s && m_linksUp.size() % 2 == 1;
            for (const QString& link : down ? QStringList(m_linksUp) : QStringList())
                setLink(link, false);
        };
    }

    void step(Rng& rng) override
    {
        act(rng);
        m_settled = rng.chance(80);
        if (m_settled)
            HeldClock::settle();
    }

    QString check() override
    {
        const OrvaNetworkInfo info = m_fixture.info();
        const qint32 wired = info.wired().state();
        const qint32 wireless = info.wireless().state();
        if (wired != m_states["eth0"_s] || wireless != m_states["wlan0"_s])
            return "wired %1, wireless %2"_s.arg(wired).arg(wireless);
        const qint32 overall = wired == 1 || wireless == 1 ? 1 : qMax(wired, wireless);
        const qint32 published = m_fixture.value(OrvaNetworkStatePath()).networkState();
        if (info.state() != overall || published != overall)
            return "the overall state is not %1"_s.arg(overall);
        if (m_fixture.worker->linkStatus() == m_linksUp.isEmpty())
            return "the link node does not follow the links"_s;
        if (m_settled &&
            ssidsOf(profileInUse()) !=
                ssidsOf(m_fixture.value(OrvaNetworkCurrentProfileSettingsPath()).networkProfile()))
            return "the profile in use is not the one stored"_s;
        for (const auto& [path, value] : std::exchange(m_fixture.store->writes, {})) {
            const OrvaNetworkProfile stored = value.networkProfile();
            if (stored.__contains(OrvaNetworkProfile::Wireless()) && !ssidsOf(stored).isEmpty() &&
                stored.wireless() != stored.wirelessNetworks().first())
                return path.toString() + " is not at the invariant"_s;
        }
        return QString();
    }

    void finish() override
    {
        refuse({}, false);
        m_driver.end(m_driver.ask("stop"_s), stop());
    }

private:
    void act(Rng& rng)
    {
        const QString interface = rng.pick(interfaces);
        const QString ssid = rng.pick(ssids);
        const bool on = rng.chance(50);
        switch (rng.below(10)) {
        case 0:
        case 1:
        case 2:
            return sendLifecycle(rng);
        case 3:
            return m_driver.send("remove "_s + ssid);
        case 4:
        case 5:
            return setProfile(on ? randomProfile(rng) : profileInUse(), rng.chance(10),
                              rng.chance(10));
        case 6:
            if (m_states.contains(interface))
                m_states[interface] = 2;
            m_downByShutdown.remove(interface);
            return m_driver.play("leave "_s + interface);
        case 7:
            return m_driver.play(on ? "cable in"_s : "cable out"_s);
        case 8:
            return m_driver.play("wrong "_s + ssid);
        }
        setLink(interface, on);
    }

    void refuse(const QString& command, bool refused)
    {
        m_driver.play("allow applyProfile"_s);
        m_driver.play("allow disconnect"_s);
        if (refused)
            m_driver.play("refuse "_s + command);
    }

    void sendLifecycle(Rng& rng)
    {
        HeldClock::settle(); // An expectation holds for the state that its request finds.
        refuse("disconnect"_s, rng.chance(10));
        if (rng.chance(20)) {
            if (m_shuttingDown && !stop().isEmpty())
                callOffShutdown();
            m_driver.play("pass 2000"_s);
            return;
        }
        const QString command =
            rng.pick(QStringList{"start"_s, "stop"_s, "shutdown"_s, "restart"_s});
        m_driver.end(m_driver.ask(command), receive(command));
        HeldClock::settle();
    }

    /// The network manager's answer to a command.
    QString receive(const QString& command)
    {
        if (command == "start"_s)
            return start();
        if (command == "stop"_s)
            return stop();
        if (command == "shutdown"_s)
            return shutDown();
        stop();
        start();
        return QString();
    }

    QString start()
    {
        if (m_started && !m_shuttingDown)
            return "Error: start_req called while already started!"_s;
        callOffShutdown();
        m_started = true;
        return QString();
    }

    QString stop()
    {
        if (m_fixture.backend->refused.contains("disconnect"_s))
            return "Error: Unable to disconnect!"_s;
        m_started = false;
        m_shuttingDown = false;
        return QString();
    }

    QString shutDown()
    {
        if (std::exchange(m_shuttingDown, true))
            return "error: Shutdown in progress"_s;
        const QStringList connected = m_states.keys(1);
        m_downByShutdown = QSet<QString>(connected.begin(), connected.end());
        for (const QString& interface : connected)
            m_states[interface] = 2;
        return QString();
    }

    void callOffShutdown()
    {
        if (!std::exchange(m_shuttingDown, false))
            return;
        for (const QString& interface : std::as_const(m_downByShutdown))
            if (m_states.value(interface) == 2)
                m_states[interface] = 1;
    }

    OrvaNetworkProfile profileInUse()
    {
        return m_fixture.value(OrvaNetworkProfilePath()).networkProfile();
    }

    static OrvaNetworkProfile randomProfile(Rng& rng)
    {
        QStringList chosen;
        while (rng.chance(60))
            chosen << rng.pick(ssids);
        OrvaNetworkProfile profile = profileWith(chosen);
        profile.setType(static_cast<OrvaNetworkProfileType::Value>(rng.below(3)));
        if (rng.chance(30))
            profile.__remove(OrvaNetworkProfile::WirelessNetworks());
        if (rng.chance(20))
            profile.__remove(OrvaNetworkProfile::Wireless());
        if (rng.chance(30))
            profile.setWireless(wpaNetwork(rng.pick(ssids)));
        return profile;
    }

    void setProfile(const OrvaNetworkProfile& profile, bool refused, bool diskFull)
    {
        refuse("applyProfile"_s, refused);
        m_driver.play(diskFull ? "disk full"_s : "disk good"_s);
        m_driver.send("profile/set "_s + json(OrvaValue::of(profile)));
    }

    void setLink(const QString& interface, bool up)
    {
        m_driver.play((up ? "up "_s : "down "_s) + interface);
        m_linksUp.removeAll(interface);
        if (up && !interface.startsWith("uap"_s))
            m_linksUp << interface;
        if (m_states.contains(interface))
            m_states[interface] = up ? 1 : 0;
    }

    static QString json(const OrvaHash& record)
    {
        return QString::fromUtf8(OrvaPlain::toJson(record.__variant()));
    }

    inline static const QStringList ssids = {"Home"_s, "Office"_s, "Cafe"_s, "Attic"_s};
    inline static const QStringList interfaces = {"eth0"_s, "wlan0"_s, "uap0"_s, "tun0"_s};

    Driver& m_driver;
    WorkerFixture& m_fixture;
    bool m_started = false;
    bool m_shuttingDown = false;
    bool m_settled = false;
    /// Those that the shutdown alone shows as in between.
    QSet<QString> m_downByShutdown;
    QStringList m_linksUp; ///< those of other than soft APs
    /// Of the wired and the wireless interface.
    QHash<QString, qint32> m_states{{"eth0"_s, 0}, {"wlan0"_s, 0}};
};
