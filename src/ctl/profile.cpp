#include "names.h"
#include "profileedit.h"

namespace ctl {

namespace {

struct SetOptions
{
    std::string type;
    std::string interface = "wired";
    bool dhcp = false;
    std::string ip;
    std::string netmask;
    std::string gateway;
    std::vector<std::string> dns;

    [[nodiscard]] bool hasAddress() const
    {
        return dhcp || !ip.empty() || !netmask.empty() || !gateway.empty() || !dns.empty();
    }
};

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

Result show(Context& context, const NoOptions&)
{
    const auto value = context.host.value(OrvaNetworkProfilePath());
    if (!value)
        return value.failure();
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

OrvaNetworkInterface withAddress(OrvaNetworkInterface interface, const SetOptions& options)
{
    if (options.dhcp) {
        interface.setDhcp(true);
        interface.__remove(OrvaNetworkInterface::Ip());
        interface.__remove(OrvaNetworkInterface::Netmask());
        interface.__remove(OrvaNetworkInterface::Gateway());
        interface.__remove(OrvaNetworkInterface::Dns());
        return interface;
    }
    QStringList dns;
    for (const std::string& server : options.dns)
        dns.append(text(server));
    if (!options.ip.empty()) {
        interface.setDhcp(false);
        interface.setIp(text(options.ip));
    }
    if (!options.netmask.empty())
        interface.setNetmask(text(options.netmask));
    if (!options.gateway.empty())
        interface.setGateway(text(options.gateway));
    if (!dns.isEmpty())
        interface.setDns(dns);
    return interface;
}

OrvaNetworkProfile withType(OrvaNetworkProfile profile, const std::string& name)
{
    for (const auto type : {OrvaNetworkProfileType::Auto, OrvaNetworkProfileType::Wired,
                            OrvaNetworkProfileType::Wireless}) {
        if (OrvaNetworkProfileType::toString(type) == text(name))
            profile.setType(type);
    }
    return profile;
}

Result set(Context& context, const SetOptions& options)
{
    if (options.type.empty() && !options.hasAddress())
        return {ExitStatus::Usage, QStringLiteral("Nothing to change: see --help.")};
    const auto published = publishedProfile(context.host);
    if (!published)
        return published.failure();
    OrvaNetworkProfile profile = withType(*published, options.type);
    const bool isWireless = options.interface == "wireless";
    if (options.hasAddress() && isWireless && profile.wireless().ssid().isEmpty())
        return {ExitStatus::Usage, QStringLiteral("There is no wireless network to set it for.")};
    if (options.hasAddress() && isWireless)
        profile.setWireless(withAddress(profile.wireless(), options));
    else if (options.hasAddress())
        profile.setWired(withAddress(profile.wired(), options));
    return setProfile(context, profile, whenInfo([](const OrvaNetworkInfo& info) {
                          return info.state() == OrvaNetworkState::Connected;
                      }));
}

void addAddressOptions(CLI::App& command, SetOptions& options)
{
    const auto address = CLI::ValidIPV4.description("");
    setChoices(*command.add_option("--interface", options.interface,
                                   "Whose address the options below set; wired where not given"),
               {"wired", "wireless"});
    CLI::Option* ip = command.add_option("--ip", options.ip, "Static address");
    CLI::Option* netmask = command.add_option("--netmask", options.netmask, "Its netmask");
    CLI::Option* gateway = command.add_option("--gateway", options.gateway, "Gateway");
    CLI::Option* dns =
        command.add_option("--dns", options.dns, "Name servers, commas between them");
    dns->delimiter(',');
    CLI::Option* dhcp = command.add_flag("--dhcp", options.dhcp, "Address by DHCP");
    for (CLI::Option* option : {ip, netmask, gateway, dns}) {
        option->check(address)->type_name("ADDRESS");
        dhcp->excludes(option);
    }
}

} // namespace

Outcome<OrvaNetworkProfile> publishedProfile(Host& host)
{
    const auto value = host.value(OrvaNetworkProfilePath());
    return value ? Outcome<OrvaNetworkProfile>(value->networkProfile()) : value.failure();
}

Result setProfile(Context& context, const OrvaNetworkProfile& profile, const InfoVerdict& verdict)
{
    return activateAndWait(context, OrvaNetworkSetNetworkProfilePath(),
                           valueOf(OrvaValue::NetworkProfile(), profile.__variant()), verdict);
}

void addProfileCommands(CommandLine& commands)
{
    CLI::App& profile = CommandLine::group(commands.app(), "profile", "The network profile");
    commands.add(profile, "show", "Shows the profile, keys masked", &show);

    const auto setter =
        commands.add(profile, "set", "Changes what is named and leaves all else", &set);
    setChoices(*setter.app->add_option("--type", setter.options->type,
                                       "Which interface the profile configures"),
               {"auto", "wired", "wireless"});
    addAddressOptions(*setter.app, *setter.options);
    commands.addTime(*setter.app, "--wait", "Also wait until connected, at most SECONDS");
}

} // namespace ctl
