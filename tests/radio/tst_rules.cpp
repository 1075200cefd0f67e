#include "radiosupport.h"

#include "scan/scanrow.h"
#include "softap/softapdeadline.h"
#include "softap/softapsettings.h"
#include "wps/wpscredentials.h"
#include "wps/wpspin.h"

class TestRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void completesWpsPins()
    {
        QCOMPARE(wpsPin(1234567), "12345670"_s);
        QCOMPARE(wpsPin(1), "00000017"_s);
        QCOMPARE(wpsPin(9999999), "99999995"_s);
    }

    void acceptsEightAsciiDigitsAsPin()
    {
        QVERIFY(isWpsPin("12345678"_s)); // its checksum is wrong
        const QString arabic(8, QChar(0x0661));
        for (const QString& text :
             {"1234567"_s, "123456789"_s, "1234567a"_s, "12345678\n"_s, QString(), arabic})
            QVERIFY2(!isWpsPin(text), qPrintable(text));
    }

    void takesOnlyTheNetworkFromWpsCredentials()
    {
        const OrvaValue old = json(R"({"networkProfile": {
            "type": 1, "wired": {"dhcp": true}, "softApSettings": [{"ssid": "Box"}]}})");
        const OrvaValue credentials = json(R"({"networkInterface": {
            "ssid": "Home", "key": "secret", "encryption": 2, "bssid": "b"}})");
        const OrvaValue expected = json(R"({"networkProfile": {
            "type": 0,
            "wired": {"dhcp": true},
            "wireless": {"dhcp": true, "ssid": "Home", "key": "secret", "encryption": 2},
            "softApSettings": []}})");
        QCOMPARE(withWpsCredentials(old.networkProfile(), credentials.networkInterface()),
                 expected.networkProfile());
    }

    void identifiesScanRowsBySsid()
    {
        const auto rowOf = [](const QString& ssid) {
            return scanRow(OrvaNetworkScanResult(QVariantHash{{"ssid"_s, ssid}}));
        };
        QCOMPARE(rowOf("Mü\n"_s).id(), "4dc3bc0a"_s);
        QCOMPARE(rowOf(QString()).id(), QString());
        QCOMPARE(OrvaHash(rowOf("a"_s)), OrvaHash(json(R"({"id": "61", "title": "a", "type": 101,
            "value": {"networkScanResult": {"ssid": "a"}}})")));
    }

    void mergesSettings_data()
    {
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::addColumn<QByteArray>("merged");
        const QByteArray all = R"({"dhcpRangeFrom": "a", "dhcpRangeTo": "b", "countryCode": "c",
            "channel": 6, "ssid": "d", "bssid": "e", "apAddress": "f", "apNetmask": "g",
            "apInterface": "h", "domainName": "i", "vendorSpecificData": "j"})";
        QTest::newRow("all from the first") << all << QByteArray("{}") << all;
        QTest::newRow("all from the second") << QByteArray(R"({"x": 1})") << all << all;
        QTest::newRow("first wins") << QByteArray(R"({"ssid": "", "channel": 1})")
                                    << QByteArray(R"({"ssid": "B", "bssid": "b"})")
                                    << QByteArray(R"({"ssid": "", "channel": 1, "bssid": "b"})");
    }

    void mergesSettings()
    {
        using Settings = OrvaNetworkProfileSoftApSettings;
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QFETCH(QByteArray, merged);
        Settings expected(json(merged).__hash());
        const Settings result =
            mergeSoftApSettings(Settings(json(first).__hash()), Settings(json(second).__hash()));
        QCOMPARE(result, expected);
        expected.__remove(Settings::VendorSpecificData());
        QCOMPARE(stickySoftApSettings(result), expected);
    }

    void namesTheDevicesOwnSoftAp()
    {
        const QString mac = "00:11:22:AA:BB:CC"_s;
        const QString e(1, QChar(0xe9)); // of 2 bytes
        QCOMPARE(ownSoftApSsid("Box"_s, mac), "Box_001122AABBCC"_s);
        QCOMPARE(ownSoftApSsid("x"_s + e.repeated(9), mac),
                 "x"_s + e.repeated(9) + "_001122AABBCC"_s);
        QCOMPARE(ownSoftApSsid(e.repeated(10), mac), e.repeated(9) + "_001122AABBCC"_s);
        QCOMPARE(ownSoftApSsid("Box"_s, QString(40, QLatin1Char('m'))),
                 "_"_s + QString(31, QLatin1Char('m')));
    }

    void setsDeadlines()
    {
        const qint64 halfWrap = Q_INT64_C(1) << 31;
        QCOMPARE(softApDeadline(1000, 60000), std::optional<qint64>(61000));
        QCOMPARE(softApDeadline(1000, -5), std::nullopt);
        QCOMPARE(softApDeadline(2 * halfWrap - 10, 10), std::optional<qint64>(2 * halfWrap));
    }

    void findsTheNextExpiry_data()
    {
        QTest::addColumn<qint64>("now");
        QTest::addColumn<QVector<int>>("timeouts"); // of a, b, ...
        QTest::addColumn<QString>("next");
        const qint64 halfWrap = Q_INT64_C(1) << 31;
        QTest::newRow("none") << halfWrap << QVector<int>{0, 0} << "";
        QTest::newRow("the first of equal ones") << halfWrap << QVector<int>{0, 7, 9, 7} << "b";
        QTest::newRow("where the sign changes") << halfWrap - 10 << QVector<int>{20, 5} << "b";
        QTest::newRow("where the clock wraps") << 2 * halfWrap - 10 << QVector<int>{20, 5} << "b";
    }

    void findsTheNextExpiry()
    {
        QFETCH(qint64, now);
        QFETCH(QVector<int>, timeouts);
        SoftAp softAp;
        for (int i = 0; i < timeouts.size(); ++i) {
            OrvaNetworkProfileSoftApRequest request;
            request.setName(QString(QChar('a' + i)));
            softAp.table.set({request, softApDeadline(now, timeouts.at(i))});
        }
        const auto next = nextExpiringSoftApRequest({{"uap0"_s, softAp}});
        QTEST(next ? next->request.name() : QString(), "next");
    }
};

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
