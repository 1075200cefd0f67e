#include "workerfixture.h"

#include <logcapture.h>
#include <network/networkpaths.h>

namespace {

const QString home = QStringLiteral("Home");
const QString softApTimer = QStringLiteral("m_softApTimer");

NodeValues withNetworks(const QStringList& ssids)
{
    return {{OrvaNetworkCurrentProfileSettingsPath(), toValue(profileWith(ssids))}};
}

OrvaValue number(qint32 number)
{
    OrvaValue value;
    value.setI32_(number);
    return value;
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
        text += node.kind == QLatin1String("rows") ? QStringLiteral(" rows") : QStringLiteral("()");
    else if (node.readOnly)
        text += QStringLiteral(" r");
    if (node.permission != OrvaPermission::Default)
        text += QStringLiteral(" %1").arg(static_cast<qint32>(node.permission));
    return node.title.isEmpty() ? text : text + QStringLiteral(" \"%1\"").arg(node.title);
}

/// Does one step of a sequence; the outcome where it is a request.
QString play(WorkerFixture& fixture, const QString& step)
{
    const QString verb = step.section(QLatin1Char(' '), 0, 0);
    const QString what = step.section(QLatin1Char(' '), 1);
    if (verb == QLatin1String("up") || verb == QLatin1String("down"))
        fixture.worker->setLinkStatus(what, verb == QLatin1String("up"));
    else if (verb == QLatin1String("leave"))
        fixture.worker->setDisconnecting(what);
    else if (verb == QLatin1String("cable"))
        fixture.worker->setCurrentCableStatus(what == QLatin1String("in"));
    else if (verb == QLatin1String("refuse"))
        fixture.backend->refused << what;
    else if (verb == QLatin1String("refresh"))
        Q_EMIT fixture.backend->AddressesChanged();
    else if (verb == QLatin1String("wrong"))
        Q_EMIT fixture.backend->AuthError(what, QStringLiteral("wrong key"));
    else if (verb == QLatin1String("fire"))
        return fixture.fire(what) ? QString() : QStringLiteral("stands still");
    else if (verb == QLatin1String("settle"))
        WorkerFixture::settle();
    else if (verb == QLatin1String("remove"))
        return fixture.request(OrvaNetworkRemoveWirelessNetworkPath(), toValue(what));
    else
        return fixture.request(CMPath(QStringLiteral("network/") + verb));
    return QString();
}

/// What is published, as facts by their names; "-" where a list is absent.
QStringList picture(WorkerFixture& fixture)
{
    const OrvaNetworkInfo info = fixture.info();
    const bool known = info.__contains(OrvaNetworkInfo::WirelessNetworks());
    const auto backups = fixture.writes(OrvaNetworkBackupProfileSettingsPath());
    const auto fact = [](const char* name, const QString& value) {
        return QLatin1String(name) + QLatin1Char(' ') + value;
    };
    const auto number = [&](const char* name, int value) {
        return fact(name, QString::number(value));
    };
    return {
        number("wired", info.wired().state()),
        number("wireless", info.wireless().state()),
        number("softap", info.softAp().state()),
        number("overall", info.state()),
        number("state", fixture.value(OrvaNetworkStatePath()).networkState()),
        number("link", fixture.worker->linkStatus()),
        number("wired status", info.wired().connectingStatus()),
        number("wireless status", info.wireless().connectingStatus()),
        number("timer", fixture.timer(softApTimer)->isActive()),
        number("backups", backups.size()),
        fact("known", known ? ssidsOf(info).join(QLatin1Char(',')) : QStringLiteral("-")),
        fact("stored", ssidsOf(storedProfile(fixture)).join(QLatin1Char(','))),
        fact("mac", fixture.value(OrvaNetworkStateCurrentMAC()).string_().right(2)),
        fact("message", fixture.value(OrvaNetworkConnectingMessage()).string_()),
        fact("asked", fixture.backend->commands.join(QLatin1Char(','))),
    };
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
            nodes.join(QStringLiteral(", ")),
            QStringLiteral(
                "state/connected, info r, state, state/message, scan/results rows, state/profile, "
                "state/ethernet-mac, state/wireless-mac, state/current-mac, "
                "state/cable \"Current cable status\", profile r \"Network profile\", "
                "webserver/url \"Local Webserver URL\", "
                "webserver/localhost-url \"Local Webserver URL (localhost)\", "
                "softap/stations r 9999 \"Connected SoftAp stations\", "
                "start(), restart(), shutdown(), stop(), wireless/reconnect(), profile/set(), "
                "wireless/remove(), scan(), wps/pbc(), wps/pin(), wps/generate-pin(), wps/apply(), "
                "wireless/rssi(), softap/request(), softap/revoke(), wake-on-lan/set-enabled(), "
                "wireless/restart(), airplane-mode \"Airplane Mode\", softap/requests r"));
    }

    void publishesItsFirstPicture()
    {
        WorkerFixture fixture(withNetworks({home}));
        const OrvaNetworkInfo info = fixture.info();
        QCOMPARE(info.wired().mac(), QStringLiteral("00:11:22:AA:BB:CC"));
        QVERIFY(info.wired().cableConnected());
        QCOMPARE(info.wireless().name(), QStringLiteral("wlan0"));
        QCOMPARE(info.softAp().name(), QStringLiteral("softap"));
        const auto profile = fixture.value(OrvaNetworkProfilePath()).networkProfile();
        QCOMPARE(profile.wireless().key(), QStringLiteral("****"));
        QCOMPARE(fixture.value(OrvaNetworkStatePath()).typeKey(), OrvaValue::NetworkState());
        QVERIFY(fixture.value(OrvaNetworkLocalWebserverUrlPath()).isEmpty());
        QVERIFY(fixture.backend->commands.isEmpty());
        QCOMPARE(fixture.rfkillCalls(), QStringList(QStringLiteral("unblock all")));
    }

    void readsThePort_data()
    {
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("url");
        QTest::newRow("some") << 8080 << QStringLiteral("http://localhost:8080/");
        QTest::newRow("none") << 0 << QStringLiteral("http://localhost/");
        QTest::newRow("negative") << -1 << QStringLiteral("http://localhost/");
    }
    void readsThePort()
    {
        QFETCH(int, port);
        WorkerFixture fixture({{OrvaWebserverPortPath(), number(port)}});
        QTEST(fixture.value(OrvaNetworkLocalWebserverLocalhostUrlPath()).string_(), "url");
        Q_EMIT fixture.backend->AddressesChanged();
        QTEST(fixture.value(OrvaNetworkLocalWebserverUrlPath()).string_(), "url");
    }

    void survivesMissingAndWrongSettings()
    {
        NodeValues values;
        for (const CMPath& path :
             {OrvaNetworkCurrentProfileSettingsPath(), OrvaNetworkSoftApConfigSettingsPath(),
              OrvaNetworkWiredInterfacePath(), OrvaNetworkMaxAuthFailuresSettingsPath(),
              OrvaNetworkAirplaneModeSettingPath(), OrvaWebserverPortPath()})
            values.insert(path, OrvaValue(QVariantHash{{QStringLiteral("x"), QVariantList{1}}}));
        WorkerFixture fixture(values, [](ScriptedBackend& backend) {
            backend.ethernetMac.clear();
            backend.wireless = false;
        });
        QCOMPARE(fixture.request(OrvaNetworkStartPath()), QString());
        QVERIFY(picture(fixture).contains(QStringLiteral("mac FF")));
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
        row("stop", "", "asked disconnect");
        row("refuse disconnect; stop", "Error: Unable to disconnect!", "asked disconnect");
        row("restart", "", "asked disconnect,applyProfile");
        row("start; refuse disconnect; restart", "", "asked applyProfile,disconnect");
        row("start; up wlan0; up uap0; shutdown", "",
            "wireless 2; softap 2; wired 0; overall 2; state 2; known -; asked applyProfile");
        row("start; up wlan0; shutdown; refresh", "", "wireless 2; known -");
        row("shutdown; shutdown", "error: Shutdown in progress", "overall 0");
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
        row("start; remove Office", "", "stored Home; known Home");
        row("start; remove Home; remove Office", "", "stored ; known ");
        row("start; remove Cafe", "error: Network is not configured", "known Home,Office");
        row("remove Home", "error: Networking is not started.", "stored Home,Office");
        row("start; wrong Home; wrong Home", "",
            "wireless status 2; message wrong key; backups 0; stored Home,Office");
        row("start; wrong Home; up wlan0; wrong Home; wrong Home; settle", "", "backups 0");
        row("start; wrong Home; wrong Home; wrong Home; wrong Home; settle; wrong Home; wrong "
            "Home; "
            "wrong Home; settle",
            "", "backups 1; stored ; known ");
    }
    void playsSequences()
    {
        QFETCH(QString, steps);
        QFETCH(QString, outcome);
        QFETCH(QString, facts);
        LogCapture& log = LogCapture::install();
        WorkerFixture fixture(withNetworks({home, QStringLiteral("Office")}));
        QString last;
        const QStringList all = steps.split(QStringLiteral("; "));
        for (const QString& step : all)
            last = play(fixture, step);
        QCOMPARE(last, outcome);
        const QStringList published = picture(fixture);
        const QStringList expected = facts.split(QStringLiteral("; "));
        for (const QString& fact : expected)
            QVERIFY2(published.contains(fact), qPrintable(published.join(QStringLiteral("; "))));
        QCOMPARE(log.count(QStringLiteral("secret-")), 0);
    }

    void refusesProfiles()
    {
        WorkerFixture fixture;
        const CMPath set = OrvaNetworkSetNetworkProfilePath();
        OrvaNetworkProfile profile = profileWith({home});
        QCOMPARE(fixture.request(set, toValue(profile)),
                 QStringLiteral("error: Networking is not started."));
        fixture.request(OrvaNetworkStartPath());
        OrvaNetworkInterface unknown = wpaNetwork(QStringLiteral("New"));
        unknown.setKey(QStringLiteral("****"));
        profile.setWireless(unknown);
        QVERIFY(fixture.request(set, toValue(profile)).startsWith(QStringLiteral("error: ")));
        QVERIFY(!fixture.request(set, toValue(home)).isEmpty());
        QVERIFY(!fixture.request(set).isEmpty());
        QVERIFY(fixture.writes(OrvaNetworkCurrentProfileSettingsPath()).isEmpty());
        QCOMPARE(fixture.backend->profiles.size(), 1);
    }

    void setsWhatItPublished()
    {
        WorkerFixture fixture(withNetworks({home, QStringLiteral("Office")}));
        fixture.request(OrvaNetworkStartPath());
        fixture.backend->refused << QStringLiteral("applyProfile");
        OrvaNetworkProfile edited = fixture.value(OrvaNetworkProfilePath()).networkProfile();
        edited.setWireless(edited.wirelessNetworks().last());
        QCOMPARE(fixture.request(OrvaNetworkSetNetworkProfilePath(), toValue(edited)), QString());
        const OrvaNetworkProfile expected = profileWith({QStringLiteral("Office"), home});
        QCOMPARE(storedProfile(fixture), expected);
        QCOMPARE(fixture.backend->profiles.last(), expected);
    }

    void removesTwoNetworksInARow()
    {
        WorkerFixture fixture(withNetworks({home, QStringLiteral("Office")}));
        fixture.request(OrvaNetworkStartPath());
        const CMPath remove = OrvaNetworkRemoveWirelessNetworkPath();
        const auto first = fixture.send(remove, toValue(home));
        const auto second = fixture.send(remove, toValue(QStringLiteral("Office")));
        const auto third = fixture.send(remove, toValue(home));
        fixture.settle();
        QCOMPARE(fixture.outcome(first) + fixture.outcome(second), QString());
        QCOMPARE(fixture.outcome(third), QStringLiteral("error: Network is not configured"));
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
        OrvaNetworkAddress address;
        address.setIp(QStringLiteral("192.0.2.1"));
        OrvaNetworkWiredInterface wired = fixture.info().wired();
        wired.setState(OrvaNetworkState::Connected);
        wired.setAddresses({address});
        fixture.backend->state.setWired(wired);
        Q_EMIT fixture.backend->AddressesChanged();
        QCOMPARE(changed.join(QLatin1Char(' ')),
                 QStringLiteral("network/state/profile network/info network/webserver/url"));
        Q_EMIT fixture.backend->AddressesChanged();
        QCOMPARE(changed.size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestWorker)
#include "tst_worker.moc"
