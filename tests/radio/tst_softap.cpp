#include "radiosupport.h"

namespace {

const QString expiryTimer = QStringLiteral("m_softApTimeoutTimer");
const QString fallbackTimer = QStringLiteral("m_softApTimer");
const QString open = QStringLiteral("no answer");
const QString revoked = QStringLiteral("error: SoftAp request revoked");

OrvaValue ssid(const QString& name, const QString& ssid, int timeout = 0, bool hold = false)
{
    return softApRequest(name, {{QStringLiteral("ssid"), ssid}}, timeout, hold);
}

/// A started worker with the soft APs uap0 and uap1 configured, and no network.
class SoftAps : public WorkerFixture
{
public:
    qint64 now = 1000;

    explicit SoftAps(bool start = true)
        : WorkerFixture({{OrvaNetworkSoftApConfigSettingsPath(),
                          R"({"networkProfile": {"softApSettings": [
                              {"apInterface": "uap0", "ssid": "Box", "vendorSpecificData": "v"},
                              {"apInterface": "uap1", "channel": 1}]}})"_value}},
                        [](ScriptedBackend& backend) { backend.cable = false; })
    {
        worker->setClock([this] { return now; });
        if (start)
            request(OrvaNetworkStartPath());
    }

    CMReply<QVariant> ask(const OrvaValue& value)
    {
        const auto reply = send(OrvaNetworkRequestSoftApPath(), value);
        settle();
        return reply;
    }
    /// The SSIDs of the soft APs that were started, and "-" for each that was stopped.
    QString radio()
    {
        QStringList events;
        for (const auto& settings : qAsConst(backend->startedSoftAps))
            events << settings.ssid();
        events << QString(backend->stoppedSoftAps.size(), QLatin1Char('-'));
        return events.join(QLatin1Char(' ')).trimmed();
    }
    /// The live requests, "name" and the time that is left.
    QString live()
    {
        QStringList rows;
        const auto requests = value(OrvaNetworkSoftApRequestsPath()).softApRequests();
        for (const auto& row : requests)
            rows << row.name() + QString::number(row.expiresInMs());
        return rows.join(QLatin1Char(' '));
    }
};

} // namespace

class TestSoftAp : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void refusesWhatItCannotDo_data()
    {
        QTest::addColumn<OrvaValue>("request");
        QTest::addColumn<QString>("answer");
        const QString name = QStringLiteral("a");
        const auto other = [&](const char* interface) {
            return softApRequest(name, {{QStringLiteral("apInterface"), QLatin1String(interface)}});
        };
        const QString huge(10000, QLatin1Char('n'));
        const int smallest = std::numeric_limits<int>::min();
        QTest::newRow("60000 ms") << softApRequest(name, {}, 60000) << open;
        QTest::newRow("60001 ms") << softApRequest(name, {}, 60001) << "error: Timeout too large";
        QTest::newRow("smallest") << softApRequest(name, {}, smallest) << open;
        QTest::newRow("hold with 1 ms") << softApRequest(name, {}, 1, true) << open;
        QTest::newRow("hold with -1 ms")
            << softApRequest(name, {}, -1, true) << "error: Requested hold without timeout";
        QTest::newRow("other interface") << other("uap1") << open;
        QTest::newRow("unknown") << other("wlan0") << "Error: Unknown SoftAp interface: wlan0";
        QTest::newRow("empty") << other("") << "Error: Unknown SoftAp interface: ";
        const QString ssidRefused =
            QStringLiteral("error: SoftAp SSID needs to have 1 to 32 bytes");
        QTest::newRow("longest") << ssid(name, QString(16, QChar(0xe9))) << open;
        QTest::newRow("too long") << ssid(name, QString(17, QChar(0xe9))) << ssidRefused;
        QTest::newRow("no SSID") << ssid(name, QString()) << ssidRefused;
        QTest::newRow("newlines") << ssid(QStringLiteral("a\nb"), QStringLiteral("c\nd")) << open;
        QTest::newRow("huge") << ssid(huge, huge) << ssidRefused;
        QTest::newRow("odd fields")
            << softApRequest(name, R"({"channel": -7, "apAddress": "x"})"_hash) << open;
    }

    void refusesWhatItCannotDo()
    {
        QFETCH(OrvaValue, request);
        QFETCH(QString, answer);
        SoftAps device;
        QCOMPARE(outcomes({device.ask(request)}), answer);
        QCOMPARE(device.live().isEmpty(), answer != open);
        QCOMPARE(device.backend->startedSoftAps.isEmpty(), answer != open);
    }

    void answersWhenTheInterfaceComesUp()
    {
        SoftAps device;
        QStringList order;
        const auto ask = [&](const char* name, const char* network) {
            const QString text = QLatin1String(name);
            const auto reply = device.ask(ssid(text, QLatin1String(network)));
            reply.addWatcher([&order, text](const auto&) { order << text; });
        };
        ask("a", "A");
        ask("b", "B");
        ask("c", "C");
        ask("c", "C"); // changes nothing, so it is answered at once
        device.worker->setLinkStatus(QStringLiteral("uap1"), true);
        QCOMPARE(order, {QStringLiteral("c")});
        device.worker->setLinkStatus(QStringLiteral("uap0"), true);
        QCOMPARE(order.join(QLatin1Char(' ')), QStringLiteral("c a b c"));
    }

    void answersAnInterfaceThatIsUpAtOnce()
    {
        SoftAps device;
        device.backend->onCommand = [&](const QString&) {
            device.worker->setLinkStatus(QStringLiteral("uap0"), true);
        };
        const auto asked = device.ask(ssid(QStringLiteral("a"), QStringLiteral("A")));
        QCOMPARE(outcomes({asked}), QStringLiteral("ok"));
        // Revoking takes the plain name.
        const OrvaValue name = toValue(QStringLiteral("a"));
        QCOMPARE(device.request(OrvaNetworkRevokeSoftApPath(), name), QString());
        QCOMPARE(device.radio(), QStringLiteral("A -"));
    }

    void expiresInOrder_data()
    {
        QTest::addColumn<qint64>("start");
        QTest::newRow("early") << Q_INT64_C(1000);
        QTest::newRow("across 2^31") << (Q_INT64_C(1) << 31) - 1500;
        QTest::newRow("across 2^32") << (Q_INT64_C(1) << 32) - 1500;
    }

    void expiresInOrder()
    {
        QFETCH(qint64, start);
        SoftAps device;
        device.now = start;
        device.ask(ssid(QStringLiteral("b"), QStringLiteral("B"), 2000));
        const auto asked = device.ask(ssid(QStringLiteral("a"), QStringLiteral("A"), 1000));
        QCOMPARE(device.timer(expiryTimer)->interval(), 1000);
        device.now = start + 990;
        QVERIFY(device.fire(expiryTimer)); // early
        QCOMPARE(device.timer(expiryTimer)->interval(), 10);
        QCOMPARE(outcomes({asked}), open);
        device.now = start + 1000;
        QVERIFY(device.fire(expiryTimer));
        QCOMPARE(outcomes({asked}), revoked);
        QCOMPARE(device.live(), QStringLiteral("b1000"));
        device.now = start + 2500;
        QVERIFY(device.fire(expiryTimer));
        QCOMPARE(device.live(), QString());
        QVERIFY(!device.timer(expiryTimer)->isActive());
        QCOMPARE(device.radio(), QStringLiteral("B A B -"));
    }

    /// A device without network offers its soft AP, again and again.
    void fallsBackEveryTime()
    {
        SoftAps device(false);
        QVERIFY(device.fire(fallbackTimer)); // start comes late
        QCOMPARE(device.request(OrvaNetworkStartPath()), QString());
        for (int round = 1; round <= 3; ++round) {
            QCOMPARE(device.timer(fallbackTimer)->interval(), 10000);
            QVERIFY(device.fire(fallbackTimer));
            QCOMPARE(device.backend->startedSoftAps.size(), round);
            device.worker->setLinkStatus(QStringLiteral("uap0"), true);
            Q_EMIT device.backend->StationConnected(QStringLiteral("aa:bb:cc:00:11:22"));
            QCOMPARE(device.request(OrvaNetworkSetNetworkProfilePath(),
                                    toValue(profileWith({QStringLiteral("Home")}))),
                     QString());
            QCOMPARE(device.backend->stoppedSoftAps.size(), round);
            device.worker->setLinkStatus(QStringLiteral("uap0"), false);
            device.worker->setLinkStatus(QStringLiteral("wlan0"), true);
            QVERIFY(!device.timer(fallbackTimer)->isActive());
            QCOMPARE(device.request(OrvaNetworkRemoveWirelessNetworkPath(),
                                    toValue(QStringLiteral("Home"))),
                     QString());
            device.worker->setLinkStatus(QStringLiteral("wlan0"), false);
        }
    }

    void listsStationsOnce()
    {
        SoftAps device;
        const auto stations = [&] {
            return device.value(OrvaNetworkConnectedSoftApStationsPath()).stringList();
        };
        const QString lower = QStringLiteral("aa:bb:cc:00:11:22");
        Q_EMIT device.backend->StationConnected(lower);
        Q_EMIT device.backend->StationConnected(lower.toUpper());
        QCOMPARE(stations(), {lower.toUpper()});
        Q_EMIT device.backend->StationDisconnected(lower);
        QCOMPARE(stations(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestSoftAp)
#include "tst_softap.moc"
