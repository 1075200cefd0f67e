#include <core/model/cmerror.h>
#include <core/orvaplainvalue.h>
#include <core/orvaroles.h>
#include <network/networkrecords.h>
#include <network/networkrules.h>
#include <power/powerrecords.h>

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
        {QStringLiteral("text"), {QString(), 5}},
        {QStringLiteral("int"), {-1, Q_INT64_C(3000000000)}},
        {QStringLiteral("number"), {-1.5, QStringLiteral("1")}},
        {QStringLiteral("flag"), {false, 0}},
        {QStringLiteral("enum"), {0, 99}},
        {QStringLiteral("record"), {QVariantHash(), QVariantList()}},
        {QStringLiteral("records"), {QVariantList{QVariantHash()}, QVariantList{1}}},
        {QStringLiteral("texts"), {QVariantList{QString()}, QVariantList{1}}}};
    return samples.value(kind);
}

QVariant nested(int levels)
{
    QVariant list = QVariantList();
    for (int i = 1; i < levels; ++i)
        list = QVariantList{list};
    return list;
}

OrvaHash hash(const QByteArray& json)
{
    return OrvaHash(OrvaPlain::fromJson(json).value_or(QVariant()).toHash());
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
        addRecord<OrvaNetworkScanResult>("scan result", "ssid text, bssid text, channel int, frequency int, signal int, snr int, encryption enum, ies text");
        addRecord<OrvaNetworkProfileSoftApSettings>("soft AP settings", "ssid text, bssid text, channel int, countryCode text, apInterface text, apAddress text, apNetmask text, dhcpRangeFrom text, dhcpRangeTo text, domainName text, vendorSpecificData text");
        addRecord<OrvaNetworkProfileSoftApRequest>("soft AP request", "name text, settings record, timeout int, holdSoftAp flag");
        addRecord<OrvaNetworkSoftApRequestStatus>("soft AP request status", "name text, interface text, settings record, hold flag, expiresInMs int, running flag");
        addRecord<OrvaNetworkWps>("WPS", "status enum, type enum, lastError text");
        addRecord<OrvaNetworkWifiRestartCriteria>("restart criteria", "checkIntervalMs int, maxTxIncreaseNoRxIncreaseThreshold int, restartActivatePath text");
        addRecord<OrvaPowerManagerModuleRegister>("power module", "moduleName text");
        addRecord<OrvaPowerManagerResourceRequest>("power resource", "moduleName text, resource enum, action enum");
        addRecord<OrvaPowerManagerTarget>("power target", "target enum");
        addRecord<OrvaRoles>("row", "id text, title text, type enum, value record");
        addRecord<CMError>("error", "name text, title text, message text");
        addRecord<OrvaValue>("value", "airplaneModeType enum, bool flag, double number, i32 int, networkInfo record, networkInterface record, networkProfile record, networkScanResult record, networkScanResults records, networkSoftApRequest record, networkState enum, softApRequests records, string text, stringList texts, wifiRestartCriteria record");
        // clang-format on
    }

    void aRecordHasItsFields()
    {
        QFETCH(QVector<OrvaField>, fields);
        QFETCH(QString, expected);
        const QStringList rows = expected.split(QStringLiteral(", "));
        if (rows.first().startsWith(QLatin1String("airplaneModeType")))
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

    void absentEmptyAndWrongReadAlikeAndStayDifferent()
    {
        OrvaNetworkProfile empty;
        empty.setWirelessNetworks({});
        const OrvaNetworkProfile absent;
        const OrvaNetworkProfile wrong(hash(R"({"wirelessNetworks": 5, "type": 7})"));
        QVERIFY(empty != absent);
        for (const auto& profile : {empty, absent, wrong}) {
            QVERIFY(profile.wirelessNetworks().isEmpty());
            QCOMPARE(profile.type(), OrvaNetworkProfileType::Auto);
        }
        QVERIFY(hash(OrvaPlain::toJson(empty.__variant())) == empty);
        QVERIFY(OrvaHash(*OrvaPlain::hashFromBus(OrvaPlain::toBus(empty.__hash()))) == empty);
    }

    void aMergeReplacesAddsAndKeeps()
    {
        OrvaHash merged = hash(R"({"a": {"x": 1}, "b": 2, "c": 3})");
        merged.__mergeWith(hash(R"({"a": {"y": 1}, "b": [], "d": ""})"));
        QVERIFY(merged == hash(R"({"a": {"y": 1}, "b": [], "c": 3, "d": ""})"));
    }

    void equalIsEqualInType()
    {
        const QVector<QVariant> different = {1,
                                             true,
                                             1.0,
                                             QStringLiteral("1"),
                                             QVariant(),
                                             QVariantList{1},
                                             QVariantHash{{QString(), 1}}};
        for (int i = 0; i < different.size(); ++i) {
            for (int j = 0; j < different.size(); ++j)
                QCOMPARE(
                    orvaStrictlyEqual(QVariantList{different.at(i)}, QVariantList{different.at(j)}),
                    i == j);
        }
    }

    void theLogShowsNoKey()
    {
        std::ostringstream log;
        log << hash(
            R"({"n": [{"key": ["abc"], "ssid": "Ho\nme"}], "m": {"wpa_psk": "abc", "key": ""}})");
        QCOMPARE(
            log.str(),
            std::string(R"({m: {key: "", wpa_psk: ****}, n: [{key: ****, ssid: "Ho\u000ame"}]})"));
    }

    void theBorderRefuses_data()
    {
        QTest::addColumn<QVariant>("foreign");
        QTest::newRow("a NUL") << QVariant(QStringLiteral("a\0b"));
        QTest::newRow("half a pair") << QVariant(QString(QChar(0xd800)));
        QTest::newRow("the other half in a key")
            << QVariant(QVariantMap{{QString(QChar(0xdc00)), 1}});
        QTest::newRow("13 levels") << nested(13);
        QTest::newRow("10 000 levels") << nested(10000);
        QTest::newRow("16 MiB") << QVariant(QString(16 << 20, QLatin1Char('x')));
        QTest::newRow("a million values")
            << QVariant(QVariantList(QVector<QVariant>(1 << 20, 1).toList()));
    }

    void theBorderRefuses()
    {
        QFETCH(QVariant, foreign);
        QString why;
        QVERIFY(!OrvaPlain::fromForeign(foreign, &why) && !why.isEmpty());
    }

    void theBorderMakesPlainValues_data()
    {
        QTest::addColumn<QVariant>("foreign");
        QTest::addColumn<QVariant>("plain");
        QTest::newRow("narrowed") << QVariant(Q_INT64_C(-5)) << QVariant(-5);
        QTest::newRow("wide") << QVariant(Q_UINT64_C(3000000000))
                              << QVariant(Q_INT64_C(3000000000));
        QTest::newRow("a byte") << QVariant::fromValue(uchar(200)) << QVariant(200);
        QTest::newRow("wrapped") << QVariant::fromValue(
                                        QDBusVariant(QVariant::fromValue(QDBusVariant(true))))
                                 << QVariant(true);
        QTest::newRow("nulls dropped")
            << QVariant(QVariantMap{
                   {QStringLiteral("a"), QVariant()},
                   {QStringLiteral("b"), QVariantList{QVariant::fromValue(nullptr), 1}}})
            << QVariant(QVariantHash{{QStringLiteral("b"), QVariantList{1}}});
        QTest::newRow("a whole pair") << QVariant(QString::fromUtf8("\xf0\x9f\x98\x80"))
                                      << QVariant(QString::fromUtf8("\xf0\x9f\x98\x80"));
        QTest::newRow("12 levels") << nested(12) << nested(12);
    }

    void theBorderMakesPlainValues()
    {
        QFETCH(QVariant, foreign);
        QFETCH(QVariant, plain);
        QVERIFY(orvaStrictlyEqual(OrvaPlain::fromForeign(foreign).value_or(QVariant()), plain));
    }

    void nothingInvalidGoesToTheBus()
    {
        const QVariant none;
        const auto sent = OrvaPlain::toBus(
            {{QStringLiteral("a"), none}, {QStringLiteral("b"), QVariantList{none, 1}}});
        QCOMPARE(sent, (QVariantMap{{QStringLiteral("b"), QVariantList{1}}}));
    }

    void aKeySuitsItsEncryption_data()
    {
        QTest::addColumn<int>("encryption");
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<bool>("suits");
        const auto row = [](int encryption, const QByteArray& key, bool suits) {
            QTest::addRow("%d %s", encryption, key.constData()) << encryption << key << suits;
        };
        row(0, "", true);
        row(0, "x", false);
        row(1, "abcde", true);
        row(1, "0123456789", true);
        row(1, "012345678g", false);
        row(2, "", false);
        row(2, "seven77", false);
        row(2, "eight888", true);
        row(2, QByteArray(63, 'x'), true);
        row(2, QByteArray(64, 'x'), false);
        row(2, QByteArray(64, 'F'), true);
        row(2, "\xc3\xa4\xc3\xb6\xc3\xbc-umlauts", false);
        row(2, "****", false);
    }

    void aKeySuitsItsEncryption()
    {
        QFETCH(int, encryption);
        QFETCH(QByteArray, key);
        const auto type = static_cast<OrvaNetworkProfileWirelessEncryption::Value>(encryption);
        QTEST(orvaNetworkIsKeyValid(QString::fromUtf8(key), type).isEmpty(), "suits");
    }

    void aPrefixHasItsNetmask()
    {
        QCOMPARE(orvaPrefixToNetmask(-1), QStringLiteral("0.0.0.0"));
        QCOMPARE(orvaPrefixToNetmask(22), QStringLiteral("255.255.252.0"));
        QCOMPARE(orvaPrefixToNetmask(33), QStringLiteral("255.255.255.255"));
    }

    void theGatewayIsTheFirstOfIPv4()
    {
        const OrvaNetworkInfo info(hash(
            R"({"gateways": [{"ip": "fe80::1", "protocol": 1}, {"ip": "10.0.0.1"}, {"ip": "10.0.0.2"}]})"));
        QCOMPARE(orvaNetworkInfoToGateway4(info), QStringLiteral("10.0.0.1"));
        QCOMPARE(orvaNetworkInfoToGateway4(OrvaNetworkInfo()), QString());
    }
};

QTEST_GUILESS_MAIN(ValuesTest)
#include "tst_values.moc"
