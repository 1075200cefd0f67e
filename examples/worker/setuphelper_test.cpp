// SPDX-License-Identifier: Apache-2.0
#include "setuphelper.h"

#include <network/networkpaths.h>
#include <testing/workerhost.h>

#include <QtTest>

namespace {

OrvaValue valueAt(WorkerHost& host, const char* path)
{
    return host.value(CMPath(QLatin1String(path)));
}

QVariantHash summary(WorkerHost& host)
{
    return valueAt(host, "setup-helper/summary").__hash()["setupHelper"].toHash();
}

bool isOpen(WorkerHost& host)
{
    return summary(host)["open"].toBool();
}

} // namespace

class SetupHelperTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theAdviceFollowsTheNetwork()
    {
        WorkerHost host({{OrvaNetworkInfoPath(), OrvaValue::of(OrvaNetworkInfo())}});
        host.add(std::make_unique<SetupHelper>(QVariantHash()));
        QVERIFY(valueAt(host, "setup-helper/advice").string_().contains("Plug in a cable"));
        OrvaNetworkInfo info;
        info.setState(OrvaNetworkState::Connected);
        host.root.setValue(OrvaNetworkInfoPath(), OrvaValue::of(info), {});
        HeldClock::settle();
        QVERIFY(valueAt(host, "setup-helper/advice").string_().contains("on your network"));
    }

    void itIsOpenForAsLongAsTheSettingSays_data()
    {
        QTest::addColumn<int>("setting");
        QTest::addColumn<int>("time");
        QTest::newRow("shorter") << 5000 << 5000;
        QTest::newRow("none, which would be for ever") << 0 << 60000;
        QTest::newRow("more than may be asked for") << 60001 << 60000;
    }

    void itIsOpenForAsLongAsTheSettingSays()
    {
        QFETCH(int, setting);
        QFETCH(int, time);
        WorkerHost host({{CMPath("settings/setup-helper/open-ms"), OrvaValue::of(setting)}});
        host.store->addAction(OrvaNetworkRequestSoftApPath());
        host.add(std::make_unique<SetupHelper>(QVariantHash()));
        const auto reply = host.send(CMPath("setup-helper/open"));
        HeldClock::settle();
        QCOMPARE(WorkerHost::outcome(reply), QString());
        const auto asked = host.writes(OrvaNetworkRequestSoftApPath());
        QCOMPARE(asked.last().networkSoftApRequest().timeout(), time);
        HeldClock::instance().pass(time - 1);
        QVERIFY(isOpen(host));
        HeldClock::instance().pass(1);
        QVERIFY(!isOpen(host));
    }

    void whatIsRefusedIsNotOpenAndSaysWhy()
    {
        WorkerHost host({});
        host.store->addAction(OrvaNetworkRequestSoftApPath());
        host.add(std::make_unique<SetupHelper>(QVariantHash()));
        host.store->full = true;
        const auto reply = host.send(CMPath("setup-helper/open"));
        HeldClock::settle();
        QCOMPARE(WorkerHost::outcome(reply), QString("NotStored: full"));
        QVERIFY(!isOpen(host));
        QCOMPARE(summary(host)["refused"].toString(), QString("full"));
        host.store->full = false;
        host.send(CMPath("setup-helper/open"));
        HeldClock::settle();
        QVERIFY(isOpen(host) && !summary(host).contains("refused"));
    }

    void theTimeBeginsWithTheAnswer()
    {
        WorkerHost host({});
        host.store->addAction(OrvaNetworkRequestSoftApPath());
        host.add(std::make_unique<SetupHelper>(QVariantHash()));
        host.store->mute = true;
        host.send(CMPath("setup-helper/open"));
        HeldClock::settle();
        QVERIFY(!isOpen(host));
    }
};

ORVA_HELD_TEST_MAIN(SetupHelperTest)
#include "setuphelper_test.moc"
