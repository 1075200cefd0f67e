// SPDX-License-Identifier: Apache-2.0
#include "buscallers.h"
#include "common/bustypes.h"
#include "hostprocess.h"
#include "privatebus.h"
#include "tables.h"

#include "core/orvaplainvalue.h"

#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QtTest>

#include <unistd.h>

namespace {

QVariantMap json(const QByteArray& text)
{
    return OrvaPlain::toBus(OrvaPlain::fromJson(text).value_or(QVariant()).toHash());
}

QVariantMap nested(int levels)
{
    QVariantMap map{{"bool"_s, true}};
    for (int i = 1; i < levels; ++i)
        map = {{"a"_s, map}};
    return map;
}

} // namespace

class ControlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_bus.start());
        m_host.start(testWorkerConfig());
        QTRY_VERIFY(isServed(QDBusConnection::systemBus()));
        registerBusTypes();
    }

    void cleanup()
    {
        // The host goes on after any deed of a client.
        QCOMPARE(value("webserver/port"), json(R"({"i32": 80})"));
    }

    void badInputIsRefusedAndChangesNothing_data()
    {
        addTableColumns();
        addTableRows(QFINDTESTDATA("refused.txt"));
        const QString longName(300, QLatin1Char('x'));
        QTest::newRow("an error's long name")
            << QString()
            << QStringList{"Invoke"_s, "test/fail"_s, R"({"string":"%1"})"_s.arg(longName),
                           longName.left(128)};
    }

    void badInputIsRefusedAndChangesNothing()
    {
        QFETCH(QStringList, cells);
        const QString method = cells.at(0);
        const QString path = cells.at(1);
        const QVariantMap value = cells.at(2) == "deep"_s ? nested(13) : json(cells.at(2).toUtf8());
        const bool takesValue = !method.startsWith("Get"_s);
        const QDBusMessage before = call("GetValue", {path});
        const QVariantList arguments = takesValue ? QVariantList{path, value} : QVariantList{path};
        QCOMPARE(call(method.toLatin1().constData(), arguments).errorName(),
                 "org.orva.Error."_s + cells.at(3));
        const QDBusMessage after = call("GetValue", {path});
        QCOMPARE(after.errorName(), before.errorName());
        QCOMPARE(plain(after), plain(before));
    }

    void whatSuitsComesBackAsItWas()
    {
        const auto sent = json(
            R"({"networkProfile": {"wirelessNetworks": [], "wireless": {"ssid": ""}, "new": 1}})");
        QCOMPARE(plain(call("Invoke", {"test/echo"_s, sent})), sent);
        QCOMPARE(plain(call("Invoke", {"test/echo"_s, nested(12)})), nested(12));
    }

    void eachNodeTellsItsType()
    {
        const QMap<QString, QString> expected = {
            {"interfaces/wired"_s, "string"_s},
            {"settings/network/airplane-mode-type"_s, "airplaneModeType"_s},
            {"power/module/register"_s, ""_s},
            {"power/modules"_s, ""_s},
            {"test/unset"_s, ""_s},
            {"test/typed"_s, "networkState"_s},
            {"test/echo"_s, ""_s},
            {"test/takes"_s, "bool|string"_s}};
        QMap<QString, QString> types;
        const QDBusPendingReply<OrvaBusNodes> reply = call("ListNodes", {});
        for (const auto& node : reply.value())
            if (expected.contains(node.path))
                types.insert(node.path, node.type);
        QCOMPARE(types, expected);
    }

    void aChangeOfRowsIsTold()
    {
        const auto add = json(R"({"moduleName": "m"})");
        const auto changed = [this] { return m_rows.contains("power/modules"_s); };
        QVERIFY(QDBusConnection::systemBus().connect("org.orva.Host1"_s, "/org/orva/Host1"_s,
                                                     "org.orva.Host1"_s, "RowsChanged"_s, this,
                                                     SLOT(on_rowsChanged(QString))));
        QCOMPARE(call("Invoke", {"power/module/register"_s, add}).errorName(), QString());
        QTRY_VERIFY(changed());
    }

    void aCallerIsTrustedAsLongAsTheBusKnowsIt()
    {
        BusCallers callers(QDBusConnection::systemBus());
        const auto trusted = [&callers](const QString& caller) {
            std::optional<bool> answer;
            callers.askTrusted(caller, [&answer](bool is) { answer = is; });
            [&answer] { QTRY_VERIFY(answer); }();
            return answer.value_or(true);
        };
        const QString caller = m_bus.connection("caller"_s).baseService();
        QVERIFY(trusted(caller));
        QVERIFY(!trusted(":1.999999"_s));
        if (::geteuid() == 0) {
            const QString folder = QFileInfo(m_bus.address().section("="_s, 1)).path();
            QVERIFY(QFile::setPermissions(folder, QFile::Permissions(0x7755)));
            QVERIFY(::seteuid(65534) == 0);
            const QString own = m_bus.connection("own"_s).baseService();
            const bool isTrusted = trusted(own);
            QVERIFY(::seteuid(0) == 0 && isTrusted);
        }
        QDBusConnection::disconnectFromBus("caller"_s);
        QTRY_VERIFY(!trusted(caller));
    }

    void aCallerOfWhomTheBusTellsNothingHasNotGone()
    {
        PrivateBus other;
        QVERIFY(other.start());
        const QDBusConnection connection = other.connection("other"_s);
        other.stop();
        QVERIFY(qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toLocal8Bit()));
        BusCallers callers(connection);
        bool gone = false;
        std::optional<bool> trusted;
        callers.whenGone(connection.baseService(), this, [&gone] { gone = true; });
        callers.askTrusted(connection.baseService(), [&trusted](bool is) { trusted = is; });
        QTRY_COMPARE(trusted, std::optional(false));
        QVERIFY(!gone);
    }

    void aThousandRequestsAtOnceAreAllAnswered()
    {
        QVector<QDBusPendingCall> calls;
        for (int i = 0; i < 1000; ++i)
            calls << QDBusConnection::systemBus().asyncCall(
                hostCall("Invoke", {"test/echo"_s, QVariantMap{{"i32"_s, i}}}));
        for (int i = 0; i < calls.size(); ++i) {
            calls[i].waitForFinished();
            QCOMPARE(plain(calls.at(i).reply()).value("i32"_s), QVariant(i));
        }
    }

    void nobodyWaitsForAllThatAnotherSends()
    {
        const QDBusConnection flooder = m_bus.connection("flooder"_s);
        QVector<QDBusPendingCall> calls;
        for (int i = 0; i < 50; ++i)
            calls << flooder.asyncCall(
                hostCall("Invoke", {"test/block"_s, QVariantMap{{"i32"_s, 20}}}));
        calls << flooder.asyncCall(hostCall("GetValue", {"webserver/port"_s}));
        calls.first().waitForFinished();
        QCOMPARE(value("webserver/port"), json(R"({"i32": 80})"));
        QVERIFY(!calls.at(25).isFinished());
        // The order of one caller stays.
        calls.last().waitForFinished();
        QVERIFY(calls.at(49).isFinished());
    }

    void aClientThatLeavesWithRequestsOpenDoesNoHarm()
    {
        const QDBusConnection leaving = m_bus.connection("leaving"_s);
        for (int i = 0; i < 100; ++i)
            leaving.asyncCall(hostCall("Invoke", {"test/echo"_s, QVariantMap()}));
        QDBusConnection::disconnectFromBus("leaving"_s);
    }

    void on_rowsChanged(const QString& path) { m_rows << path; }

private:
    static QDBusMessage call(const char* method, const QVariantList& arguments)
    {
        return QDBusConnection::systemBus().call(hostCall(method, arguments));
    }
    static QVariantMap plain(const QDBusMessage& reply)
    {
        const auto arguments = reply.arguments();
        if (reply.type() != QDBusMessage::ReplyMessage || arguments.isEmpty())
            return {};
        return OrvaPlain::toBus(OrvaPlain::fromForeign(arguments.first())->toHash());
    }
    static QVariantMap value(const char* path)
    {
        return plain(call("GetValue", {QLatin1String(path)}));
    }

    PrivateBus m_bus;
    HostProcess m_host;
    QStringList m_rows;
};

QTEST_GUILESS_MAIN(ControlTest)
#include "tst_control.moc"
