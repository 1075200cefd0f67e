#include "workerfixture.h"

#include "backend/fake/defaultroute.h"
#include "backend/mounttable.h"
#include "picture/currentstateprofile.h"
#include "picture/networkinforules.h"
#include "picture/webserverurl.h"
#include "profile/networkprofilerules.h"

#include <QBuffer>

#include <limits>

namespace {

/// A record written as JSON with single quotes.
template <class Record>
Record parse(QByteArray json)
{
    return Record(OrvaPlain::fromJson(json.replace('\'', '"'))->toHash());
}

QByteArray textOf(const OrvaHash& record)
{
    return OrvaPlain::toJson(record.__variant()).replace('"', '\'');
}

/// A profile as "SSID in use|SSIDs listed": "-" where the field is absent, "[]" for an empty list.
OrvaNetworkProfile networks(const QByteArray& notation)
{
    const auto network = [](const QString& ssid) {
        return OrvaNetworkInterface(QVariantHash{{"ssid"_s, ssid}});
    };
    const QString used = QString::fromUtf8(notation).section("|"_s, 0, 0);
    const QString listed = QString::fromUtf8(notation).section("|"_s, 1);
    OrvaNetworkProfile profile;
    if (used != "-"_s)
        profile.setWireless(network(used));
    OrvaList<OrvaNetworkInterface> list;
    const QStringList ssids = listed == "[]"_s ? QStringList() : listed.split(","_s);
    for (const QString& ssid : ssids)
        list << network(ssid);
    if (listed != "-"_s)
        profile.setWirelessNetworks(list);
    return profile;
}

/// A rule as a function of texts.
using Rule = std::function<QByteArray(const QByteArray& first, const QByteArray& second)>;

/// A rule from one record to another.
template <class Record, class Result>
Rule ruleOf(Result (*rule)(const Record&))
{
    return [rule](const QByteArray& record, const QByteArray&) {
        return textOf(rule(parse<Record>(record)));
    };
}

} // namespace

Q_DECLARE_METATYPE(Rule)

namespace {

void row(const Rule& rule, const char* name, const char* first, const char* second,
         const char* expected)
{
    QTest::newRow(name) << rule << QByteArray(first) << QByteArray(second) << QByteArray(expected);
}

/// How profiles merge and lose networks.
void addProfileRows()
{
    const auto merge = [](const char* name, const char* newProfile, const char* oldProfile,
                          int maximum, const char* expected) {
        const Rule rule = [maximum](const QByteArray& first, const QByteArray& second) {
            return textOf(computeNewNetworkProfile(networks(first), networks(second), maximum));
        };
        QTest::newRow(name) << rule << QByteArray(newProfile) << QByteArray(oldProfile)
                            << textOf(networks(expected));
    };
    merge("the third goes to the front", "C|-", "A|A,B,C", 10, "C|C,A,B");
    merge("a list that is sent holds", "C|A,C", "A|A,B,C", 10, "C|C,A");
    merge("a new network goes in front", "D|-", "A|A,B", 10, "D|D,A,B");
    merge("the first network ever", "A|-", "-|-", 10, "A|A");
    merge("no SSID takes the first stored", "|-", "A|A,B", 10, "A|A,B");
    merge("no SSID takes the first sent", "|B,A", "A|A,B", 10, "B|B,A");
    merge("no SSID and no network", "|[]", "A|A,B", 10, "|[]");
    merge("no SSID and no list anywhere", "|-", "-|-", 10, "|-");
    merge("without a network in use nothing moves", "-|X,Y", "A|A,B", 10, "-|X,Y");
    merge("without any network nothing comes back", "-|-", "A|A,B", 10, "-|-");
    merge("the least preferred are dropped", "D|-", "A|A,B,C", 3, "D|D,A,B");
    merge("a maximum of one", "D|-", "A|A,B,C", 1, "D|D");
    merge("a maximum of zero sets no limit", "D|-", "A|A,B,C", 0, "D|D,A,B,C");
    merge("nor does a negative one", "D|-", "A|A,B,C", -3, "D|D,A,B,C");
    merge("a huge maximum", "D|-", "A|A,B", std::numeric_limits<int>::max(), "D|D,A,B");
    merge("the limit holds without a network in use", "-|X,Y,Z", "-|-", 2, "-|X,Y");
    merge("only the first of two of one SSID moves", "A|B,A,C,A", "-|-", 10, "A|A,B,C,A");
    merge("empty SSIDs are listed as they stand", "A|,A,", "-|-", 10, "A|A,,");

    const auto remove = [](const char* name, const char* profile, const char* ssid,
                           const char* expected) {
        const Rule rule = [](const QByteArray& first, const QByteArray& second) {
            return textOf(withoutNetwork(networks(first), QString::fromUtf8(second)));
        };
        QTest::newRow(name) << rule << QByteArray(profile) << QByteArray(ssid)
                            << textOf(networks(expected));
    };
    remove("remove one that is not in use", "A|A,B,C", "B", "A|A,C");
    remove("remove the one in use", "A|A,B,C", "A", "B|B,C");
    remove("remove every one of the SSID", "A|A,B,A", "A", "B|B");
    remove("remove an empty SSID", "A|A,,", "", "A|A");
}

/// How keys are verified, hidden and restored.
void addKeyRows()
{
    const Rule verify = [](const QByteArray& profile, const QByteArray&) {
        const bool good = bool(verifyProfile(parse<OrvaNetworkProfile>(profile)));
        return QByteArray(good ? "good" : "bad");
    };
    row(verify, "no network in use: the list is not looked at",
        "{'wireless':{},'wirelessNetworks':[{'ssid':'A','key':'x','encryption':2}]}", "", "good");
    row(verify, "a good key", "{'wireless':{'ssid':'A','key':'12345678','encryption':2}}", "",
        "good");
    row(verify, "a masked key", "{'wireless':{'ssid':'A','key':'****','encryption':2}}", "", "bad");
    row(verify, "a key without encryption", "{'wireless':{'ssid':'A','key':'x'}}", "", "bad");
    row(verify, "a bad one in the list",
        "{'wireless':{'ssid':'A'},'wirelessNetworks':[{'ssid':'A'},{'encryption':2}]}", "", "bad");
    row(verify, "a key of the wrong type", "{'wireless':{'ssid':'A','key':1,'encryption':2}}", "",
        "bad");

    const Rule hide = ruleOf(&hidePassword);
    row(hide, "hide keys everywhere",
        "{'wired':{'key':'a'},'wireless':{'key':'b'},'wirelessNetworks':[{'key':'c'},{}]}", "",
        "{'wired':{'key':'****'},'wireless':{'key':'****'},"
        "'wirelessNetworks':[{'key':'****'},{}]}");
    row(hide, "an empty key stays, an absent one too", "{'wired':{},'wireless':{'key':''}}", "",
        "{'wired':{},'wireless':{'key':''}}");
    row(hide, "hide keys where no record has one",
        "{'wireless':{'key':12345678,'wpa_psk':['e',{'x':'f'}]},'x':[{'psk':'d'}]}", "",
        "{'wireless':{'key':'****','wpa_psk':['****',{'x':'****'}]},'x':[{'psk':'****'}]}");

    const Rule restore = [](const QByteArray& profile, const QByteArray& stored) {
        return textOf(
            restorePassword(parse<OrvaNetworkProfile>(profile), parse<OrvaNetworkProfile>(stored)));
    };
    row(restore, "restore by SSID, the first one",
        "{'wireless':{'ssid':'B','key':'****'},'wirelessNetworks':[{'ssid':'B','key':'****'},"
        "{'ssid':'A','key':'own'}]}",
        "{'wirelessNetworks':[{'ssid':'A','key':'a'},{'ssid':'B','key':'b'},"
        "{'ssid':'B','key':'later'}]}",
        "{'wireless':{'ssid':'B','key':'b'},'wirelessNetworks':[{'ssid':'B','key':'b'},"
        "{'ssid':'A','key':'own'}]}");
    row(restore, "restore from the network in use where none is listed",
        "{'wireless':{'ssid':'A','key':'****'}}", "{'wireless':{'ssid':'A','key':'a'}}",
        "{'wireless':{'ssid':'A','key':'a'}}");
    row(restore, "restore from the network in use that is not listed",
        "{'wireless':{'ssid':'A','key':'****'}}",
        "{'wireless':{'ssid':'A','key':'a'},'wirelessNetworks':[{'ssid':'B','key':'b'}]}",
        "{'wireless':{'ssid':'A','key':'a'}}");
    row(restore, "restore from the list first", "{'wireless':{'ssid':'A','key':'****'}}",
        "{'wireless':{'ssid':'A','key':'a'},'wirelessNetworks':[{'ssid':'A','key':'b'}]}",
        "{'wireless':{'ssid':'A','key':'b'}}");
    row(restore, "restore no key of an SSID that is new", "{'wireless':{'ssid':'N','key':'****'}}",
        "{'wireless':{'ssid':'A','key':'a'}}", "{'wireless':{'ssid':'N','key':'****'}}");
    row(restore, "restore the wired key", "{'wired':{'key':'****'}}", "{'wired':{'key':'w'}}",
        "{'wired':{'key':'w'}}");
    row(restore, "restore under a name that no record has",
        "{'wireless':{'ssid':'A','psk':'****'}}", "{'wireless':{'ssid':'A','psk':'p'}}",
        "{'wireless':{'ssid':'A','psk':'p'}}");
}

/// What follows from the published picture.
void addPictureRows()
{
    const Rule suspect = [](const QByteArray& info, const QByteArray& ssid) {
        return textOf(
            updateCredentialsSuspect(parse<OrvaNetworkInfo>(info), QString::fromUtf8(ssid), true));
    };
    row(suspect, "suspect the first known network",
        "{'wireless':{'ssid':'A'},'wirelessNetworks':[{'ssid':'B'},{'ssid':'A'},{'ssid':'A'}]}",
        "A",
        "{'wireless':{'ssid':'A','credentialsSuspect':true},'wirelessNetworks':["
        "{'ssid':'B'},{'ssid':'A','credentialsSuspect':true},{'ssid':'A'}]}");
    row(suspect, "suspect nobody", "{'wireless':{'ssid':'A'}}", "X", "{'wireless':{'ssid':'A'}}");

    const Rule url = [](const QByteArray& info, const QByteArray& port) {
        return webserverUrl(parse<OrvaNetworkInfo>(info), QString::fromUtf8(port)).toUtf8();
    };
    row(url, "URL of the wired interface first",
        "{'wired':{'state':1,'addresses':[{'ip':'1.1.1.1'}]},"
        "'wireless':{'state':1,'addresses':[{'ip':'2.2.2.2'}]}}",
        ":8080", "http://1.1.1.1:8080/");
    row(url, "URL of the wireless one where wired is in between",
        "{'wired':{'state':2,'addresses':[{'ip':'1.1.1.1'}]},"
        "'wireless':{'state':1,'addresses':[{'ip':'2.2.2.2'}]}}",
        "", "http://2.2.2.2/");
    row(url, "URL of the soft access point",
        "{'softAp':{'state':1,'aps':[{'addresses':[{'ip':'3.3.3.3'}]},{}]}}", "",
        "http://3.3.3.3/");
    row(url, "URL of IPv6", "{'wired':{'state':1,'addresses':[{'ip':'fd00::1'}]}}", ":80",
        "http://[fd00::1]:80/");
    row(url, "no URL of an access point without address", "{'softAp':{'state':1,'aps':[{}]}}", "",
        "");

    const Rule upState = ruleOf(&currentStateProfile);
    row(upState, "both interfaces are up, one in between",
        "{'wired':{'state':1,'addresses':[{'ip':'1.1.1.1','prefix':24,'dhcp':true}]},"
        "'wireless':{'state':2,'ssid':'A','bssid':'0a:0b','addresses':[{'protocol':1}]},"
        "'dns':[{'ip':'::1','protocol':1},{'ip':'8.8.8.8'}],'gateways':[{'ip':'1.1.1.2'}]}",
        "",
        "{'wired':{'connected':true,'dhcp':true,'ip':'1.1.1.1','netmask':'255.255.255.0',"
        "'dns':['8.8.8.8'],'gateway':'1.1.1.2'},"
        "'wireless':{'connected':true,'dns':['8.8.8.8'],'gateway':'1.1.1.2','ssid':'A',"
        "'bssid':'0A:0B','encryption':0,'frequency':0,'signalLevel':0}}");
    row(upState, "access points with an address are up",
        "{'softAp':{'aps':[{},{'bssid':'x','addresses':[{'ip':'3.3.3.3','prefix':8}]}]}}", "",
        "{'softApSettings':[{'bssid':'x','addresses':[{'ip':'3.3.3.3','prefix':8}],"
        "'apAddress':'3.3.3.3','apNetmask':'255.0.0.0'}]}");
    row(upState, "nothing is up", "{'wired':{'state':0}}", "", "{}");
    row(upState, "fields of the wrong type", "{'wired':7,'wireless':{'state':'1'},'dns':{}}", "",
        "{}");
}

/// What is read from the kernel's tables.
void addTableRows()
{
    const Rule onNetwork = [](const QByteArray& table, const QByteArray&) {
        QBuffer device;
        device.setData(table);
        device.open(QIODevice::ReadOnly);
        return QByteArray(isRootOnNetwork(device) ? "network" : "local");
    };
    row(onNetwork, "the initial root is passed over", "rootfs / rootfs rw\nh:/r / nfs rw\n", "",
        "network");
    row(onNetwork, "the first root decides", "/dev/a / ext4\nh:/r / nfs", "", "local");
    row(onNetwork, "NFS of version 4 is none", "proc /proc proc rw\nh:/r / nfs4 rw\n", "", "local");
    row(onNetwork, "upper case is none", "h:/r / NFS rw\n", "", "local");
    row(onNetwork, "too few fields", "h:/r /\nx\n\nh:/r / coda\n", "", "network");
    row(onNetwork, "an empty mount table", "", "", "local");

    const Rule route = [](const QByteArray& table, const QByteArray& behind) {
        return defaultRouteInterface(table + behind).toUtf8();
    };
    row(route, "the first default route",
        "Iface\tDestination\na0\t0000A8C0\t0\nb0\t00000000\t1\nc0\t00000000\t1\n", "", "b0");
    row(route, "no default route, short lines", "a0\n\n\t\nb0\t0000000\n", "", "");
    QTest::newRow("no default route behind a NUL")
        << route << QByteArray("x\n\0", 3) << QByteArray("a0\t00000000") << QByteArray();
}

} // namespace

class TestRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void mergesAThousandNetworks()
    {
        QByteArray many = "0";
        for (int i = 1; i < 1000; ++i)
            many += ',' + QByteArray::number(i);
        const auto merged = computeNewNetworkProfile(networks("999|" + many), {}, 500);
        QCOMPARE(merged.wirelessNetworks().size(), 500);
        QCOMPARE(merged.wirelessNetworks().at(1).ssid(), "0"_s);
    }

    /// `first`, `second` and `expected` are JSON, or what the rule takes and gives.
    void followsItsRules_data()
    {
        QTest::addColumn<Rule>("rule");
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::addColumn<QByteArray>("expected");
        addProfileRows();
        addKeyRows();
        addPictureRows();
        addTableRows();
    }
    void followsItsRules()
    {
        QFETCH(Rule, rule);
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QFETCH(QByteArray, expected);
        const bool isJson = expected.startsWith('{');
        QCOMPARE(rule(first, second), isJson ? textOf(parse<OrvaHash>(expected)) : expected);
    }
};

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
