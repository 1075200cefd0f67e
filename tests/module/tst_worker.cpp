// SPDX-License-Identifier: Apache-2.0
#include "network/networkpaths.h"
#include "player.h"
#include "tables.h"
#include "wps/wpspin.h"

class TestWorker : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void playsTables_data()
    {
        addTableColumns();
        for (const char* table : {"lifecycle", "radio", "softap"})
            addTableRows(QFINDTESTDATA("tables/%1.txt"_s.arg(QLatin1String(table))));
    }
    void playsTables()
    {
        QFETCH(QString, section);
        QFETCH(QStringList, cells);
        cells = Player::row(section, cells);
        const QString wrong = Player(cells.first().split("; "_s)).playRow(cells);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
    }

    void generatesValidPins()
    {
        WorkerFixture fixture;
        const auto reply = fixture.send(OrvaNetworkGenerateWpsPinPath());
        HeldClock::settle();
        const QString pin = OrvaValue(reply.value().toHash()).string_();
        QVERIFY(isWpsPin(pin));
        QCOMPARE(pin, wpsPin(pin.toUInt() / 10));
    }

    void switchesAlsoWhereRfkillFails_data()
    {
        QTest::addColumn<QByteArray>("rfkill");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("exits with 1") << QByteArray("exit 1");
        QTest::newRow("hangs") << QByteArray("exec /bin/sleep 60");
    }
    void switchesAlsoWhereRfkillFails()
    {
        QFETCH(QByteArray, rfkill);
        WorkerFixture fixture;
        const QTemporaryDir directory;
        QFile program(directory.filePath("rfkill"_s));
        if (!rfkill.isEmpty()) {
            QVERIFY(program.open(QIODevice::WriteOnly));
            program.write("#!/bin/sh\n" + rfkill);
            program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
            program.close();
        }
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", directory.path().toLocal8Bit());
        const qint64 before = HeldClock::now();
        HeldClock::hurry(qstrcmp(QTest::currentDataTag(), "hangs") == 0);
        fixture.root.setValue(OrvaNetworkAirplaneModePath(), OrvaValue::of(true), {});
        HeldClock::settle();
        HeldClock::hurry(false);
        qputenv("PATH", path);
        QVERIFY(HeldClock::now() - before < 7000);
        QVERIFY(fixture.info().airplaneMode());
        QVERIFY(fixture.value(OrvaNetworkAirplaneModeSettingPath()).bool_());
    }
};

ORVA_HELD_TEST_MAIN(TestWorker)
#include "tst_worker.moc"
