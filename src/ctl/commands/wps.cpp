// SPDX-License-Identifier: Apache-2.0
#include "commands/action.h"
#include "commands/families.h"
#include "commands/joining.h"
#include "commands/profileedit.h"
#include "interrupt.h"
#include "output/names.h"

#include <QTimer>

namespace ctl {

namespace {

/// A session lasts two minutes: the time to walk to the router.
constexpr std::chrono::seconds sessionPatience{130};

/// Shows a person the network that a session brought; the key is shown to a machine only.
void showCredentials(const Output& out, const OrvaNetworkInterface& network, bool applied)
{
    out.line(QStringLiteral("Network   \"%1\"").arg(printable(network.ssid())));
    out.line(QStringLiteral("Security  %1").arg(securityName(network.encryption())));
    if (!applied)
        out.note(QStringLiteral("The credentials are not applied; --apply does so."));
}

/// Tells the person what to do at the router, once the session runs and not where it is refused.
class Instruction
{
public:
    Instruction(Context& context, const QString& text)
    {
        const auto say = [this, &context, text] {
            if (!std::exchange(m_said, true))
                context.out.note(text);
        };
        QObject::connect(&context.host, &Host::valueChanged, &m_guard,
                         [say](const CMPath& path, const OrvaValue& value) {
                             if (path == OrvaNetworkInfoPath() &&
                                 value.networkInfo().wireless().wps().status() ==
                                     OrvaNetworkWpsStatus::InProgress)
                                 say();
                         });
        // The info does not change where the session before left it so; a refusal comes at once.
        QTimer::singleShot(std::chrono::seconds(1), &m_guard, say);
    }

private:
    QObject m_guard;
    bool m_said = false;
};

/// A second session is refused in words alone.
Failure busyOr(Failure failure)
{
    if (failure.text == QLatin1String("WPS in progress, ignoring request."))
        failure.status = ExitStatus::Busy;
    return failure;
}

bool isUnanswered(const Failure& failure)
{
    return failure.status == ExitStatus::TimedOut || failure.status == ExitStatus::Interrupted;
}

/// Nobody is there any more for what the session would bring. Where another is refused for it, the
/// one that runs is somebody else's.
void cancelSession(Context& context)
{
    context.bus.tidyUp(std::chrono::seconds(5));
    const auto runs = context.host.isAtIt();
    if (runs && !*runs)
        return;
    const Result cancelled =
        runs ? Result(context.host.invoke(OrvaNetworkCancelWpsPath(), {})) : Result(runs.error());
    if (!cancelled)
        context.out.note(
            QStringLiteral("The WPS session may go on: %1").arg(printable(cancelled.why())));
}

Result cancel(Context& context, const Arguments&)
{
    return activate(context, OrvaNetworkCancelWpsPath(), {});
}

Result runSession(Context& context, const CMPath& path, const OrvaValue& value,
                  const QString& instruction, const Arguments& given)
{
    const Interrupt interrupt;
    const auto credentials = [&] {
        const Instruction toPerson(context, instruction);
        return activate(context, path, value, sessionPatience);
    }();
    if (!credentials && isUnanswered(credentials.error()))
        cancelSession(context);
    if (!credentials)
        return busyOr(credentials.error());
    showCredentials(context.out, credentials->networkInterface(), given.flag("--apply"));
    if (!given.flag("--apply"))
        return {};
    const Result applied = context.host.invoke(OrvaNetworkApplyWpsPath(), *credentials);
    const auto profile = publishedProfile(context.host);
    if (!applied || !profile)
        return applied ? Result(profile.error()) : applied;
    return waitForJoining(context, *profile, credentials->networkInterface().ssid());
}

Result pushButton(Context& context, const Arguments& given)
{
    return runSession(context, OrvaNetworkPerformWpsPbcPath(), {},
                      QStringLiteral("Press the WPS button of the router."), given);
}

Outcome<OrvaValue> pinOf(Host& host, const Arguments& given)
{
    if (given.text("PIN").isEmpty())
        return host.invoke(OrvaNetworkGenerateWpsPinPath(), {});
    return OrvaValue::of(given.text("PIN"));
}

Result pinSession(Context& context, const Arguments& given)
{
    const auto pin = pinOf(context.host, given);
    if (!pin)
        return pin.error();
    const auto instruction =
        QStringLiteral("Enter the PIN %1 at the router.").arg(printable(pin->string_()));
    return runSession(context, OrvaNetworkPerformWpsPinPath(), *pin, instruction, given);
}

Result generate(Context& context, const Arguments&)
{
    const auto pin = activate(context, OrvaNetworkGenerateWpsPinPath(), {});
    if (!pin)
        return pin.error();
    context.out.line(printable(pin->string_()));
    return {};
}

} // namespace

Commands wpsCommands()
{
    using Kind = Parameter::Kind;
    const Parameter apply = {"--apply", "Join the network with the credentials received",
                             Kind::Flag};
    const Parameter time = {
        "--wait",
        "Wait at most SECONDS for the session's end and, with --apply, for the network; 130 and "
        "90 where not given; 0 waits for the session alone",
        Kind::Wait};
    const Parameter pin = {"PIN", "8 digits; a fresh one where not given"};
    return {
        {"wifi wps", "Wi-Fi Protected Setup"},
        {"wifi wps pbc", "Runs a session by the router's push button", {apply, time}, &pushButton},
        {"wifi wps pin", "Runs a session by PIN", {pin, apply, time}, &pinSession},
        {"wifi wps cancel", "Ends the session that runs", {answerTime()}, &cancel},
        {"wifi wps generate", "Shows a fresh PIN", {}, &generate},
    };
}

} // namespace ctl
