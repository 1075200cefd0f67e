#include "workerfixture.h"

#include "logcapture.h"
#include "network/networkpaths.h"

namespace {

const QString home = "Home"_s;

NodeValues withNetworks(const QStringList& ssids)
{
    return {{OrvaNetworkCurrentProfileSettingsPath(), OrvaValue::of(profileWith(ssids))}};
}

OrvaNetworkProfile storedProfile(WorkerFixture& fixture)
{
    return fixture.value(OrvaNetworkCurrentProfileSettingsPath()).networkProfile();
}

/// What the backend was told last.
OrvaNetworkProfile usedProfile(const WorkerFixture& fixture)
{
    const auto& profiles = fixture.backend->profiles;
    return profiles.isEmpty() ? OrvaNetworkProfile() : profiles.last();
}

/// A node as its path below "network", "()" of an activate node, "rows", "r" of a read-only one,
/// its permission and its title.
QString textOf(const CMNodeInfo& node)
{
    QString text = node.path.toString().mid(8);
    if (node.kind != QLatin1String("value"))
        text += node.kind == QLatin1String("rows") ? " rows"_s : "()"_s;
    else if (node.readOnly)
        text += " r"_s;
    if (node.permission != OrvaPermission::Default)
        text += " %1"_s.arg(static_cast<qint32>(node.permission));
    return node.title.isEmpty() ? text : text + " \"%1\""_s.arg(node.title);
}

/// The profile that sets a network with a key of its own, as a client does that knows no list.
/// `what` is its SSID, and the number of the profile's type if it has one.
OrvaValue setting(const QString& what)
{
    OrvaNetworkInterface network = wpaNetwork(what.section(" "_s, 0, 0));
    network.setKey("secret-new"_s);
    OrvaNetworkProfile profile;
    profile.setWireless(network);
    profile.setType(static_cast<OrvaNetworkProfileType::Value>(what.section(" "_s, 1).toInt()));
    return OrvaValue::of(profile);
}

/// Whether the backend answers with the MACs.
void hear(ScriptedBackend& backend, bool answers)
{
    backend.ethernetMac = answers ? "00:11:22:aa:bb:cc"_s : QString();
    backend.wirelessMac = answers ? "00:11:22:dd:ee:ff"_s : QString();
}

/// Begins one step of a sequence; its reply where it is a request.
CMReply<QVariant> begin(WorkerFixture& fixture, const QString& step)
{
    const QString verb = step.section(" "_s, 0, 0);
    const QString what = step.section(" "_s, 1);
    if (verb == "remove"_s)
        return fixture.send(OrvaNetworkRemoveWirelessNetworkPath(), OrvaValue::of(what));
    if (verb == "set"_s)
        return fixture.send(OrvaNetworkSetNetworkProfilePath(), setting(what));
    if (verb == "wps"_s)
        return fixture.send(OrvaNetworkApplyWpsPath(), OrvaValue::of(wpaNetwork(what)));
    if (what.isEmpty())
        return fixture.send(CMPath("network/"_s + verb));
    const QHash<QString, std::function<void()>> events = {
        {"up"_s, [&] { fixture.worker->setLinkStatus(what, true); }},
        {"down"_s, [&] { fixture.worker->setLinkStatus(what, false); }},
        {"leave"_s, [&] { fixture.worker->setDisconnecting(what); }},
        {"cable"_s, [&] { fixture.worker->setCurrentCableStatus(what == "in"_s); }},
        {"refuse"_s, [&] { fixture.backend->refused << what; }},
        {"disk"_s, [&] { fixture.store->full = what == "full"_s; }},
        {"deaf"_s, [&] { hear(*fixture.backend, what == "off"_s); }},
        {"refresh"_s,
         [&] {
             OrvaNetworkWirelessInterface wireless;
             wireless.setSsid(what);
             fixture.backend->state.setWireless(wireless);
             Q_EMIT fixture.backend->AddressesChanged();
         }},
        {"wrong"_s, [&] { Q_EMIT fixture.backend->AuthError(what, "wrong key"_s); }}};
    events[verb]();
    return {};
}

/// Does one step of a sequence; the outcome where it is a request. One that begins with "send" does
/// not wait for what comes of it.
QString play(WorkerFixture& fixture, const QString& step)
{
    if (step.startsWith("fire "_s))
        return fixture.fire(step.mid(5)) ? QString() : "stands still"_s;
    if (step.startsWith("send "_s)) {
        begin(fixture, step.mid(5));
        return QString();
    }
    const auto reply = begin(fixture, step);
    fixture.settle();
    return reply ? WorkerFixture::outcome(reply) : QString();
}

/// What is published, as facts by their names; "-" where a list is absent.
QStringList picture(WorkerFixture& fixture)
{
    const OrvaNetworkInfo info = fixture.info();
    const bool isKnown = info.__contains(OrvaNetworkInfo::WirelessNetworks());
    const QVector<QPair<const char*, int>> numbers = {
        {"wired", info.wired().state()},
        {"wireless", info.wireless().state()},
        {"softap", info.softAp().state()},
        {"overall", info.state()},
        {"state", fixture.value(OrvaNetworkStatePath()).networkState()},
        {"link", fixture.worker->linkStatus()},
        {"wired status", info.wired().connectingStatus()},
        {"wireless status", info.wireless().connectingStatus()},
        {"timer", fixture.timer("m_softApTimer"_s)->isActive()},
        {"delay", fixture.timer("m_softApTimer"_s)->interval()},
        {"shutdown", fixture.timer("m_shutdownTimer"_s)->interval()},
        {"backups", fixture.writes(OrvaNetworkBackupProfileSettingsPath()).size()},
    };
    QStringList facts = {
        "known "_s + (isKnown ? ssidsOf(info).join(","_s) : "-"_s),
        "stored "_s + ssidsOf(storedProfile(fixture)).join(","_s),
        "mac "_s + fixture.value(OrvaNetworkStateCurrentMAC()).string_().right(2),
        "message "_s + fixture.value(OrvaNetworkConnectingMessage()).string_(),
        "asked "_s + fixture.backend->commands.join(","_s),
        "used "_s + ssidsOf(usedProfile(fixture)).join(","_s),
    };
    QStringList suspects;
    const auto known = info.wirelessNetworks();
    for (const auto& network : known)
        if (network.__hash().value("credentialsSuspect"_s).toBool())
            suspects << network.ssid();
    const auto& softAps = fixture.backend->startedSoftAps;
    facts << "suspects "_s + suspects.join(","_s)
          << "ssid "_s + (softAps.isEmpty() ? QString() : softAps.last().ssid());
    for (const auto& [name, number] : numbers)
        facts << "%1 %2"_s.arg(QLatin1String(name)).arg(number);
    return facts;
}

} // namespace

class TestWorker : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void createsItsNodesInOrder()
    {
        WorkerFixture fixture;
        QStringList nodes;
        const auto infos = fixture.worker->nodeInfos();
        std::transform(infos.begin(), infos.end(), std::back_inserter(nodes), textOf);
        QCOMPARE(
            nodes.join(", "_s),
            "state/connected, info r, state, state/message, scan/results rows, state/profile, state/ethernet-mac, state/wireless-mac, state/current-mac, state/cable \"Current cable status\", profile r \"Network profile\", webserver/url \"Local Webserver URL\", webserver/localhost-url \"Local Webserver URL (localhost)\", softap/stations r 9999 \"Connected SoftAp stations\", start(), restart(), shutdown(), stop(), wireless/reconnect(), profile/set(), wireless/remove(), scan(), wps/pbc(), wps/pin(), wps/generate-pin(), wps/apply(), wireless/rssi(), softap/request(), softap/revoke(), wake-on-lan/set-enabled(), wireless/restart(), airplane-mode \"Airplane Mode\", softap/requests r"_s);
    }

    void publishesItsFirstPicture()
    {
        WorkerFixture fixture(withNetworks({home}));
        const OrvaNetworkInfo info = fixture.info();
        QCOMPARE(info.wired().mac(), "00:11:22:AA:BB:CC"_s);
        QVERIFY(info.wired().cableConnected());
        QCOMPARE(info.wireless().name(), "wlan0"_s);
        QCOMPARE(info.softAp().name(), "softap"_s);
        const auto profile = fixture.value(OrvaNetworkProfilePath()).networkProfile();
        QCOMPARE(profile.wireless().key(), "****"_s);
        QCOMPARE(fixture.value(OrvaNetworkStatePath()).typeKey(), OrvaValue::NetworkState());
        QVERIFY(fixture.value(OrvaNetworkLocalWebserverUrlPath()).isEmpty());
        QVERIFY(fixture.backend->commands.isEmpty());
        QCOMPARE(fixture.rfkillCalls(), QStringList("unblock all"_s));
    }

    void readsThePort()
    {
        const QMap<int, QString> urls = {{8080, "http://localhost:8080/"_s},
                                         {0, "http://localhost/"_s},
                                         {-1, "http://localhost/"_s}};
        for (auto row = urls.begin(); row != urls.end(); ++row) {
            WorkerFixture fixture({{OrvaWebserverPortPath(), OrvaValue::of(row.key())}});
            QCOMPARE(fixture.value(OrvaNetworkLocalWebserverLocalhostUrlPath()).string_(), *row);
            Q_EMIT fixture.backend->AddressesChanged();
            fixture.settle();
            QCOMPARE(fixture.value(OrvaNetworkLocalWebserverUrlPath()).string_(), *row);
        }
    }

    void survivesMissingAndWrongSettings()
    {
        NodeValues values;
        for (const CMPath& path :
             {OrvaNetworkCurrentProfileSettingsPath(), OrvaNetworkSoftApConfigSettingsPath(),
              OrvaNetworkWiredInterfacePath(), OrvaNetworkMaxAuthFailuresSettingsPath(),
              OrvaNetworkAirplaneModeSettingPath(), OrvaWebserverPortPath()})
            values.insert(path, json(R"({"x": [1]})"));
        WorkerFixture fixture(values, [](ScriptedBackend& backend) {
            backend.ethernetMac.clear();
            backend.wireless = false;
        });
        QCOMPARE(fixture.request(OrvaNetworkStartPath()), QString());
        QVERIFY(picture(fixture).contains("mac FF"_s));
    }

    /// Each begins with the networks Home and Office stored, and a limit of three wrong keys and of
    /// ten networks; a first step "failures" or "networks" sets another.
    void playsSequences_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<QString>("facts");
        const auto row = [](const char* steps, const char* outcome, const char* facts) {
            QTest::newRow(steps) << QString::fromLatin1(steps) << QString::fromLatin1(outcome)
                                 << QString::fromLatin1(facts);
        };
        row("start", "",
            "known Home,Office; wireless status 1; wired status 1; asked applyProfile");
        row("start; start", "Error: start_req called while already started!", "asked applyProfile");
        row("restart", "", "asked disconnect,applyProfile");
        row("start; refuse disconnect; restart", "", "asked applyProfile,disconnect");
        row("start; up wlan0; up uap0; shutdown", "",
            "wireless 2; softap 2; wired 0; overall 2; state 2; known -; asked applyProfile");
        row("start; up wlan0; shutdown; refresh Home", "", "wireless 2; known -");
        row("start; shutdown; fire m_shutdownTimer", "", "asked applyProfile,disconnect");
        row("start; shutdown; stop; fire m_shutdownTimer", "stands still",
            "asked applyProfile,disconnect");
        row("start; up eth0; up uap0; shutdown; start", "",
            "wired 1; softap 1; overall 1; state 1; known Home,Office");
        row("start; shutdown; start; fire m_shutdownTimer", "stands still",
            "asked applyProfile,applyProfile");
        row("start; up wlan0", "", "wireless 1; overall 1; link 1; mac FF; timer 0");
        row("start; up wlan0; up eth0; leave wlan0", "",
            "wired 1; wireless 2; overall 1; mac CC; message Connected");
        row("start; up wlan0; leave wlan0; leave tun0", "", "overall 2; message Disconnecting");
        row("start; up wlan0; down wlan0; leave tun0", "",
            "link 0; wireless status 1; timer 1; mac CC; message Disconnected");
        row("start; up uap0", "", "softap 1; overall 0; link 0; mac FF");
        row("start; up uap0; leave uap0", "", "softap 2; overall 0");
        row("start; cable out", "", "wired status 0; wireless status 1");
        row("start; cable out; cable in", "", "wired status 1");
        row("start; remove Office", "", "stored Home; known Home");
        row("start; remove Home; remove Office", "",
            "stored ; known ; wired status 1; wireless status 0");
        row("start; remove Cafe", "error: Network is not configured", "known Home,Office");
        row("remove Home", "error: Networking is not started.", "stored Home,Office");
        row("start; send remove Home; set Cafe", "", "stored Cafe,Office; used Cafe,Office");
        row("start; send set Cafe; remove Cafe", "", "stored Home,Office; used Home,Office");
        row("start; send remove Home; send set Cafe; send remove Office; set Attic", "",
            "stored Attic,Cafe");
        row("start; send remove Home; remove Home", "error: Network is not configured",
            "stored Office");
        row("start; send remove Home; send stop; set Cafe", "error: Networking is not started.",
            "stored Home,Office");
        row("start; send wps Cafe; set Attic", "", "stored Cafe,Attic,Home,Office");
        row("start; send wps Cafe; remove Cafe", "", "stored Home,Office");
        row("start; wrong Home; wrong Home; send set Home; wrong Home", "",
            "stored Home,Office; used Home,Office");
        row("start; wrong Home; wrong Home; send wrong Home; up wlan0", "", "stored Home,Office");
        row("start; wrong Home; wrong Home; send wrong Home; wrong Home", "", "backups 1; stored ");
        row("start; disk full; set Cafe", "NotStored: full",
            "stored Home,Office; used Home,Office; known Home,Office; "
            "asked applyProfile,applyProfile,applyProfile");
        row("start; disk full; send set Cafe; set Attic", "NotStored: full", "used Home,Office");
        row("start; disk full; send set Cafe; stop", "",
            "known Home,Office; asked applyProfile,applyProfile,disconnect");
        row("start; disk full; remove Home", "NotStored: full", "used Home,Office");
        row("start; disk full; wrong Home; wrong Home; wrong Home; disk good; wrong Home", "",
            "used Home,Office; backups 0");
        row("networks 2; start; set Cafe", "", "stored Cafe,Home");
        row("start; stop", "", "wired status 0; wireless status 0");
        row("start; set Home 1", "", "wired status 1; wireless status 0");
        row("start; set Home 2", "", "wired status 0; wireless status 1");
        row("start; refuse disconnect; stop; up eth0; down eth0", "",
            "wired status 1; wireless status 1");
        row("start; up wlan0; leave wlan0; shutdown; start", "", "wireless 2");
        row("start; up wlan0; shutdown; leave wlan0; start", "", "wireless 2");
        row("start; shutdown; refuse disconnect; fire m_shutdownTimer", "",
            "known Home,Office; shutdown 2000");
        row("start; cable out; set Home 1; fire m_softApTimer; set Home 2", "",
            "asked applyProfile,applyProfile,startSoftAp,applyProfile,stopSoftAp");
        row("start; cable out; wrong Home; wrong Home; wrong Home", "", "timer 1; delay 0");
        row("start; cable out; remove Home; remove Office", "", "timer 1; delay 10000");
        row("start; up eth0; wrong Home; wrong Home; wrong Home", "", "backups 1");
        row("failures 0; start; wrong Home", "", "backups 0; counted 0");
        row("start; wrong Home", "", "counted 1");
        row("start; refresh Home; wrong Home; wrong Office; refresh Office", "", "suspects Office");
        row("start; fire m_softApTimer", "", "ssid Speaker_001122AABBCC");
        row("deaf on; start; deaf off; refresh Home; fire m_softApTimer", "",
            "mac CC; ssid Speaker_001122AABBCC");
        row("deaf on; start; deaf off; up uap0; refresh Home; fire m_softApTimer", "",
            "mac FF; ssid Speaker_001122DDEEFF");
        row("start; deaf on; up uap0; deaf off; refresh Home; fire m_softApTimer", "",
            "mac ; ssid Speaker_001122AABBCC");
        row("start; wrong Home; wrong Home", "",
            "wireless status 2; message wrong key; backups 0; stored Home,Office");
        row("start; up wlan0; wrong Home; wrong Home; wrong Home", "", "backups 0");
        row("start; wrong Home; wrong Home; wrong Home", "", "backups 1; stored ; known ");
        row("start; wrong Home; wrong Home; wrong Home; wrong Home; wrong Home; wrong Home", "",
            "backups 1; stored ; known ");
    }
    void playsSequences()
    {
        QFETCH(QString, steps);
        QFETCH(QString, outcome);
        QFETCH(QString, facts);
        LogCapture& log = LogCapture::install();
        QStringList all = steps.split("; "_s);
        NodeValues values = withNetworks({home, "Office"_s});
        if (all.first().startsWith("failures "_s))
            values.insert(OrvaNetworkMaxAuthFailuresSettingsPath(),
                          OrvaValue::of(all.takeFirst().mid(9).toInt()));
        else if (all.first().startsWith("networks "_s))
            values.insert(OrvaNetworkMaxNumberWifiNetworks(),
                          OrvaValue::of(all.takeFirst().mid(9).toInt()));
        const bool deaf = all.first() == "deaf on"_s;
        WorkerFixture fixture(values, [&](ScriptedBackend& backend) { hear(backend, !deaf); });
        QString last;
        for (const QString& step : all)
            last = play(fixture, step);
        QCOMPARE(last, outcome);
        QStringList published = picture(fixture);
        published << "counted %1"_s.arg(log.count("Failed connection attempts"_s));
        for (const QString& fact : facts.split("; "_s))
            QVERIFY2(published.contains(fact), qPrintable(published.join("; "_s)));
        QCOMPARE(log.count("secret-"_s), 0);
    }

    void refusesProfiles()
    {
        WorkerFixture fixture;
        const CMPath set = OrvaNetworkSetNetworkProfilePath();
        OrvaNetworkProfile profile = profileWith({home});
        QCOMPARE(fixture.request(set, OrvaValue::of(profile)),
                 "error: Networking is not started."_s);
        fixture.request(OrvaNetworkStartPath());
        OrvaNetworkInterface masked = wpaNetwork("New"_s);
        masked.setKey("****"_s);
        profile.setWireless(masked);
        QVERIFY(fixture.request(set, OrvaValue::of(profile)).startsWith("error: "_s));
        QVERIFY(!fixture.request(set, OrvaValue::of(home)).isEmpty());
        QVERIFY(!fixture.request(set).isEmpty());
        QVERIFY(fixture.writes(OrvaNetworkCurrentProfileSettingsPath()).isEmpty());
        QCOMPARE(fixture.backend->profiles.size(), 1);
    }

    void setsWhatItPublished()
    {
        WorkerFixture fixture(withNetworks({home, "Office"_s}));
        fixture.request(OrvaNetworkStartPath());
        fixture.backend->refused << "applyProfile"_s;
        OrvaNetworkProfile edited = fixture.value(OrvaNetworkProfilePath()).networkProfile();
        edited.setWireless(edited.wirelessNetworks().last());
        QCOMPARE(fixture.request(OrvaNetworkSetNetworkProfilePath(), OrvaValue::of(edited)),
                 QString());
        const OrvaNetworkProfile expected = profileWith({"Office"_s, home});
        QCOMPARE(storedProfile(fixture), expected);
        QCOMPARE(fixture.backend->profiles.last(), expected);
    }

    void removesTwoNetworksInARow()
    {
        WorkerFixture fixture(withNetworks({home, "Office"_s}));
        fixture.request(OrvaNetworkStartPath());
        const CMPath remove = OrvaNetworkRemoveWirelessNetworkPath();
        const auto first = fixture.send(remove, OrvaValue::of(home));
        const auto second = fixture.send(remove, OrvaValue::of("Office"_s));
        const auto third = fixture.send(remove, OrvaValue::of(home));
        fixture.settle();
        QCOMPARE(fixture.outcome(first) + fixture.outcome(second), QString());
        QCOMPARE(fixture.outcome(third), "error: Network is not configured"_s);
        QCOMPARE(storedProfile(fixture).wireless().__hash(),
                 (QVariantHash{{OrvaNetworkInterface::Dhcp(), true}}));
        QVERIFY(storedProfile(fixture).__contains(OrvaNetworkProfile::WirelessNetworks()));
    }

    /// What is still open goes with the network manager and touches nothing of it any more.
    void endsWithRequestsOpen()
    {
        WorkerFixture fixture(withNetworks({home}));
        fixture.request(OrvaNetworkStartPath());
        fixture.store->mute = true;
        fixture.send(OrvaNetworkSetNetworkProfilePath(), setting("Cafe"_s));
        const auto open = fixture.send(OrvaNetworkRemoveWirelessNetworkPath(), OrvaValue::of(home));
        fixture.settle();
        QCOMPARE(fixture.outcome(open), "no answer"_s);
    }

    void announcesARefreshOnce()
    {
        WorkerFixture fixture;
        fixture.request(OrvaNetworkStartPath());
        QStringList changed;
        connect(fixture.worker, &CMAbstractWorker::valueChanged, this,
                [&](const CMPath& path) { changed << path.toString(); });
        const OrvaValue snapshot = json(R"({"networkInfo": {"wired": {
            "state": 1, "mac": "00:11:22:AA:BB:CC", "addresses": [{"ip": "192.0.2.1"}]}}})");
        fixture.backend->state = snapshot.networkInfo();
        const int before = fixture.backend->readouts;
        for (int i = 0; i < 1000; ++i)
            Q_EMIT fixture.backend->AddressesChanged();
        fixture.settle();
        QCOMPARE(fixture.backend->readouts, before + 2); // one for the URL
        QCOMPARE(changed.join(" "_s), "network/state/profile network/info network/webserver/url"_s);
        Q_EMIT fixture.backend->AddressesChanged();
        fixture.settle();
        QCOMPARE(changed.size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestWorker)
#include "tst_worker.moc"
