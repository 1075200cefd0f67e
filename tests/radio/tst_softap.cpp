#include "radiosupport.h"

namespace {

const QString open = "no answer"_s;

OrvaValue ssid(const QString& name, const QString& ssid, int timeout = 0)
{
    return softApRequest(name, {{"ssid"_s, ssid}}, timeout);
}

/// A worker with the soft APs uap0 and uap1 configured, and no network.
class SoftAps : public WorkerFixture
{
public:
    qint64 now = 1000;

    SoftAps()
        : WorkerFixture({{OrvaNetworkSoftApConfigSettingsPath(),
                          json(R"({"networkProfile": {"softApSettings": [
                              {"apInterface": "uap0", "ssid": "Box"}, {"apInterface": "uap1"}]}})")}},
                        [](ScriptedBackend& backend) { backend.cable = false; })
    {
        worker->setClock([this] { return now; });
    }

    CMReply<QVariant> ask(const OrvaValue& value)
    {
        const auto reply = send(OrvaNetworkRequestSoftApPath(), value);
        settle();
        return reply;
    }
    /// The live requests, "name" and the time that is left.
    QString live()
    {
        QStringList rows;
        const auto requests = value(OrvaNetworkSoftApRequestsPath()).softApRequests();
        for (const auto& row : requests)
            rows << row.name() + QString::number(row.expiresInMs());
        return rows.join(" "_s);
    }
};

} // namespace

/// What the random sequences do not see of soft access points.
class TestSoftAp : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void refusesWhatItCannotDo_data()
    {
        QTest::addColumn<OrvaValue>("request");
        QTest::addColumn<QString>("answer");
        const auto timed = [](int timeout, bool hold) {
            return softApRequest("a"_s, {}, timeout, hold);
        };
        const auto with = [](const char* field, const QVariant& value) {
            return softApRequest("a"_s, {{QLatin1String(field), value}});
        };
        const QString huge(10000, QLatin1Char('n'));
        const int smallest = std::numeric_limits<int>::min();
        QTest::newRow("60000 ms") << timed(60000, false) << open;
        QTest::newRow("60001 ms") << timed(60001, false) << "error: Timeout too large";
        QTest::newRow("smallest") << timed(smallest, false) << open;
        QTest::newRow("hold with 1 ms") << timed(1, true) << open;
        QTest::newRow("hold with -1 ms")
            << timed(-1, true) << "error: Requested hold without timeout";
        QTest::newRow("other interface") << with("apInterface", "uap1"_s) << open;
        QTest::newRow("unknown") << with("apInterface", "wlan0"_s)
                                 << "Error: Unknown SoftAp interface: wlan0";
        QTest::newRow("empty") << with("apInterface", QString())
                               << "Error: Unknown SoftAp interface: ";
        const QString refusedSsid = "error: SoftAp SSID needs to have 1 to 32 bytes"_s;
        QTest::newRow("longest") << with("ssid", QString(16, QChar(0xe9))) << open;
        QTest::newRow("too long") << with("ssid", QString(17, QChar(0xe9))) << refusedSsid;
        QTest::newRow("no SSID") << with("ssid", QString()) << refusedSsid;
        QTest::newRow("newlines") << ssid("a\nb"_s, "c\nd"_s) << open;
        QTest::newRow("huge") << ssid(huge, huge) << refusedSsid;
        QTest::newRow("odd channel") << with("channel", -7) << open;
    }

    void refusesWhatItCannotDo()
    {
        QFETCH(OrvaValue, request);
        QFETCH(QString, answer);
        SoftAps device;
        device.request(OrvaNetworkStartPath());
        QCOMPARE(outcomes({device.ask(request)}), answer);
        QCOMPARE(device.live().isEmpty(), answer != open);
        QCOMPARE(device.backend->startedSoftAps.isEmpty(), answer != open);
    }

    void answersInOrderWhenTheInterfaceComesUp()
    {
        SoftAps device;
        device.request(OrvaNetworkStartPath());
        QStringList order;
        for (const QString& name : {"a"_s, "b"_s, "c"_s})
            device.ask(ssid(name, name)).addWatcher([&order, name](const auto&) { order << name; });
        device.worker->setLinkStatus("uap0"_s, true);
        QCOMPARE(order.join(" "_s), "a b c"_s);
    }

    void answersAnInterfaceThatIsUpAtOnce()
    {
        SoftAps device;
        device.request(OrvaNetworkStartPath());
        device.backend->onCommand = [&](const QString&) {
            device.worker->setLinkStatus("uap0"_s, true);
        };
        QCOMPARE(outcomes({device.ask(ssid("a"_s, "A"_s))}), "ok"_s);
    }

    void revokesAPlainName()
    {
        SoftAps device;
        device.request(OrvaNetworkStartPath());
        device.ask(ssid("a"_s, "A"_s));
        QCOMPARE(device.request(OrvaNetworkRevokeSoftApPath(), text("a")), QString());
        QCOMPARE(device.live(), QString());
    }

    void tellsTheTimeThatIsLeft()
    {
        SoftAps device;
        device.request(OrvaNetworkStartPath());
        device.ask(ssid("a"_s, "A"_s, 1000));
        device.now += 600;
        device.ask(ssid("b"_s, "B"_s));
        QCOMPARE(device.live(), "a400 b0"_s);
        device.now += 600;
        device.ask(ssid("c"_s, "C"_s));
        QCOMPARE(device.live(), "a1 b0 c0"_s); // overdue
    }

    /// A device without network offers its soft AP, again and again.
    void fallsBackEveryTime()
    {
        SoftAps device;
        const auto up = [&](const char* interface, bool on) {
            device.worker->setLinkStatus(QLatin1String(interface), on);
        };
        QVERIFY(device.fire(fallbackTimer)); // start comes late
        QCOMPARE(device.request(OrvaNetworkStartPath()), QString());
        for (int round = 1; round <= 3; ++round) {
            QCOMPARE(device.timer(fallbackTimer)->interval(), 10000);
            QVERIFY(device.fire(fallbackTimer));
            QCOMPARE(device.backend->startedSoftAps.size(), round);
            up("uap0", true);
            Q_EMIT device.backend->StationConnected("aa:bb:cc:00:11:22"_s);
            device.request(OrvaNetworkSetNetworkProfilePath(), toValue(profileWith({"Home"_s})));
            QCOMPARE(device.backend->stoppedSoftAps.size(), round);
            up("uap0", false);
            QVERIFY(device.value(OrvaNetworkConnectedSoftApStationsPath()).stringList().isEmpty());
            up("wlan0", true);
            QVERIFY(!device.timer(fallbackTimer)->isActive());
            device.request(OrvaNetworkRemoveWirelessNetworkPath(), text("Home"));
            up("wlan0", false);
        }
    }

    void listsStationsOnce()
    {
        SoftAps device;
        const auto stations = [&] {
            return device.value(OrvaNetworkConnectedSoftApStationsPath()).stringList();
        };
        const QString lower = "aa:bb:cc:00:11:22"_s;
        Q_EMIT device.backend->StationConnected(lower);
        Q_EMIT device.backend->StationConnected(lower.toUpper());
        QCOMPARE(stations(), {lower.toUpper()});
        Q_EMIT device.backend->StationDisconnected(lower);
        QCOMPARE(stations(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestSoftAp)
#include "tst_softap.moc"
