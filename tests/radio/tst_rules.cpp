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

    void acceptsEightAsciiDigitsAsPin_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("wrong checksum") << "12345678" << true;
        QTest::newRow("seven") << "1234567" << false;
        QTest::newRow("nine") << "123456789" << false;
        QTest::newRow("letter") << "1234567a" << false;
        QTest::newRow("newline") << "12345678\n" << false;
        QTest::newRow("Arabic digits") << QString(8, QChar(0x0661)) << false;
    }

    void acceptsEightAsciiDigitsAsPin()
    {
        QFETCH(QString, text);
        QTEST(isWpsPin(text), "accepted");
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

    void identifiesScanRowsBySsid_data()
    {
        QTest::addColumn<QString>("ssid");
        QTest::addColumn<QString>("id");
        QTest::newRow("ASCII") << "Cafe"
                               << "43616665";
        QTest::newRow("UTF-8") << QStringLiteral("Mü\n") << "4dc3bc0a";
        QTest::newRow("hidden") << ""
                                << "";
    }

    void identifiesScanRowsBySsid()
    {
        QFETCH(QString, ssid);
        const OrvaNetworkScanResult result(QVariantHash{{QStringLiteral("ssid"), ssid}});
        const OrvaRoles row = scanRow(result);
        QTEST(row.id(), "id");
        QCOMPARE(row.title().toString(), ssid);
        QCOMPARE(static_cast<int>(row.type()), 101);
        QCOMPARE(OrvaHash(row.value().networkScanResult()), OrvaHash(result));
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

    void setsDeadlines_data()
    {
        QTest::addColumn<qint64>("now");
        QTest::addColumn<qint32>("timeout");
        QTest::addColumn<qint32>("deadline");
        const qint64 halfWrap = Q_INT64_C(1) << 31;
        QTest::newRow("plain") << Q_INT64_C(1000) << 60000 << 61000;
        QTest::newRow("none") << Q_INT64_C(1000) << -5 << 0;
        QTest::newRow("turns negative") << halfWrap - 1 << 1 << std::numeric_limits<qint32>::min();
        QTest::newRow("falls on 0") << 2 * halfWrap - 10 << 10 << 1;
        QTest::newRow("past the wrap") << 2 * halfWrap - 10 << 15 << 5;
    }

    void setsDeadlines()
    {
        QFETCH(qint64, now);
        QFETCH(qint32, timeout);
        QFETCH(qint32, deadline);
        QCOMPARE(softApDeadline(now, timeout), deadline);
        if (deadline > 1)
            QCOMPARE(millisecondsTo(deadline, now + 60000), timeout - 60000);
    }
};

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
