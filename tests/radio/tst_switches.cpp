#include "radiosupport.h"

class TestSwitches : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void appliesTheStoredAirplaneMode_data()
    {
        QTest::addColumn<bool>("stored");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("calls");
        QTest::newRow("off, Wi-Fi only") << false << 1 << "unblock all, block wifi, unblock all";
        QTest::newRow("on, every radio") << true << 0 << "block all, unblock all, block all";
    }

    void appliesTheStoredAirplaneMode()
    {
        QFETCH(bool, stored);
        QFETCH(int, type);
        const QByteArray typeJson = R"({"airplaneModeType": )" + QByteArray::number(type) + "}";
        WorkerFixture fixture({{OrvaNetworkAirplaneModeSettingPath(), OrvaValue::of(stored)},
                               {OrvaNetworkAirplaneModeTypeSettingPath(), json(typeJson)}});
        QCOMPARE(fixture.info().airplaneMode(), stored);
        for (const bool on : {!stored, stored}) {
            fixture.root.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(on), {});
            fixture.settle();
            QCOMPARE(fixture.info().airplaneMode(), on);
            QCOMPARE(fixture.value(OrvaNetworkAirplaneModeSettingPath()).bool_(), on);
        }
        QTEST(fixture.rfkillCalls().join(", "_s), "calls");
    }

    void storesEachSwitchOnce()
    {
        WorkerFixture fixture;
        for (const bool on : {true, false})
            fixture.root.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(on), {});
        fixture.settle();
        QCOMPARE(fixture.writes(OrvaNetworkAirplaneModeSettingPath()).size(), 2);
    }

    void refusesWhatCannotBeStored()
    {
        WorkerFixture fixture;
        fixture.store->full = true;
        const auto reply = CMReply<QVariant>::create();
        fixture.root.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(true), reply);
        fixture.settle();
        QCOMPARE(WorkerFixture::outcome(reply), "NotStored: full"_s);
        QVERIFY(!fixture.value(OrvaNetworkAirplaneModePath()).bool_());
        QVERIFY(!fixture.info().airplaneMode());
        QCOMPARE(fixture.rfkillCalls(), QStringList("unblock all"_s));
    }

    void switchesAlsoWhereRfkillFails_data()
    {
        QTest::addColumn<QByteArray>("rfkill");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("exits with 1") << QByteArray("exit 1");
        QTest::newRow("hangs") << QByteArray("exec /bin/sleep 60");
    }

    void switchesAlsoWhereRfkillFails()
    {
        QFETCH(QByteArray, rfkill);
        WorkerFixture fixture;
        const QTemporaryDir directory;
        QFile program(directory.filePath("rfkill"_s));
        if (!rfkill.isEmpty()) {
            QVERIFY(program.open(QIODevice::WriteOnly));
            program.write("#!/bin/sh\n" + rfkill);
            program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
            program.close();
        }
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", directory.path().toLocal8Bit());
        QElapsedTimer blocked;
        blocked.start();
        fixture.root.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(true), {});
        fixture.settle();
        qputenv("PATH", path);
        QVERIFY(blocked.elapsed() < 7000);
        QVERIFY(fixture.info().airplaneMode());
        QVERIFY(fixture.value(OrvaNetworkAirplaneModeSettingPath()).bool_());
    }

    void readsTheSignal()
    {
        WorkerFixture fixture;
        const auto reply = fixture.send(OrvaNetworkWirelessRssiPath());
        fixture.settle();
        QCOMPARE(OrvaValue(reply.value().toHash()).double_(), -50.0);
        fixture.backend->rssi = 0.0;
        QCOMPARE(fixture.request(OrvaNetworkWirelessRssiPath()),
                 "Error: Unable to get wireless rssi"_s);
    }

    void answersReconnectWhateverTheBackendSays()
    {
        WorkerFixture fixture;
        fixture.backend->refused << "forceWifiReconnect"_s;
        QCOMPARE(fixture.request(OrvaNetworkForceWifiReconnectPath()), QString());
        QCOMPARE(fixture.backend->commands, {"forceWifiReconnect"_s});
    }

    void letsTheRadioGo()
    {
        WorkerFixture fixture(
            {{OrvaNetworkCurrentProfileSettingsPath(), OrvaValue::of(profileWith({"Home"_s}))}});
        fixture.request(OrvaNetworkStartPath());
        fixture.request(OrvaNetworkStopPath());
        QCOMPARE(fixture.timer(releaseTimer)->interval(), 5000);
        QVERIFY(fixture.fire(releaseTimer));
        // What is released while another claim holds asks again.
        QCOMPARE(powerRequests(fixture), "+++-"_s);
    }
};

QTEST_GUILESS_MAIN(TestSwitches)
#include "tst_switches.moc"
