// SPDX-License-Identifier: Apache-2.0
#include "kerneltest.h"
#include "standins/wifirestarter.h"
#include "testtree.h"
#include "watchdog/netlinkinfo.h"
#include "watchdog/pinger.h"
#include "watchdog/wifirestart.h"

#include "network/networkpaths.h"

#include <csignal>

#include <sys/resource.h>
#include <sys/wait.h>

namespace {

/// An address that no one has; a ping waits 3 seconds for it.
constexpr const char* silent = "10.9.0.77";
const CMPath restartPath("wifi-restart/restart"_s);

/// Criteria that start the watchdog, with one part of their text in the place of another.
OrvaValue criteria(const char* part = "10000", const QByteArray& instead = "10000")
{
    QByteArray text = R"({"wifiRestartCriteria":{"checkIntervalMs":10000,)"
                      R"("maxTxIncreaseNoRxIncreaseThreshold":3,)"
                      R"("restartActivatePath":"wifi-restart/restart"}})";
    return json(text.replace(part, instead));
}

OrvaValue wirelessInfo(int state, const QByteArray& gateway)
{
    return json(R"({"networkInfo":{"wireless":{"state":)" + QByteArray::number(state) +
                R"(},"gateways":[{"ip":"fe80::1","protocol":1},{},{"ip":")" + gateway + R"("}]}})");
}

/// Translates a text into its context.
class Catalogue : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char*, const char*, int) const override
    {
        return QString::fromLatin1(context);
    }
};

/// The processes that a process of one thread has started.
QStringList childrenOf(qint64 process)
{
    QFile list("/proc/%1/task/%1/children"_s.arg(process));
    list.open(QIODevice::ReadOnly);
    return QString::fromLatin1(list.readAll()).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class TestWatchdog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_neighbour.isComplete()); }
    void init()
    {
        m_log.clear();
        m_tree = std::make_unique<TestTree>();
        m_criteria = m_tree->addValue(OrvaNetworkWifiRestartCriteriaPath());
        m_info = m_tree->addValue(OrvaNetworkInfoPath());
        m_tree->addActivation(restartPath);
    }

    void cleanup()
    {
        m_watchdog.reset();
        m_tree.reset();
    }

    void survivesFailures()
    {
        NetLinkInfo info;
        for (const QString& name :
             {"wlan9"_s, QString(), QString(300, QLatin1Char('x')), "schön\u009b"_s}) {
            m_log.clear();
            QVERIFY(!info.getInterface(name).isValid());
            const QString line =
                "get details for interface %1 from kernel: "_s.arg(orvaLogText(name));
            QCOMPARE(m_log.count(line), 1);
            QVERIFY(info.getInterface(m_name).isValid());
        }
        rlimit usual{};
        getrlimit(RLIMIT_NOFILE, &usual);
        const rlimit noneLeft{0, usual.rlim_max};
        setrlimit(RLIMIT_NOFILE, &noneLeft);
        QVERIFY(!NetLinkInfo().getInterface(m_name).isValid());
        setrlimit(RLIMIT_NOFILE, &usual);
        QCOMPARE(logged("Couldn't connect netlink socket: "), 1);
    }

    void restartsALinkThatSendsAndNeverReceives()
    {
        QVERIFY(Neighbour::exchange());
        watch(criteria());
        QTRY_COMPARE(m_timer->interval(), 10000);
        QTimer sender;
        connect(&sender, &QTimer::timeout, this, [] { QVERIFY(Neighbour::send()); });
        sender.start(2);
        m_timer->setInterval(20);
        QTRY_VERIFY(m_tree->activations(restartPath) > 0);
        QVERIFY(logged("incrementing counter to: 3") > 0);
        QCOMPARE(logged("incrementing counter to: 4"), 0);
    }

    void followsTheInterfaceThroughItsLife()
    {
        QVERIFY(Neighbour::exchange());
        watch(criteria(":3", ":100"));
        QTRY_VERIFY(m_timer->isActive());
        // A link that just came up swallows packets for a moment, which shows as an idle link.
        const auto getsStuck = [this] {
            return QTest::qWaitFor(
                [&] { return Neighbour::send() && sampleLogs("incrementing counter to: 1"); });
        };
        QVERIFY(sampleLogs("Wifi is active (both tx/rx increasing), counter at zero"));
        QVERIFY(Neighbour::send());
        QVERIFY(sampleLogs("Tx packets increased, but not Rx packets, incrementing counter to: 1"));
        QVERIFY(sampleLogs("resetting counter back to zero from 1"));

        QVERIFY(getsStuck() && m_neighbour.run("ip link set veth0 down"));
        QVERIFY(
            sampleLogs("Interface is not connected (lower up), skipping wifi restart checks..."));
        QVERIFY(m_neighbour.run("ip link set veth0 up") && getsStuck());

        QVERIFY(run("ip link delete veth0"));
        QVERIFY(sampleLogs("No such interface: veth0"));
        QVERIFY(m_neighbour.link());
        QVERIFY(sampleLogs("Couldn't fetch number of packets from interface: veth0"));
        QVERIFY(Neighbour::exchange());
        QVERIFY(
            sampleLogs("Number of transferred packets DECREASED, assuming interface was removed "
                       "and readded!"));
        QVERIFY(sampleLogs("counter at zero"));
    }

    void obeysTheCriteria()
    {
        const auto isRefused = [this](const OrvaValue& value, const char* line) {
            m_criteria->setValue(criteria());
            const bool ran = m_timer->isActive();
            m_log.clear();
            m_criteria->setValue(value);
            return ran && !m_timer->isActive() && logged(line) == 1;
        };
        const char* const disabled = "Wifi restart functionality disabled: ";
        watch(criteria("10000", "0"));
        QTRY_COMPARE(logged(disabled), 1);
        QVERIFY(m_watchdog->findChildren<Pinger*>().isEmpty());
        QVERIFY(isRefused(criteria("10000", "9999"), disabled));
        QVERIFY(isRefused(criteria("wifi-restart/restart", ""), disabled));
        QVERIFY(isRefused(criteria("10000", R"("20000")"), disabled));
        QVERIFY(isRefused(criteria("max", "min"), "Not a valid wifi restart criteria: "));
        const QPointer<Pinger> pinger = m_watchdog->findChild<Pinger*>();
        QVERIFY(pinger);
        m_criteria->setValue(criteria("10000", "20000"));
        QVERIFY(m_timer->isActive() && m_timer->interval() == 20000 && !pinger);
        QCOMPARE(m_watchdog->findChildren<Pinger*>().size(), 1);
    }

    void answersARequestToRestart()
    {
        watch(criteria());
        const CMPath request = OrvaNetworkRequestWifiRestartPath();
        CMActivateNode::create(m_tree->nodes(), request)
            ->setInvoke(m_watchdog.get(), &WifiRestart::on_restart_requested, Qt::QueuedConnection);
        const auto outcomeWith = [&](const char* path) {
            m_criteria->setValue(criteria("wifi-restart/restart", path));
            return outcome(*m_tree, request);
        };
        const QString refusal = "Networking/No wifi restart path defined"_s;
        QCOMPARE(outcomeWith(""), refusal);
        QCOMPARE(outcomeWith("network/wireless/restart"), refusal);
        {
            Catalogue catalogue;
            QCoreApplication::installTranslator(&catalogue);
            QCOMPARE(outcomeWith(""), "Networking/void WifiRestart::on_restart_requested(const "
                                      "CMSetDataRequest&)"_s);
        }
        QVERIFY(outcomeWith("nowhere").startsWith("UnknownPath/"_s));
        QCOMPARE(outcomeWith("wifi-restart/restart"), "/"_s);
        QCOMPARE(m_tree->activations(restartPath), 1);
    }

    void pingsTheGatewayOfAConnectedLink()
    {
        Pinger pinger(nullptr, 200);
        QSignalSpy pinged(&pinger, &Pinger::pinged);
        const auto logs = [&](int state, const char* gateway, const char* line) {
            m_log.clear();
            m_info->setValue(wirelessInfo(state, gateway));
            return QTest::qWaitFor([&] { return logged(line) > 0; });
        };
        QVERIFY(logs(2, "10.9.0.2", "wifi not connected, no need to send a ping"));
        QVERIFY(logs(1, "-V", "No gateway available, not sending ping"));
        QVERIFY(logs(1, "10.9.0.2", "gateway ping ok"));
        QCOMPARE(logged("ping: 1 packets transmitted, 1 received"), 1);
        QTRY_VERIFY(!pinged.isEmpty() && pinged.last().first().toBool());
        QVERIFY(logs(1, "192.0.2.1", "gateway ping failed: "));
        QTRY_VERIFY(!pinged.last().first().toBool());
        QCOMPARE(logged("gateway ping failed: exited with status 2"), 1);
        QCOMPARE(logged("\n") + logged("\\u000a"), 0);
        QCOMPARE(logged("ping: /bin/ping: connect: Network is unreachable"), 1);
    }

    void leavesNoPingBehind()
    {
        const auto own = [] { return childrenOf(QCoreApplication::applicationPid()); };
        m_info->setValue(wirelessInfo(1, silent));
        {
            Pinger pinger(nullptr, 60000);
            pinger.on_timer_timeout();
            const QStringList first = own();
            pinger.on_timer_timeout();
            QCOMPARE(logged("should be impossible, killing process!"), 1);
            QVERIFY(first.size() == 1 && own().size() == 1 && own() != first);
        }
        QCOMPARE(own(), QStringList());

        const pid_t host = fork();
        if (host == 0) {
            alarm(10);
            Pinger pinger(nullptr, 60000);
            pinger.on_timer_timeout();
            pause();
        }
        QTRY_COMPARE(childrenOf(host).size(), 1);
        const QString program = "/proc/%1/exe"_s.arg(childrenOf(host).first());
        // Until then Qt's own code waits in the child, for its parent and without end.
        QTRY_VERIFY(QFile::symLinkTarget(program).endsWith("/ping"_s));
        kill(host, SIGKILL);
        QCOMPARE(waitpid(host, nullptr, 0), host);
        QTRY_COMPARE_WITH_TIMEOUT(QFile::symLinkTarget(program), QString(), 1000);
    }

    void takesTheInterfaceDownAndUp()
    {
        CMValueNode* wireless = m_tree->addValue(OrvaNetworkWirelessInterfacePath());
        WifiRestarter restarter({});
        // Routes go with an interface that is taken down.
        QVERIFY(run("ip route add 10.10.0.0/24 dev veth0"));
        wireless->setValue(json(R"({"string":"veth0"})"));
        QCOMPARE(outcome(restarter, restartPath), "/"_s);
        QVERIFY(run("ip link show veth0 | grep -q [,]UP"));
        QVERIFY(!run("ip route | grep -q 10.10.0.0"));
        wireless->setValue(json(R"({"string":"wlan9"})"));
        QVERIFY(outcome(restarter, restartPath).startsWith("error/"_s));
    }

private:
    void watch(const OrvaValue& criteria)
    {
        m_criteria->setValue(criteria);
        m_watchdog = std::make_unique<WifiRestart>(nullptr, m_name, QStringList());
        m_timer = m_watchdog->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    }

    int logged(const char* text) { return m_log.count(QLatin1String(text)); }
    bool sampleLogs(const char* line)
    {
        m_log.clear();
        m_watchdog->on_timer_timeout();
        return logged(line) == 1;
    }

    LogCapture& m_log = LogCapture::install();
    Neighbour m_neighbour;
    const QString m_name = "veth0"_s;
    std::unique_ptr<TestTree> m_tree;
    CMValueNode* m_criteria = nullptr;
    CMValueNode* m_info = nullptr;
    std::unique_ptr<WifiRestart> m_watchdog;
    QTimer* m_timer = nullptr;
};

ORVA_KERNEL_TEST_MAIN(TestWatchdog)
#include "tst_watchdog.moc"
