#include "buscallers.h"
#include "common/bustypes.h"
#include "hostprocess.h"
#include "privatebus.h"

#include "core/orvaplainvalue.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QtTest>

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
        m_host.start(R"({"workers": [{"library": ")" ORVA_TEST_WORKER R"("}]})");
        const auto connection = QDBusConnection::systemBus();
        QTRY_VERIFY(connection.interface()->isServiceRegistered("org.orva.Host1"_s));
        registerBusTypes();
    }

    void cleanup()
    {
        // Whatever a client did, the host goes on.
        QCOMPARE(value("webserver/port"), json(R"({"i32": 80})"));
    }

    void badInputIsRefusedAndChangesNothing_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QVariantMap>("value");
        QTest::addColumn<QString>("refusal");
        // clang-format off
        const char* const rows[][4] = {
            {"GetValue", "", "", "UnknownPath"},
            {"GetValue", "network/../settings", "", "UnknownPath"},
            {"GetValue", "test/echo", "", "WrongKind"},
            {"GetRows", "interfaces/wired", "", "WrongKind"},
            {"SetValue", "test/echo", R"({"bool": true})", "WrongKind"},
            {"Invoke", "interfaces/wired", R"({"bool": true})", "WrongKind"},
            {"SetValue", "interfaces/wired", R"({"string": "x"})", "ReadOnly"},
            {"SetValue", "settings/network/airplane-mode", R"({"i32": 1})", "MalformedValue"},
            {"SetValue", "settings/network/airplane-mode", "{}", "MalformedValue"},
            {"SetValue", "settings/network/airplane-mode", R"({"bool": true, "i32": 1})", "MalformedValue"},
            {"SetValue", "test/unset", R"({"shoe": 42})", "MalformedValue"},
            {"SetValue", "settings/network/airplane-mode-type", R"({"airplaneModeType": 77})", "MalformedValue"},
            {"SetValue", "settings/network/current-profile", R"({"networkProfile": {"wireless": {"ssid": 5}}})", "MalformedValue"},
            {"Invoke", "test/echo", R"({"networkProfile": {"wirelessNetworks": [{"dhcp": "yes"}]}})", "MalformedValue"},
            {"Invoke", "power/resource/request", R"({"moduleName": "m", "resource": "5"})", "MalformedValue"},
            {"Invoke", "test/takes", R"({"i32": 1})", "MalformedValue"},
            {"SetValue", "test/typed", R"({"bool": true})", "MalformedValue"},
            {"Invoke", "test/fail", "{}", "_7_odd_words_"},
            {"Invoke", "test/drop", "{}", "Dropped"}};
        // clang-format on
        for (const auto& [method, path, value, refusal] : rows)
            QTest::addRow("%s %s %s", method, path, value)
                << QString::fromLatin1(method) << QString::fromLatin1(path) << json(value)
                << QString::fromLatin1(refusal);
        const QString longName(300, QLatin1Char('x'));
        QTest::newRow("an error's long name")
            << "Invoke"_s
            << "test/fail"_s << QVariantMap{{"string"_s, longName}} << longName.left(128);
        QTest::newRow("too deep") << "Invoke"_s
                                  << "test/echo"_s << nested(13) << "MalformedValue"_s;
    }

    void badInputIsRefusedAndChangesNothing()
    {
        QFETCH(QString, method);
        QFETCH(QString, path);
        QFETCH(QVariantMap, value);
        QFETCH(QString, refusal);
        const bool takesValue = !method.startsWith("Get"_s);
        const QDBusMessage before = call("GetValue", {path});
        const QVariantList arguments = takesValue ? QVariantList{path, value} : QVariantList{path};
        QCOMPARE(call(method.toLatin1().constData(), arguments).errorName(),
                 "org.orva.Error."_s + refusal);
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

    void eachNodeTellsItsType_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("type");
        const char* const rows[][2] = {{"interfaces/wired", "string"},
                                       {"settings/network/airplane-mode-type", "airplaneModeType"},
                                       {"power/module/register", ""},
                                       {"power/modules", ""},
                                       {"test/unset", ""},
                                       {"test/typed", "networkState"},
                                       {"test/echo", ""},
                                       {"test/takes", "bool|string"}};
        for (const auto& [path, type] : rows)
            QTest::newRow(path) << QString::fromLatin1(path) << QString::fromLatin1(type);
    }

    void eachNodeTellsItsType()
    {
        QFETCH(QString, path);
        const QDBusPendingReply<OrvaBusNodes> reply = call("ListNodes", {});
        QCOMPARE(reply.error().message(), QString());
        const auto nodes = reply.value();
        const auto node = std::find_if(nodes.begin(), nodes.end(),
                                       [&path](const auto& known) { return known.path == path; });
        QVERIFY(node != nodes.end());
        QTEST(node->type, "type");
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
        QDBusConnection::disconnectFromBus("caller"_s);
        QTRY_VERIFY(!trusted(caller));
    }

    void aThousandRequestsAtOnceAreAllAnswered()
    {
        QVector<QDBusPendingCall> calls;
        for (int i = 0; i < 1000; ++i)
            calls << QDBusConnection::systemBus().asyncCall(
                message("Invoke", {"test/echo"_s, QVariantMap{{"i32"_s, i}}}));
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
                message("Invoke", {"test/block"_s, QVariantMap{{"i32"_s, 20}}}));
        calls << flooder.asyncCall(message("GetValue", {"webserver/port"_s}));
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
            leaving.asyncCall(message("Invoke", {"test/echo"_s, QVariantMap()}));
        QDBusConnection::disconnectFromBus("leaving"_s);
    }

    void on_rowsChanged(const QString& path) { m_rows << path; }

private:
    static QDBusMessage message(const char* method, const QVariantList& arguments)
    {
        auto message = QDBusMessage::createMethodCall("org.orva.Host1"_s, "/org/orva/Host1"_s,
                                                      "org.orva.Host1"_s, QLatin1String(method));
        message.setArguments(arguments);
        return message;
    }
    static QDBusMessage call(const char* method, const QVariantList& arguments)
    {
        return QDBusConnection::systemBus().call(message(method, arguments));
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
