#include "workerfixture.h"

#include <defaultRoute.h>
#include <mountTable.h>
#include <networkInfoRules.h>
#include <networkProfileRules.h>

#include <QtCore/QBuffer>

#include <limits>

namespace {

/// A record written as JSON with single quotes.
template <class Record>
Record parse(QByteArray json)
{
    return Record(OrvaPlain::fromJson(json.replace('\'', '"'))->toHash());
}

QByteArray text(const OrvaHash& record)
{
    return OrvaPlain::toJson(record.__variant()).replace('"', '\'');
}

/// A profile as "SSID in use|SSIDs listed": "-" where the field is absent, "[]" for an empty list.
OrvaNetworkProfile networks(const QString& notation)
{
    const auto network = [](const QString& ssid) {
        OrvaNetworkInterface result;
        result.setSsid(ssid);
        return result;
    };
    const QString used = notation.section(QLatin1Char('|'), 0, 0);
    const QString listed = notation.section(QLatin1Char('|'), 1);
    OrvaNetworkProfile profile;
    if (used != QLatin1String("-"))
        profile.setWireless(network(used));
    OrvaList<OrvaNetworkInterface> list;
    const QStringList ssids =
        listed == QLatin1String("[]") ? QStringList() : listed.split(QLatin1Char(','));
    for (const QString& ssid : ssids)
        list << network(ssid);
    if (listed != QLatin1String("-"))
        profile.setWirelessNetworks(list);
    return profile;
}

void addRow(const char* name, const char* first, const char* second, const char* third)
{
    QTest::newRow(name) << QByteArray(first) << QByteArray(second) << QByteArray(third);
}

void addColumns()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<QByteArray>("expected");
}

} // namespace

class TestRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void mergesProfiles_data()
    {
        QTest::addColumn<QString>("newProfile");
        QTest::addColumn<QString>("oldProfile");
        QTest::addColumn<int>("maximum");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const char* newProfile, const char* oldProfile,
                            int maximum, const char* expected) {
            QTest::newRow(name) << QString::fromLatin1(newProfile)
                                << QString::fromLatin1(oldProfile) << maximum
                                << QString::fromLatin1(expected);
        };
        row("the third goes to the front", "C|-", "A|A,B,C", 10, "C|C,A,B");
        row("a list that is sent holds", "C|A,C", "A|A,B,C", 10, "C|C,A");
        row("a new network goes in front", "D|-", "A|A,B", 10, "D|D,A,B");
        row("the first network ever", "A|-", "-|-", 10, "A|A");
        row("no SSID takes the first stored", "|-", "A|A,B", 10, "A|A,B");
        row("no SSID takes the first sent", "|B,A", "A|A,B", 10, "B|B,A");
        row("no SSID and no network", "|[]", "A|A,B", 10, "|[]");
        row("no SSID and no list anywhere", "|-", "-|-", 10, "|-");
        row("without a network in use nothing moves", "-|X,Y", "A|A,B", 10, "-|X,Y");
        row("without any network nothing comes back", "-|-", "A|A,B", 10, "-|-");
        row("the least preferred are dropped", "D|-", "A|A,B,C", 3, "D|D,A,B");
        row("a maximum of one", "D|-", "A|A,B,C", 1, "D|D");
        row("a maximum of zero sets no limit", "D|-", "A|A,B,C", 0, "D|D,A,B,C");
        row("nor does a negative one", "D|-", "A|A,B,C", -3, "D|D,A,B,C");
        row("a huge maximum", "D|-", "A|A,B", std::numeric_limits<int>::max(), "D|D,A,B");
        row("the limit holds without a network in use", "-|X,Y,Z", "-|-", 2, "-|X,Y");
        row("only the first of two of one SSID moves", "A|B,A,C,A", "-|-", 10, "A|A,B,C,A");
        row("empty SSIDs are listed as they stand", "A|,A,", "-|-", 10, "A|A,,");
    }
    void mergesProfiles()
    {
        QFETCH(QString, newProfile);
        QFETCH(QString, oldProfile);
        QFETCH(int, maximum);
        QFETCH(QString, expected);
        QCOMPARE(
            text(computeNewNetworkProfile(networks(newProfile), networks(oldProfile), maximum)),
            text(networks(expected)));
    }

    void mergesAThousandNetworks()
    {
        QString many = QStringLiteral("0");
        for (int i = 1; i < 1000; ++i)
            many += QStringLiteral(",%1").arg(i);
        const auto merged =
            computeNewNetworkProfile(networks(QStringLiteral("999|") + many), {}, 500);
        QCOMPARE(merged.wirelessNetworks().size(), 500);
        QCOMPARE(merged.wirelessNetworks().at(1).ssid(), QStringLiteral("0"));
    }

    void removesNetworks_data()
    {
        addColumns();
        addRow("one that is not in use", "A|A,B,C", "B", "A|A,C");
        addRow("the one in use", "A|A,B,C", "A", "B|B,C");
        addRow("every one of the SSID", "A|A,B,A", "A", "B|B");
        addRow("an empty SSID", "A|A,,", "", "A|A");
    }
    void removesNetworks()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QFETCH(QByteArray, expected);
        QCOMPARE(
            text(withoutNetwork(networks(QString::fromLatin1(first)), QString::fromLatin1(second))),
            text(networks(QString::fromLatin1(expected))));
    }

    void verifiesKeys_data()
    {
        addColumns();
        addRow("no network in use: the list is not looked at",
               "{'wireless':{},'wirelessNetworks':[{'ssid':'A','key':'x','encryption':2}]}", "",
               "");
        addRow("good", "{'wireless':{'ssid':'A','key':'12345678','encryption':2}}", "", "");
        addRow("too short", "{'wireless':{'ssid':'A','key':'1234567','encryption':2}}", "", "bad");
        addRow("masked", "{'wireless':{'ssid':'A','key':'****','encryption':2}}", "", "bad");
        addRow("a key without encryption", "{'wireless':{'ssid':'A','key':'x'}}", "", "bad");
        addRow("a bad one in the list",
               "{'wireless':{'ssid':'A'},'wirelessNetworks':[{'ssid':'A'},{'encryption':2}]}", "",
               "bad");
        addRow("a key of the wrong type", "{'wireless':{'ssid':'A','key':1,'encryption':2}}", "",
               "bad");
    }
    void verifiesKeys()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, expected);
        QCOMPARE(verifyProfile(parse<OrvaNetworkProfile>(first)).isEmpty(), expected.isEmpty());
    }

    void hidesKeys_data()
    {
        addColumns();
        addRow("everywhere",
               "{'wired':{'key':'a'},'wireless':{'key':'b'},'wirelessNetworks':[{'key':'c'},{}]}",
               "",
               "{'wired':{'key':'****'},'wireless':{'key':'****'},"
               "'wirelessNetworks':[{'key':'****'},{}]}");
        addRow("an empty key stays, an absent one too", "{'wired':{},'wireless':{'key':''}}", "",
               "{'wired':{},'wireless':{'key':''}}");
        addRow("where no record has one",
               "{'wireless':{'key':12345678,'wpa_psk':['e',{'x':'f'}]},'x':[{'psk':'d'}]}", "",
               "{'wireless':{'key':'****','wpa_psk':['****',{'x':'****'}]},'x':[{'psk':'****'}]}");
    }
    void hidesKeys()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, expected);
        QCOMPARE(text(hidePassword(parse<OrvaNetworkProfile>(first))),
                 text(parse<OrvaNetworkProfile>(expected)));
    }

    void restoresKeys_data()
    {
        addColumns();
        addRow(
            "by SSID, the first one",
            "{'wireless':{'ssid':'B','key':'****'},'wirelessNetworks':[{'ssid':'B','key':'****'},"
            "{'ssid':'A','key':'own'}]}",
            "{'wirelessNetworks':[{'ssid':'A','key':'a'},{'ssid':'B','key':'b'},"
            "{'ssid':'B','key':'later'}]}",
            "{'wireless':{'ssid':'B','key':'b'},'wirelessNetworks':[{'ssid':'B','key':'b'},"
            "{'ssid':'A','key':'own'}]}");
        addRow("from the network in use where none is listed",
               "{'wireless':{'ssid':'A','key':'****'}}", "{'wireless':{'ssid':'A','key':'a'}}",
               "{'wireless':{'ssid':'A','key':'a'}}");
        addRow("not of an SSID that is new", "{'wireless':{'ssid':'N','key':'****'}}",
               "{'wireless':{'ssid':'A','key':'a'}}", "{'wireless':{'ssid':'N','key':'****'}}");
        addRow("of the wired interface", "{'wired':{'key':'****'}}", "{'wired':{'key':'w'}}",
               "{'wired':{'key':'w'}}");
        addRow("under a name that no record has", "{'wireless':{'ssid':'A','psk':'****'}}",
               "{'wireless':{'ssid':'A','psk':'p'}}", "{'wireless':{'ssid':'A','psk':'p'}}");
    }
    void restoresKeys()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QFETCH(QByteArray, expected);
        QCOMPARE(text(restorePassword(parse<OrvaNetworkProfile>(first),
                                      parse<OrvaNetworkProfile>(second))),
                 text(parse<OrvaNetworkProfile>(expected)));
    }

    void suspectsTheFirstKnownNetwork()
    {
        const auto info = parse<OrvaNetworkInfo>("{'wireless':{'ssid':'A'},'wirelessNetworks':[{'"
                                                 "ssid':'B'},{'ssid':'A'},{'ssid':'A'}]}");
        QCOMPARE(text(updateCredentialsSuspect(info, QStringLiteral("A"), true)),
                 text(parse<OrvaNetworkInfo>(
                     "{'wireless':{'ssid':'A','credentialsSuspect':true},'wirelessNetworks':["
                     "{'ssid':'B'},{'ssid':'A','credentialsSuspect':true},{'ssid':'A'}]}")));
        QCOMPARE(text(updateCredentialsSuspect(info, QStringLiteral("X"), true)), text(info));
    }

    void picksTheAddressOfTheUrl_data()
    {
        addColumns();
        addRow("wired first",
               "{'wired':{'state':1,'addresses':[{'ip':'1.1.1.1'}]},"
               "'wireless':{'state':1,'addresses':[{'ip':'2.2.2.2'}]}}",
               ":8080", "http://1.1.1.1:8080/");
        addRow("wireless where wired is in between",
               "{'wired':{'state':2,'addresses':[{'ip':'1.1.1.1'}]},"
               "'wireless':{'state':1,'addresses':[{'ip':'2.2.2.2'}]}}",
               "", "http://2.2.2.2/");
        addRow("the soft access point",
               "{'softAp':{'state':1,'aps':[{'addresses':[{'ip':'3.3.3.3'}]},{}]}}", "",
               "http://3.3.3.3/");
        addRow("IPv6", "{'wired':{'state':1,'addresses':[{'ip':'fd00::1'}]}}", ":80",
               "http://[fd00::1]:80/");
        addRow("an access point without address", "{'softAp':{'state':1,'aps':[{}]}}", "", "");
        addRow("nothing", "{}", ":80", "");
    }
    void picksTheAddressOfTheUrl()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QFETCH(QByteArray, expected);
        QCOMPARE(webserverUrl(parse<OrvaNetworkInfo>(first), QString::fromLatin1(second)),
                 QString::fromLatin1(expected));
    }

    void tellsWhatIsUp_data()
    {
        addColumns();
        addRow("both interfaces, one in between",
               "{'wired':{'state':1,'addresses':[{'ip':'1.1.1.1','prefix':24,'dhcp':true}]},"
               "'wireless':{'state':2,'ssid':'A','bssid':'0a:0b','addresses':[{'protocol':1}]},"
               "'dns':[{'ip':'::1','protocol':1},{'ip':'8.8.8.8'}],'gateways':[{'ip':'1.1.1.2'}]}",
               "",
               "{'wired':{'connected':true,'dhcp':true,'ip':'1.1.1.1','netmask':'255.255.255.0',"
               "'dns':['8.8.8.8'],'gateway':'1.1.1.2'},"
               "'wireless':{'connected':true,'dns':['8.8.8.8'],'gateway':'1.1.1.2','ssid':'A',"
               "'bssid':'0A:0B','encryption':0,'frequency':0,'signalLevel':0}}");
        addRow("access points with an address",
               "{'softAp':{'aps':[{},{'bssid':'x','addresses':[{'ip':'3.3.3.3','prefix':8}]}]}}",
               "",
               "{'softApSettings':[{'bssid':'x','addresses':[{'ip':'3.3.3.3','prefix':8}],"
               "'apAddress':'3.3.3.3','apNetmask':'255.0.0.0'}]}");
        addRow("nothing", "{'wired':{'state':0}}", "", "{}");
        addRow("fields of the wrong type", "{'wired':7,'wireless':{'state':'1'},'dns':{}}", "",
               "{}");
    }
    void tellsWhatIsUp()
    {
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, expected);
        QCOMPARE(text(currentStateProfile(parse<OrvaNetworkInfo>(first))),
                 text(parse<OrvaNetworkProfile>(expected)));
    }

    void readsTheMountTable_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<bool>("onNetwork");
        QTest::newRow("on NFS") << QByteArray("proc /proc proc rw\nh:/r / nfs rw\n") << true;
        QTest::newRow("the initial root is passed over")
            << QByteArray("rootfs / rootfs rw\nh:/r / nfs rw\n") << true;
        QTest::newRow("the first line decides") << QByteArray("/dev/a / ext4\nh:/r / nfs") << false;
        QTest::newRow("NFS of version 4 is none") << QByteArray("h:/r / nfs4 rw\n") << false;
        QTest::newRow("upper case is none") << QByteArray("h:/r / NFS rw\n") << false;
        QTest::newRow("too few fields") << QByteArray("h:/r /\nx\n\nh:/r / coda\n") << true;
        QTest::newRow("empty") << QByteArray() << false;
    }
    void readsTheMountTable()
    {
        QFETCH(QByteArray, table);
        QBuffer device(&table);
        QVERIFY(device.open(QIODevice::ReadOnly));
        QTEST(isRootOnNetwork(device), "onNetwork");
    }

    void findsTheDefaultRoute_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QString>("interface");
        const QByteArray header("Iface\tDestination\tGateway\n");
        QTest::newRow("the first one")
            << header + "a0\t0000A8C0\t0\nb0\t00000000\t1\nc0\t00000000\t1\n"
            << QStringLiteral("b0");
        QTest::newRow("none") << header + "a0\t0000A8C0\t0\n" << QString();
        QTest::newRow("nothing behind a NUL")
            << header + QByteArray("\0a0\t00000000", 12) << QString();
        QTest::newRow("short lines") << QByteArray("a0\n\n\t\nb0\t0000000\n") << QString();
    }
    void findsTheDefaultRoute()
    {
        QFETCH(QByteArray, table);
        QTEST(defaultRouteInterface(table), "interface");
    }
};

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
