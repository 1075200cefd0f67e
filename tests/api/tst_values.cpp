// SPDX-License-Identifier: Apache-2.0
#include "values.h"

#include "core/dbglog.h"
#include "core/model/cmerror.h"
#include "core/orvaroles.h"
#include "core/orvawords.h"
#include "network/networknodes.h"
#include "network/networkrecords.h"
#include "network/networkrules.h"
#include "power/powerrecords.h"

#include <QDBusVariant>
#include <QtTest>

#include <sstream>

Q_DECLARE_METATYPE(OrvaField)

namespace {

template <class Record>
void addRecord(const char* name, const char* fields)
{
    QTest::newRow(name) << OrvaFieldTable<Record>::fields() << QString::fromLatin1(fields);
}

/// A value that suits a field of the kind, and one that does not.
QPair<QVariant, QVariant> samplesOf(const QString& kind)
{
    static const QHash<QString, QPair<QVariant, QVariant>> samples = {
        {"text"_s, {QString(), 5}},
        {"int"_s, {-1, Q_INT64_C(3000000000)}},
        {"long"_s, {Q_INT64_C(3000000000), 1.5}},
        {"number"_s, {-1.5, "1"_s}},
        {"flag"_s, {false, 0}},
        {"enum"_s, {0, 99}},
        {"record"_s, {QVariantHash(), QVariantList()}},
        {"records"_s, {QVariantList{QVariantHash()}, QVariantList{1}}},
        {"texts"_s, {QVariantList{QString()}, QVariantList{1}}}};
    return samples.value(kind);
}

QVariant nested(int levels)
{
    QVariant list = QVariantList();
    for (int i = 1; i < levels; ++i)
        list = QVariantList{list};
    return list;
}

} // namespace

class ValuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRecordHasItsFields_data()
    {
        QTest::addColumn<QVector<OrvaField>>("fields");
        QTest::addColumn<QString>("expected");
        // clang-format off
        addRecord<OrvaNetworkProfile>("profile", "type enum, wired record, wireless record, wirelessNetworks records, softApSettings records");
        addRecord<OrvaNetworkInterface>("interface", "ssid text, bssid text, key text, encryption enum, dhcp flag, ip text, netmask text, gateway text, dns texts, connected flag, frequency int, signalLevel int");
        addRecord<OrvaNetworkInfo>("info", "state enum, wired record, wireless record, wirelessNetworks records, softAp record, gateways records, dns records, airplaneMode flag");
        addRecord<OrvaNetworkWiredInterface>("wired", "name text, state enum, cableConnected flag, mac text, addresses records, connectingStatus enum");
        addRecord<OrvaNetworkWirelessInterface>("wireless", "name text, state enum, mac text, ssid text, bssid text, encryption enum, frequency int, channel int, signalLevel int, addresses records, connectingStatus enum, credentialsSuspect flag, wps record");
        addRecord<OrvaNetworkSoftApInterface>("soft AP interface", "name text, state enum, aps records");
        addRecord<OrvaNetworkSoftAp>("soft AP", "name text, bssid text, addresses records");
        addRecord<OrvaNetworkAddress>("address", "ip text, prefix int, protocol enum, scope enum, dhcp flag");
        addRecord<OrvaNetworkScanResult>("scan result", "ssid text, bssid text, channel int, frequency int, signal int, snr int, encryption enum, ies text, wpa3 flag, unsupported text");
        addRecord<OrvaNetworkProfileSoftApSettings>("soft AP settings", "ssid text, passphrase text, bssid text, channel int, countryCode text, apInterface text, apAddress text, apNetmask text, dhcpRangeFrom text, dhcpRangeTo text, domainName text, vendorSpecificData text");
        addRecord<OrvaNetworkProfileSoftApRequest>("soft AP request", "name text, settings record, timeout int, holdSoftAp flag, bound flag");
        addRecord<OrvaNetworkSoftApRequestStatus>("soft AP request status", "name text, interface text, settings record, applied record, hold flag, bound flag, expiresAtMs long, running flag");
        addRecord<OrvaNetworkProfileTrial>("trial", "profile record, confirmWithinMs int");
        addRecord<OrvaNetworkPendingProfile>("pending", "before record, untilMs long");
        addRecord<OrvaNetworkLastJoin>("last join", "ssid text, result enum, reason enum, whenMs long");
        addRecord<OrvaNetworkWps>("WPS", "status enum, type enum, lastError text");
        addRecord<OrvaNetworkWifiRestartCriteria>("restart criteria", "checkIntervalMs int, maxTxIncreaseNoRxIncreaseThreshold int, restartActivatePath text");
        addRecord<OrvaPowerManagerModuleRegister>("power module", "moduleName text");
        addRecord<OrvaPowerManagerResourceRequest>("power resource", "moduleName text, resource enum, action enum");
        addRecord<OrvaPowerManagerTarget>("power target", "target enum");
        addRecord<OrvaRoles>("row", "id text, title text, type enum, value record");
        addRecord<CMError>("error", "name text, title text, message text");
        addRecord<OrvaValue>("value", "airplaneModeType enum, bool flag, double number, i32 int, networkInfo record, networkInterface record, networkLastJoin record, networkOnline enum, networkPendingProfile record, networkProfile record, networkProfileTrial record, networkScanResult record, networkScanResults records, networkSoftApRequest record, networkState enum, softApRequests records, string text, stringList texts, wifiRestartCriteria record");
        // clang-format on
    }

    void aRecordHasItsFields()
    {
        QFETCH(QVector<OrvaField>, fields);
        QFETCH(QString, expected);
        const QStringList rows = expected.split(", "_s);
        if (rows.first().startsWith("airplaneModeType"_s))
            // Its rows stand in several files, whose order is the linker's.
            std::sort(fields.begin(), fields.end(),
                      [](const auto& left, const auto& right) { return left.key < right.key; });
        QCOMPARE(fields.size(), rows.size());
        for (int i = 0; i < rows.size(); ++i) {
            const auto [good, bad] = samplesOf(rows.at(i).section(QLatin1Char(' '), 1));
            QCOMPARE(fields.at(i).key, rows.at(i).section(QLatin1Char(' '), 0, 0));
            QVERIFY2(fields.at(i).accepts(good), qPrintable(rows.at(i)));
            QVERIFY2(!fields.at(i).accepts(bad), qPrintable(rows.at(i)));
        }
    }

    void enumerationsAreWords_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("readable");
        // clang-format off
        const char* const rows[][3] = {
            {R"({"networkState": "Connected"})", R"({"networkState": 1})", R"({"networkState": "connected"})"},
            {R"({"networkState": "2"})", R"({"networkState": 2})", R"({"networkState": "disconnecting"})"},
            {R"({"networkState": 9})", R"({"networkState": 9})", R"({"networkState": 9})"},
            {R"({"string": "connected"})", R"({"string": "connected"})", R"({"string": "connected"})"},
            {R"({"networkInfo": {"wired": {"state": "connected"}, "dns": [{"protocol": "ipv6"}, 5], "x": 1}})",
             R"({"networkInfo": {"wired": {"state": 1}, "dns": [{"protocol": 1}, 5], "x": 1}})",
             R"({"networkInfo": {"wired": {"state": "connected"}, "dns": [{"protocol": "ipv6"}, 5], "x": 1}})"},
            {R"({"networkProfile": {"wireless": {"encryption": "wpa"}}})", "",
             R"("wpa" is none of the values of "encryption": none, wep, wpaPsk.)"},
            {R"({"networkProfile": {"type": ""}})", "", R"("" is none of the values of "type": auto, wired, wireless.)"}};
        // clang-format on
        for (const auto& [written, plain, readable] : rows)
            QTest::newRow(written) << QString::fromLatin1(written) << QString::fromLatin1(plain)
                                   << QString::fromLatin1(readable);
    }

    void enumerationsAreWords()
    {
        QFETCH(QString, written);
        QFETCH(QString, plain);
        QFETCH(QString, readable);
        const auto numbers = orvaWithNumbers(OrvaValue::fields(), json(written.toUtf8()).__hash());
        QCOMPARE(numbers.isOk(), !plain.isEmpty());
        if (!numbers) {
            QCOMPARE(numbers.why(), readable);
            return;
        }
        QVERIFY(OrvaHash(*numbers) == json(plain.toUtf8()));
        QVERIFY(OrvaHash(orvaWithWords(OrvaValue::fields(), *numbers)) == json(readable.toUtf8()));
    }

    void aRowsTypesAreTypesOfValues()
    {
        QStringList known = {QString()};
        for (const OrvaField& field : OrvaValue::fields())
            known << field.key;
        const CMNodeRow rows[] = {ORVA_NETWORK_NODES(ORVA_NODE_ROW)};
        for (const CMNodeRow& row : rows) {
            const QStringList types = QString::fromLatin1(row.type).split(QLatin1Char('|'));
            for (const QString& type : types)
                QVERIFY2(known.contains(type), row.path);
        }
    }

    void absentEmptyAndWrongReadAlikeAndStayDifferent()
    {
        OrvaNetworkProfile empty;
        empty.setWirelessNetworks({});
        const OrvaNetworkProfile absent;
        const OrvaNetworkProfile wrong(json(R"({"wirelessNetworks": 5, "type": 7})"));
        QVERIFY(empty != absent);
        for (const auto& profile : {empty, absent, wrong}) {
            QVERIFY(profile.wirelessNetworks().isEmpty());
            QCOMPARE(profile.type(), OrvaNetworkProfileType::Auto);
        }
        QVERIFY(json(OrvaPlain::toJson(empty.__variant())) == empty);
        QVERIFY(OrvaHash(*OrvaPlain::hashFromBus(OrvaPlain::toBus(empty.__hash()))) == empty);
    }

    void aMergeReplacesAddsAndKeeps()
    {
        OrvaHash merged = json(R"({"a": {"x": 1}, "b": 2, "c": 3})");
        merged.__mergeWith(json(R"({"a": {"y": 1}, "b": [], "d": ""})"));
        QVERIFY(merged == json(R"({"a": {"y": 1}, "b": [], "c": 3, "d": ""})"));
    }

    void equalIsEqualInType()
    {
        const QVariantHash one{{QString(), 1}};
        const QVariantList different = {1, true, 1.0, "1"_s, QVariant(), one};
        for (const QVariant& left : different) {
            for (const QVariant& right : different)
                QCOMPARE(orvaStrictlyEqual(QVariantList{left}, QVariantList{right}),
                         &left == &right);
        }
    }

    void theLogShowsNoKey()
    {
        std::ostringstream log;
        log << json(
            R"({"n": [{"key": ["abc"], "ssid": "Ho\nme"}], "m": {"PassPhrase": "abc", "key": ""}})");
        QCOMPARE(log.str(),
                 std::string(
                     R"({m: {PassPhrase: ****, key: ""}, n: [{key: ****, ssid: "Ho\u000ame"}]})"));
    }

    void whatATerminalObeysIsEscaped_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char* name, const char16_t* text, const char* shown) {
            QTest::newRow(name) << QString::fromUtf16(text) << QString::fromUtf8(shown);
        };
        row("an 8-bit control", u"\u009b31m", R"(\u009b31m)");
        row("delete", u"a\u007f", R"(a\u007f)");
        row("marks of direction", u"\u061c\u200e\u200f", R"(\u061c\u200e\u200f)");
        row("an override", u"\u202dab\u202e", R"(\u202dab\u202e)");
        row("embeddings", u"\u202a\u202b\u202c", R"(\u202a\u202b\u202c)");
        row("isolates", u"\u2066\u2067\u2068\u2069", R"(\u2066\u2067\u2068\u2069)");
        row("separators", u"\u2028\u2029", R"(\u2028\u2029)");
        row("what only joins", u"Café \u200d\u2065\u206a 😀", "Café \u200d\u2065\u206a 😀");
    }

    void whatATerminalObeysIsEscaped()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        std::ostringstream log;
        log << text << '|' << CMPath(text) << '|' << OrvaHash({{text, text}});
        QCOMPARE(QString::fromStdString(log.str()), "%1|%1|{%1: \"%1\"}"_s.replace("%1"_s, shown));
        const QByteArray written = OrvaPlain::toJson(QVariantHash{{text, text}});
        QCOMPARE(QString::fromUtf8(written), R"({"%1":"%1"})"_s.replace("%1"_s, shown));
        QCOMPARE(OrvaPlain::fromJson(written)->toHash().value(text).toString(), text);
    }

    void theBorderRefuses_data()
    {
        QTest::addColumn<QVariant>("foreign");
        QTest::newRow("a NUL") << QVariant("a\0b"_s);
        QTest::newRow("half a pair") << QVariant(QString(QChar(0xd800)));
        QTest::newRow("the other half in a key")
            << QVariant(QVariantMap{{QString(QChar(0xdc00)), 1}});
        QTest::newRow("13 levels") << nested(13);
        QTest::newRow("10 000 levels") << nested(10000);
        QTest::newRow("16 MiB") << QVariant(QString(16 << 20, QLatin1Char('x')));
        for (const QVariant& value : {QVariant(1), QVariant(QVariantList())})
            QTest::addRow("a million of %s", value.typeName())
                << QVariant(QVariantList(QVector<QVariant>(1 << 20, value).toList()));
    }

    void theBorderRefuses()
    {
        QFETCH(QVariant, foreign);
        const auto plain = OrvaPlain::fromForeign(foreign);
        QVERIFY(!plain && !plain.why().isEmpty());
    }

    void theBorderMakesPlainValues()
    {
        const QString a = "a"_s;
        const QString pair = QString::fromUtf8("\xf0\x9f\x98\x80");
        const QVariant wrapped = QVariant::fromValue(QDBusVariant(true));
        const QVariantList withNulls{QVariant::fromValue(nullptr), QVariant(), 1};
        const QVector<QPair<QVariant, QVariant>> rows = {
            {Q_INT64_C(-5), -5},
            {Q_UINT64_C(3000000000), Q_INT64_C(3000000000)},
            {Q_UINT64_C(1) << 63, 9223372036854775808.0},
            {QVariant::fromValue(uchar(200)), 200},
            {QVariant::fromValue(QDBusVariant(wrapped)), true},
            {QVariantMap{{QString(), QVariant()}, {a, withNulls}},
             QVariantHash{{a, QVariantList{1}}}},
            {pair, pair},
            {nested(12), nested(12)}};
        for (const auto& [foreign, plain] : rows)
            QVERIFY2(orvaStrictlyEqual(OrvaPlain::fromForeign(foreign).value_or(QVariant()), plain),
                     foreign.typeName());
        QVERIFY(!OrvaPlain::fromJson("1, 2"));
    }

    void nothingInvalidGoesToTheBus()
    {
        const QVariant none;
        const auto sent = OrvaPlain::toBus({{"a"_s, none}, {"b"_s, QVariantList{none, 1}}});
        QCOMPARE(sent, (QVariantMap{{"b"_s, QVariantList{1}}}));
    }

    void aKeySuitsItsEncryption()
    {
        const QVector<QByteArrayList> good = {
            {""},
            {"abcde", "0123456789", QByteArray(26, 'F')},
            {"eight888", QByteArray(63, 'x'), QByteArray(64, 'F')}};
        const QVector<QByteArrayList> bad = {
            {"x"},
            {"012345678g"},
            {"", "seven77", QByteArray(64, 'x'), "\xc3\xa4\xc3\xb6\xc3\xbc-umlauts", "****"}};
        for (int i = 0; i < good.size(); ++i) {
            const auto type = static_cast<OrvaNetworkProfileWirelessEncryption::Value>(i);
            for (const QByteArray& key : good.at(i) + bad.at(i))
                QVERIFY2(orvaNetworkIsKeyValid(QString::fromUtf8(key), type).isEmpty() ==
                             good.at(i).contains(key),
                         key.constData());
        }
    }

    void aPrefixHasItsNetmask()
    {
        QCOMPARE(orvaPrefixToNetmask(-1), "0.0.0.0"_s);
        QCOMPARE(orvaPrefixToNetmask(22), "255.255.252.0"_s);
        QCOMPARE(orvaPrefixToNetmask(33), "255.255.255.255"_s);
    }
};

QTEST_GUILESS_MAIN(ValuesTest)
#include "tst_values.moc"
