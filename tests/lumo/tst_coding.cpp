// SPDX-License-Identifier: Apache-2.0
// Profiles as the daemon's maps, and the daemon's maps as records. Maps are written as JSON.
#include "backend/lumo/lumoborder.h"
#include "backend/lumo/lumodecoding.h"
#include "backend/lumo/lumoencoding.h"
#include "backend/lumo/restartbackoff.h"
#include "tables.h"
#include "values.h"

#include <QtTest>

namespace {

QMap<QString, QVariantMap> mapsOf(const QVariant& given)
{
    QMap<QString, QVariantMap> maps;
    const QVariantMap map = OrvaPlain::toBus(given.toHash());
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        maps.insert(entry.key(), entry.value().toMap());
    return maps;
}

template <class Record>
QVariant encode(const Record& record)
{
    return OrvaCodec<Record>::encode(record);
}

/// Each section of the table of cases by its name.
const QMap<QString, std::function<QVariant(const QVariant& given)>> readers = {
    {"networks"_s,
     [](const QVariant& given) {
         using Networks = OrvaList<OrvaNetworkInterface>;
         return lumoWirelessNetworks(OrvaCodec<Networks>::decode(given).value());
     }},
    {"ipSettings"_s,
     [](const QVariant& given) { return lumoIpSettings(OrvaNetworkInterface(given.toHash())); }},
    {"ipRecord"_s, [](const QVariant& given) { return encode(parseIpRecord(given.toString())); }},
    {"addresses"_s,
     [](const QVariant& given) {
         return encode(parseAddresses(OrvaPlain::toBus(given.toHash())));
     }},
    {"state"_s,
     [](const QVariant& given) {
         return encode(parseNetworkState(mapsOf(given), "eth0"_s, "wlan0"_s));
     }},
    {"scan"_s,
     [](const QVariant& given) {
         return encode(parseScanResults(lumoPlainMap(OrvaPlain::toBus(given.toHash()))));
     }},
    {"unsupported"_s,
     [](const QVariant& given) {
         return encode(parseUnsupportedNetworks(lumoPlainMap(OrvaPlain::toBus(given.toHash()))));
     }},
    {"backoff"_s,
     [](const QVariant& losses) {
         RestartBackoff backoff;
         QVariantList delays;
         for (const QVariant& loss : losses.toList())
             delays << backoff.afterLoss(loss.toInt());
         return QVariant(delays);
     }},
    {"wps"_s,
     [](const QVariant& given) {
         return encode(parseWpsCredentials(OrvaPlain::toBus(given.toHash())));
     }},
};

} // namespace

class CodingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cases_data()
    {
        addTableColumns();
        addTableRows(QFINDTESTDATA("cases.txt"));
    }
    void cases()
    {
        QFETCH(QString, section);
        QFETCH(QStringList, cells);
        QCOMPARE(cells.size(), 3);
        QVERIFY(readers.contains(section));
        const QVariant given = *OrvaPlain::fromJson(cells.at(1).toUtf8());
        QCOMPARE(QString::fromUtf8(OrvaPlain::toJson(readers[section](given))), cells.at(2));
    }

    void unfitEntriesHarmNoOther()
    {
        QVariant deep = 1;
        for (int i = 0; i < 20; ++i)
            deep = QVariantMap{{"m"_s, deep}};
        const QVariantMap plain = lumoPlainMap({{"a"_s, 1},
                                                {"b"_s, deep},
                                                {"c"_s, QByteArray(100000, 'x')},
                                                {"d"_s, QVariant()},
                                                {"e"_s, QVariant::fromValue<qulonglong>(7)}});
        QCOMPARE(plain, QVariantMap({{"a"_s, 1}, {"e"_s, 7}}));
    }

    void textsAreCut()
    {
        const QString x = QString(4094, QLatin1Char('x'));
        const QString pair = QString::fromUtf8("\xF0\x9F\x98\x80");
        const QVariantMap plain = lumoPlainMap(
            {{x + "abcd"_s, 1},
             {"b"_s, QVariantMap{{"c"_s, QStringList{x + "abc"_s, x + "a"_s + pair}}}}});
        QCOMPARE(plain, QVariantMap(
                            {{x + "ab"_s, 1},
                             {"b"_s, QVariantHash{{"c"_s, QVariantList{x + "ab"_s, x + "a"_s}}}}}));
        // The last of many addresses may have been cut into another one.
        const QString many = "10.0.0.1/8 "_s.repeated(371) + "      10.0.0.255"_s;
        QVERIFY(lumoText(many).endsWith(" 10.0.0.25"_s));
        const auto addresses = parseAddresses(lumoPlainMap({{"Ips"_s, many}}));
        QCOMPARE(addresses.size(), 371);
        QCOMPARE(addresses.last().ip(), "10.0.0.1"_s);
    }

    void aScanOfTenMegabytesIsCut()
    {
        QVariantMap networks;
        for (int i = 0; i < 5000; ++i)
            networks.insert(QString::number(i), QVariantMap{{"type"_s, "unsecured"_s},
                                                            {"ies"_s, QByteArray(2000, 'x')}});
        // A network that is too large for the rest of the room leaves it to its small neighbours.
        networks.insert("z"_s, QVariantMap{{"type"_s, "unsecured"_s}});
        const auto results = parseScanResults(lumoPlainMap(networks));
        QCOMPARE(results.last().ssid(), "z"_s);
        QVERIFY2(results.size() > 1800 && results.size() < 2200,
                 qPrintable(QString::number(results.size())));
        QCOMPARE(results.first().ies().left(4), "7878"_s);
    }
};

QTEST_GUILESS_MAIN(CodingTest)
#include "tst_coding.moc"
