#include "radiosupport.h"

namespace {

const QString scanTimer = QStringLiteral("m_scanTimer");

QVector<OrvaNetworkScanResult> networks(int count)
{
    QVector<OrvaNetworkScanResult> results(count);
    for (int i = 0; i < count; ++i)
        results[i].setSsid(QStringLiteral("net%1").arg(i));
    return results;
}

/// A worker that goes through scan requests and what the network makes of them, a word each.
class Scanner : public WorkerFixture
{
public:
    QVector<CMReply<QVariant>> replies;
    qint64 now = 1000;

    Scanner()
    {
        worker->setClock([this] { return now; });
    }

    void run(const QByteArray& script)
    {
        const QMap<QByteArray, std::function<void()>> steps = {
            {"ask", [this] { replies << send(OrvaNetworkScanPath()); }},
            {"silent", [this] { root.invoke(OrvaNetworkScanPath(), OrvaValue(), {}); }},
            {"busy", [this] { backend->status = Networking_LowLevel::Unknown; }},
            {"idle", [this] { becomeIdle(); }},
            {"at-once", [this] { backend->onCommand = [this](auto&) { deliver(0); }; }},
            {"results", [this] { deliver(3); }},
        };
        for (const QByteArray& word : script.split(' ')) {
            steps.value(word)();
            settle();
        }
    }

    void deliver(int count) { Q_EMIT backend->ScanResults(networks(count)); }

    int rowCount()
    {
        const auto reply = CMReply<QVariant>::create();
        root.request(CMGetRowsRequest{OrvaNetworkScanResultsPath(), reply});
        return reply.value().toList().size();
    }

private:
    void becomeIdle()
    {
        backend->status = Networking_LowLevel::Idle;
        Q_EMIT backend->InterfaceStatusChanged(QStringLiteral("wlan0"), backend->status);
    }
};

} // namespace

class TestScan : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Each script ends with nobody waiting and the timer at rest.
    void answersEveryRequest_data()
    {
        QTest::addColumn<QString>("answers");
        QTest::addColumn<int>("scans");
        QTest::addColumn<QString>("power");
        QTest::newRow("ask ask results") << "ok; ok" << 1 << "++-";
        QTest::newRow("busy ask ask idle results") << "ok; ok" << 1 << "++++-";
        QTest::newRow("at-once ask ask") << "ok; ok" << 2 << "++-";
        QTest::newRow("silent results") << "" << 1 << "+-";
        QTest::newRow("busy silent idle results") << "" << 1 << "++-";
    }

    void answersEveryRequest()
    {
        Scanner scanner;
        scanner.run(QTest::currentDataTag());
        QTEST(outcomes(scanner.replies), "answers");
        QTEST(scanner.backend->commands.size(), "scans");
        QVERIFY(!scanner.timer(scanTimer)->isActive());
        scanner.fire(QStringLiteral("m_releaseWifiResourceTimer"));
        QTEST(powerRequests(scanner), "power");
    }

    void guardsTheOldestRequest()
    {
        Scanner scanner;
        QTimer* const timer = scanner.timer(scanTimer);
        scanner.run("ask");
        const int first = timer->timerId();
        scanner.now += 10000;
        scanner.run("busy ask");
        QCOMPARE(timer->timerId(), first);
        scanner.now += 2000;
        scanner.run("results");
        QCOMPARE(timer->interval(), 28000);
        scanner.now += 99000;
        scanner.run("idle busy ask results");
        QCOMPARE(timer->interval(), 30000);
        scanner.now += 99000;
        scanner.run("idle busy ask idle results ask");
        QCOMPARE(timer->interval(), 30000);
    }

    void publishesAndAnswersResults()
    {
        Scanner scanner;
        scanner.run("results ask");
        QCOMPARE(scanner.rowCount(), 0);
        Q_EMIT scanner.backend->ScanResults(networks(5000) + networks(1));
        QCOMPARE(scanner.rowCount(), 5000);
        const OrvaValue answer(scanner.replies.first().value().toHash());
        QCOMPARE(answer.networkScanResults().size(), 5001);
    }
};

QTEST_GUILESS_MAIN(TestScan)
#include "tst_scan.moc"
