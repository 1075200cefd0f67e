#include "workerfixture.h"

#include "backend/fake/networkinglowlevelfake.h"
#include "network/networkpaths.h"

/// The fake backend under a worker whose own backend lies still.
class TestFake : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void takesEveryProfileForConnectedAfterASecond()
    {
        WorkerFixture fixture;
        Networking_LowLevel_Fake fake(fixture.worker);
        QSignalSpy addresses(&fake, &Networking_LowLevel::AddressesChanged);
        fixture.worker->setLinkStatus("eth0"_s, true);
        fixture.worker->setLinkStatus("wlan0"_s, true);

        QVERIFY(fake.applyProfile(OrvaNetworkProfile()));
        QCOMPARE(fixture.info().wired().state(), OrvaNetworkState::Disconnected);
        QCOMPARE(fixture.info().wireless().state(), OrvaNetworkState::Disconnected);
        // Each profile has its own second; all of them find the type that came last.
        OrvaNetworkProfile wireless;
        wireless.setType(OrvaNetworkProfileType::Wireless);
        QVERIFY(fake.applyProfile(wireless));
        QTRY_COMPARE_WITH_TIMEOUT(addresses.count(), 2, 3000);
        QCOMPARE(fixture.info().wireless().state(), OrvaNetworkState::Connected);
        QCOMPARE(fixture.info().wired().state(), OrvaNetworkState::Disconnected);
    }

    void findsThreeNetworks()
    {
        WorkerFixture fixture;
        Networking_LowLevel_Fake fake(fixture.worker);
        QSignalSpy results(&fake, &Networking_LowLevel::ScanResults);
        QVERIFY(fake.scanNetworks());
        QVERIFY(results.wait(3000));
        const auto networks = results.first().first().value<QVector<OrvaNetworkScanResult>>();
        QCOMPARE(networks.size(), 3);
        const QRegularExpression name("^fakenet[0-7]$"_s);
        QSet<QString> ssids;
        for (const OrvaNetworkScanResult& network : networks) {
            QCOMPARE(network.bssid(), "00:01:02:03:04:0%1"_s.arg(ssids.size()));
            QVERIFY(name.match(network.ssid()).hasMatch());
            QVERIFY(network.signal() >= -80 && network.signal() <= -51);
            QVERIFY(network.channel() >= 1 && network.channel() <= 13);
            QVERIFY(network.encryption() != OrvaNetworkProfileWirelessEncryption::Wep);
            ssids.insert(network.ssid());
        }
        QCOMPARE(ssids.size(), 3);
    }

    void runsOneWpsSession()
    {
        WorkerFixture fixture;
        Networking_LowLevel_Fake fake(fixture.worker);
        const auto first = CMReply<OrvaNetworkInterface>::create();
        const auto second = CMReply<OrvaNetworkInterface>::create();
        QVERIFY(fake.performWpsPin("12345670"_s, first));
        QVERIFY(!fake.performWpsPbc(second));
        QTRY_VERIFY_WITH_TIMEOUT(first.isFinished(), 5000);
        QCOMPARE(first.value().ssid(), "11GN_AP"_s);
        QCOMPARE(first.value().key(), "dummykey"_s);
        QVERIFY(!second.isFinished());
        QVERIFY(fake.performWpsPbc(second));
    }

    /// What is published of the wireless interface must outlive a refresh.
    void reportsNoWirelessPart()
    {
        WorkerFixture fixture;
        const OrvaNetworkInfo state = Networking_LowLevel_Fake(fixture.worker).getNetworkState();
        QVERIFY(!state.__contains(OrvaNetworkInfo::Wireless()));
        QVERIFY(!state.wired().addresses().isEmpty());
        QCOMPARE(state.gateways().first().ip(), "10.0.0.1"_s);
    }
};

QTEST_GUILESS_MAIN(TestFake)
#include "tst_fake.moc"
