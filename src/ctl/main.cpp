// SPDX-License-Identifier: Apache-2.0
#include "bus/connectalarm.h"
#include "context.h"
#include "interrupt.h"
#include "parser/commandline.h"
#include "parser/completion.h"
#include "parser/generate.h"

#include <QCoreApplication>
#include <algorithm>
#include <csignal>
#include <fcntl.h>

using namespace ctl;

namespace {

bool isUtf8(const char* argument)
{
    return QString::fromUtf8(argument).toUtf8() == argument;
}

QStringList columnsOf(const Command& command)
{
    QStringList columns;
    for (const std::string& name : command.columns)
        columns.append(QString::fromStdString(name));
    return columns;
}

QStringList wordsOf(int argc, char** argv)
{
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromUtf8(argv[i]));
    return words;
}

int fail(const Output& out, const Failure& failure)
{
    out.failure(failure);
    return int(failure.status);
}

std::string generated(const Program& program, const QString& what)
{
    return what == QLatin1String("man") ? manPage(program) : completionScript(what.toStdString());
}

Result runOnce(const Choice& choice, Output& out)
{
    std::optional<ConnectAlarm> alarm;
    if (!choice.deadline.isForever() || !choice.command->isPatient)
        alarm.emplace(choice.deadline);
    Bus bus(choice.deadline);
    const Result connected = bus.check();
    if (!connected)
        return connected;
    Host host(bus);
    alarm.reset();
    const Result fits = host.checkVersion();
    if (!fits)
        return fits;
    Context context{bus, host, out, choice.waits, columnsOf(*choice.command)};
    return choice.command->run(context, choice.arguments);
}

void pauseBefore(const QDeadlineTimer& deadline)
{
    QDeadlineTimer pause(200);
    if (!deadline.isForever() && deadline < pause)
        pause = deadline;
    static_cast<void>(Bus::runUntil([] { return false; }, pause));
}

Result runCommand(const Choice& choice, Output& out)
{
    registerBusTypes();
    Result result = runOnce(choice, out);
    while (choice.command->isPatient && result.error().status == ExitStatus::NotRunning) {
        if (choice.deadline.hasExpired())
            return Failure{ExitStatus::TimedOut, result.why()};
        pauseBefore(choice.deadline);
        result = runOnce(choice, out);
    }
    return result;
}

/// In a stream that is closed the next file that is opened would take its place, such as the bus's
/// connection. What goes the wrong way in these fails as it would have.
void occupyClosedStreams()
{
    for (const int stream : {0, 1, 2}) {
        if (fcntl(stream, F_GETFD) == -1)
            (void)!open("/dev/null", stream == 0 ? O_WRONLY : O_RDONLY);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    occupyClosedStreams();
    const QCoreApplication application(argc, argv);
    Output out;
    if (!std::all_of(argv, argv + argc, isUtf8))
        return fail(out, {ExitStatus::Usage, QStringLiteral("An argument is not UTF-8 text.")});
    const Program orvactl = program();
    const QStringList words = wordsOf(argc, argv);
    if (words.value(0) == QLatin1String("__complete")) {
        registerBusTypes();
        return complete(orvactl, words.mid(1));
    }
    const auto parsed = parseCommandLine(orvactl, argc, argv);
    if (const auto* ended = std::get_if<ExitStatus>(&parsed))
        return int(*ended);
    const Choice& choice = *std::get_if<Choice>(&parsed);
    if (!choice.generate.isEmpty()) {
        Output::text(generated(orvactl, choice.generate));
        return int(ExitStatus::Done);
    }
    out.setStyle(choice.style);
    const Result writable = out.checkColumns(columnsOf(*choice.command));
    if (!writable)
        return fail(out, writable.error());
    const Result result = runCommand(choice, out);
    if (result.error().status == ExitStatus::Interrupted)
        std::raise(Interrupt::received());
    return result ? int(ExitStatus::Done) : fail(out, result.error());
}
