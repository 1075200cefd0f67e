#include "bus.h"
#include "commandline.h"
#include "connectalarm.h"
#include "generate.h"

#include <QCoreApplication>
#include <cstdio>

using namespace ctl;

namespace {

bool isUtf8(const char* argument)
{
    return QString::fromUtf8(argument).toUtf8() == argument;
}

int status(const Output& out, const Result& result)
{
    out.failure(result);
    return int(result.status);
}

/// Prints what was asked for; an empty optional where there is a command to run.
std::optional<int> generateIfAsked(CommandLine& commands)
{
    if (commands.generate().empty())
        return std::nullopt;
    const bool man = commands.generate() == "man";
    std::fputs((man ? manPage(commands.app()) : completion(commands.app())).c_str(), stdout);
    return 0;
}

Result runOnce(const CommandLine& commands, Output& out, const QDeadlineTimer& deadline)
{
    std::optional<ConnectAlarm> alarm;
    if (!deadline.isForever() || !commands.isPatient())
        alarm.emplace(deadline);
    const Bus bus(deadline);
    const Result connected = bus.check();
    if (!connected.ok())
        return connected;
    Host host(bus);
    alarm.reset();
    Context context{bus, host, out};
    return commands.run()(context);
}

Result runCommand(const CommandLine& commands, Output& out)
{
    constexpr std::chrono::milliseconds pause{200};
    registerBusTypes();
    const QDeadlineTimer deadline = commands.deadline();
    Result result = runOnce(commands, out, deadline);
    while (commands.isPatient() && result.status == ExitStatus::NotRunning) {
        if (deadline.hasExpired())
            return {ExitStatus::TimedOut, QStringLiteral("Timed out: %1").arg(result.text)};
        const QDeadlineTimer next(
            deadline.isForever()
                ? pause
                : std::min(pause, std::chrono::milliseconds(deadline.remainingTime())));
        static_cast<void>(Bus::runUntil([] { return false; }, next));
        result = runOnce(commands, out, deadline);
    }
    return result;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    Output out;
    if (!std::all_of(argv, argv + argc, isUtf8))
        return status(out, {ExitStatus::Usage, QStringLiteral("An argument is not UTF-8 text.")});
    CommandLine commands;
    try {
        commands.app().parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return commands.app().exit(error) == 0 ? int(ExitStatus::Done) : int(ExitStatus::Usage);
    }
    if (const auto generated = generateIfAsked(commands))
        return *generated;
    if (!commands.run()) {
        std::fputs(commands.app().help().c_str(), stderr);
        return int(ExitStatus::Usage);
    }
    out.setJson(commands.json());
    return status(out, runCommand(commands, out));
}
