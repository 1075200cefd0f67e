#include "workerfixture.h"

#include <logcapture.h>
#include <network/networkpaths.h>

namespace {

const QString home = "Home"_s;

NodeValues withNetworks(const QStringList& ssids)
{
    return {{OrvaNetworkCurrentProfileSettingsPath(), toValue(profileWith(ssids))}};
}

OrvaNetworkProfile storedProfile(WorkerFixture& fixture)
{
    return fixture.value(OrvaNetworkCurrentProfileSettingsPath()).networkProfile();
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

/// Does one step of a sequence; the outcome where it is a request.
QString play(WorkerFixture& fixture, const QString& step)
{
    const QString verb = step.section(" "_s, 0, 0);
    const QString what = step.section(" "_s, 1);
    if (verb == "fire"_s)
        return fixture.fire(what) ? QString() : "stands still"_s;
    if (verb == "remove"_s)
        return fixture.request(OrvaNetworkRemoveWirelessNetworkPath(), toValue(what));
    if (what.isEmpty())
        return fixture.request(CMPath("network/"_s + verb));
    const QHash<QString, std::function<void()>> events = {
        {"up"_s, [&] { fixture.worker->setLinkStatus(what, true); }},
        {"down"_s, [&] { fixture.worker->setLinkStatus(what, false); }},
        {"leave"_s, [&] { fixture.worker->setDisconnecting(what); }},
        {"cable"_s, [&] { fixture.worker->setCurrentCableStatus(what == "in"_s); }},
        {"refuse"_s, [&] { fixture.backend->refused << what; }},
        {"refresh"_s, [&] { Q_EMIT fixture.backend->AddressesChanged(); }},
        {"wrong"_s, [&] {
             Q_EMIT fixture.backend->AuthError(what, "wrong key"_s);
             fixture.settle();
         }}};
    events[verb]();
    return QString();
}

/// What is published, as facts by their names; "-" where a list is absent.
QStringList picture(WorkerFixture& fixture)
{
    const OrvaNetworkInfo info = fixture.info();
    const bool known = info.__contains(OrvaNetworkInfo::WirelessNetworks());
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
        {"backups", fixture.writes(OrvaNetworkBackupProfileSettingsPath()).size()},
    };
    QStringList facts = {
        "known "_s + (known ? ssidsOf(info).join(","_s) : "-"_s),
        "stored "_s + ssidsOf(storedProfile(fixture)).join(","_s),
        "mac "_s + fixture.value(OrvaNetworkStateCurrentMAC()).string_().right(2),
        "message "_s + fixture.value(OrvaNetworkConnectingMessage()).string_(),
        "asked "_s + fixture.backend->commands.join(","_s),
    };
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
            WorkerFixture fixture({{OrvaWebserverPortPath(), number(row.key())}});
            QCOMPARE(fixture.value(OrvaNetworkLocalWebserverLocalhostUrlPath()).string_(), *row);
            Q_EMIT fixture.backend->AddressesChanged();
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

    /// Each begins with the networks Home and Office stored and a limit of three wrong keys.
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
        row("start; up wlan0; shutdown; refresh once", "", "wireless 2; known -");
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
        row("start; remove Home; remove Office", "", "stored ; known ");
        row("start; remove Cafe", "error: Network is not configured", "known Home,Office");
        row("remove Home", "error: Networking is not started.", "stored Home,Office");
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
        WorkerFixture fixture(withNetworks({home, "Office"_s}));
        QString last;
        const QStringList all = steps.split("; "_s);
        for (const QString& step : all)
            last = play(fixture, step);
        QCOMPARE(last, outcome);
        const QStringList published = picture(fixture);
        for (const QString& fact : facts.split("; "_s))
            QVERIFY2(published.contains(fact), qPrintable(published.join("; "_s)));
        QCOMPARE(log.count("secret-"_s), 0);
    }

    void refusesProfiles()
    {
        WorkerFixture fixture;
        const CMPath set = OrvaNetworkSetNetworkProfilePath();
        OrvaNetworkProfile profile = profileWith({home});
        QCOMPARE(fixture.request(set, toValue(profile)), "error: Networking is not started."_s);
        fixture.request(OrvaNetworkStartPath());
        OrvaNetworkInterface masked = wpaNetwork("New"_s);
        masked.setKey("****"_s);
        profile.setWireless(masked);
        QVERIFY(fixture.request(set, toValue(profile)).startsWith("error: "_s));
        QVERIFY(!fixture.request(set, toValue(home)).isEmpty());
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
        QCOMPARE(fixture.request(OrvaNetworkSetNetworkProfilePath(), toValue(edited)), QString());
        const OrvaNetworkProfile expected = profileWith({"Office"_s, home});
        QCOMPARE(storedProfile(fixture), expected);
        QCOMPARE(fixture.backend->profiles.last(), expected);
    }

    void removesTwoNetworksInARow()
    {
        WorkerFixture fixture(withNetworks({home, "Office"_s}));
        fixture.request(OrvaNetworkStartPath());
        const CMPath remove = OrvaNetworkRemoveWirelessNetworkPath();
        const auto first = fixture.send(remove, toValue(home));
        const auto second = fixture.send(remove, toValue("Office"_s));
        const auto third = fixture.send(remove, toValue(home));
        fixture.settle();
        QCOMPARE(fixture.outcome(first) + fixture.outcome(second), QString());
        QCOMPARE(fixture.outcome(third), "error: Network is not configured"_s);
        QCOMPARE(storedProfile(fixture).wireless().__hash(),
                 (QVariantHash{{OrvaNetworkInterface::Dhcp(), true}}));
        QVERIFY(storedProfile(fixture).__contains(OrvaNetworkProfile::WirelessNetworks()));
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
        Q_EMIT fixture.backend->AddressesChanged();
        QCOMPARE(changed.join(" "_s), "network/state/profile network/info network/webserver/url"_s);
        Q_EMIT fixture.backend->AddressesChanged();
        QCOMPARE(changed.size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestWorker)
#include "tst_worker.moc"
