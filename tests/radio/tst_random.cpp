#include "scanmodel.h"
#include "softapmodel.h"
#include "wpsmodel.h"

/// Random sequences of scans, WPS sessions and soft-AP requests. `ORVA_SEED` plays one seed alone,
/// the one that a report names.
class TestRandomRadio : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void agreesWithTheModels_data() { addSeeds(10); }
    void agreesWithTheModels()
    {
        QFETCH(quint32, seed);
        Driver driver(seed, SoftApModel::nodeValues());
        // Each third seed crosses one of the moments at which the clock of the deadlines wraps.
        const qint64 wraps[] = {Q_INT64_C(100001), (Q_INT64_C(1) << 31) - 20007,
                                (Q_INT64_C(1) << 32) - 20005};
        RadioWorld world(driver, wraps[seed % 3]);
        driver.add(std::make_unique<SoftApModel>(world));
        driver.add(std::make_unique<ScanModel>(world));
        driver.add(std::make_unique<WpsModel>(world));
        const QString wrong = driver.run(500);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
    }
};

QTEST_GUILESS_MAIN(TestRandomRadio)
#include "tst_random.moc"
