#include "lifecyclemodel.h"

/// Random sequences. `ORVA_SEED` plays one seed alone, the one that a report names.
class TestRandomSequences : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everySequenceKeepsThePictureTrue_data() { addSeeds(20); }
    void everySequenceKeepsThePictureTrue()
    {
        QFETCH(quint32, seed);
        Driver driver(seed);
        driver.add(std::make_unique<LifecycleModel>(driver));
        const QString wrong = driver.run(500);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
    }
};

QTEST_GUILESS_MAIN(TestRandomSequences)
#include "tst_random.moc"
