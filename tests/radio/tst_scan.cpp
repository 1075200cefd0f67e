#include "radiosupport.h"

namespace {

QVector<OrvaNetworkScanResult> networks(int count)
{
    QVector<OrvaNetworkScanResult> results(count);
    for (int i = 0; i < count; ++i)
        results[i].setSsid(QStringLiteral("net%1").arg(i));
    return results;
}

/// A worker on a clock that the test turns.
class Scanner : public WorkerFixture
{
public:
    qint64 now = 1000;

    Scanner()
    {
        worker->setClock([this] { return now; });
    }

    CMReply<QVariant> askAfter(qint64 ms)
    {
        now += ms;
        const auto reply = send(OrvaNetworkScanPath());
        settle();
        return reply;
    }

    void setStatus(Networking_LowLevel::InterfaceStatus status)
    {
        backend->status = status;
        Q_EMIT backend->InterfaceStatusChanged(QStringLiteral("wlan0"), status);
    }

    int rowCount()
    {
        const auto reply = CMReply<QVariant>::create();
        root.request(CMGetRowsRequest{OrvaNetworkScanResultsPath(), reply});
        return reply.value().toList().size();
    }
};

} // namespace

class TestScan : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void guardsTheOldestRequest()
    {
        Scanner scanner;
        const QTimer* const timer = scanner.timer(QStringLiteral("m_scanTimer"));
        scanner.askAfter(0);
        const int first = timer->timerId();
        scanner.setStatus(Networking_LowLevel::Unknown);
        scanner.askAfter(10000);
        QCOMPARE(timer->timerId(), first);
        scanner.now += 2000;
        Q_EMIT scanner.backend->ScanResults({});
        QCOMPARE(timer->interval(), 28000);
        scanner.setStatus(Networking_LowLevel::Idle);
        Q_EMIT scanner.backend->ScanResults({});
        QVERIFY(!timer->isActive());
        scanner.askAfter(99000);
        QCOMPARE(timer->interval(), 30000);
    }

    void countsRequestsThatWantNoAnswer()
    {
        Scanner scanner;
        scanner.root.invoke(OrvaNetworkScanPath(), OrvaValue(), {});
        scanner.askAfter(0);
        QCOMPARE(scanner.backend->commands, {QStringLiteral("scanNetworks")});
        QVERIFY(scanner.fire(QStringLiteral("m_scanTimer")));
    }

    void answersResultsThatComeAtOnce()
    {
        Scanner scanner;
        scanner.backend->onCommand = [&](const QString&) {
            Q_EMIT scanner.backend->ScanResults({});
        };
        QCOMPARE(outcomes({scanner.askAfter(0)}), QStringLiteral("ok"));
        QVERIFY(!scanner.timer(QStringLiteral("m_scanTimer"))->isActive());
    }

    void publishesAndAnswersResults()
    {
        Scanner scanner;
        Q_EMIT scanner.backend->ScanResults(networks(3));
        QCOMPARE(scanner.rowCount(), 3);
        const auto reply = scanner.askAfter(0);
        QCOMPARE(scanner.rowCount(), 0);
        Q_EMIT scanner.backend->ScanResults(networks(5000) + networks(1));
        QCOMPARE(scanner.rowCount(), 5000);
        QCOMPARE(OrvaValue(reply.value().toHash()).networkScanResults().size(), 5001);
    }
};

QTEST_GUILESS_MAIN(TestScan)
#include "tst_scan.moc"
