#include "radiosupport.h"

namespace {

const QString scanTimer = "m_scanTimer"_s;

QVector<OrvaNetworkScanResult> networks(int count)
{
    QVector<OrvaNetworkScanResult> results(count);
    for (int i = 0; i < count; ++i)
        results[i].setSsid("net%1"_s.arg(i));
    return results;
}

int rowCount(WorkerFixture& fixture)
{
    const auto reply = CMReply<QVariant>::create();
    fixture.root.request(CMGetRowsRequest{OrvaNetworkScanResultsPath(), reply});
    return reply.value().toList().size();
}

} // namespace

/// What the random sequences do not see of scans.
class TestScan : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void leavesTheGuardOfTheOldestRequestAlone()
    {
        WorkerFixture fixture;
        fixture.request(OrvaNetworkScanPath());
        constexpr int own = 1234; // a restart sets another
        fixture.timer(scanTimer)->setInterval(own);
        fixture.request(OrvaNetworkScanPath());
        QCOMPARE(fixture.timer(scanTimer)->interval(), own);
    }

    void countsRequestsThatWantNoAnswer()
    {
        WorkerFixture fixture;
        fixture.root.invoke(OrvaNetworkScanPath(), OrvaValue(), {});
        fixture.request(OrvaNetworkScanPath());
        QCOMPARE(fixture.backend->commands, {"scanNetworks"_s});
        QVERIFY(fixture.fire(scanTimer));
    }

    void answersResultsThatComeAtOnce()
    {
        WorkerFixture fixture;
        fixture.backend->onCommand = [&](const QString&) {
            Q_EMIT fixture.backend->ScanResults({});
        };
        QCOMPARE(fixture.request(OrvaNetworkScanPath()), QString());
        QVERIFY(!fixture.timer(scanTimer)->isActive());
    }

    void publishesAndAnswersResults()
    {
        WorkerFixture fixture;
        Q_EMIT fixture.backend->ScanResults(networks(3));
        QCOMPARE(rowCount(fixture), 3);
        const auto reply = fixture.send(OrvaNetworkScanPath());
        fixture.settle();
        QCOMPARE(rowCount(fixture), 0);
        Q_EMIT fixture.backend->ScanResults(networks(5000) + networks(1));
        QCOMPARE(rowCount(fixture), 5000);
        QCOMPARE(OrvaValue(reply.value().toHash()).networkScanResults().size(), 5001);
    }
};

QTEST_GUILESS_MAIN(TestScan)
#include "tst_scan.moc"
