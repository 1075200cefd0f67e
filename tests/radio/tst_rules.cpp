#include "radiosupport.h"

#include <scanRow.h>
#include <softApDeadline.h>
#include <softApSettings.h>
#include <wpsCredentials.h>
#include <wpsPin.h>

using Settings = OrvaNetworkProfileSoftApSettings;

Q_DECLARE_METATYPE(QVariantHash)

class TestRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void completesWpsPins()
    {
        QCOMPARE(wpsPin(1234567), QStringLiteral("12345670"));
        QCOMPARE(wpsPin(0), QStringLiteral("00000000"));
        QCOMPARE(wpsPin(1), QStringLiteral("00000017"));
        QCOMPARE(wpsPin(9999999), QStringLiteral("99999995"));
    }

    void acceptsEightAsciiDigitsAsPin()
    {
        QVERIFY(isWpsPin(QStringLiteral("12345678"))); // its checksum is wrong
        for (const char* text : {"1234567", "123456789", "1234567a", "12345678\n", ""})
            QVERIFY2(!isWpsPin(QLatin1String(text)), text);
        QVERIFY(!isWpsPin(QString(8, QChar(0x0661)))); // Arabic digits
    }

    void takesOnlyTheNetworkFromWpsCredentials()
    {
        const OrvaNetworkInterface credentials(
            R"({"ssid": "Home", "key": "secret", "encryption": 2, "bssid": "b"})"_hash);
        const OrvaNetworkProfile old(
            R"({"type": 1, "wired": {"dhcp": true}, "softApSettings": [{"ssid": "Box"}]})"_hash);
        const OrvaHash expected(R"({
            "type": 0,
            "wired": {"dhcp": true},
            "wireless": {"dhcp": true, "ssid": "Home", "key": "secret", "encryption": 2},
            "softApSettings": []})"_hash);
        QCOMPARE(OrvaHash(withWpsCredentials(old, credentials)), expected);
    }

    void identifiesScanRowsBySsid()
    {
        const auto rowOf = [](const QString& ssid) {
            return scanRow(OrvaNetworkScanResult(QVariantHash{{QStringLiteral("ssid"), ssid}}));
        };
        QCOMPARE(rowOf(QStringLiteral("Cafe")).id(), QStringLiteral("43616665"));
        QCOMPARE(rowOf(QStringLiteral("Mü\n")).id(), QStringLiteral("4dc3bc0a"));
        QCOMPARE(rowOf(QString()).id(), QString());
        const QVariantHash expected = R"({"id": "61", "title": "a", "type": 101,
            "value": {"networkScanResult": {"ssid": "a"}}})"_hash;
        QCOMPARE(OrvaHash(rowOf(QStringLiteral("a"))), OrvaHash(expected));
    }

    void mergesSettings_data()
    {
        QTest::addColumn<QVariantHash>("first");
        QTest::addColumn<QVariantHash>("second");
        QTest::addColumn<QVariantHash>("merged");
        const QVariantHash all = R"({"dhcpRangeFrom": "a", "dhcpRangeTo": "b", "countryCode": "c",
            "channel": 6, "ssid": "d", "bssid": "e", "apAddress": "f", "apNetmask": "g",
            "apInterface": "h", "domainName": "i", "vendorSpecificData": "j"})"_hash;
        QTest::newRow("all from the first") << all << QVariantHash() << all;
        QTest::newRow("all from the second") << R"({"x": 1})"_hash << all << all;
        QTest::newRow("first wins") << R"({"ssid": "", "channel": 1})"_hash
                                    << R"({"ssid": "B", "bssid": "b"})"_hash
                                    << R"({"ssid": "", "channel": 1, "bssid": "b"})"_hash;
    }

    void mergesSettings()
    {
        QFETCH(QVariantHash, first);
        QFETCH(QVariantHash, second);
        QFETCH(QVariantHash, merged);
        const Settings result = mergeSoftApSettings(Settings(first), Settings(second));
        QCOMPARE(OrvaHash(result), OrvaHash(merged));
        merged.remove(QStringLiteral("vendorSpecificData"));
        QCOMPARE(OrvaHash(stickySoftApSettings(result)), OrvaHash(merged));
    }

    void setsDeadlinesAcrossTheWraps()
    {
        const qint64 halfWrap = Q_INT64_C(1) << 31;
        QCOMPARE(softApDeadline(1000, 60000), 61000);
        QCOMPARE(softApDeadline(1000, -5), 0); // none
        QCOMPARE(softApDeadline(halfWrap - 1, 1), std::numeric_limits<qint32>::min());
        QCOMPARE(softApDeadline(2 * halfWrap - 10, 10), 1); // 0 would be none
        QCOMPARE(softApDeadline(2 * halfWrap - 10, 15), 5);
        QCOMPARE(millisecondsTo(5, 2 * halfWrap - 10), 15);
        QCOMPARE(millisecondsTo(5, 2 * halfWrap + 10), -5);
    }
};

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
