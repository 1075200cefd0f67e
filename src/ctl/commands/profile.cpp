// SPDX-License-Identifier: Apache-2.0
#include "commands/families.h"
#include "commands/joining.h"
#include "commands/profileedit.h"
#include "commands/profileforce.h"
#include "output/names.h"

#include "core/orvawords.h"

namespace ctl {

namespace {

QString addressing(const OrvaNetworkInterface& interface)
{
    if (interface.dhcp())
        return QStringLiteral("DHCP");
    if (interface.ip().isEmpty())
        return QStringLiteral("no address");
    QString line = QStringLiteral("%1, netmask %2").arg(interface.ip(), interface.netmask());
    if (!interface.gateway().isEmpty())
        line += QStringLiteral(", gateway %1").arg(interface.gateway());
    if (!interface.dns().isEmpty())
        line += QStringLiteral(", DNS %1").arg(interface.dns().join(QLatin1Char(' ')));
    return printable(line);
}

QString softApText(const OrvaNetworkProfileSoftApSettings& settings)
{
    QString line = QStringLiteral("%1: \"%2\"").arg(settings.apInterface(), settings.ssid());
    if (settings.channel() > 0)
        line += QStringLiteral(", channel %1").arg(settings.channel());
    return printable(line);
}

Result printProfile(Context& context, const Arguments&)
{
    const auto value = context.host.value(OrvaNetworkProfilePath());
    if (!value)
        return value.error();
    context.out.document(value->__hash());
    const OrvaNetworkProfile profile = value->networkProfile();
    QVector<QStringList> table = {
        {QStringLiteral("Type"), OrvaNetworkProfileType::toString(profile.type())},
        {QStringLiteral("Wired"), addressing(profile.wired())}};
    QString heading = QStringLiteral("Wireless");
    for (const OrvaNetworkInterface& network : profile.wirelessNetworks()) {
        table.append({heading, QStringLiteral("\"%1\", %2, %3")
                                   .arg(printable(network.ssid()),
                                        securityName(network.encryption()), addressing(network))});
        heading.clear();
    }
    for (const OrvaNetworkProfileSoftApSettings& settings : profile.softApSettings())
        table.append({QStringLiteral("Soft AP"), softApText(settings)});
    context.out.table(table);
    return {};
}

OrvaNetworkInterface withAddress(OrvaNetworkInterface interface, const Arguments& given)
{
    if (given.flag("--dhcp")) {
        interface.setDhcp(true);
        interface.__remove(OrvaNetworkInterface::Ip());
        interface.__remove(OrvaNetworkInterface::Netmask());
        interface.__remove(OrvaNetworkInterface::Gateway());
        interface.__remove(OrvaNetworkInterface::Dns());
        return interface;
    }
    if (!given.text("--ip").isEmpty()) {
        interface.setDhcp(false);
        interface.setIp(given.text("--ip"));
    }
    if (!given.text("--netmask").isEmpty())
        interface.setNetmask(given.text("--netmask"));
    if (!given.text("--gateway").isEmpty())
        interface.setGateway(given.text("--gateway"));
    if (!given.texts("--dns").isEmpty())
        interface.setDns(given.texts("--dns"));
    return interface;
}

OrvaNetworkProfile withType(OrvaNetworkProfile profile, const QString& type)
{
    if (const auto number = orvaEnumNumber(OrvaNetworkProfileType::values(), type))
        profile.setType(static_cast<OrvaNetworkProfileType::Value>(*number));
    return profile;
}

/// True of an action that the host has taken, and whose result has not come about.
bool isTaken(ExitStatus status)
{
    return status == ExitStatus::TimedOut ||
           (status >= ExitStatus::NotInRange && status < ExitStatus::Interrupted &&
            status != ExitStatus::Busy);
}

Result changeProfile(Context& context, const Arguments& given)
{
    if (given.text("--type").isEmpty() && !asksForAddress(given))
        return Failure{ExitStatus::Usage, QStringLiteral("Nothing to change: see --help.")};
    const auto published = publishedProfile(context.host);
    if (!published)
        return published.error();
    OrvaNetworkProfile profile = withType(*published, given.text("--type"));
    const bool isWireless = given.text("--interface") == QLatin1String("wireless");
    if (asksForAddress(given) && isWireless && profile.wireless().ssid().isEmpty())
        return Failure{ExitStatus::Usage,
                       QStringLiteral("There is no wireless network to set it for.")};
    if (asksForAddress(given) && isWireless)
        profile.setWireless(withAddress(profile.wireless(), given));
    else if (asksForAddress(given))
        profile.setWired(withAddress(profile.wired(), given));
    const Action setting = settingOf(profile, given);
    const JoinWatch watch(context);
    Result result = watch.explained(activateAndWait(
        context, setting.path, setting.value,
        whenInfo([&](const OrvaNetworkInfo& info) { return isInForce(info, profile, given); }),
        [&](const OrvaNetworkInfo& info) { return isForLater(info, profile, given); }));
    if (result || isTaken(result.error().status))
        noteTrial(context.out, given);
    return result;
}

Result confirm(Context& context, const Arguments&)
{
    return activate(context, OrvaNetworkConfirmProfilePath(), {});
}

/// Another profile comes into use: waits until there is a network by it.
Command::Run exchangeProfile(const CMPath& action)
{
    return [action](Context& context, const Arguments&) -> Result {
        const JoinWatch watch(context);
        auto profile = publishedProfile(context.host);
        if (!profile)
            return profile.error();
        const QObject guard;
        QObject::connect(&context.host, &Host::valueChanged, &guard,
                         [&](const CMPath& path, const OrvaValue& value) {
                             if (path == OrvaNetworkProfilePath())
                                 profile = value.networkProfile();
                         });
        return watch.explained(
            activateAndReturn(context, action, &isConnected, [&](const OrvaNetworkInfo& info) {
                return noNetwork(info, *profile);
            }));
    };
}

std::vector<Parameter> setParameters()
{
    using Kind = Parameter::Kind;
    return {
        Parameter{"--type", "What is configured; auto: the cable where there is one, else Wi-Fi"}
            .valueOf(OrvaNetworkProfileType::values()),
        Parameter{"--interface", "Whose address the options below set; wired where not given"}
            .oneOf({"wired", "wireless"}),
        {"--ip", "Static address", Kind::Address},
        {"--netmask", "Its netmask", Kind::Address},
        {"--gateway", "Gateway", Kind::Address},
        {"--dns", "Name servers, commas between them", Kind::Addresses},
        Parameter{"--dhcp", "Address by DHCP, in place of those above", Kind::Flag}.without(
            {"--ip", "--netmask", "--gateway", "--dns"}),
        confirmTime(),
        resultTime(),
    };
}

} // namespace

Commands profileCommands()
{
    return {
        {"profile", "The network profile"},
        {"profile show", "Shows the profile, keys masked", {}, &printProfile},
        {"profile set", "Changes what is named, leaves all else, and waits until it is in force",
         setParameters(), &changeProfile},
        {"profile confirm",
         "Keeps the profile that was set with --confirm",
         {answerTime()},
         &confirm},
        {"profile rollback",
         "Goes back to the profile before the one set with --confirm",
         {resultTime()},
         exchangeProfile(OrvaNetworkRollbackProfilePath())},
        {"profile restore-backup",
         "Brings back the wireless networks that were set aside after too many refused keys",
         {resultTime()},
         exchangeProfile(OrvaNetworkRestoreBackupPath())},
    };
}

} // namespace ctl
