// Profiles as the daemon's maps, and the daemon's maps as records. Maps are written as JSON.
#include "core/orvaplainvalue.h"
#include "lumo_border.h"
#include "lumo_decoding.h"
#include "lumo_encoding.h"
#include "restartBackoff.h"

#include <QtTest/QtTest>

namespace {

QVariant fromJson(const QByteArray& json)
{
    QString why;
    const auto value = OrvaPlain::fromJson(json, &why);
    if (!value)
        qFatal("%s: %s", json.constData(), qPrintable(why));
    return *value;
}

QVariantMap mapFromJson(const QByteArray& json)
{
    return OrvaPlain::toBus(fromJson(json).toHash());
}

template <class Record>
QByteArray toJson(const QVector<Record>& records)
{
    return OrvaPlain::toJson(OrvaCodec<QVector<Record>>::encode(records));
}

} // namespace

class CodingTest : public QObject
{
    Q_OBJECT
    void columns()
    {
        QTest::addColumn<QByteArray>("given");
        QTest::addColumn<QByteArray>("expected");
    }
    template <class Function>
    void compare(const Function& function)
    {
        QFETCH(QByteArray, given);
        QFETCH(QByteArray, expected);
        QCOMPARE(QString::fromUtf8(function(given)), QString::fromUtf8(expected));
    }

private Q_SLOTS:
    void networksToDaemon_data()
    {
        columns();
        QTest::newRow("none") << QByteArray("[]") << QByteArray("{}");
        QTest::newRow("a skipped network uses up no priority")
            << QByteArray(R"([{"ssid":"A"},{"ssid":""},{"ssid":"B","encryption":0}])")
            << QByteArray(
                   R"({"A":{"priority":3,"unsecured":true},"B":{"priority":2,"unsecured":true}})");
        QTest::newRow("the later of two with one SSID counts")
            << QByteArray(R"([{"ssid":"A"},{"ssid":"A","encryption":2,"key":"secret99"}])")
            << QByteArray(R"({"A":{"priority":1,"wpa_psk":"secret99"}})");
        QTest::newRow("a BSSID that is there, be it empty")
            << QByteArray(R"([{"ssid":"A","bssid":""},{"ssid":"B","bssid":"aa:BB"}])")
            << QByteArray(R"({"A":{"bssid":"","priority":2,"unsecured":true},)"
                          R"("B":{"bssid":"aa:BB","priority":1,"unsecured":true}})");
        QTest::newRow("a security that is not ours does not read as open")
            << QByteArray(R"([{"ssid":"A","encryption":1,"key":"k"},{"ssid":"B","encryption":7},)"
                          R"({"ssid":"C","encryption":"2"},{"ssid":5}])")
            << QByteArray(R"({"A":{"priority":4},"B":{"priority":3},"C":{"priority":2}})");
    }
    void networksToDaemon()
    {
        compare([](const QByteArray& given) {
            using Networks = OrvaList<OrvaNetworkInterface>;
            return OrvaPlain::toJson(
                lumoWirelessNetworks(OrvaCodec<Networks>::decode(fromJson(given)).value()));
        });
    }

    void ipSettingsToDaemon_data()
    {
        columns();
        QTest::newRow("nothing said") << QByteArray("{}") << QByteArray("{}");
        QTest::newRow("DHCP wins")
            << QByteArray(R"({"dhcp":true,"ip":"10.0.0.2"})") << QByteArray("{}");
        QTest::newRow("static") << QByteArray(R"({"ip":"10.0.0.2","netmask":"255.0.0.0",)"
                                              R"("gateway":"10.0.0.1","dns":["1.1.1.1","::1"]})")
                                << QByteArray(R"({"Dns":"1.1.1.1 ::1","Gateway":"10.0.0.1",)"
                                              R"("Ip":"10.0.0.2","Netmask":"255.0.0.0"})");
        QTest::newRow("IPv6") << QByteArray(R"({"ip":"2001:db8::2"})") << QByteArray("{}");
        QTest::newRow("no address") << QByteArray(R"({"ip":"10.0.0.256"})") << QByteArray("{}");
    }
    void ipSettingsToDaemon()
    {
        compare([](const QByteArray& given) {
            return OrvaPlain::toJson(
                lumoIpSettings(OrvaNetworkInterface(fromJson(given).toHash())));
        });
    }

    void addressRecord_data()
    {
        columns();
        QTest::newRow("IPv4") << QByteArray("10.0.0.2/24")
                              << QByteArray(
                                     R"({"ip":"10.0.0.2","prefix":24,"protocol":0,"scope":0})");
        QTest::newRow("link-local, lower-cased")
            << QByteArray("FE80::1/64l")
            << QByteArray(R"({"ip":"fe80::1","prefix":64,"protocol":1,"scope":1})");
        QTest::newRow("no prefix")
            << QByteArray("::1") << QByteArray(R"({"ip":"::1","protocol":1,"scope":0})");
        QTest::newRow("a prefix that is none, and more parts")
            << QByteArray("10.0.0.2/x/8")
            << QByteArray(R"({"ip":"10.0.0.2","prefix":0,"protocol":0,"scope":0})");
        QTest::newRow("no address")
            << QByteArray("nonsense/8") << QByteArray(R"({"ip":"nonsense","prefix":8,"scope":0})");
        QTest::newRow("empty") << QByteArray() << QByteArray(R"({"ip":"","scope":0})");
    }
    void addressRecord()
    {
        compare([](const QByteArray& given) {
            return OrvaPlain::toJson(parseIpRecord(QString::fromUtf8(given)).__variant());
        });
    }

    void addresses_data()
    {
        columns();
        QTest::newRow("IPv4 first and in reverse, link-local IPv6 gone")
            << QByteArray(R"({"Ips":"10.0.0.2/24 10.0.0.3/24  fe80::1/64l 2001:db8::1/64"})")
            << QByteArray(R"([{"ip":"10.0.0.3","prefix":24,"protocol":0,"scope":0},)"
                          R"({"ip":"10.0.0.2","prefix":24,"protocol":0,"scope":0},)"
                          R"({"ip":"2001:db8::1","prefix":64,"protocol":1,"scope":0}])");
        QTest::newRow("only global ones are by DHCP")
            << QByteArray(R"({"Dhcp":true,"Ips":"10.0.0.2/8 169.254.0.9/16l"})")
            << QByteArray(R"([{"ip":"169.254.0.9","prefix":16,"protocol":0,"scope":1},)"
                          R"({"dhcp":true,"ip":"10.0.0.2","prefix":8,"protocol":0,"scope":0}])");
        QTest::newRow("wrong types and what is no address")
            << QByteArray(R"({"Dhcp":"yes","Ips":"rubbish 10.0.0.2"})")
            << QByteArray(R"([{"ip":"10.0.0.2","protocol":0,"scope":0}])");
        QTest::newRow("text of another type") << QByteArray(R"({"Ips":12})") << QByteArray("[]");
    }
    void addresses()
    {
        compare([](const QByteArray& given) { return toJson(parseAddresses(mapFromJson(given))); });
    }

    void networkState_data()
    {
        columns();
        const QByteArray noSoftAp = R"("softAp":{"aps":[],"state":0})";
        QTest::newRow("no answer leaves everything but the soft AP out")
            << QByteArray(R"({"eth0":{},"wlan0":{"Present":0}})") << '{' + noSoftAp + '}';
        QTest::newRow("wired, and a wireless one that may not spoil its name servers")
            << QByteArray(R"({"eth0":{"Present":true,"Connected":true,"CableStatus":true,)"
                          R"("Mac":"02:aa","Dns":"10.0.0.1","Gateway":"10.0.0.1",)"
                          R"("Gateway6":"fe80::9","Ips":"10.0.0.2/8"},)"
                          R"("wlan0":{"Present":1,"Gateway6":"none"}})")
            << R"({"dns":[{"ip":"10.0.0.1","protocol":0,"scope":0}],)"
               R"("gateways":[{"ip":"10.0.0.1","protocol":0},{"ip":"fe80::9","protocol":1}],)" +
                   noSoftAp +
                   R"(,"wired":{"addresses":[{"ip":"10.0.0.2","prefix":8,"protocol":0,"scope":0}],)"
                   R"("cableConnected":true,"mac":"02:aa","name":"eth0","state":1},)"
                   R"("wireless":{"addresses":[],"bssid":"","channel":0,"encryption":0,)"
                   R"("frequency":0,"mac":"","name":"wlan0","signalLevel":0,"ssid":"","state":0}})";
        QTest::newRow("a wireless one that is connected speaks for all")
            << QByteArray(R"({"eth0":{"Present":1},"wlan0":{"Present":2,"Connected":true,)"
                          R"("Dns":"10.1.0.1","Ssid":"Café","Bssid":"0a:bb","Encryption":"wpa2",)"
                          R"("Frequency":2412,"Channel":1,"Signal":-60}})")
            << R"({"dns":[{"ip":"10.1.0.1","protocol":0,"scope":0}],"gateways":[],)" + noSoftAp +
                   R"(,"wired":{"addresses":[],"cableConnected":false,"mac":"","name":"eth0",)"
                   R"("state":0},"wireless":{"addresses":[],"bssid":"0a:bb","channel":1,)"
                   R"("encryption":2,"frequency":2412,"mac":"","name":"wlan0","signalLevel":-60,)"
                   R"("ssid":"Café","state":1}})";
        QTest::newRow("soft APs, one of them up")
            << QByteArray(R"({"uap0":{"Present":1,"SoftApUp":true,"Mac":"02:bb"},)"
                          R"("uap1":{"Present":1,"Ips":"192.168.7.1/24"}})")
            << QByteArray(
                   R"({"dns":[],"gateways":[],"softAp":{"aps":[{"addresses":[],"bssid":"02:bb",)"
                   R"("name":"uap0"},{"addresses":[{"ip":"192.168.7.1","prefix":24,"protocol":0,)"
                   R"("scope":0}],"bssid":"","name":"uap1"}],"state":1}})");
    }
    void networkState()
    {
        compare([](const QByteArray& given) {
            QMap<QString, QVariantMap> details;
            const QVariantMap map = mapFromJson(given);
            for (auto entry = map.begin(); entry != map.end(); ++entry)
                details.insert(entry.key(), entry.value().toMap());
            return OrvaPlain::toJson(
                parseNetworkState(details, QStringLiteral("eth0"), QStringLiteral("wlan0"))
                    .__variant());
        });
    }

    void scanResults_data()
    {
        columns();
        QTest::newRow("none") << QByteArray("{}") << QByteArray("[]");
        QTest::newRow("what is of no known security is dropped, the others stay")
            << QByteArray(R"({"a":{"type":"unsecured","bssid":"0a:bb","signal":-60,"channel":6,)"
                          R"("frequency":2437},"b":{"type":"wep"},"c":{"type":"eap"},"d":17,)"
                          R"("e":{"type":"wpa_psk","signal":"loud","channel":9000000000}})")
            << QByteArray(R"([{"bssid":"0A:BB","channel":6,"encryption":0,"frequency":2437,)"
                          R"("signal":-60,"ssid":"a"},{"bssid":"","channel":0,"encryption":2,)"
                          R"("frequency":0,"signal":0,"ssid":"e"}])");
    }
    void scanResults()
    {
        compare([](const QByteArray& given) {
            return toJson(parseScanResults(lumoPlainMap(mapFromJson(given))));
        });
    }

    void wpsCredentials_data()
    {
        columns();
        QTest::newRow("WPA") << QByteArray(R"({"ssid":"A","type":"wpa-psk","wpa_psk":"secret99"})")
                             << QByteArray(R"({"dhcp":true,"encryption":2,"key":"secret99",)"
                                           R"("ssid":"A"})");
        QTest::newRow("open") << QByteArray(R"({"ssid":"A","type":"unsecured","wpa_psk":"x"})")
                              << QByteArray(R"({"dhcp":true,"encryption":0,"ssid":"A"})");
        QTest::newRow("an underscore is not known")
            << QByteArray(R"({"ssid":"A","type":"wpa_psk","wpa_psk":"x"})")
            << QByteArray(R"({"dhcp":true,"encryption":0,"ssid":"A"})");
        QTest::newRow("wrong types") << QByteArray(R"({"ssid":1,"type":[]})")
                                     << QByteArray(R"({"dhcp":true,"encryption":0,"ssid":""})");
    }
    void wpsCredentials()
    {
        compare([](const QByteArray& given) {
            return OrvaPlain::toJson(parseWpsCredentials(mapFromJson(given)).__variant());
        });
    }

    void unfitEntriesHarmNoOther()
    {
        QVariant deep = 1;
        for (int i = 0; i < 20; ++i)
            deep = QVariantMap{{QStringLiteral("m"), deep}};
        const QVariantMap plain =
            lumoPlainMap({{QStringLiteral("a"), 1},
                          {QStringLiteral("b"), deep},
                          {QStringLiteral("c"), QByteArray(100000, 'x')},
                          {QStringLiteral("d"), QVariant()},
                          {QStringLiteral("e"), QVariant::fromValue<qulonglong>(7)}});
        QCOMPARE(plain, QVariantMap({{QStringLiteral("a"), 1}, {QStringLiteral("e"), 7}}));
    }

    void aScanOfTenMegabytesIsCut()
    {
        QVariantMap networks;
        for (int i = 0; i < 5000; ++i)
            networks.insert(QString::number(i),
                            QVariantMap{{QStringLiteral("type"), QStringLiteral("unsecured")},
                                        {QStringLiteral("ies"), QByteArray(2000, 'x')}});
        const auto results = parseScanResults(lumoPlainMap(networks));
        QVERIFY2(results.size() > 400 && results.size() < 600,
                 qPrintable(QString::number(results.size())));
        QCOMPARE(results.first().ies().left(4), QStringLiteral("7878"));
    }

    void restartsAfterLosses_data()
    {
        QTest::addColumn<QVector<int>>("losses"); // in ms
        QTest::addColumn<QVector<int>>("delays"); // in ms
        QTest::newRow("single ones") << QVector<int>{0, 20000, 40000} << QVector<int>{0, 0, 0};
        QTest::newRow("two in a second") << QVector<int>{0, 500} << QVector<int>{0, 0};
        QTest::newRow("a loop") << QVector<int>{0, 10, 20, 1030, 3040, 7050, 15060, 31070, 61080}
                                << QVector<int>{0, 0, 1000, 2000, 4000, 8000, 16000, 30000, 30000};
        QTest::newRow("the third within 10 s, not the third in a row")
            << QVector<int>{0, 9000, 18000, 18500} << QVector<int>{0, 0, 0, 1000};
        QTest::newRow("calm again")
            << QVector<int>{0, 1, 2, 20000, 20001, 20002} << QVector<int>{0, 0, 1000, 0, 0, 1000};
    }
    void restartsAfterLosses()
    {
        QFETCH(QVector<int>, losses);
        RestartBackoff backoff;
        QVector<int> delays;
        for (const int loss : qAsConst(losses))
            delays.append(backoff.afterLoss(loss));
        QTEST(delays, "delays");
    }
};

QTEST_GUILESS_MAIN(CodingTest)
#include "tst_coding.moc"
