#include "action.h"

#include "names.h"

namespace ctl {

namespace {

/// A session lasts two minutes: the time to walk to the router.
constexpr std::chrono::seconds sessionPatience{130};

struct SessionOptions
{
    std::string pin;
    bool apply = false;
};

/// What a session brought, for a person; the key is shown to a machine only.
void showCredentials(const Output& out, const OrvaNetworkInterface& network, bool applied)
{
    out.line(QStringLiteral("Network   \"%1\"").arg(printable(network.ssid())));
    out.line(QStringLiteral("Security  %1").arg(securityName(network.encryption())));
    if (!applied)
        out.note(QStringLiteral("The credentials are not applied; --apply does so."));
}

Result runSession(Context& context, const CMPath& path, const OrvaValue& value,
                  const SessionOptions& options)
{
    const auto credentials = activate(context, path, value, sessionPatience);
    if (!credentials)
        return credentials.failure();
    showCredentials(context.out, credentials->networkInterface(), options.apply);
    if (!options.apply)
        return {};
    return context.host.invoke(OrvaNetworkApplyWpsPath(), *credentials).result();
}

Result pushButton(Context& context, const SessionOptions& options)
{
    context.out.note(QStringLiteral("Press the WPS button of the router."));
    return runSession(context, OrvaNetworkPerformWpsPbcPath(), {}, options);
}

Outcome<OrvaValue> pinOf(Host& host, const SessionOptions& options)
{
    if (options.pin.empty())
        return host.invoke(OrvaNetworkGenerateWpsPinPath(), {});
    return valueOf(OrvaValue::String(), text(options.pin));
}

Result pinSession(Context& context, const SessionOptions& options)
{
    const auto pin = pinOf(context.host, options);
    if (!pin)
        return pin.failure();
    context.out.note(
        QStringLiteral("Enter the PIN %1 at the router.").arg(printable(pin->string_())));
    return runSession(context, OrvaNetworkPerformWpsPinPath(), *pin, options);
}

Result generate(Context& context, const NoOptions&)
{
    const auto pin = activate(context, OrvaNetworkGenerateWpsPinPath(), {});
    if (!pin)
        return pin.failure();
    context.out.line(printable(pin->string_()));
    return {};
}

void addSessionOptions(CommandLine& commands, CLI::App& command, SessionOptions& options)
{
    command.add_flag("--apply", options.apply, "Join the network with the credentials received");
    commands.addTime(command, "--wait", "Wait at most SECONDS for the session's end");
}

} // namespace

void addWpsCommands(CommandLine& commands, CLI::App& wifi)
{
    CLI::App& wps = CommandLine::group(wifi, "wps", "Wi-Fi Protected Setup");
    const auto button =
        commands.add(wps, "pbc", "Runs a session by the router's push button", &pushButton);
    addSessionOptions(commands, *button.app, *button.options);
    const auto pin = commands.add(wps, "pin", "Runs a session by PIN", &pinSession);
    pin.app->add_option("PIN", pin.options->pin, "8 digits; a fresh one where not given");
    addSessionOptions(commands, *pin.app, *pin.options);
    commands.add(wps, "generate", "Shows a fresh PIN", &generate);
}

} // namespace ctl
