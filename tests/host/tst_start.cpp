// SPDX-License-Identifier: Apache-2.0
#include "hostprocess.h"
#include "privatebus.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <sysexits.h>

class StartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.start()); }

    void aHostThatCannotDoItsWorkSaysWhy_data()
    {
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<int>("status");
        // A worker may be there the next time; a configuration would be refused again.
        const auto row = [](const char* said, const QByteArray& config, int status = 1) {
            QTest::newRow(said) << config << status;
        };
        const auto library = [](const QByteArray& file, const QByteArray& more = "") {
            return QByteArray("{\"workers\": [{\"library\": \"" + file + "\"" + more + "}]}");
        };
        row("/nowhere.so", library("/nowhere.so"));
        row("worker_create", library(ORVA_NO_WORKER));
        row("others than root", library(copiedLibrary(QFile::Permissions(0x6666))));
        const QByteArray copy = copiedLibrary(QFile::Permissions(0x6644));
        if (::chown(copy, 12345, 12345) == 0)
            row("others than root and", library(copy));
        row("made no worker", library(ORVA_TEST_WORKER, R"(, "config": {"none": true})"));
        row("it is built with Qt", library(ORVA_OTHER_WORKER));
        row("it is built for version 0.1 of", library(ORVA_OLD_WORKER));
        row("not an absolute path", library("libc.so.6"));
        row(": illegal value, in line 2", "{\n\"workers\": none}", EX_CONFIG);
        row("not an object", "[]", EX_CONFIG);
        row("\"webserver\" is not what it should be, see host.json(5)",
            R"({"webserver": {"port": "80"}})", EX_CONFIG);
        row("network/airplane-mode\" takes a \"bool\"",
            R"({"settings": {"settings/network/airplane-mode": {"i32": 1}}})", EX_CONFIG);
    }

    void aHostThatCannotDoItsWorkSaysWhy()
    {
        QFETCH(QByteArray, config);
        QFETCH(int, status);
        HostProcess host;
        host.start(config);
        QCOMPARE(host.ended(), status);
        const QByteArray log = host.readAll();
        QVERIFY2(log.contains(" ERROR ") && log.contains(QTest::currentDataTag()), log.constData());
    }

    void theJournalGetsThePriorityAndNoTime_data()
    {
        QTest::addColumn<bool>("isJournal");
        QTest::addColumn<QString>("begin");
        QTest::newRow("journal") << true << "^<3>Host: There is no"_s;
        QTest::newRow("elsewhere") << false << "^[-0-9]+ [:.0-9]+ ERROR Host: There is no"_s;
    }

    void theJournalGetsThePriorityAndNoTime()
    {
        QFETCH(bool, isJournal);
        QFETCH(QString, begin);
        QTemporaryFile log;
        struct stat stream = {};
        QVERIFY(log.open() && ::fstat(log.handle(), &stream) == 0);
        const auto inode = stream.st_ino + (isJournal ? 0 : 1);
        qputenv("JOURNAL_STREAM", "%1:%2"_s.arg(stream.st_dev).arg(inode).toLatin1());
        QProcess host;
        host.setStandardErrorFile(log.fileName());
        host.start(QStringLiteral(ORVA_HOST), {"--log-level"_s, "loud"_s});
        QVERIFY(host.waitForFinished());
        qunsetenv("JOURNAL_STREAM");
        const QString line = QString::fromUtf8(log.readAll());
        QVERIFY2(line.contains(QRegularExpression(begin)), qPrintable(line));
    }

    void aSecondHostEndsAtOnceAndTheFirstWhenAsked()
    {
        HostProcess first;
        first.start(
            "// a comment\n{\"workers\": [{\"library\": \"/nowhere.so\", \"required\": false}]}");
        QTRY_VERIFY(isRunning());
        // The files that it or a program of its makes are nobody else's.
        QFile status("/proc/%1/status"_s.arg(first.processId()));
        QVERIFY(status.open(QIODevice::ReadOnly) && status.readAll().contains("Umask:\t0077"));
        HostProcess second;
        second.start("{}");
        QCOMPARE(second.ended(), 1);
        QVERIFY(second.readAll().contains("another host has the name"));
        QVERIFY(isRunning());
        first.terminate();
        QCOMPARE(first.ended(), 0);
    }

    void whatTheNodesHoldFirstIsNotAnnounced()
    {
        QDBusConnection bus = m_bus.connection("ear"_s);
        QVERIFY(bus.connect(QString(), "/org/orva/Host1"_s, "org.orva.Host1"_s, "ValueChanged"_s,
                            this, SLOT(on_valueChanged(QString))));
        HostProcess host;
        host.start("{}");
        QTRY_VERIFY(isRunning());
        const QString changed = "settings/network/airplane-mode"_s;
        bus.call(hostCall("SetValue", {changed, QVariantMap{{"bool"_s, true}}}));
        QTRY_VERIFY(!m_announced.isEmpty());
        QCOMPARE(m_announced, QStringList{changed});
        host.terminate();
        QCOMPARE(host.ended(), 0);
    }

    void withoutABusThereIsNoHost()
    {
        HostProcess host;
        host.start("{}");
        QTRY_VERIFY(isRunning());
        m_bus.stop();
        QCOMPARE(host.ended(), 1);
        QVERIFY(host.readAll().contains("The system bus has gone"));
        HostProcess next;
        next.start("{}");
        QCOMPARE(next.ended(), 1);
        QVERIFY(next.readAll().contains("there is no bus"));
    }

    void on_valueChanged(const QString& path) { m_announced << path; }

private:
    QByteArray copiedLibrary(QFile::Permissions permissions)
    {
        const QString copy = m_directory.filePath("%1.so"_s.arg(permissions));
        if (!QFile::copy(QStringLiteral(ORVA_TEST_WORKER), copy) ||
            !QFile::setPermissions(copy, permissions))
            qFatal("no copy");
        return copy.toLocal8Bit();
    }
    [[nodiscard]] bool isRunning() const { return isServed(m_bus.connection("test"_s)); }

    PrivateBus m_bus;
    QTemporaryDir m_directory;
    QStringList m_announced;
};

QTEST_GUILESS_MAIN(StartTest)
#include "tst_start.moc"
