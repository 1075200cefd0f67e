// SPDX-License-Identifier: Apache-2.0
#include "commands/action.h"
#include "commands/families.h"
#include "output/names.h"
#include "output/qrcode.h"
#include "secret.h"

#include "network/networkrules.h"

#include <chrono>

namespace ctl {

namespace {

using Settings = OrvaNetworkProfileSoftApSettings;

/// An option that sets a text of the settings.
struct SettingRow
{
    const char* option;
    QString key;
    const char* type;
    const char* description;
};

std::vector<SettingRow> settingRows()
{
    return {
        {"--interface", Settings::ApInterface(), "NAME", "Soft-AP interface; uap0 where not given"},
        {"--ssid", Settings::Ssid(), "SSID", "Name of the network"},
        {"--bssid", Settings::Bssid(), "MAC", "Hardware address"},
        {"--country", Settings::CountryCode(), "CODE", "Country code"},
        {"--address", Settings::ApAddress(), "ADDRESS", "Own address"},
        {"--netmask", Settings::ApNetmask(), "ADDRESS", "Its netmask"},
        {"--dhcp-from", Settings::DhcpRangeFrom(), "ADDRESS", "First address given to stations"},
        {"--dhcp-to", Settings::DhcpRangeTo(), "ADDRESS", "Last address given to stations"},
        {"--domain", Settings::DomainName(), "NAME", "Domain name"},
        {"--vendor-data", Settings::VendorSpecificData(), "DATA", "Vendor-specific data"},
    };
}

QString passphrasePrompt(const QString& ssid)
{
    return ssid.isEmpty() ? QStringLiteral("Pass phrase of the soft access point: ")
                          : QStringLiteral("Pass phrase of \"%1\": ").arg(printable(ssid));
}

/// Only what is named is sent.
Settings settingsOf(const Arguments& given)
{
    QVariantHash settings;
    for (const SettingRow& row : settingRows()) {
        const QString value = given.text(row.option);
        if (!value.isEmpty())
            settings.insert(row.key, value);
    }
    if (const auto channel = given.integer("--channel"))
        settings.insert(Settings::Channel(), *channel);
    return Settings(settings);
}

Outcome<OrvaNetworkProfileSoftApRequest> requestOf(Bus& bus, const Arguments& given)
{
    OrvaNetworkProfileSoftApRequest request;
    request.setName(given.text("NAME"));
    Settings settings = settingsOf(given);
    if (given.flag("--ask-key") || !given.text("--key-file").isEmpty()) {
        const Bus::Pause pause(bus);
        const auto key = readKey(given.text("--key-file"), passphrasePrompt(settings.ssid()));
        if (!key)
            return key.error();
        settings.setPassphrase(*key);
    }
    request.setSettings(settings);
    if (const auto timeout = given.seconds("--timeout"))
        request.setTimeout(qRound(qMin(*timeout, 1e6) * 1000));
    if (given.flag("--hold"))
        request.setHoldSoftAp(true);
    if (given.flag("--bound"))
        request.setBound(true);
    return request;
}

/// Waits until somebody else ends the request; Ctrl-C ends this process, and the request with it.
Result stay(Context& context, const QString& name)
{
    context.out.note(QStringLiteral("The request lasts as long as this command; Ctrl-C ends it."));
    const auto verdict = [&](const OrvaValue& value) -> std::optional<Result> {
        for (const OrvaNetworkSoftApRequestStatus& status : value.softApRequests()) {
            if (status.name() == name && status.bound())
                return std::nullopt;
        }
        return Failure{ExitStatus::Failed, QStringLiteral("The request was revoked or expired.")};
    };
    return context.host.waitFor(OrvaNetworkSoftApRequestsPath(), verdict,
                                QDeadlineTimer(QDeadlineTimer::Forever));
}

Result request(Context& context, const Arguments& given)
{
    const auto asked = requestOf(context.bus, given);
    if (!asked)
        return asked.error();
    const OrvaValue value = OrvaValue::of(*asked);
    if (context.waits || given.flag("--bound")) {
        const auto answer =
            activate(context, OrvaNetworkRequestSoftApPath(), value, resultPatience);
        return answer && given.flag("--bound") ? stay(context, given.text("NAME")) : answer;
    }
    const Result taken = context.host.handOver(OrvaNetworkRequestSoftApPath(), value);
    if (taken)
        context.out.document({});
    return taken;
}

Result revoke(Context& context, const Arguments& given)
{
    OrvaNetworkProfileSoftApRequest request;
    request.setName(given.text("NAME"));
    if (!given.text("--interface").isEmpty()) {
        Settings settings;
        settings.setApInterface(given.text("--interface"));
        request.setSettings(settings);
    }
    const OrvaValue value = OrvaValue::of(request);
    return activate(context, OrvaNetworkRevokeSoftApPath(), value);
}

QString yes(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString timeLeft(const OrvaNetworkSoftApRequestStatus& status)
{
    if (status.expiresAtMs() == 0)
        return QStringLiteral("never");
    const qint64 left = qMax<qint64>(0, status.expiresAtMs() - monotonicNow());
    return QStringLiteral("%1 s").arg((left + 999) / 1000);
}

QStringList tableRow(const OrvaNetworkSoftApRequestStatus& status)
{
    const Settings settings = status.settings();
    return {printable(status.name()),
            printable(status.interface()),
            printableName(settings.ssid()),
            settings.channel() > 0 ? QString::number(settings.channel()) : QString(),
            yes(status.running()),
            yes(status.hold()),
            timeLeft(status)};
}

Result listRequests(Context& context, const Arguments&)
{
    const auto value = context.host.value(OrvaNetworkSoftApRequestsPath());
    if (!value)
        return value.error();
    context.out.document(value->__hash());
    QVector<QStringList> table;
    for (const OrvaNetworkSoftApRequestStatus& status : value->softApRequests())
        table.append(tableRow(status));
    context.out.table(context.columns, table);
    return {};
}

Result stations(Context& context, const Arguments&)
{
    const auto value = context.host.value(OrvaNetworkConnectedSoftApStationsPath());
    if (!value)
        return value.error();
    context.out.document(value->__hash());
    for (const QString& station : value->stringList())
        context.out.line(printable(station));
    return {};
}

/// The settings of the access point that runs on that interface, on any for an empty name.
Outcome<Settings> runningSettings(Context& context, const QString& interface)
{
    const auto value = context.host.value(OrvaNetworkSoftApRequestsPath());
    if (!value)
        return value.error();
    for (const OrvaNetworkSoftApRequestStatus& status : value->softApRequests()) {
        if (status.running() && (interface.isEmpty() || status.interface() == interface))
            return status.applied();
    }
    return Failure{ExitStatus::Failed, QStringLiteral("No soft access point runs.")};
}

/// Where the host would refuse it as one, the access point has another.
Result checkPassphrase(const QString& text)
{
    const auto encryption = OrvaNetworkProfileWirelessEncryption::WpaPsk;
    if (text.size() < 64 && orvaNetworkIsKeyValid(text, encryption).isEmpty()) // 64 are a key
        return {};
    return Failure{ExitStatus::Usage,
                   QStringLiteral("A pass phrase has 8 to 63 printable ASCII characters.")};
}

/// The host shows nobody a pass phrase, so that whoever has set it gives it once more.
Result showQrCode(Context& context, const Arguments& given)
{
    const auto settings = runningSettings(context, given.text("--interface"));
    if (!settings)
        return settings.error();
    QString passphrase;
    if (!settings->passphrase().isEmpty()) {
        const auto key = readKey(given.text("--key-file"), passphrasePrompt(settings->ssid()));
        if (!key)
            return key.error();
        const Result fits = checkPassphrase(*key);
        if (!fits)
            return fits.error();
        passphrase = *key;
    }
    const QString text = wifiText(settings->ssid(), passphrase);
    context.out.document({{QStringLiteral("text"), text}});
    const bool coloured = !Output::styled(QString(), Output::Style::Paper).isEmpty();
    for (const QString& line : qrLines(text, coloured))
        context.out.line(
            Output::styled(Output::styled(line, Output::Style::Ink), Output::Style::Paper));
    return {};
}

std::vector<Parameter> requestParameters()
{
    using Kind = Parameter::Kind;
    std::vector<Parameter> parameters = {Parameter{"NAME", "Who asks"}.required()};
    for (const SettingRow& row : settingRows())
        parameters.push_back(Parameter{row.option, row.description}.of(row.type));
    parameters.insert(
        parameters.end(),
        {Parameter{"--key-file", "File with the pass phrase; - reads standard input"}.of("FILE"),
         {"--ask-key", "Ask for the pass phrase; open where none is given", Kind::Flag},
         {"--channel", "Channel", Kind::Integer},
         {"--timeout", "When the request expires; never where not given", Kind::Seconds},
         {"--bound", "Stay, and end the request when this command ends", Kind::Flag},
         {"--hold", "Keep other requests from changing it; needs --timeout", Kind::Flag},
         resultTime()});
    return parameters;
}

} // namespace

Commands softApCommands()
{
    return {
        {"softap", "The soft access point"},
        {"softap request", "Asks for the soft access point; answers when it is up",
         requestParameters(), &request},
        {"softap revoke",
         "Takes a request back",
         {Parameter{"NAME", "Who asked"}.required().of("REQUESTER"),
          Parameter{"--interface", "Soft-AP interface"}.of("NAME")},
         &revoke},
        Command{"softap list", "Lists who asked for what, and what runs", {}, &listRequests}
            .writing({"NAME", "INTERFACE", "SSID", "CHANNEL", "RUNNING", "HOLD", "EXPIRES"}),
        {"softap qr",
         "Shows a code by which a phone joins the one that runs; asks for its pass phrase",
         {Parameter{"--key-file", "File with the pass phrase; - reads standard input"}.of("FILE"),
          Parameter{"--interface", "Soft-AP interface; the first that runs where not given"}.of(
              "NAME")},
         &showQrCode},
        {"softap stations", "Lists the connected stations", {}, &stations},
    };
}

} // namespace ctl
