#include <core/orvaplainvalue.h>
#include <scanRow.h>
#include <softApDeadline.h>
#include <softApSettings.h>
#include <softApStatus.h>
#include <wpsCredentials.h>
#include <wpsPin.h>

#include <QtTest>

using Settings = OrvaNetworkProfileSoftApSettings;
using Request = OrvaNetworkProfileSoftApRequest;

Q_DECLARE_METATYPE(QVariantHash)

namespace {

QVariantHash operator""_hash(const char* json, std::size_t size)
{
    return OrvaPlain::fromJson(QByteArray(json, static_cast<int>(size)))
        .value_or(QVariant())
        .toHash();
}

constexpr qint64 halfWrap = Q_INT64_C(1) << 31;
constexpr qint64 fullWrap = Q_INT64_C(1) << 32;

Request request(const QString& name, const QVariantHash& settings, bool hold = false)
{
    Request request;
    request.setName(name);
    request.setSettings(Settings(settings));
    request.setHoldSoftAp(hold);
    return request;
}

Request expiring(const QString& name, qint32 deadline)
{
    Request request;
    request.setName(name);
    request.setTimeout(deadline);
    return request;
}

} // namespace

class TestRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void completesWpsPins_data();
    void completesWpsPins();
    void acceptsEightAsciiDigitsAsPin_data();
    void acceptsEightAsciiDigitsAsPin();
    void takesOnlyTheNetworkFromWpsCredentials();
    void identifiesScanRowsBySsid_data();
    void identifiesScanRowsBySsid();
    void mergesSettings_data();
    void mergesSettings();
    void foldsRequestsInTheirOrder();
    void keepsThePlaceOfReplacedRequests();
    void setsDeadlines_data();
    void setsDeadlines();
    void expiresInOrderAcrossTheWrap_data();
    void expiresInOrderAcrossTheWrap();
    void findsNoDeadlineWhereNoneIs();
    void publishesLiveRequests();
};

void TestRules::completesWpsPins_data()
{
    QTest::addColumn<quint32>("number");
    QTest::addColumn<QString>("pin");
    QTest::newRow("known") << 1234567U << QStringLiteral("12345670");
    QTest::newRow("zero") << 0U << QStringLiteral("00000000");
    QTest::newRow("one") << 1U << QStringLiteral("00000017");
    QTest::newRow("largest") << 9999999U << QStringLiteral("99999995");
}

void TestRules::completesWpsPins()
{
    QFETCH(quint32, number);
    QTEST(wpsPin(number), "pin");
}

void TestRules::acceptsEightAsciiDigitsAsPin_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("wrong checksum") << QStringLiteral("12345678") << true;
    QTest::newRow("seven") << QStringLiteral("1234567") << false;
    QTest::newRow("nine") << QStringLiteral("123456789") << false;
    QTest::newRow("letter") << QStringLiteral("1234567a") << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("newline") << QStringLiteral("12345678\n") << false;
    QTest::newRow("Arabic digits") << QString(8, QChar(0x0661)) << false;
    QTest::newRow("long") << QString(10000, QLatin1Char('1')) << false;
}

void TestRules::acceptsEightAsciiDigitsAsPin()
{
    QFETCH(QString, text);
    QTEST(isWpsPin(text), "accepted");
}

void TestRules::takesOnlyTheNetworkFromWpsCredentials()
{
    const OrvaNetworkInterface credentials(
        R"({"ssid": "Home", "key": "secretkey", "encryption": 2, "bssid": "b", "dhcp": false})"_hash);
    const OrvaNetworkProfile old(
        R"({"type": 1, "wired": {"dhcp": true}, "softApSettings": [{"ssid": "Speaker"}]})"_hash);
    const OrvaHash expected(R"({
        "type": 0,
        "wired": {"dhcp": true},
        "wireless": {"dhcp": true, "ssid": "Home", "key": "secretkey", "encryption": 2},
        "softApSettings": []})"_hash);
    QCOMPARE(OrvaHash(withWpsCredentials(old, credentials)), expected);
}

void TestRules::identifiesScanRowsBySsid_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("id");
    QTest::newRow("ASCII") << QStringLiteral("Cafe") << QStringLiteral("43616665");
    QTest::newRow("UTF-8") << QStringLiteral("Müll") << QStringLiteral("4dc3bc6c6c");
    QTest::newRow("newline") << QStringLiteral("a\nb") << QStringLiteral("610a62");
    QTest::newRow("hidden") << QString() << QString();
}

void TestRules::identifiesScanRowsBySsid()
{
    QFETCH(QString, ssid);
    OrvaNetworkScanResult result;
    result.setSsid(ssid);
    result.setSignal(-60);
    const OrvaRoles row = scanRow(result);
    QTEST(row.id(), "id");
    QCOMPARE(row.title().toString(), ssid);
    QCOMPARE(row.type(), OrvaRolesType(OrvaRolesType::WirelessScan));
    QCOMPARE(OrvaHash(row.value().networkScanResult()), OrvaHash(result));
}

void TestRules::mergesSettings_data()
{
    QTest::addColumn<QVariantHash>("first");
    QTest::addColumn<QVariantHash>("second");
    QTest::addColumn<QVariantHash>("merged");
    const QVariantHash all = R"({"dhcpRangeFrom": "a", "dhcpRangeTo": "b", "countryCode": "c",
        "channel": 6, "ssid": "d", "bssid": "e", "apAddress": "f", "apNetmask": "g",
        "apInterface": "h", "domainName": "i", "vendorSpecificData": "j"})"_hash;
    QTest::newRow("every field, from the first") << all << QVariantHash() << all;
    QTest::newRow("every field, from the second") << QVariantHash() << all << all;
    QTest::newRow("first wins") << R"({"ssid": "A", "channel": 1})"_hash
                                << R"({"ssid": "B", "bssid": "b"})"_hash
                                << R"({"ssid": "A", "channel": 1, "bssid": "b"})"_hash;
    QTest::newRow("empty is not absent") << R"({"ssid": ""})"_hash
                                         << R"({"ssid": "B"})"_hash
                                         << R"({"ssid": ""})"_hash;
    QTest::newRow("unknown fields go") << R"({"x": 1})"_hash
                                       << R"({"y": 1})"_hash << QVariantHash();
}

void TestRules::mergesSettings()
{
    QFETCH(QVariantHash, first);
    QFETCH(QVariantHash, second);
    QFETCH(QVariantHash, merged);
    QCOMPARE(OrvaHash(mergeSoftApSettings(Settings(first), Settings(second))), OrvaHash(merged));
    merged.remove(QStringLiteral("vendorSpecificData"));
    QCOMPARE(OrvaHash(stickySoftApSettings(mergeSoftApSettings(Settings(first), Settings(second)))),
             OrvaHash(merged));
}

void TestRules::foldsRequestsInTheirOrder()
{
    const Settings running(R"({"ssid": "run", "channel": 1, "vendorSpecificData": "old"})"_hash);
    const Settings configured(R"({"ssid": "configured", "countryCode": "CH"})"_hash);
    const SoftApFold fold = foldSoftApRequests(
        running, configured,
        {request(QStringLiteral("a"), R"({"ssid": "a", "bssid": "a"})"_hash, true),
         request(QStringLiteral("b"), R"({"ssid": "b"})"_hash)});
    const OrvaHash expected(
        R"({"ssid": "b", "bssid": "a", "channel": 1, "countryCode": "CH"})"_hash);
    QCOMPARE(OrvaHash(fold.settings), expected);
    QVERIFY(fold.hold);
    QVERIFY(!foldSoftApRequests(running, configured, {}).hold);
}

void TestRules::keepsThePlaceOfReplacedRequests()
{
    SoftApTable table;
    table.set(expiring(QStringLiteral("a"), 1));
    table.set(expiring(QStringLiteral("b"), 2));
    table.set(expiring(QStringLiteral("a"), 3));
    QCOMPARE(table.requests().size(), 2);
    QCOMPARE(table.requests().first().timeout(), 3);
    table.remove(QStringLiteral("nobody"));
    table.remove(QStringLiteral("a"));
    QCOMPARE(table.requests().first().name(), QStringLiteral("b"));
}

void TestRules::setsDeadlines_data()
{
    QTest::addColumn<qint64>("now");
    QTest::addColumn<qint32>("timeout");
    QTest::addColumn<qint32>("deadline");
    QTest::newRow("plain") << Q_INT64_C(1000) << 60000 << 61000;
    QTest::newRow("none") << Q_INT64_C(1000) << 0 << 0;
    QTest::newRow("negative") << Q_INT64_C(1000) << -5 << 0;
    QTest::newRow("turns negative") << halfWrap - 1 << 1 << std::numeric_limits<qint32>::min();
    QTest::newRow("falls on 0") << fullWrap - 10 << 10 << 1;
    QTest::newRow("past the wrap") << fullWrap - 10 << 15 << 5;
    QTest::newRow("second round") << fullWrap + 100 << 15 << 115;
}

void TestRules::setsDeadlines()
{
    QFETCH(qint64, now);
    QFETCH(qint32, timeout);
    QFETCH(qint32, deadline);
    QCOMPARE(softApDeadline(now, timeout), deadline);
    if (deadline == 0)
        return;
    const bool moved = deadline == 1;
    QCOMPARE(millisecondsTo(deadline, now), timeout + (moved ? 1 : 0));
    QCOMPARE(millisecondsTo(deadline, now + 60000), timeout - 60000 + (moved ? 1 : 0));
}

void TestRules::expiresInOrderAcrossTheWrap_data()
{
    QTest::addColumn<qint64>("now");
    QTest::newRow("early") << Q_INT64_C(1000);
    QTest::newRow("before 2^31") << halfWrap - 20;
    QTest::newRow("before 2^32") << fullWrap - 20;
    QTest::newRow("after 2^32") << fullWrap + 20;
}

void TestRules::expiresInOrderAcrossTheWrap()
{
    QFETCH(qint64, now);
    QMap<QString, SoftApTable> tables;
    const auto add = [&](const char* interface, const char* name, qint32 timeout) {
        tables[QLatin1String(interface)].set(
            expiring(QLatin1String(name), softApDeadline(now, timeout)));
    };
    add("uap0", "third", 30);
    add("uap0", "never", 0);
    add("uap0", "first", 10);
    add("uap1", "second", 10);
    QStringList order;
    for (Request next; !(next = nextExpiringSoftApRequest(tables)).isEmpty();) {
        order << next.name();
        for (SoftApTable& table : tables)
            table.remove(next.name());
    }
    QCOMPARE(order.join(QLatin1Char(' ')), QStringLiteral("first second third"));
}

void TestRules::findsNoDeadlineWhereNoneIs()
{
    QVERIFY(nextExpiringSoftApRequest({}).isEmpty());
    QMap<QString, SoftApTable> tables;
    tables[QStringLiteral("uap0")].set(expiring(QStringLiteral("never"), 0));
    QVERIFY(nextExpiringSoftApRequest(tables).isEmpty());
}

void TestRules::publishesLiveRequests()
{
    const QString interface = QStringLiteral("uap0");
    QMap<QString, SoftApTable> tables;
    tables[interface].set(expiring(QStringLiteral("later"), 1500));
    tables[interface].set(expiring(QStringLiteral("overdue"), 900));
    tables[interface].set(request(QStringLiteral("never"), R"({"ssid": "S"})"_hash, true));
    const auto rows =
        softApRequestStatuses(tables, {{interface, Settings(R"({"ssid": "S"})"_hash)}}, 1000);
    QCOMPARE(rows.size(), 3);
    QCOMPARE(rows.at(0).expiresInMs(), 500);
    QCOMPARE(rows.at(1).expiresInMs(), 1);
    QCOMPARE(rows.at(2).expiresInMs(), 0);
    QVERIFY(rows.at(2).hold() && rows.at(2).running());
    QVERIFY(!softApRequestStatuses(tables, {}, 1000).first().running());
}

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
