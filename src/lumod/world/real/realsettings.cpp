// SPDX-License-Identifier: Apache-2.0
#include "world/real/realsettings.h"

#include "log.h"

#include <array>
#include <linux/if.h>

namespace {

bool isNumber(const QVariant& value)
{
    return value.userType() == QMetaType::Double || value.userType() == QMetaType::LongLong;
}

bool takeInterface(const QVariant& value, QString& into)
{
    const auto name = value.toString();
    if (value.userType() != QMetaType::QString || name.toUtf8().size() >= IFNAMSIZ ||
        name.contains(QLatin1Char('/')) || name.contains(QLatin1Char(' ')) ||
        name.startsWith(QLatin1Char('-')) || name.startsWith(QLatin1Char('.')))
        return false;
    into = name;
    return true;
}

bool takePath(const QVariant& value, QString& into)
{
    if (value.userType() != QMetaType::QString || !value.toString().startsWith(QLatin1Char('/')))
        return false;
    into = value.toString();
    return true;
}

bool takeSeconds(const QVariant& value, int& into)
{
    constexpr int longest = 3600;
    const double seconds = value.toDouble();
    if (!isNumber(value) || !(seconds > 0) || seconds > longest)
        return false;
    into = qMax(1, qRound(seconds * 1000));
    return true;
}

bool takeMetric(const QVariant& value, int& into)
{
    constexpr double most = 1000000;
    const double metric = value.toDouble();
    if (!isNumber(value) || !(metric >= 1) || metric > most)
        return false;
    into = qRound(metric);
    return true;
}

bool takeSwitch(const QVariant& value, bool& into)
{
    into = value.toBool();
    return value.userType() == QMetaType::Bool;
}

bool takeCountry(const QVariant& value, QString& into)
{
    const auto isLetter = [](QChar c) { return c >= QLatin1Char('A') && c <= QLatin1Char('Z'); };
    const auto country = value.toString();
    if (value.userType() != QMetaType::QString || (!country.isEmpty() && country.size() != 2) ||
        !std::all_of(country.begin(), country.end(), isLetter))
        return false;
    into = country;
    return true;
}

bool takeFrequencies(const QVariant& value, QVector<int>& into)
{
    constexpr double lowest = 2412;
    constexpr double highest = 7115;
    into.clear();
    for (const auto& one : value.toList()) {
        const double frequency = one.toDouble();
        if (!isNumber(one) || !(frequency >= lowest) || frequency > highest)
            return false;
        into.append(qRound(frequency));
    }
    return value.userType() == QMetaType::QVariantList;
}

bool takeOwner(const QVariant& value, RealSettings::NameServerOwner& into)
{
    using Owner = RealSettings::NameServerOwner;
    static const QHash<QString, Owner> owners{{QStringLiteral("auto"), Owner::Auto},
                                              {QStringLiteral("file"), Owner::File},
                                              {QStringLiteral("resolvconf"), Owner::Resolvconf},
                                              {QStringLiteral("none"), Owner::Nobody}};
    const auto found = owners.constFind(value.toString());
    if (found == owners.constEnd())
        return false;
    into = *found;
    return true;
}

/// One setting: its key and how its value is taken; false for one that cannot be.
struct Row
{
    const char* key;
    bool (*take)(const QVariant& value, RealSettings& settings);
};

using S = RealSettings;
constexpr std::array rows = {
    Row{"wired", [](const auto& v, S& s) { return takeInterface(v, s.wired); }},
    Row{"wireless", [](const auto& v, S& s) { return takeInterface(v, s.wireless); }},
    Row{"softAp", [](const auto& v, S& s) { return takeInterface(v, s.softAp); }},
    Row{"dhcpcd", [](const auto& v, S& s) { return takePath(v, s.dhcpcd); }},
    Row{"resolvconf", [](const auto& v, S& s) { return takePath(v, s.resolvconf); }},
    Row{"wpaSupplicant", [](const auto& v, S& s) { return takePath(v, s.wpaSupplicant); }},
    Row{"hostapd", [](const auto& v, S& s) { return takePath(v, s.hostapd); }},
    Row{"dnsmasq", [](const auto& v, S& s) { return takePath(v, s.dnsmasq); }},
    Row{"helperDirectory", [](const auto& v, S& s) { return takePath(v, s.helperDirectory); }},
    Row{"runtimeDirectory", [](const auto& v, S& s) { return takePath(v, s.runtimeDirectory); }},
    Row{"dhcpDeadline", [](const auto& v, S& s) { return takeSeconds(v, s.dhcpDeadline); }},
    Row{"wiredMetric", [](const auto& v, S& s) { return takeMetric(v, s.wiredMetric); }},
    Row{"wirelessMetric", [](const auto& v, S& s) { return takeMetric(v, s.wirelessMetric); }},
    Row{"country", [](const auto& v, S& s) { return takeCountry(v, s.country); }},
    Row{"powerSave", [](const auto& v, S& s) { return takeSwitch(v, s.powerSave); }},
    Row{"backgroundScan", [](const auto& v, S& s) { return takeSwitch(v, s.backgroundScan); }},
    Row{"frequencies", [](const auto& v, S& s) { return takeFrequencies(v, s.frequencies); }},
    Row{"captivePortal", [](const auto& v, S& s) { return takeSwitch(v, s.captivePortal); }},
    Row{"probeAddresses", [](const auto& v, S& s) { return takeSwitch(v, s.probeAddresses); }},
    Row{"nameServers", [](const auto& v, S& s) { return takeOwner(v, s.nameServers); }},
    Row{"resolvConf", [](const auto& v, S& s) { return takePath(v, s.resolvConf); }},
};

/// One interface is not two things.
void keepApart(RealSettings& settings)
{
    const RealSettings defaults;
    if (!settings.wired.isEmpty() && settings.wired == settings.wireless) {
        qCWarning(lcLumod,
                  "The cable and Wi-Fi need an interface each, and both have \"%s\": using \"%s\" "
                  "and \"%s\"",
                  qUtf8Printable(settings.wired), qUtf8Printable(defaults.wired),
                  qUtf8Printable(defaults.wireless));
        settings.wired = defaults.wired;
        settings.wireless = defaults.wireless;
    }
    const auto isTaken = [&settings](const QString& name) {
        return name == settings.wired || name == settings.wireless;
    };
    if (settings.softAp.isEmpty() || !isTaken(settings.softAp))
        return;
    const auto refused =
        std::exchange(settings.softAp, isTaken(defaults.softAp) ? QString() : defaults.softAp);
    qCWarning(lcLumod).noquote()
        << QStringLiteral("The soft access point needs an interface of its "
                          "own, which \"%1\" is not: %2")
               .arg(refused, settings.softAp.isEmpty()
                                 ? QStringLiteral("there is none")
                                 : QStringLiteral("using \"%1\"").arg(settings.softAp));
}

} // namespace

RealSettings realSettings(const QVariantMap& file)
{
    RealSettings settings;
    for (auto entry = file.constBegin(); entry != file.constEnd(); ++entry) {
        const auto row = std::find_if(rows.begin(), rows.end(), [&entry](const Row& one) {
            return entry.key() == QLatin1String(one.key);
        });
        const auto before = settings;
        if (row == rows.end()) {
            qCWarning(lcLumod) << "No such setting, ignoring it:" << entry.key();
        } else if (!row->take(entry.value(), settings)) {
            settings = before;
            qCWarning(lcLumod) << "A value that cannot be, using the default of" << entry.key();
        }
    }
    keepApart(settings);
    return settings;
}
