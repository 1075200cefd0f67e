#include "action.h"

#include <chrono>

namespace ctl {

namespace {

using Settings = OrvaNetworkProfileSoftApSettings;

struct RequestOptions
{
    std::string name;
    /// Settings by the key of the record; only what is named is sent.
    std::map<std::string, std::string> texts;
    std::optional<int> channel;
    std::optional<double> timeout;
    bool hold = false;
};

struct RevokeOptions
{
    std::string name;
    std::string interface;
};

OrvaNetworkProfileSoftApRequest requestOf(const RequestOptions& options)
{
    QVariantHash settings;
    for (const auto& [key, value] : options.texts) {
        if (!value.empty())
            settings.insert(text(key), text(value));
    }
    if (options.channel)
        settings.insert(Settings::Channel(), *options.channel);
    OrvaNetworkProfileSoftApRequest request;
    request.setName(text(options.name));
    request.setSettings(Settings(settings));
    if (options.timeout)
        request.setTimeout(qRound(qMin(*options.timeout, 1e6) * 1000));
    if (options.hold)
        request.setHoldSoftAp(true);
    return request;
}

Result request(Context& context, const RequestOptions& options)
{
    const OrvaValue value =
        valueOf(OrvaValue::NetworkSoftApRequest(), requestOf(options).__variant());
    return activate(context, OrvaNetworkRequestSoftApPath(), value).result();
}

Result revoke(Context& context, const RevokeOptions& options)
{
    OrvaNetworkProfileSoftApRequest request;
    request.setName(text(options.name));
    if (!options.interface.empty()) {
        Settings settings;
        settings.setApInterface(text(options.interface));
        request.setSettings(settings);
    }
    const OrvaValue value = valueOf(OrvaValue::NetworkSoftApRequest(), request.__variant());
    return activate(context, OrvaNetworkRevokeSoftApPath(), value).result();
}

QString yes(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString timeLeft(const OrvaNetworkSoftApRequestStatus& status)
{
    using namespace std::chrono;
    if (status.expiresAtMs() == 0)
        return QStringLiteral("never");
    const milliseconds now = duration_cast<milliseconds>(steady_clock::now().time_since_epoch());
    const qint64 left = qMax<qint64>(0, status.expiresAtMs() - now.count());
    return QStringLiteral("%1 s").arg((left + 999) / 1000);
}

QStringList tableRow(const OrvaNetworkSoftApRequestStatus& status)
{
    const Settings settings = status.settings();
    return {printable(status.name()),
            printable(status.interface()),
            printable(settings.ssid()),
            settings.channel() > 0 ? QString::number(settings.channel()) : QString(),
            yes(status.running()),
            yes(status.hold()),
            timeLeft(status)};
}

Result list(Context& context, const NoOptions&)
{
    const auto value = context.host.value(OrvaNetworkSoftApRequestsPath());
    if (!value)
        return value.failure();
    context.out.document(value->__hash());
    QVector<QStringList> table = {{QStringLiteral("NAME"), QStringLiteral("INTERFACE"),
                                   QStringLiteral("SSID"), QStringLiteral("CHANNEL"),
                                   QStringLiteral("RUNNING"), QStringLiteral("HOLD"),
                                   QStringLiteral("EXPIRES")}};
    for (const OrvaNetworkSoftApRequestStatus& status : value->softApRequests())
        table.append(tableRow(status));
    context.out.table(table);
    return {};
}

Result stations(Context& context, const NoOptions&)
{
    const auto value = context.host.value(OrvaNetworkConnectedSoftApStationsPath());
    if (!value)
        return value.failure();
    context.out.document(value->__hash());
    for (const QString& station : value->stringList())
        context.out.line(printable(station));
    return {};
}

struct SettingRow
{
    const char* option;
    const QString& key;
    const char* type;
    const char* description;
};

void addSettings(CLI::App& command, RequestOptions& options)
{
    const SettingRow rows[] = {
        {"--interface", Settings::ApInterface(), "NAME", "Soft-AP interface; uap0 where not given"},
        {"--ssid", Settings::Ssid(), "SSID", "Name of the network"},
        {"--bssid", Settings::Bssid(), "MAC", "Hardware address"},
        {"--country", Settings::CountryCode(), "CODE", "Country code"},
        {"--address", Settings::ApAddress(), "ADDRESS", "Own address"},
        {"--netmask", Settings::ApNetmask(), "ADDRESS", "Its netmask"},
        {"--dhcp-from", Settings::DhcpRangeFrom(), "ADDRESS", "First address given to stations"},
        {"--dhcp-to", Settings::DhcpRangeTo(), "ADDRESS", "Last address given to stations"},
        {"--domain", Settings::DomainName(), "NAME", "Domain name"},
        {"--vendor-data", Settings::VendorSpecificData(), "TEXT", "Vendor-specific data"},
    };
    for (const SettingRow& row : rows)
        command.add_option(row.option, options.texts[row.key.toStdString()], row.description)
            ->type_name(row.type);
    command.add_option("--channel", options.channel, "Channel");
}

} // namespace

void addSoftApCommands(CommandLine& commands)
{
    CLI::App& softap = CommandLine::group(commands.app(), "softap", "The soft access point");

    const auto asker = commands.add(
        softap, "request", "Asks for the soft access point; answers when it is up", &request);
    asker.app->add_option("NAME", asker.options->name, "Who asks")->required();
    addSettings(*asker.app, *asker.options);
    setSeconds(*asker.app->add_option("--timeout", asker.options->timeout,
                                      "When the request expires; never where not given"));
    asker.app->add_flag("--hold", asker.options->hold,
                        "Keep other requests from changing it; needs --timeout");
    commands.addTime(*asker.app, "--wait", "Wait at most SECONDS for the answer");

    const auto revoker = commands.add(softap, "revoke", "Takes a request back", &revoke);
    revoker.app->add_option("NAME", revoker.options->name, "Who asked")->required();
    revoker.app->add_option("--interface", revoker.options->interface, "Soft-AP interface")
        ->type_name("NAME");

    commands.add(softap, "list", "Lists who asked for what, and what runs", &list);
    commands.add(softap, "stations", "Lists the connected stations", &stations);
}

} // namespace ctl
