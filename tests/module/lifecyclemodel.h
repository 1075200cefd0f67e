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

    QString step(Rng& rng) override
    {
        const QString did = act(rng);
        m_settled = rng.chance(80);
        if (m_settled)
            m_fixture.settle();
        return did;
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
        return m_refreshFault;
    }

    void finish() override
    {
        m_fixture.backend->refused.clear();
        m_driver.end(m_driver.ask(OrvaNetworkStopPath()), stop());
    }

private:
    QString act(Rng& rng)
    {
        const QString interface = rng.pick(interfaces);
        const QString ssid = rng.pick(ssids);
        const bool on = rng.chance(50);
        switch (rng.below(12)) {
        case 0:
        case 1:
        case 2:
            return sendLifecycle(rng);
        case 3:
            m_driver.send(OrvaNetworkRemoveWirelessNetworkPath(), OrvaValue::of(ssid));
            return "remove "_s + ssid;
        case 4:
        case 5:
            return setProfile(on ? randomProfile(rng) : profileInUse(), rng.chance(10),
                              rng.chance(10));
        case 6:
            if (m_states.contains(interface))
                m_states[interface] = 2;
            m_downByShutdown.remove(interface);
            m_fixture.worker->setDisconnecting(interface);
            return "disconnecting "_s + interface;
        case 7:
            m_fixture.worker->setCurrentCableStatus(on);
            return "cable: %1"_s.arg(on);
        case 8:
            Q_EMIT m_fixture.backend->AuthError(ssid, "wrong key"_s);
            return "authentication error of "_s + ssid;
        case 9:
        case 10:
            return refresh(randomSnapshot(rng));
        }
        setLink(interface, on);
        return "%1 up: %2"_s.arg(interface).arg(on);
    }

    QString sendLifecycle(Rng& rng)
    {
        m_fixture.settle(); // What is expected of a request holds for the state that it finds.
        const bool refuse = rng.chance(10);
        m_fixture.backend->refused = refuse ? QStringList("disconnect"_s) : QStringList();
        const QString refused = refuse ? " (disconnect refused)"_s : QString();
        if (rng.chance(20)) {
            if (m_shuttingDown && !stop().isEmpty())
                callOffShutdown();
            m_fixture.fire("m_shutdownTimer"_s);
            return "the shutdown timer"_s + refused;
        }
        const QVector<CMPath> commands = {OrvaNetworkStartPath(), OrvaNetworkStopPath(),
                                          OrvaNetworkShutdownPath(), OrvaNetworkRestartPath()};
        const CMPath command = rng.pick(commands);
        m_driver.end(m_driver.ask(command), receive(command));
        m_fixture.settle();
        return command.toString() + refused;
    }

    /// How the network manager answers a command.
    QString receive(const CMPath& command)
    {
        if (command == OrvaNetworkStartPath())
            return start();
        if (command == OrvaNetworkStopPath())
            return stop();
        if (command == OrvaNetworkShutdownPath())
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

    QString setProfile(const OrvaNetworkProfile& profile, bool refused, bool diskFull)
    {
        m_fixture.backend->refused = refused ? QStringList("applyProfile"_s) : QStringList();
        m_fixture.store->full = diskFull;
        m_driver.send(OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(profile));
        return "set "_s + orvaToLog(profile.__variant());
    }

    void setLink(const QString& interface, bool up)
    {
        m_linksUp.removeAll(interface);
        if (up && !interface.startsWith("uap"_s))
            m_linksUp << interface;
        if (m_states.contains(interface))
            m_states[interface] = up ? 1 : 0;
        m_fixture.worker->setLinkStatus(interface, up);
    }

    static OrvaNetworkInfo randomSnapshot(Rng& rng)
    {
        const QByteArray wired = R"("wired": {"state": %1, "name": "not the worker's",
            "addresses": [{"ip": "192.0.2.%1"}]})";
        const QByteArray wireless = R"("wireless": {"state": %1, "ssid": "Home"})";
        QByteArrayList parts;
        for (const QByteArray& part : {wired, wireless, QByteArray(R"("state": 1)"),
                                       QByteArray(R"("wirelessNetworks": [{"ssid": "Attic"}])")})
            if (rng.chance(50))
                parts << QByteArray(part).replace("%1", QByteArray::number(rng.below(3)));
        return json(R"({"networkInfo": {)" + parts.join(',') + "}}").networkInfo();
    }

    QString refresh(const OrvaNetworkInfo& snapshot)
    {
        m_fixture.settle();
        const QVariantList before = workerFields(m_fixture.info());
        QStringList changed;
        const auto watch = QObject::connect(
            m_fixture.worker, &CMAbstractWorker::valueChanged,
            [&](const CMPath& path, const OrvaValue&) { changed << path.toString(); });
        m_fixture.backend->state = snapshot;
        Q_EMIT m_fixture.backend->AddressesChanged();
        m_fixture.settle();
        QObject::disconnect(watch);
        if (!orvaStrictlyEqual(workerFields(m_fixture.info()), before))
            m_refreshFault = "a refresh changed a field of the worker's own"_s;
        if (changed.removeDuplicates() > 0)
            m_refreshFault = "a refresh changed a node twice"_s;
        return "refresh "_s + orvaToLog(snapshot.__variant());
    }

    /// What a refresh must leave alone, as plain values: an absent field is an invalid one.
    static QVariantList workerFields(const OrvaNetworkInfo& info)
    {
        const QVariantHash hash = info.__hash();
        QVariantList fields{hash["state"_s], hash["airplaneMode"_s], ssidsOf(info),
                            hash.contains("wirelessNetworks"_s)};
        for (const QString& interface : {"wired"_s, "wireless"_s, "softAp"_s})
            for (const QString& name :
                 {"state"_s, "name"_s, "cableConnected"_s, "connectingStatus"_s, "wps"_s})
                fields << hash[interface].toHash().value(name);
        return fields;
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
    QString m_refreshFault; ///< what a refresh did that it must not
};
