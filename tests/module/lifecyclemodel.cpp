#include "lifecyclemodel.h"

#include <network/networkpaths.h>

namespace {

const QStringList ssids = {QStringLiteral("Home"), QStringLiteral("Office"), QStringLiteral("Cafe"),
                           QStringLiteral("Attic")};
const QStringList interfaces = {QStringLiteral("eth0"), QStringLiteral("wlan0"),
                                QStringLiteral("uap0"), QStringLiteral("tun0")};

OrvaNetworkProfile randomProfile(Rng& rng)
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

OrvaNetworkInfo randomSnapshot(Rng& rng)
{
    OrvaNetworkAddress address;
    address.setIp(QStringLiteral("192.0.2.%1").arg(rng.below(3)));
    OrvaNetworkWiredInterface wired;
    wired.setState(static_cast<OrvaNetworkState::Value>(rng.below(3)));
    wired.setName(QStringLiteral("not the worker's"));
    wired.setAddresses({address});
    OrvaNetworkWirelessInterface wireless;
    wireless.setSsid(rng.pick(ssids));
    wireless.setState(static_cast<OrvaNetworkState::Value>(rng.below(3)));
    OrvaNetworkInfo snapshot;
    if (rng.chance(70))
        snapshot.setWired(wired);
    if (rng.chance(70))
        snapshot.setWireless(wireless);
    if (rng.chance(30))
        snapshot.setState(OrvaNetworkState::Connected);
    if (rng.chance(30))
        snapshot.setWirelessNetworks({wireless});
    return snapshot;
}

/// What a refresh must leave alone, as plain values: an absent field is an invalid one.
QVariantList workerFields(const OrvaNetworkInfo& info)
{
    const auto fieldsOf = [](const OrvaHash& record, const QStringList& names) {
        QVariantList fields;
        for (const QString& name : names)
            fields << record.__hash().value(name);
        return fields;
    };
    QVariantList networks{info.__contains(OrvaNetworkInfo::WirelessNetworks())};
    const auto known = info.wirelessNetworks();
    for (OrvaNetworkWirelessInterface network : known) {
        network.__remove(OrvaNetworkWirelessInterface::CredentialsSuspect());
        networks << network.__variant();
    }
    const QStringList own = {QStringLiteral("state"), QStringLiteral("name"),
                             QStringLiteral("cableConnected"), QStringLiteral("connectingStatus"),
                             QStringLiteral("wps")};
    return {fieldsOf(info, {QStringLiteral("state"), QStringLiteral("airplaneMode")}),
            fieldsOf(info.wired(), own), fieldsOf(info.wireless(), own),
            fieldsOf(info.softAp(), own), networks};
}

} // namespace

LifecycleModel::LifecycleModel(Driver& driver)
    : m_states{{QStringLiteral("eth0"), 0}, {QStringLiteral("wlan0"), 0}}
{
    WorkerFixture& fixture = driver.fixture;
    // As a backend does that takes the links down inside the call.
    fixture.backend->onCommand = [this, &fixture](const QString& command) {
        const bool down = command == QLatin1String("disconnect") && m_linksUp.size() % 2 == 1;
        const QStringList links = down ? m_linksUp : QStringList();
        for (const QString& link : links)
            setLink(fixture, link, false);
    };
}

QString LifecycleModel::step(Driver& driver, Rng& rng)
{
    using Step = QString (LifecycleModel::*)(Driver&, Rng&);
    static const std::vector<Step> steps = {
        &LifecycleModel::sendLifecycle, &LifecycleModel::sendProfile, &LifecycleModel::signalLink,
        &LifecycleModel::signalTrouble, &LifecycleModel::refresh};
    const QString did = (this->*rng.pick(steps))(driver, rng);
    if (rng.chance(80))
        driver.fixture.settle();
    return did;
}

QString LifecycleModel::sendLifecycle(Driver& driver, Rng& rng)
{
    WorkerFixture& fixture = driver.fixture;
    fixture.settle(); // What is expected of a request holds for the state that it finds.
    const bool refuse = rng.chance(10);
    fixture.backend->refused = refuse ? QStringList(QStringLiteral("disconnect")) : QStringList();
    const QString refused = refuse ? QStringLiteral(" (disconnect refused)") : QString();
    switch (rng.below(5)) {
    case 0:
        driver.send(OrvaNetworkStartPath(), {}, start());
        fixture.settle();
        return QStringLiteral("start");
    case 1:
        driver.send(OrvaNetworkStopPath(), {}, stop(fixture));
        fixture.settle();
        return QStringLiteral("stop") + refused;
    case 2:
        stop(fixture);
        start();
        driver.send(OrvaNetworkRestartPath(), {}, QString());
        fixture.settle();
        return QStringLiteral("restart") + refused;
    case 3:
        driver.send(OrvaNetworkShutdownPath(), {}, shutDown());
        fixture.settle();
        return QStringLiteral("shutdown");
    }
    if (m_shuttingDown && !stop(fixture).isEmpty())
        comeBack();
    m_shuttingDown = false;
    fixture.fire(QStringLiteral("m_shutdownTimer"));
    return QStringLiteral("the shutdown timer") + refused;
}

void LifecycleModel::comeBack()
{
    for (auto state = m_states.begin(); state != m_states.end(); ++state) {
        if (*state == 2 && m_linksUp.contains(state.key()))
            *state = 1;
    }
}

QString LifecycleModel::start()
{
    if (m_started && !m_shuttingDown)
        return QStringLiteral("Error: start_req called while already started!");
    if (m_shuttingDown)
        comeBack();
    m_started = true;
    m_shuttingDown = false;
    return QString();
}

QString LifecycleModel::stop(const WorkerFixture& fixture)
{
    if (fixture.backend->refused.contains(QStringLiteral("disconnect")))
        return QStringLiteral("Error: Unable to disconnect!");
    m_started = false;
    m_shuttingDown = false;
    return QString();
}

QString LifecycleModel::shutDown()
{
    if (m_shuttingDown)
        return QStringLiteral("error: Shutdown in progress");
    m_shuttingDown = true;
    for (qint32& state : m_states)
        state = state == 1 ? 2 : state;
    return QString();
}

QString LifecycleModel::sendProfile(Driver& driver, Rng& rng)
{
    driver.fixture.backend->refused =
        rng.chance(10) ? QStringList(QStringLiteral("applyProfile")) : QStringList();
    if (rng.chance(40)) {
        const QString ssid = rng.pick(ssids);
        driver.send(OrvaNetworkRemoveWirelessNetworkPath(), toValue(ssid));
        return QStringLiteral("remove ") + ssid;
    }
    OrvaNetworkProfile profile = randomProfile(rng);
    if (rng.chance(50))
        profile = driver.fixture.value(OrvaNetworkProfilePath()).networkProfile();
    driver.send(OrvaNetworkSetNetworkProfilePath(), toValue(profile));
    return QStringLiteral("set ") + orvaToLog(profile.__variant());
}

void LifecycleModel::setLink(WorkerFixture& fixture, const QString& interface, bool up)
{
    if (!interface.startsWith(QLatin1String("uap"))) {
        m_linksUp.removeAll(interface);
        if (up)
            m_linksUp << interface;
    }
    if (m_states.contains(interface))
        m_states[interface] = up ? 1 : 0;
    fixture.worker->setLinkStatus(interface, up);
}

QString LifecycleModel::signalLink(Driver& driver, Rng& rng)
{
    const QString interface = rng.pick(interfaces);
    if (rng.chance(25)) {
        if (m_states.contains(interface))
            m_states[interface] = 2;
        driver.fixture.worker->setDisconnecting(interface);
        return QStringLiteral("disconnecting ") + interface;
    }
    const bool up = rng.chance(50);
    setLink(driver.fixture, interface, up);
    return interface + (up ? QStringLiteral(" up") : QStringLiteral(" down"));
}

QString LifecycleModel::signalTrouble(Driver& driver, Rng& rng)
{
    const QString ssid = rng.pick(ssids);
    switch (rng.below(3)) {
    case 0:
        driver.fixture.worker->setCurrentCableStatus(rng.chance(50));
        return QStringLiteral("cable");
    case 1:
        Q_EMIT driver.fixture.backend->Error(QStringLiteral("trouble"));
        return QStringLiteral("error");
    }
    Q_EMIT driver.fixture.backend->AuthError(ssid, QStringLiteral("wrong key"));
    return QStringLiteral("authentication error of ") + ssid;
}

QString LifecycleModel::refresh(Driver& driver, Rng& rng)
{
    WorkerFixture& fixture = driver.fixture;
    const QVariantList before = workerFields(fixture.info());
    QStringList changed;
    const auto watch =
        QObject::connect(fixture.worker, &CMAbstractWorker::valueChanged,
                         [&](const CMPath& path, const OrvaValue&) { changed << path.toString(); });
    fixture.backend->state = randomSnapshot(rng);
    Q_EMIT fixture.backend->AddressesChanged();
    QObject::disconnect(watch);
    if (!orvaStrictlyEqual(workerFields(fixture.info()), before))
        m_refreshFault = QStringLiteral("a refresh changed a field of the worker's own");
    if (changed.removeDuplicates() > 0)
        m_refreshFault = QStringLiteral("a refresh changed a node twice");
    return QStringLiteral("addresses changed");
}

QString LifecycleModel::check(Driver& driver)
{
    WorkerFixture& fixture = driver.fixture;
    const OrvaNetworkInfo info = fixture.info();
    const qint32 wired = info.wired().state();
    const qint32 wireless = info.wireless().state();
    if (wired != m_states.value(QStringLiteral("eth0")) ||
        wireless != m_states.value(QStringLiteral("wlan0")))
        return QStringLiteral("wired %1, wireless %2").arg(wired).arg(wireless);
    const qint32 overall = wired == 1 || wireless == 1 ? 1 : wired == 0 && wireless == 0 ? 0 : 2;
    if (info.state() != overall ||
        fixture.value(OrvaNetworkStatePath()).networkState() != info.state())
        return QStringLiteral("the overall state is not %1").arg(overall);
    if (fixture.worker->linkStatus() == m_linksUp.isEmpty())
        return QStringLiteral("the link node does not follow the links");
    for (const auto& [path, value] : qAsConst(fixture.store->writes)) {
        const OrvaNetworkProfile stored = value.networkProfile();
        if (stored.__contains(OrvaNetworkProfile::Wireless()) && !ssidsOf(stored).isEmpty() &&
            stored.wireless() != stored.wirelessNetworks().first())
            return path.toString() + QStringLiteral(" is not at the invariant");
    }
    fixture.store->writes.clear();
    return m_refreshFault;
}

void LifecycleModel::finish(Driver& driver)
{
    driver.fixture.backend->refused.clear();
    driver.send(OrvaNetworkStopPath(), {}, stop(driver.fixture));
}
