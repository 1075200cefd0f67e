#include "hostprocess.h"
#include "privatebus.h"

#include <QDBusConnectionInterface>
#include <QtTest>

class StartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.start()); }

    void aHostThatCannotDoItsWorkSaysWhy_data()
    {
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<QByteArray>("said");
        const auto library = [](const QByteArray& file, const QByteArray& more = "") {
            return QByteArray("{\"workers\": [{\"library\": \"" + file + "\"" + more + "}]}");
        };
        QTest::newRow("no such library") << library("/nowhere.so") << QByteArray("/nowhere.so");
        QTest::newRow("not a library") << library("/etc/passwd") << QByteArray("/etc/passwd");
        QTest::newRow("no factory") << library(ORVA_NO_WORKER) << QByteArray("worker_create");
        QTest::newRow("makes nothing") << library(ORVA_TEST_WORKER, R"(, "config": {"none": true})")
                                       << QByteArray("made no worker");
        QTest::newRow("a bare name") << library("libc.so.6") << QByteArray("not an absolute path");
        QTest::newRow("not JSON") << QByteArray("workers: none")
                                  << QByteArray("Couldn't use the configuration");
        QTest::newRow("a list") << QByteArray("[]") << QByteArray("not an object");
        QTest::newRow("wrong type")
            << QByteArray(R"({"webserver": {"port": "80"}})") << QByteArray("\"webserver\"");
        QTest::newRow("wrong setting")
            << QByteArray(R"({"settings": {"settings/network/airplane-mode": {"i32": 1}}})")
            << QByteArray("settings/network/airplane-mode");
    }

    void aHostThatCannotDoItsWorkSaysWhy()
    {
        QFETCH(QByteArray, config);
        QFETCH(QByteArray, said);
        HostProcess host;
        host.start(config);
        QCOMPARE(host.ended(), 1);
        const QByteArray log = host.readAll();
        QVERIFY2(log.contains(" ERROR ") && log.contains(said), log.constData());
    }

    void aHostEndsWhenAsked()
    {
        HostProcess host;
        host.start(
            "// a comment\n{\"workers\": [{\"library\": \"/nowhere.so\", \"required\": false}]}");
        QTRY_VERIFY(isRunning());
        host.terminate();
        QCOMPARE(host.ended(), 0);
    }

    void aSecondHostEnds()
    {
        HostProcess first;
        first.start("{}");
        QTRY_VERIFY(isRunning());
        HostProcess second;
        second.start("{}");
        QCOMPARE(second.ended(), 1);
        QVERIFY(second.readAll().contains("another host has the name"));
        QVERIFY(isRunning());
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

private:
    [[nodiscard]] bool isRunning() const
    {
        const auto connection = m_bus.connection(QStringLiteral("test"));
        return connection.interface()->isServiceRegistered(QStringLiteral("org.orva.Host1"));
    }

    PrivateBus m_bus;
};

QTEST_GUILESS_MAIN(StartTest)
#include "tst_start.moc"
