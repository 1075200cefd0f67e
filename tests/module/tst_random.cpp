// SPDX-License-Identifier: Apache-2.0
#include "lifecyclemodel.h"
#include "softapmodel.h"

/// Random sequences. `ORVA_SEED` plays one seed alone, the one that a report names.
class TestRandomSequences : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theLifeCycle_data() { addSeeds(20); }
    void theLifeCycle()
    {
        QFETCH(quint32, seed);
        Driver driver(seed, QString());
        driver.add<LifecycleModel>();
        const QString wrong = driver.run(500);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
    }

    void theSoftAps_data() { addSeeds(10); }
    void theSoftAps()
    {
        QFETCH(quint32, seed);
        Driver driver(seed, SoftApModel::given());
        driver.add<SoftApModel>();
        const QString wrong = driver.run(500);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
    }

private:
    /// The rows from 1 to `count`, or that which `ORVA_SEED` names alone.
    static void addSeeds(quint32 count)
    {
        QTest::addColumn<quint32>("seed");
        const quint32 only = qEnvironmentVariableIntValue("ORVA_SEED");
        for (quint32 seed = 1; seed <= count; ++seed)
            if (only == 0 || only == seed)
                QTest::addRow("seed %u", seed) << seed;
    }
};

ORVA_HELD_TEST_MAIN(TestRandomSequences)
#include "tst_random.moc"
