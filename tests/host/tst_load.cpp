// SPDX-License-Identifier: Apache-2.0
#include "bussieve.h"
#include "common/bustypes.h"
#include "hostprocess.h"
#include "privatebus.h"

#include "core/orvaplainvalue.h"

#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QtTest>

/// A client that is let in and asks for too much.
class LoadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_bus.start());
        m_host.start(testWorkerConfig());
        QTRY_VERIFY(isServed(QDBusConnection::systemBus()));
    }

    void init() { m_hostile = std::make_unique<QDBusConnection>(m_bus.connection("hostile"_s)); }

    void cleanup()
    {
        QDBusConnection::disconnectFromBus("hostile"_s);
        m_hostile.reset();
        const auto answer = QDBusConnection::systemBus().call(
            hostCall("GetValue", {"webserver/port"_s}), QDBus::Block, 10000);
        QCOMPARE(answer.type(), QDBusMessage::ReplyMessage);
    }

    void whatIsTooMuchIsRefused_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("served"); // of all, how many are
        QTest::newRow("5 times 30 MiB") << 5 << (30 << 20) << 0;
        QTest::newRow("5 MiB") << 1 << (5 << 20) << 0;
        QTest::newRow("20 times 1 MiB") << 20 << (1 << 20) - 100 << 7;
        QTest::newRow("2000 small ones") << 2000 << 10 << 1023;
    }

    /// They come while the host is busy, so that they would pile up.
    void whatIsTooMuchIsRefused()
    {
        QFETCH(int, count);
        QFETCH(int, size);
        const QVariantMap value{{"string"_s, QString(size, QLatin1Char('x'))}};
        m_hostile->asyncCall(hostCall("Invoke", {"test/block"_s, QVariantMap{{"i32"_s, 2000}}}));
        QVector<QDBusPendingCall> calls;
        for (int i = 0; i < count; ++i)
            calls << m_hostile->asyncCall(hostCall("Invoke", {"test/echo"_s, value}), 60000);
        int served = 0;
        for (QDBusPendingCall& call : calls) {
            call.waitForFinished();
            if (call.isError())
                QCOMPARE(call.error().name(), "org.freedesktop.DBus.Error.LimitsExceeded"_s);
            else
                ++served;
        }
        QTEST(served, "served");
    }

    void whatTheBorderDoesNotTakeIsRefusedAtOnce()
    {
        QVariantMap many;
        for (int i = 0; i < 100000; ++i)
            many.insert(QString::number(i), i);
        const auto answer = m_hostile->call(hostCall("Invoke", {"test/echo"_s, many}));
        QCOMPARE(answer.errorName(), "org.orva.Error.MalformedValue"_s);
        const auto descriptor = QVariant::fromValue(QDBusUnixFileDescriptor(0));
        QCOMPARE(m_hostile->call(hostCall("GetValue", {descriptor})).errorName(),
                 "org.freedesktop.DBus.Error.LimitsExceeded"_s);
    }

    void whatTheBusWouldNotTakeIsNeverSent_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("value");
        QTest::newRow("within") << 1000000 << QString() << QString();
        QTest::newRow("value too large") << (1 << 20) << QString() << "org.orva.Error.TooLarge"_s;
        QTest::newRow("all too large") << (130 << 20) << "org.orva.Error.TooLarge"_s
                                       << "org.orva.Error.TooLarge"_s;
    }

    void whatTheBusWouldNotTakeIsNeverSent()
    {
        QFETCH(int, size);
        const auto grown =
            m_hostile->call(hostCall("Invoke", {"test/grow"_s, QVariantMap{{"i32"_s, size}}}));
        QTEST(grown.errorName(), "result");
        QTEST(m_hostile->call(hostCall("GetValue", {"test/large"_s})).errorName(), "value");
    }

    void theSieveKeepsBackWhatIsTooMuch()
    {
        const auto ping = [](const QDBusConnection& receiver) {
            return QDBusMessage::createMethodCall(receiver.baseService(), "/"_s,
                                                  "org.freedesktop.DBus.Peer"_s, "Ping"_s);
        };
        int heard = 0;
        BusLimits limits;
        limits.message = 10000;
        BusSieve* sieve = sieved("sieved"_s, limits);
        connect(sieve, &BusSieve::heard, this, [&heard] { ++heard; });
        say(QString(10000, QLatin1Char('x')));
        say("first"_s);
        QTRY_COMPARE(m_said, QStringList("first"_s));
        QTRY_COMPARE(heard, 1);
        // A ping is not heard, nor answered where the bus takes no answers.
        sieve->listen();
        QCOMPARE(m_hostile->call(ping(m_bus.connection("sieved"_s))).errorName(), QString());
        sieve->listen();
        limits.unsent = -1;
        sieved("full"_s, limits);
        const auto unanswered = m_hostile->asyncCall(ping(m_bus.connection("full"_s)));
        say("last"_s);
        QTRY_COMPARE(m_said, QStringList({"first"_s, "last"_s, "last"_s}));
        QTRY_COMPARE(heard, 2);
        (void)m_hostile->interface()->isServiceRegistered("org.orva.Host1"_s);
        QVERIFY(!unanswered.isFinished());
        QDBusConnection::disconnectFromBus("sieved"_s);
        QDBusConnection::disconnectFromBus("full"_s);
    }

    void theLedgerIsFairWhenAllIsTaken()
    {
        BusLimits limits;
        limits.caller = 40000;
        limits.all = 100000;
        limits.share = 5000;
        BusLedger ledger(limits);
        for (int i = 0; i < 9; ++i)
            QVERIFY(ledger.enter(QByteArray::number(i / 3), 10000));
        QVERIFY(!ledger.enter("late", 10000));
        QVERIFY(ledger.enter("late", 3000));
        QVERIFY(!ledger.enter("0", 3000));
        for (int i = 0; i < 9; ++i)
            ledger.leave(QByteArray::number(i / 3), 10000);
        QCOMPARE(ledger.callers(), 1);
        QVERIFY(ledger.enter("0", 30000));
        QVERIFY(!ledger.enter("0", 30000));
        QVERIFY(ledger.enter("0", 3000));
        ledger.leave("0", 30000);
        QVERIFY(ledger.enter("0", 30000));
    }

    void aSecondEndSignalEndsABusyHostAtOnce()
    {
        HostProcess host;
        m_host.terminate();
        QCOMPARE(m_host.ended(), 0);
        host.start(testWorkerConfig());
        QTRY_VERIFY(isServed(*m_hostile));
        m_hostile->asyncCall(hostCall("Invoke", {"test/block"_s, QVariantMap{{"i32"_s, 8000}}}));
        QTest::qWait(200);
        host.terminate();
        QVERIFY(!host.waitForFinished(300)); // It is busy yet.
        host.terminate();
        QVERIFY(host.waitForFinished(4000));
        QCOMPARE(host.exitStatus(), QProcess::CrashExit);
        m_host.start(testWorkerConfig());
        QTRY_VERIFY(isServed(*m_hostile));
    }

    void aDeafHostEnds()
    {
        m_host.kill();
        QCOMPARE(m_host.ended(), -1);
        HostProcess host;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("WATCHDOG_USEC"_s, "2000000"_s);
        host.setProcessEnvironment(environment);
        host.start(testWorkerConfig());
        QTRY_VERIFY(isServed(*m_hostile));
        QTest::qWait(2500); // It lives as long as it hears.
        QCOMPARE(host.state(), QProcess::Running);
        m_hostile->asyncCall(hostCall("Invoke", {"test/deaf"_s, QVariantMap()}));
        QCOMPARE(host.ended(), 1);
        QVERIFY(host.readAll().contains("hears nothing from the bus"));
        m_host.start("{}");
        QTRY_VERIFY(isServed(*m_hostile));
    }

    void on_said(const QString& text) { m_said << text; }

private:
    /// A connection behind a sieve that notes what it is told.
    BusSieve* sieved(const QString& label, const BusLimits& limits)
    {
        QDBusConnection connection = m_bus.connection(label);
        connection.connect(QString(), "/"_s, "org.orva.Test"_s, "Said"_s, this,
                           SLOT(on_said(QString)));
        return BusSieve::install(connection, limits);
    }
    void say(const QString& text)
    {
        auto signal = QDBusMessage::createSignal("/"_s, "org.orva.Test"_s, "Said"_s);
        signal.setArguments({text});
        m_hostile->send(signal);
    }

    QStringList m_said;
    PrivateBus m_bus;
    HostProcess m_host;
    std::unique_ptr<QDBusConnection> m_hostile;
};

QTEST_GUILESS_MAIN(LoadTest)
#include "tst_load.moc"
