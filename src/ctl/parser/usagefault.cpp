// SPDX-License-Identifier: Apache-2.0
#include "parser/usagefault.h"

#include "parser/suggestion.h"

#include <algorithm>
#include <utility>

namespace ctl {

namespace {

const Command* find(const Commands& commands, const QString& words)
{
    const auto same = [&words](const Command& command) {
        return words == QString::fromStdString(command.words);
    };
    const auto found = std::find_if(commands.begin(), commands.end(), same);
    return found == commands.end() ? nullptr : &*found;
}

/// The command that the line names, as far as its words are known, and the word that is not.
struct Reading
{
    QString words;
    QString unknown;
};

bool takesValue(const Program& program, const QString& option)
{
    const auto isIt = [&option](const Parameter& parameter) {
        return option == QString::fromStdString(parameter.name) && !typeOf(parameter).empty();
    };
    return std::any_of(program.options.begin(), program.options.end(), isIt);
}

Reading readWords(const Program& program, const QStringList& arguments)
{
    Reading reading;
    bool isValue = false;
    for (const QString& argument : arguments) {
        const bool wasOption = argument.startsWith(QLatin1Char('-'));
        if (std::exchange(isValue, wasOption && takesValue(program, argument)) || wasOption)
            continue;
        const QString words = (reading.words + QLatin1Char(' ') + argument).trimmed();
        if (find(program.commands, words)) {
            reading.words = words;
            continue;
        }
        const Command* command = find(program.commands, reading.words);
        if (!command || command->isGroup())
            reading.unknown = argument;
        break;
    }
    return reading;
}

QString unknownCommand(const Program& program, const Reading& reading)
{
    QStringList words;
    for (const Command& command : program.commands)
        words.append(QString::fromStdString(command.words));
    const QString written = (reading.words + QLatin1Char(' ') + reading.unknown).trimmed();
    return QStringLiteral("There is no command \"%1\".").arg(written) + didYouMean(written, words);
}

/// The options that may stand in the line.
QStringList optionsOf(const Program& program, const QString& words)
{
    QStringList names = {QStringLiteral("--help")};
    std::vector<Parameter> parameters = program.options;
    if (const Command* command = find(program.commands, words))
        parameters.insert(parameters.end(), command->parameters.begin(), command->parameters.end());
    for (const Parameter& parameter : parameters) {
        if (parameter.isOption() && !parameter.isHidden)
            names.append(QString::fromStdString(parameter.name));
    }
    return names;
}

QString keyAdvice()
{
    return QStringLiteral("A key is no argument, since everybody on the device can read those: "
                          "--key-file FILE takes it from a file, --key-file - from standard "
                          "input.");
}

QString unknownOption(const QStringList& arguments, const QStringList& options)
{
    for (const QString& argument : arguments) {
        const QString name = argument.section(QLatin1Char('='), 0, 0);
        if (!name.startsWith(QLatin1String("--")) || options.contains(name))
            continue;
        const bool isKey = name == QLatin1String("--key") || name == QLatin1String("--password");
        if (isKey && options.contains(QLatin1String("--key-file")))
            return keyAdvice();
        return QStringLiteral("There is no option \"%1\" here.").arg(name) +
               didYouMean(name, options);
    }
    return {};
}

} // namespace

QString usageFault(const Program& program, const QStringList& arguments, const QString& fault,
                   bool hasSurplus)
{
    const Reading reading = readWords(program, arguments);
    if (!reading.unknown.isEmpty())
        return unknownCommand(program, reading);
    const QStringList options = optionsOf(program, reading.words);
    const QString option = unknownOption(arguments, options);
    if (!option.isEmpty())
        return option;
    const Command* command = find(program.commands, reading.words);
    if (command && command->isGroup())
        return QStringLiteral("\"%1\" is several commands: see orvactl %1 --help.")
            .arg(reading.words);
    if (hasSurplus && options.contains(QLatin1String("--key-file")))
        return QStringLiteral("There are too many arguments. ") + keyAdvice();
    return fault;
}

} // namespace ctl
