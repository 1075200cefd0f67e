// SPDX-License-Identifier: Apache-2.0
#include "secret.h"

#include "output/valuetext.h"
#include "signalhandler.h"

#include <QFile>
#include <cstdio>
#include <optional>
#include <termios.h>
#include <unistd.h>

namespace ctl {

namespace {

constexpr qint64 maximumInput = 1 << 20;

/// The terminal as it was found; a signal handler can reach nothing else.
termios foundTerminal;

void restoreTerminal(int signal)
{
    tcsetattr(STDIN_FILENO, TCSANOW, &foundTerminal);
    std::raise(signal);
}

/// While it lives the terminal shows nothing of what is typed; a signal that ends the program does
/// not leave it mute.
class EchoOff
{
public:
    EchoOff()
    {
        tcgetattr(STDIN_FILENO, &foundTerminal);
        m_handler.emplace(&restoreTerminal,
                          std::initializer_list<int>{SIGINT, SIGTERM, SIGHUP, SIGQUIT});
        termios quiet = foundTerminal;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    ~EchoOff()
    {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &foundTerminal);
        std::fputc('\n', stderr);
    }
    Q_DISABLE_COPY(EchoOff)

private:
    std::optional<SignalHandler> m_handler;
};

Outcome<QString> toText(QByteArray bytes)
{
    if (bytes.endsWith('\n'))
        bytes.chop(1);
    if (bytes.endsWith('\r'))
        bytes.chop(1);
    const QString text = QString::fromUtf8(bytes);
    if (text.toUtf8() != bytes)
        return Failure{ExitStatus::Usage, QStringLiteral("The input is not UTF-8 text.")};
    const Result sendable = checkText(text);
    if (!sendable)
        return sendable.error();
    return text;
}

Outcome<QString> readAll(QFile& file)
{
    QByteArray bytes;
    QByteArray part;
    // A pipe gives what it has at the moment.
    while (bytes.size() <= maximumInput && !(part = file.read(maximumInput)).isEmpty())
        bytes += part;
    if (bytes.size() > maximumInput)
        return Failure{ExitStatus::Usage, QStringLiteral("The input is larger than 1 MiB.")};
    return toText(bytes);
}

Outcome<QString> promptForKey(const QString& prompt)
{
    if (isatty(STDIN_FILENO) != 1)
        return Failure{
            ExitStatus::Usage,
            QStringLiteral("No terminal to ask for the key on; give it with --key-file.")};
    std::fputs(prompt.toUtf8().constData(), stderr);
    const EchoOff quiet;
    QFile terminal;
    if (!terminal.open(STDIN_FILENO, QIODevice::ReadOnly))
        return Failure{ExitStatus::Other, QStringLiteral("The terminal cannot be read.")};
    return toText(terminal.readLine(maximumInput));
}

} // namespace

Outcome<QString> readText(const QString& file)
{
    QFile input(file);
    const bool open = file == QLatin1String("-") ? input.open(STDIN_FILENO, QIODevice::ReadOnly)
                                                 : input.open(QIODevice::ReadOnly);
    if (!open)
        return Failure{ExitStatus::Other, QStringLiteral("%1: %2").arg(file, input.errorString())};
    return readAll(input);
}

Outcome<QString> readKey(const QString& file, const QString& prompt)
{
    auto key = file.isEmpty() ? promptForKey(prompt) : readText(file);
    if (key && key->isEmpty())
        return Failure{ExitStatus::Usage, QStringLiteral("The key is empty.")};
    return key;
}

} // namespace ctl
