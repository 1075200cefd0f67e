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

bool isOpen(WorkerHost& host)
{
    return valueAt(host, "setup-helper/summary").__hash()["setupHelper"].toHash()["open"].toBool();
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

    void itIsOpenForAsLongAsTheSettingSays()
    {
        WorkerHost host({{CMPath("settings/setup-helper/open-ms"), OrvaValue::of(5000)}});
        host.store->addAction(OrvaNetworkRequestSoftApPath());
        host.add(std::make_unique<SetupHelper>(QVariantHash()));
        const auto reply = host.send(CMPath("setup-helper/open"));
        HeldClock::settle();
        QCOMPARE(WorkerHost::outcome(reply), QString());
        const auto asked = host.writes(OrvaNetworkRequestSoftApPath());
        QCOMPARE(asked.last().networkSoftApRequest().timeout(), 5000);
        HeldClock::instance().pass(4999);
        QVERIFY(isOpen(host));
        HeldClock::instance().pass(1);
        QVERIFY(!isOpen(host));
    }
};

ORVA_HELD_TEST_MAIN(SetupHelperTest)
#include "setuphelper_test.moc"
