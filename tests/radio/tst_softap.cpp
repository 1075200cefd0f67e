#include "radiosupport.h"

namespace {

const QString open = "no answer"_s;

OrvaValue ssid(const QString& name, const QString& ssid, int timeout = 0)
{
    return softApRequest(name, {{"ssid"_s, ssid}}, timeout);
}

/// A worker with the soft APs uap0 and uap1 configured, and no network.
class SoftApDevice : public WorkerFixture
{
public:
    qint64 now = Q_INT64_C(3000000000); // more than 32 bits hold

    explicit SoftApDevice(const Prepare& prepare = {})
        : WorkerFixture({{OrvaNetworkSoftApConfigSettingsPath(),
                          json(R"({"networkProfile": {"softApSettings": [
                              {"apInterface": "uap0", "ssid": "Box"}, {"apInterface": "uap1"}]}})")}},
                        [&](ScriptedBackend& backend) {
                            backend.cable = false;
                            if (prepare)
                                prepare(backend);
                        })
    {
        worker->setClock([this] { return now; });
    }

    CMReply<QVariant> ask(const OrvaValue& value)
    {
        const auto reply = send(OrvaNetworkRequestSoftApPath(), value);
        settle();
        return reply;
    }
    /// The live requests, "name" and how many ms from now they expire.
    QString live()
    {
        QStringList rows;
        const auto requests = value(OrvaNetworkSoftApRequestsPath()).softApRequests();
        for (const auto& row : requests)
            rows << row.name() + (row.expiresAtMs() == 0
                                      ? QString()
                                      : QString::number(row.expiresAtMs() - now));
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
        QTest::newRow("33 bytes") << with("ssid", huge.left(33)) << refusedSsid;
        QTest::newRow("longest name") << ssid(huge.left(64), "A"_s) << open;
        QTest::newRow("longer name")
            << ssid(huge.left(65), "A"_s)
            << "error: SoftAp requester name needs to have at most 64 characters";
        for (const char* field : {"bssid", "countryCode", "domainName", "vendorSpecificData"})
            QTest::newRow(field) << with(field, huge)
                                 << "error: SoftAp %1 is too long"_s.arg(QLatin1String(field));
        for (const int channel : {1, 14, 36, 64, 100, 144, 165, 233})
            QTest::addRow("channel %d", channel) << with("channel", channel) << open;
        for (const int channel : {-7, 0, 15, 34, 68, 96, 148, 237})
            QTest::addRow("channel %d", channel)
                << with("channel", channel)
                << "error: SoftAp channel needs to be one of the 2.4, 5 or 6 GHz band";
        for (const char* field : {"apAddress", "apNetmask", "dhcpRangeFrom", "dhcpRangeTo"}) {
            const bool isMask = qstrcmp(field, "apNetmask") == 0;
            QTest::addRow("good %s", field) << with(field, "255.255.0.0"_s) << open;
            for (const QString& bad : {QString(), "10"_s, "::1"_s, "255.255.0.256"_s})
                QTest::addRow("%s \"%s\"", field, qPrintable(bad))
                    << with(field, bad)
                    << "error: SoftAp %1 needs to be an IPv4 %2"_s.arg(
                           QLatin1String(field), isMask ? "netmask"_s : "address"_s);
        }
        QTest::newRow("netmask with a hole")
            << with("apNetmask", "255.0.255.0"_s)
            << "error: SoftAp apNetmask needs to be an IPv4 netmask";
    }

    void refusesWhatItCannotDo()
    {
        QFETCH(OrvaValue, request);
        QFETCH(QString, answer);
        SoftApDevice device;
        device.request(OrvaNetworkStartPath());
        QCOMPARE(outcomes({device.ask(request)}), answer);
        QCOMPARE(device.live().isEmpty(), answer != open);
        QCOMPARE(device.backend->startedSoftAps.isEmpty(), answer != open);
    }

    void answersInOrderWhenTheInterfaceComesUp()
    {
        SoftApDevice device;
        device.request(OrvaNetworkStartPath());
        QStringList order;
        for (const QString& name : {"a"_s, "b"_s, "c"_s})
            device.ask(ssid(name, name)).addWatcher([&order, name](const auto&) { order << name; });
        device.worker->setLinkStatus("uap0"_s, true);
        QCOMPARE(order.join(" "_s), "a b c"_s);
    }

    void answersAnInterfaceThatIsUpAtOnce()
    {
        SoftApDevice device;
        device.request(OrvaNetworkStartPath());
        device.backend->onCommand = [&](const QString&) {
            device.worker->setLinkStatus("uap0"_s, true);
        };
        QCOMPARE(outcomes({device.ask(ssid("a"_s, "A"_s))}), "ok"_s);
    }

    void revokesAPlainName()
    {
        SoftApDevice device;
        device.request(OrvaNetworkStartPath());
        device.ask(ssid("a"_s, "A"_s));
        QCOMPARE(device.request(OrvaNetworkRevokeSoftApPath(), OrvaValue::of("a"_s)), QString());
        QCOMPARE(device.live(), QString());
    }

    void tellsWhenRequestsExpire()
    {
        SoftApDevice device;
        device.request(OrvaNetworkStartPath());
        device.ask(ssid("a"_s, "A"_s, 1000));
        device.now += 600;
        device.ask(ssid("b"_s, "B"_s));
        QCOMPARE(device.live(), "a400 b"_s);
        device.now += 600;
        QCOMPARE(device.live(), "a-200 b"_s); // overdue; the moment stands
    }

    void sixtyFourMayAsk()
    {
        SoftApDevice device;
        device.request(OrvaNetworkStartPath());
        QVector<CMReply<QVariant>> replies;
        for (int i = 0; i < 65; ++i)
            replies << device.send(OrvaNetworkRequestSoftApPath(),
                                   ssid("n%1"_s.arg(i), "A%1"_s.arg(i)));
        int published = 0;
        connect(device.worker, &CMAbstractWorker::valueChanged, this, [&](const CMPath& path) {
            published += path == OrvaNetworkSoftApRequestsPath() ? 1 : 0;
        });
        device.settle();
        QCOMPARE(published, 1); // at the turn's end
        QCOMPARE(device.live().split(QLatin1Char(' ')).size(), 64);
        QCOMPARE(outcomes(replies.mid(63)),
                 open + "; error: SoftAp interface has 64 requesters already"_s);
        QCOMPARE(outcomes({device.ask(ssid("n0"_s, "B"_s)),
                           device.ask(softApRequest("n"_s, {{"apInterface"_s, "uap1"_s}}))}),
                 "ok; "_s + open);
        QVERIFY(device.fire(fallbackTimer)); // the device itself
        QVERIFY(device.live().contains("Networking"_s));
    }

    void aHoldBelongsToItsInterface()
    {
        SoftApDevice device;
        const auto lastSsid = [&] { return device.backend->startedSoftAps.last().ssid(); };
        const auto other = [&](const QString& ssid) {
            device.ask(softApRequest("a"_s, {{"apInterface"_s, "uap1"_s}, {"ssid"_s, ssid}}));
        };
        device.request(OrvaNetworkStartPath());
        device.ask(softApRequest("holder"_s, {}, 1000, true));
        other("A"_s);
        QCOMPARE(lastSsid(), "A"_s); // not blocked
        other("B"_s);
        device.ask(ssid("b"_s, "C"_s));
        QCOMPARE(lastSsid(), "B"_s); // not freed
        device.now += 1000;
        QVERIFY(device.fire(expiryTimer));
        QCOMPARE(lastSsid(), "C"_s); // recorded meanwhile
        QCOMPARE(device.backend->startedSoftAps.size(), 4);
    }

    void aStopEndsTheExpiry()
    {
        // Without a wireless interface the stop revokes no soft AP of the device's own.
        SoftApDevice device([](ScriptedBackend& backend) { backend.wireless = false; });
        device.request(OrvaNetworkStartPath());
        device.ask(ssid("a"_s, "A"_s, 1000));
        QVERIFY(device.timer(expiryTimer)->isActive());
        device.request(OrvaNetworkStopPath());
        QVERIFY(!device.timer(expiryTimer)->isActive());
    }

    /// A device without network offers its soft AP, again and again.
    void fallsBackEveryTime()
    {
        SoftApDevice device;
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
            device.request(OrvaNetworkSetNetworkProfilePath(),
                           OrvaValue::of(profileWith({"Home"_s})));
            QCOMPARE(device.backend->stoppedSoftAps.size(), round);
            up("uap0", false);
            QVERIFY(device.value(OrvaNetworkConnectedSoftApStationsPath()).stringList().isEmpty());
            up("wlan0", true);
            QVERIFY(!device.timer(fallbackTimer)->isActive());
            device.request(OrvaNetworkRemoveWirelessNetworkPath(), OrvaValue::of("Home"_s));
            up("wlan0", false);
        }
    }

    void fallsBackInTimeThoughAProfileIsNotStored()
    {
        SoftApDevice device;
        device.request(OrvaNetworkStartPath());
        constexpr int own = 1234; // a restart sets another
        device.timer(fallbackTimer)->setInterval(own);
        device.store->full = true;
        QCOMPARE(device.request(OrvaNetworkSetNetworkProfilePath(),
                                OrvaValue::of(profileWith({"Home"_s}))),
                 "NotStored: full"_s);
        QCOMPARE(device.timer(fallbackTimer)->interval(), own);
    }

    void fallsBackAtOnceAfterWrongKeys()
    {
        WorkerFixture device(
            {{OrvaNetworkMaxAuthFailuresSettingsPath(), OrvaValue::of(1)},
             {OrvaNetworkCurrentProfileSettingsPath(), OrvaValue::of(profileWith({"Home"_s}))}},
            [](ScriptedBackend& backend) { backend.cable = false; });
        device.request(OrvaNetworkStartPath());
        Q_EMIT device.backend->AuthError("Home"_s, "wrong key"_s);
        device.settle();
        QCOMPARE(device.timer(fallbackTimer)->interval(), 0);
    }

    void fallsBackOnceTheWirelessInterfaceIsThere()
    {
        SoftApDevice device([](ScriptedBackend& backend) { backend.wireless = false; });
        const auto tell = [&] {
            Q_EMIT device.backend->InterfaceStatusChanged("wlan0"_s, Networking_LowLevel::Idle);
        };
        device.request(OrvaNetworkStartPath());
        QVERIFY(device.fire(fallbackTimer));
        tell();
        QCOMPARE(device.backend->startedSoftAps.size(), 0);
        device.backend->wireless = true;
        tell();
        QCOMPARE(device.backend->startedSoftAps.size(), 1);
        tell();
        QCOMPARE(device.backend->startedSoftAps.size(), 1);
    }

    void listsStationsOnce()
    {
        SoftApDevice device;
        const auto stations = [&] {
            return device.value(OrvaNetworkConnectedSoftApStationsPath()).stringList();
        };
        const QString lower = "aa:bb:cc:00:11:22"_s;
        Q_EMIT device.backend->StationConnected(lower);
        Q_EMIT device.backend->StationConnected(lower.toUpper());
        QCOMPARE(stations(), {lower.toUpper()});
        device.worker->setLinkStatus("uap0"_s, true); // a new one has no stations yet
        QCOMPARE(stations(), QStringList());
        Q_EMIT device.backend->StationConnected(lower);
        Q_EMIT device.backend->StationDisconnected(lower);
        QCOMPARE(stations(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestSoftAp)
#include "tst_softap.moc"
