// SPDX-License-Identifier: Apache-2.0
// The rules that need no state, a table of them in tables/rules.txt.
#include "backend/fake/defaultroute.h"
#include "networking.h"
#include "picture/currentstateprofile.h"
#include "picture/networkinforules.h"
#include "picture/webserverurl.h"
#include "profile/networkprofilerules.h"
#include "scan/scanrow.h"
#include "softap/softapdeadline.h"
#include "softap/softapsettings.h"
#include "tables.h"
#include "values.h"
#include "wps/wpscredentials.h"
#include "wps/wpspin.h"

#include <QTemporaryFile>

namespace {

using Info = OrvaNetworkInfo;
using Profile = OrvaNetworkProfile;
using Settings = OrvaNetworkProfileSoftApSettings;
using Cells = QStringList;

/// A rule as a function of texts.
using Rule = std::function<QString(const Cells& given)>;

template <class Record>
Record parse(const QString& text)
{
    return Record(OrvaPlain::fromJson(text.toUtf8())->toHash());
}

QString textOf(const OrvaHash& record)
{
    return QString::fromUtf8(OrvaPlain::toJson(record.__variant()));
}

/// A rule from one record to another, and from two.
template <class Record, class Result>
Rule ruleOf(Result (*rule)(Record))
{
    return [rule](const Cells& given) {
        return textOf(rule(parse<std::decay_t<Record>>(given.at(0))));
    };
}
template <class First, class Second, class Result>
Rule ruleOf(Result (*rule)(First, Second))
{
    return [rule](const Cells& given) {
        return textOf(rule(parse<std::decay_t<First>>(given.at(0)),
                           parse<std::decay_t<Second>>(given.at(1))));
    };
}

/// A profile as "SSID in use|SSIDs listed": "-" where the field is absent, "[]" for an empty list.
Profile networks(const QString& notation)
{
    const auto network = [](const QString& ssid) {
        return OrvaNetworkInterface(QVariantHash{{"ssid"_s, ssid}});
    };
    const QString used = notation.section("|"_s, 0, 0);
    const QString listed = notation.section("|"_s, 1);
    Profile profile;
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

QByteArray unescaped(QString text)
{
    return text.replace("\\n"_s, "\n"_s).replace("\\t"_s, "\t"_s).toUtf8();
}

QString rootIsOn(const Cells& given)
{
    QTemporaryFile table;
    if (!table.open() || table.write(unescaped(given.at(0))) < 0 || !table.flush())
        return "no table"_s;
    const bool isThere = given.at(0) != "unreadable"_s;
    qputenv("ORVA_MOUNT_TABLE", isThere ? QFile::encodeName(table.fileName()) : "/nowhere");
    return Networking::isNFS() ? "network"_s : "local"_s;
}

QString nextExpiry(const Cells& given)
{
    SoftAp softAp;
    const QStringList timeouts = given.at(1).split(" "_s);
    for (int i = 0; i < timeouts.size(); ++i) {
        OrvaNetworkProfileSoftApRequest request;
        request.setName(QString(QChar('a' + i)));
        softAp.table.set(
            {request, softApDeadline(given.at(0).toLongLong(), timeouts.at(i).toInt())});
    }
    const auto next = nextExpiringSoftApRequest({{"uap0"_s, softAp}});
    return next ? next->request.name() : QString();
}

/// Each section of the table by its name.
const QMap<QString, Rule> rules = {
    {"merge"_s,
     [](const Cells& given) {
         return textOf(computeNewNetworkProfile(networks(given.at(0)), networks(given.at(1)),
                                                given.at(2).toInt()));
     }},
    {"remove"_s,
     [](const Cells& given) { return textOf(withoutNetwork(networks(given.at(0)), given.at(1))); }},
    {"verify"_s,
     [](const Cells& given) {
         return verifyProfile(parse<Profile>(given.at(0))) ? "good"_s : "bad"_s;
     }},
    {"hide"_s, ruleOf(&hidePassword)},
    {"restore"_s, ruleOf(&restorePassword)},
    {"suspect"_s,
     [](const Cells& given) {
         return textOf(updateCredentialsSuspect(parse<Info>(given.at(0)), given.at(1), true));
     }},
    {"url"_s,
     [](const Cells& given) { return webserverUrl(parse<Info>(given.at(0)), given.at(1)); }},
    {"up"_s, ruleOf(&currentStateProfile)},
    {"root"_s, &rootIsOn},
    {"route"_s, [](const Cells& given) { return defaultRouteInterface(unescaped(given.at(0))); }},
    {"wps"_s, ruleOf(&withWpsCredentials)},
    {"row"_s, ruleOf(&scanRow)},
    {"settings"_s, ruleOf(&mergeSoftApSettings)},
    {"sticky"_s, ruleOf(&stickySoftApSettings)},
    {"own"_s, [](const Cells& given) { return ownSoftApSsid(given.at(0), given.at(1)); }},
    {"pin"_s, [](const Cells& given) { return wpsPin(given.at(0).toUInt()); }},
    {"isPin"_s,
     [](const Cells& given) {
         return QString::number(isWpsPin(QString::fromUtf8(unescaped(given.at(0)))));
     }},
    {"deadline"_s,
     [](const Cells& given) {
         const auto deadline = softApDeadline(given.at(0).toLongLong(), given.at(1).toInt());
         return deadline ? QString::number(*deadline) : "none"_s;
     }},
    {"next"_s, &nextExpiry},
};

} // namespace

class TestRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void followsItsRules_data()
    {
        addTableColumns();
        addTableRows(QFINDTESTDATA("tables/rules.txt"));
    }
    void followsItsRules()
    {
        QFETCH(QString, section);
        QFETCH(QStringList, cells);
        QVERIFY(rules.contains(section));
        const QString expected = cells.takeLast();
        const bool isProfile = section == "merge"_s || section == "remove"_s;
        const bool isJson = expected.startsWith("{"_s);
        QCOMPARE(rules[section](cells.mid(1)), isProfile ? textOf(networks(expected))
                                               : isJson  ? textOf(parse<OrvaHash>(expected))
                                                         : expected);
    }

    void mergesAThousandNetworks()
    {
        QString many = "0"_s;
        for (int i = 1; i < 1000; ++i)
            many += ",%1"_s.arg(i);
        const auto merged = computeNewNetworkProfile(networks("999|"_s + many), {}, 500);
        QCOMPARE(merged.wirelessNetworks().size(), 500);
        QCOMPARE(merged.wirelessNetworks().at(1).ssid(), "0"_s);
    }

    void readsNoRouteBehindANul()
    {
        QVERIFY(
            defaultRouteInterface(QByteArray("x\n\0", 3) + QByteArray("a0\t00000000")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestRules)
#include "tst_rules.moc"
