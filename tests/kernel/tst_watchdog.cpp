#include "kernelTest.h"
#include "pinger.h"
#include "testTree.h"
#include "wifiRestart.h"
#include "workers/wifirestarter.h"

#include <network/networkpaths.h>

namespace {

/// An address that no one has; a ping waits 3 seconds for it.
constexpr const char* silent = "10.9.0.77";
const CMPath restartPath(QStringLiteral("wifi-restart/restart"));
const CMPath brokenPath(QStringLiteral("wifi-restart/broken"));

OrvaValue criteria(int interval, int threshold, const CMPath& path = restartPath)
{
    return json(QStringLiteral(R"({"wifiRestartCriteria":{"checkIntervalMs":%1,)"
                               R"("maxTxIncreaseNoRxIncreaseThreshold":%2,)"
                               R"("restartActivatePath":"%3"}})")
                    .arg(interval)
                    .arg(threshold)
                    .arg(path.toString()));
}

OrvaValue wirelessInfo(int state, const char* gateway)
{
    return json(QStringLiteral(R"({"networkInfo":{"wireless":{"state":%1},)"
                               R"("gateways":[{"ip":"%2"}]}})")
                    .arg(state)
                    .arg(QLatin1String(gateway)));
}

/// The processes that a process of one thread has started.
QStringList childrenOf(qint64 process)
{
    QFile list(QStringLiteral("/proc/%1/task/%1/children").arg(process));
    list.open(QIODevice::ReadOnly);
    return QString::fromLatin1(list.readAll()).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool hasChildren()
{
    return !childrenOf(QCoreApplication::applicationPid()).isEmpty();
}

/// Pings until it is killed.
int pingForEver(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TestTree tree;
    tree.addValue(OrvaNetworkInfoPath())->setValue(wirelessInfo(1, silent));
    Pinger pinger(nullptr, 100000);
    pinger.on_timer_timeout();
    return QCoreApplication::exec();
}

} // namespace

class TestWatchdog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_neighbour.isComplete()); }
    void init();
    void cleanup();
    void restartsALinkThatSendsAndNeverReceives();
    void followsTheInterfaceThroughItsLife();
    void obeysTheCriteria();
    void keepsThePingerWhenTheCriteriaBecomeInvalid();
    void answersARequestToRestart();
    void pingsTheGatewayOfAConnectedLink();
    void leavesNoPingBehind();
    void leavesNoPingBehindWhenKilled();
    void takesTheInterfaceDownAndUp();

private:
    void watch(const OrvaValue& criteria);

    LogCapture& m_log = LogCapture::install();
    Neighbour m_neighbour;
    std::unique_ptr<TestTree> m_tree;
    CMValueNode* m_criteria = nullptr;
    CMValueNode* m_info = nullptr;
    std::unique_ptr<WifiRestart> m_watchdog;
    QTimer* m_timer = nullptr;
};

void TestWatchdog::init()
{
    m_log.clear();
    m_tree = std::make_unique<TestTree>();
    m_criteria = m_tree->addValue(OrvaNetworkWifiRestartCriteriaPath());
    m_info = m_tree->addValue(OrvaNetworkInfoPath());
    m_tree->addActivation(restartPath);
    m_tree->addActivation(brokenPath, CMError(QStringLiteral("error"), TrString("broken")));
}

void TestWatchdog::cleanup()
{
    m_watchdog.reset();
    m_tree.reset();
}

void TestWatchdog::watch(const OrvaValue& criteria)
{
    m_criteria->setValue(criteria);
    m_watchdog = std::make_unique<WifiRestart>(nullptr, QStringLiteral("veth0"), QStringList());
    m_timer = m_watchdog->findChild<QTimer*>(QStringLiteral("checkTimer"));
    QVERIFY(m_timer != nullptr);
}

void TestWatchdog::restartsALinkThatSendsAndNeverReceives()
{
    QVERIFY(Neighbour::exchange());
    watch(criteria(10000, 3));
    QTRY_COMPARE(m_timer->interval(), 10000);
    QTimer sender;
    connect(&sender, &QTimer::timeout, this, [] { QVERIFY(Neighbour::send()); });
    sender.start(2);
    m_timer->setInterval(20);
    QTRY_VERIFY(m_tree->activations(restartPath) > 0);
    QVERIFY(m_log.count(QStringLiteral("incrementing counter to: 3")) > 0);
    QCOMPARE(m_log.count(QStringLiteral("incrementing counter to: 4")), 0);
}

void TestWatchdog::followsTheInterfaceThroughItsLife()
{
    QVERIFY(Neighbour::exchange());
    watch(criteria(10000, 100));
    QTRY_VERIFY(m_timer->isActive());
    // A link that just came up swallows packets for a moment, which shows as an idle link.
    const auto sampleLogs = [this](const char* line) {
        m_log.clear();
        m_watchdog->on_timer_timeout();
        return m_log.count(QLatin1String(line)) == 1;
    };
    QVERIFY(sampleLogs("Wifi is active (both tx/rx increasing), counter at zero"));
    QVERIFY(Neighbour::send());
    QVERIFY(sampleLogs("Tx packets increased, but not Rx packets, incrementing counter to: 1"));
    QVERIFY(sampleLogs("resetting counter back to zero from 1"));

    QTRY_VERIFY(Neighbour::send() && sampleLogs("incrementing counter to: 1"));
    QVERIFY(m_neighbour.run(QStringLiteral("ip link set veth0 down")));
    QVERIFY(sampleLogs("Interface is not connected (lower up), skipping wifi restart checks..."));
    QVERIFY(m_neighbour.run(QStringLiteral("ip link set veth0 up")));
    QTRY_VERIFY(Neighbour::send() && sampleLogs("incrementing counter to: 1"));

    QVERIFY(run(QStringLiteral("ip link set veth0 down && ip link set veth0 name other")));
    QVERIFY(sampleLogs("No such interface: veth0"));
    QVERIFY(run(QStringLiteral("ip link set other name veth0 && ip link set veth0 up")));
    QTRY_VERIFY(Neighbour::send() && sampleLogs("incrementing counter to: 1"));

    QVERIFY(run(QStringLiteral("ip link delete veth0")) && m_neighbour.link());
    QVERIFY(sampleLogs("Couldn't fetch number of packets from interface: veth0"));
    QVERIFY(Neighbour::exchange());
    QVERIFY(sampleLogs("Number of transferred packets DECREASED, assuming interface was removed "
                       "and readded!"));
    QVERIFY(sampleLogs("resetting counter back to zero from 1"));
    QCOMPARE(m_tree->activations(restartPath), 0);
}

void TestWatchdog::obeysTheCriteria()
{
    const auto isRefused = [this](const OrvaValue& value, const char* line) {
        m_log.clear();
        watch(value);
        return QTest::qWaitFor([&] { return m_log.count(QLatin1String(line)) == 1; }) &&
               !m_timer->isActive() && m_watchdog->findChild<Pinger*>() == nullptr;
    };
    const char* const disabled = "Wifi restart functionality disabled: ";
    QVERIFY(isRefused(criteria(9999, 3), disabled));
    QVERIFY(isRefused(criteria(10000, 3, CMPath()), disabled));
    QVERIFY(isRefused(json(QStringLiteral(R"({"wifiRestartCriteria":{"checkIntervalMs":"20000",)"
                                          R"("restartActivatePath":"wifi-restart/restart"}})")),
                      disabled));
    QVERIFY(isRefused(json(QStringLiteral(R"({"wifiRestartCriteria":{"checkIntervalMs":20000,)"
                                          R"("restartActivatePath":"wifi-restart/restart"}})")),
                      "Not a valid wifi restart criteria: "));
}

void TestWatchdog::keepsThePingerWhenTheCriteriaBecomeInvalid()
{
    watch(criteria(10000, 3));
    QTRY_VERIFY(m_timer->isActive());
    const QPointer<Pinger> pinger = m_watchdog->findChild<Pinger*>();
    m_criteria->setValue(criteria(1, 3));
    QVERIFY(!m_timer->isActive() && pinger);
    m_criteria->setValue(criteria(20000, 3));
    QVERIFY(m_timer->isActive() && m_timer->interval() == 20000);
    QVERIFY(!pinger);
    QCOMPARE(m_watchdog->findChildren<Pinger*>().size(), 1);
}

void TestWatchdog::answersARequestToRestart()
{
    watch(criteria(0, 0, CMPath()));
    const CMPath request = OrvaNetworkRequestWifiRestartPath();
    CMActivateNode::create(m_tree->nodes(), request)
        ->setInvoke(m_watchdog.get(), &WifiRestart::on_restart_requested, Qt::QueuedConnection);
    const auto errorOf = [&](const CMPath& path) {
        m_criteria->setValue(criteria(0, 0, path));
        const CMReply<QVariant> reply = m_tree->activate(request);
        return QTest::qWaitFor([&] { return reply.isFinished(); })
                   ? reply.error().name() + QLatin1Char('/') + reply.error().message()
                   : QStringLiteral("no answer");
    };
    const QString refusal = QStringLiteral("Networking/No wifi restart path defined");
    QCOMPARE(errorOf(CMPath()), refusal);
    QCOMPARE(errorOf(request), refusal);
    QCOMPARE(errorOf(brokenPath), QStringLiteral("error/broken"));
    QCOMPARE(errorOf(restartPath), QStringLiteral("/"));
    QCOMPARE(m_tree->activations(restartPath), 1);
}

void TestWatchdog::pingsTheGatewayOfAConnectedLink()
{
    Pinger pinger(nullptr, 200);
    const auto logs = [&](int state, const char* gateway, const char* line) {
        m_log.clear();
        m_info->setValue(wirelessInfo(state, gateway));
        return QTest::qWaitFor([&] { return m_log.count(QLatin1String(line)) > 0; });
    };
    QVERIFY(logs(2, "10.9.0.2", "wifi not connected, no need to"));
    QVERIFY(logs(1, "", "No gateway available, not sending ping"));
    QVERIFY(logs(1, "10.9.0.2", "gateway ping ok"));
    QCOMPARE(m_log.count(QStringLiteral("ping: 1 packets transmitted, 1 received")), 1);
    QVERIFY(logs(1, "192.0.2.1", "gateway ping failed: "));
}

void TestWatchdog::leavesNoPingBehind()
{
    m_info->setValue(wirelessInfo(1, silent));
    {
        Pinger pinger(nullptr, 60000);
        pinger.on_timer_timeout();
        QVERIFY(hasChildren());
        pinger.on_timer_timeout();
        QCOMPARE(m_log.count(QStringLiteral("should be impossible, killing process!")), 1);
        QVERIFY(hasChildren());
    }
    QVERIFY(!hasChildren());
}

void TestWatchdog::leavesNoPingBehindWhenKilled()
{
    QProcess host;
    host.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--ping")});
    QVERIFY(host.waitForStarted());
    QTRY_COMPARE(childrenOf(host.processId()).size(), 1);
    const QString ping = childrenOf(host.processId()).first();
    const auto runs = [&] {
        QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(ping));
        return commandLine.open(QIODevice::ReadOnly) && !commandLine.readAll().isEmpty();
    };
    QVERIFY(runs());
    host.kill();
    QVERIFY(host.waitForFinished());
    QTRY_VERIFY_WITH_TIMEOUT(!runs(), 1000);
}

void TestWatchdog::takesTheInterfaceDownAndUp()
{
    CMValueNode* wireless = m_tree->addValue(OrvaNetworkWirelessInterfacePath());
    WifiRestarter restarter({});
    const auto restart = [&](const char* interface) {
        wireless->setValue(
            json(QStringLiteral(R"({"string":"%1"})").arg(QLatin1String(interface))));
        const auto reply = CMReply<QVariant>::create();
        restarter.invoke(restartPath, OrvaHash(), reply);
        return QTest::qWaitFor([&] { return reply.isFinished(); }) && reply.error().isEmpty();
    };
    // Routes go with an interface that is taken down.
    QVERIFY(run(QStringLiteral("ip route add 10.10.0.0/24 dev veth0")));
    QVERIFY(restart("veth0"));
    QVERIFY(run(QStringLiteral("ip link show veth0 | grep -q [,]UP")));
    QVERIFY(!run(QStringLiteral("ip route | grep -q 10.10.0.0")));
    QVERIFY(!restart("wlan9"));
    const CMPath count(QStringLiteral("wifi-restart/count"));
    QCOMPARE(OrvaValue(restarter.getValue(count).toHash()).i32_(), 1);
}

int main(int argc, char** argv)
{
    return argc == 2 && qstrcmp(argv[1], "--ping") == 0 ? pingForEver(argc, argv)
                                                        : runInNamespace<TestWatchdog>(argc, argv);
}
#include "tst_watchdog.moc"
