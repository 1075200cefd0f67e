// SPDX-License-Identifier: Apache-2.0
#include "backend/fake/networkinglowlevelfake.h"
#include "heldclock.h"
#include "playedlistener.h"

#include <QtTest>

#include <sched.h>

class TestFake : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void takesEveryProfileForConnectedAfterASecond()
    {
        PlayedListener listener;
        Networking_LowLevel_Fake fake(listener);
        QSignalSpy addresses(&fake, &Networking_LowLevel::AddressesChanged);
        const QStringList down = {"eth0 down"_s, "wlan0 down"_s};

        QVERIFY(fake.applyProfile(OrvaNetworkProfile()));
        QCOMPARE(listener.heard, down);
        // Each profile has its own second; all of them find the last type.
        OrvaNetworkProfile wireless;
        wireless.setType(OrvaNetworkProfileType::Wireless);
        QVERIFY(fake.applyProfile(wireless));
        HeldClock::instance().pass(999);
        QCOMPARE(addresses.count(), 0);
        HeldClock::instance().pass(1);
        QCOMPARE(addresses.count(), 2);
        const QStringList up = {"wlan0 up"_s, "wlan0 up"_s};
        QCOMPARE(listener.heard, down + down + up);
    }

    void findsThreeNetworks()
    {
        PlayedListener listener;
        Networking_LowLevel_Fake fake(listener);
        QSignalSpy results(&fake, &Networking_LowLevel::ScanResults);
        QVERIFY(fake.scanNetworks());
        HeldClock::instance().pass(3000);
        const auto found = results.value(0).value(0).value<QVector<OrvaNetworkScanResult>>();
        QStringList ssids;
        for (const OrvaNetworkScanResult& network : found)
            ssids << network.ssid();
        QCOMPARE(ssids.size(), 3);
        QCOMPARE(ssids.filter(QRegularExpression("^fakenet[0-7]$"_s)).removeDuplicates(), 0);
        QCOMPARE(found.last().bssid(), "00:01:02:03:04:02"_s);
    }

    void runsOneWpsSession()
    {
        PlayedListener listener;
        Networking_LowLevel_Fake fake(listener);
        const auto first = CMReply<OrvaNetworkInterface>::create();
        const auto second = CMReply<OrvaNetworkInterface>::create();
        QVERIFY(fake.performWpsPin("12345670"_s, first));
        QVERIFY(!fake.performWpsPbc(second));
        HeldClock::instance().pass(5000);
        QVERIFY(first.isFinished());
        QCOMPARE(first.value().ssid(), "11GN_AP"_s);
        QCOMPARE(first.value().key(), "dummykey"_s);
        QVERIFY(!second.isFinished());
        QVERIFY(fake.performWpsPbc(second));
    }

    /// The published part of the wireless interface must outlive a refresh.
    void reportsNoWirelessPart()
    {
        PlayedListener listener;
        const OrvaNetworkInfo state = Networking_LowLevel_Fake(listener).getNetworkState();
        QVERIFY(!state.__contains(OrvaNetworkInfo::Wireless()));
        QVERIFY(!state.wired().addresses().isEmpty());
        QCOMPARE(state.gateways().first().ip(), "10.0.0.1"_s);
    }

    /// In a network namespace of this program's own. The last test: it stays in there.
    void withoutAnInterfaceThereIsAnAddressAllTheSame()
    {
        if (::unshare(CLONE_NEWNET) != 0)
            QSKIP("needs root, for a network namespace");
        PlayedListener listener;
        Networking_LowLevel_Fake fake(listener);
        QCOMPARE(fake.getEthernetMAC(), "00:01:02:03:04:05"_s);
        QCOMPARE(fake.getNetworkState().wired().addresses().first().ip(), "127.0.0.1"_s);
    }
};

ORVA_HELD_TEST_MAIN(TestFake)
#include "tst_fake.moc"
