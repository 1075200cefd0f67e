#include "workerfixture.h"

#include <logcapture.h>
#include <network/networkpaths.h>

namespace {

const QString eth0 = QStringLiteral("eth0");
const QString wlan0 = QStringLiteral("wlan0");

NodeValues withProfile(const OrvaNetworkProfile& profile)
{
    return {{OrvaNetworkCurrentProfileSettingsPath(), toValue(profile)}};
}

NodeValues withNetworks(const QStringList& ssids)
{
    return withProfile(profileWith(ssids));
}

OrvaNetworkProfile storedProfile(WorkerFixture& fixture)
{
    return fixture.value(OrvaNetworkCurrentProfileSettingsPath()).networkProfile();
}

QString message(WorkerFixture& fixture)
{
    return fixture.value(OrvaNetworkConnectingMessage()).string_();
}

OrvaNetworkInfo wiredSnapshot(const QString& ip)
{
    OrvaNetworkAddress address;
    address.setIp(ip);
    OrvaNetworkWiredInterface wired;
    wired.setState(OrvaNetworkState::Connected);
    wired.setMac(QStringLiteral("00:11:22:AA:BB:CC"));
    wired.setAddresses({address});
    OrvaNetworkInfo snapshot;
    snapshot.setWired(wired);
    return snapshot;
}

OrvaValue number(qint32 number)
{
    OrvaValue value;
    value.setI32_(number);
    return value;
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
        for (const CMNodeInfo& info : infos) {
            const bool service = info.permission == OrvaPermission::Service;
            nodes << info.path.toString().mid(8) +
                         (info.kind == QLatin1String("rows") ? QStringLiteral(" rows")
                                                             : QString()) +
                         (info.kind == QLatin1String("activate") ? QStringLiteral("()")
                          : info.readOnly                        ? QStringLiteral(" r")
                                                                 : QString()) +
                         (service ? QStringLiteral(" 9999") : QString()) +
                         (info.title.isEmpty() ? QString()
                                               : QStringLiteral(" \"%1\"").arg(info.title));
        }
        const QString expected = QStringLiteral(
            "state/connected, info r, state, state/message, scan/results rows r, state/profile, "
            "state/ethernet-mac, state/wireless-mac, state/current-mac, "
            "state/cable \"Current cable status\", profile r \"Network profile\", "
            "webserver/url \"Local Webserver URL\", "
            "webserver/localhost-url \"Local Webserver URL (localhost)\", "
            "softap/stations r 9999 \"Connected SoftAp stations\", "
            "start(), restart(), shutdown(), stop(), wireless/reconnect(), profile/set(), "
            "wireless/remove(), scan(), wps/pbc(), wps/pin(), wps/generate-pin(), wps/apply(), "
            "wireless/rssi(), softap/request(), softap/revoke(), wake-on-lan/set-enabled(), "
            "wireless/restart(), airplane-mode \"Airplane Mode\", softap/requests r");
        QCOMPARE(nodes.join(QStringLiteral(", ")), expected);
    }

    void publishesItsFirstPicture()
    {
        WorkerFixture fixture(withNetworks({QStringLiteral("Home")}));
        const OrvaNetworkInfo info = fixture.info();
        QCOMPARE(info.wired().mac(), QStringLiteral("00:11:22:AA:BB:CC"));
        QVERIFY(info.wired().cableConnected());
        QCOMPARE(info.wireless().name(), wlan0);
        QCOMPARE(info.softAp().name(), QStringLiteral("softap"));
        QVERIFY(info.__contains(OrvaNetworkInfo::AirplaneMode()));
        QCOMPARE(fixture.value(OrvaNetworkStatePath()).typeKey(), OrvaValue::NetworkState());
        const auto profile = fixture.value(OrvaNetworkProfilePath()).networkProfile();
        QCOMPARE(profile.wireless().key(), QStringLiteral("****"));
        QVERIFY(fixture.value(OrvaNetworkLocalWebserverUrlPath()).isEmpty());
        QVERIFY(fixture.value(OrvaNetworkCurrentStatePath()).isEmpty());
        QVERIFY(fixture.backend->commands.isEmpty());
        QVERIFY(fixture.timer(QStringLiteral("m_softApTimer"))->isActive());
        QCOMPARE(fixture.rfkillCalls(), QStringList(QStringLiteral("unblock all")));
        const auto rows = CMReply<QVariant>::create();
        fixture.root.getRowsRequest({CMPath(QStringLiteral("power/modules")), rows});
        QCOMPARE(rows.value().toList().size(), 1);
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

    void takesTheWirelessMacWithoutAWiredOne()
    {
        WorkerFixture fixture({}, [](ScriptedBackend& backend) {
            backend.ethernetMac.clear();
            backend.wireless = false;
        });
        QCOMPARE(fixture.value(OrvaNetworkStateCurrentMAC()).string_(),
                 QStringLiteral("00:11:22:DD:EE:FF"));
        QCOMPARE(fixture.worker->softapInterfaces(), QStringList(QStringLiteral("uap0")));
    }

    void survivesMissingAndWrongSettings()
    {
        NodeValues values;
        for (const CMPath& path :
             {OrvaNetworkCurrentProfileSettingsPath(), OrvaNetworkSoftApConfigSettingsPath(),
              OrvaNetworkWiredInterfacePath(), OrvaNetworkMaxAuthFailuresSettingsPath(),
              OrvaNetworkAirplaneModeSettingPath(), OrvaWebserverPortPath()})
            values.insert(path, OrvaValue(QVariantHash{{QStringLiteral("x"), QVariantList{1}}}));
        WorkerFixture fixture(values);
        QCOMPARE(fixture.request(OrvaNetworkStartPath()), QString());
        QCOMPARE(fixture.value(OrvaNetworkLocalWebserverLocalhostUrlPath()).string_(),
                 QStringLiteral("http://localhost/"));
    }

    void startsWithTheStoredProfile()
    {
        OrvaNetworkProfile old;
        old.setWireless(wpaNetwork(QStringLiteral("Home")));
        WorkerFixture fixture(withProfile(old));
        QCOMPARE(fixture.request(OrvaNetworkStartPath()), QString());
        QCOMPARE(ssidsOf(fixture.backend->profiles.first()), QStringList(QStringLiteral("Home")));
        const auto published = fixture.value(OrvaNetworkProfilePath()).networkProfile();
        QCOMPARE(published.wirelessNetworks().first().key(), QStringLiteral("****"));
        QCOMPARE(ssidsOf(fixture.info()), QStringList(QStringLiteral("Home")));
        QCOMPARE(fixture.info().wireless().connectingStatus(),
                 OrvaNetworkConnectingStatus::Connecting);
        QCOMPARE(fixture.request(OrvaNetworkStartPath()),
                 QStringLiteral("Error: start_req called while already started!"));
    }

    void restartsWithoutAnError()
    {
        WorkerFixture fixture;
        QCOMPARE(fixture.request(OrvaNetworkRestartPath()), QString());
        fixture.backend->refused << QStringLiteral("disconnect");
        QCOMPARE(fixture.request(OrvaNetworkRestartPath()), QString());
        QCOMPARE(fixture.request(OrvaNetworkStopPath()),
                 QStringLiteral("Error: Unable to disconnect!"));
        const QStringList expected = {QStringLiteral("disconnect"), QStringLiteral("applyProfile"),
                                      QStringLiteral("disconnect"), QStringLiteral("disconnect")};
        QCOMPARE(fixture.backend->commands, expected);
    }

    void shutsDownAfterTheAnswer()
    {
        WorkerFixture fixture(withNetworks({QStringLiteral("Home")}));
        fixture.request(OrvaNetworkStartPath());
        fixture.worker->setLinkStatus(wlan0, true);
        fixture.worker->setLinkStatus(QStringLiteral("uap0"), true);
        QCOMPARE(fixture.request(OrvaNetworkShutdownPath()), QString());
        QCOMPARE(fixture.info().wireless().state(), OrvaNetworkState::Disconnecting);
        QCOMPARE(fixture.info().softAp().state(), OrvaNetworkState::Disconnecting);
        QCOMPARE(fixture.info().wired().state(), OrvaNetworkState::Disconnected);
        QCOMPARE(fixture.info().state(), OrvaNetworkState::Disconnecting);
        Q_EMIT fixture.backend->AddressesChanged();
        QVERIFY(!fixture.info().__contains(OrvaNetworkInfo::WirelessNetworks()));
        QCOMPARE(fixture.request(OrvaNetworkShutdownPath()),
                 QStringLiteral("error: Shutdown in progress"));
        QCOMPARE(fixture.timer(QStringLiteral("m_shutdownTimer"))->interval(), 2000);
        QVERIFY(!fixture.backend->commands.contains(QStringLiteral("disconnect")));
        QVERIFY(fixture.fire(QStringLiteral("m_shutdownTimer")));
        QCOMPARE(fixture.backend->commands.last(), QStringLiteral("disconnect"));
        QCOMPARE(fixture.request(OrvaNetworkStartPath()), QString());
    }

    void startsAgainInsteadOfShuttingDown()
    {
        WorkerFixture fixture(withNetworks({QStringLiteral("Home")}));
        fixture.request(OrvaNetworkStartPath());
        fixture.worker->setLinkStatus(eth0, true);
        fixture.worker->setLinkStatus(QStringLiteral("uap0"), true);
        fixture.request(OrvaNetworkShutdownPath());
        QCOMPARE(fixture.request(OrvaNetworkStartPath()), QString());
        QCOMPARE(fixture.info().state(), OrvaNetworkState::Connected);
        QCOMPARE(fixture.info().softAp().state(), OrvaNetworkState::Connected);
        QCOMPARE(ssidsOf(fixture.info()), QStringList(QStringLiteral("Home")));
        QVERIFY(!fixture.fire(QStringLiteral("m_shutdownTimer")));
    }

    void refusesProfiles()
    {
        WorkerFixture fixture;
        const CMPath set = OrvaNetworkSetNetworkProfilePath();
        OrvaNetworkProfile profile = profileWith({QStringLiteral("Home")});
        QCOMPARE(fixture.request(set, toValue(profile)),
                 QStringLiteral("error: Networking is not started."));
        fixture.request(OrvaNetworkStartPath());
        OrvaNetworkInterface unknown = wpaNetwork(QStringLiteral("New"));
        unknown.setKey(QStringLiteral("****"));
        profile.setWireless(unknown);
        QVERIFY(fixture.request(set, toValue(profile)).startsWith(QStringLiteral("error: ")));
        QVERIFY(!fixture.request(set, toValue(QStringLiteral("Home"))).isEmpty());
        QVERIFY(!fixture.request(set).isEmpty());
        QVERIFY(fixture.writes(OrvaNetworkCurrentProfileSettingsPath()).isEmpty());
        QCOMPARE(fixture.backend->profiles.size(), 1);
    }

    void setsWhatItPublished()
    {
        WorkerFixture fixture(withNetworks({QStringLiteral("Home"), QStringLiteral("Office")}));
        fixture.request(OrvaNetworkStartPath());
        fixture.backend->refused << QStringLiteral("applyProfile");
        OrvaNetworkProfile edited = fixture.value(OrvaNetworkProfilePath()).networkProfile();
        edited.setWireless(edited.wirelessNetworks().last());
        QCOMPARE(fixture.request(OrvaNetworkSetNetworkProfilePath(), toValue(edited)), QString());
        const OrvaNetworkProfile expected =
            profileWith({QStringLiteral("Office"), QStringLiteral("Home")});
        QCOMPARE(storedProfile(fixture), expected);
        QCOMPARE(fixture.backend->profiles.last(), expected);
    }

    void removesTwoNetworksInARow()
    {
        WorkerFixture fixture(withNetworks(
            {QStringLiteral("Home"), QStringLiteral("Office"), QStringLiteral("Cafe")}));
        fixture.request(OrvaNetworkStartPath());
        const CMPath remove = OrvaNetworkRemoveWirelessNetworkPath();
        const auto first = fixture.send(remove, toValue(QStringLiteral("Home")));
        const auto second = fixture.send(remove, toValue(QStringLiteral("Office")));
        const auto third = fixture.send(remove, toValue(QStringLiteral("Home")));
        fixture.settle();
        QCOMPARE(fixture.outcome(first) + fixture.outcome(second), QString());
        QCOMPARE(fixture.outcome(third), QStringLiteral("error: Network is not configured"));
        QCOMPARE(storedProfile(fixture), profileWith({QStringLiteral("Cafe")}));

        QCOMPARE(fixture.request(remove, toValue(QStringLiteral("Cafe"))), QString());
        QCOMPARE(storedProfile(fixture).wireless().__hash(),
                 (QVariantHash{{OrvaNetworkInterface::Dhcp(), true}}));
        QVERIFY(storedProfile(fixture).__contains(OrvaNetworkProfile::WirelessNetworks()));
        QVERIFY(fixture.info().__contains(OrvaNetworkInfo::WirelessNetworks()));
        QVERIFY(ssidsOf(storedProfile(fixture)).isEmpty());
    }

    void tellsWhyARemovalFailed()
    {
        WorkerFixture fixture(withNetworks({QStringLiteral("Home")}));
        QCOMPARE(fixture.request(OrvaNetworkRemoveWirelessNetworkPath(),
                                 toValue(QStringLiteral("Home"))),
                 QStringLiteral("error: Networking is not started."));
    }

    void fallsBackFromAWrongKey()
    {
        LogCapture& log = LogCapture::install();
        WorkerFixture fixture(withNetworks({QStringLiteral("Home"), QStringLiteral("Office")}));
        fixture.request(OrvaNetworkStartPath());
        fixture.worker->setCurrentCableStatus(false);
        for (int i = 0; i < 5; ++i) // More than the limit of three before the worker comes to act.
            Q_EMIT fixture.backend->AuthError(QStringLiteral("Home"), QStringLiteral("wrong key"));
        QCOMPARE(message(fixture), QStringLiteral("wrong key"));
        QCOMPARE(fixture.info().wireless().connectingStatus(),
                 OrvaNetworkConnectingStatus::AuthenticationFailed);
        QVERIFY(fixture.info().wirelessNetworks().first().credentialsSuspect());
        QCOMPARE(log.count(QStringLiteral("Failed connection attempts: 3 of 3 maximum attempts")),
                 1);
        fixture.settle();
        const auto backups = fixture.writes(OrvaNetworkBackupProfileSettingsPath());
        QCOMPARE(backups.size(), 1);
        QCOMPARE(ssidsOf(backups.first().networkProfile()).size(), 2);
        QVERIFY(ssidsOf(storedProfile(fixture)).isEmpty());
        QCOMPARE(fixture.timer(QStringLiteral("m_softApTimer"))->interval(), 0);
        for (int i = 0; i < 5; ++i)
            Q_EMIT fixture.backend->AuthError(QStringLiteral("Home"), QStringLiteral("late"));
        fixture.settle();
        QCOMPARE(fixture.writes(OrvaNetworkBackupProfileSettingsPath()).size(), 1);
        QCOMPARE(log.count(QStringLiteral("secret-")), 0);
    }

    void countsNoErrors_data()
    {
        QTest::addColumn<int>("maximum");
        QTest::addColumn<bool>("linkUp");
        QTest::newRow("without a limit") << 0 << false;
        QTest::newRow("below a limit") << -1 << false;
        QTest::newRow("once connected") << 3 << true;
    }
    void countsNoErrors()
    {
        QFETCH(int, maximum);
        QFETCH(bool, linkUp);
        NodeValues values = withNetworks({QStringLiteral("Home")});
        values.insert(OrvaNetworkMaxAuthFailuresSettingsPath(), number(maximum));
        WorkerFixture fixture(values);
        fixture.request(OrvaNetworkStartPath());
        fixture.worker->setLinkStatus(wlan0, linkUp);
        for (int i = 0; i < 5; ++i)
            Q_EMIT fixture.backend->AuthError(QStringLiteral("Home"), QStringLiteral("no"));
        fixture.settle();
        QVERIFY(fixture.writes(OrvaNetworkBackupProfileSettingsPath()).isEmpty());
    }

    void followsTheLinks()
    {
        WorkerFixture fixture(withNetworks({QStringLiteral("Home")}));
        fixture.request(OrvaNetworkStartPath());
        fixture.worker->setLinkStatus(wlan0, true);
        QCOMPARE(fixture.value(OrvaNetworkStateCurrentMAC()).string_(),
                 QStringLiteral("00:11:22:DD:EE:FF"));
        fixture.worker->setLinkStatus(eth0, true);
        QCOMPARE(fixture.value(OrvaNetworkStateCurrentMAC()).string_(),
                 QStringLiteral("00:11:22:AA:BB:CC"));
        fixture.worker->setDisconnecting(wlan0);
        QCOMPARE(message(fixture), QStringLiteral("Connected"));
        fixture.worker->setLinkStatus(eth0, false);
        fixture.worker->setDisconnecting(QStringLiteral("tun0"));
        QCOMPARE(message(fixture), QStringLiteral("Disconnecting"));
        fixture.worker->setLinkStatus(wlan0, false);
        QVERIFY(!fixture.worker->linkStatus());
        QCOMPARE(fixture.info().wireless().connectingStatus(),
                 OrvaNetworkConnectingStatus::Connecting);
        QVERIFY(fixture.timer(QStringLiteral("m_softApTimer"))->isActive());
        fixture.worker->setLinkStatus(QStringLiteral("uap0"), true);
        QCOMPARE(fixture.info().state(), OrvaNetworkState::Disconnected);
        QVERIFY(!fixture.worker->linkStatus());
        QCOMPARE(fixture.value(OrvaNetworkStateCurrentMAC()).string_(),
                 QStringLiteral("00:11:22:DD:EE:FF"));
    }

    void announcesARefreshOnce()
    {
        WorkerFixture fixture;
        fixture.request(OrvaNetworkStartPath());
        fixture.worker->setLinkStatus(eth0, true);
        QStringList changed;
        connect(fixture.worker, &CMAbstractWorker::valueChanged, this,
                [&](const CMPath& path) { changed << path.toString(); });
        fixture.backend->state = wiredSnapshot(QStringLiteral("192.0.2.1"));
        Q_EMIT fixture.backend->AddressesChanged();
        QCOMPARE(changed.join(QLatin1Char(' ')),
                 QStringLiteral("network/state/profile network/info network/webserver/url"));
        Q_EMIT fixture.backend->AddressesChanged();
        QCOMPARE(changed.size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestWorker)
#include "tst_worker.moc"
