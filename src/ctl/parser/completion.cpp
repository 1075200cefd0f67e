// SPDX-License-Identifier: Apache-2.0
#include "parser/completion.h"

#include "output/output.h"
#include "parser/livewords.h"

#include <algorithm>

namespace ctl {

namespace {

QString text(const std::string& from)
{
    return QString::fromStdString(from);
}

/// The possibilities that the words before the last one leave open.
class Line
{
public:
    Line(const Program& program, const QStringList& words)
        : m_program(program)
    {
        for (const QString& word : words.mid(0, words.size() - 1))
            take(word);
    }

    /// The option whose value comes next, or the argument; null for neither.
    [[nodiscard]] const Parameter* parameter() const
    {
        return m_option ? m_option : m_arguments.isEmpty() ? nullptr : m_arguments.first();
    }
    [[nodiscard]] bool awaitsValue() const { return m_option; }
    [[nodiscard]] bool optionsHaveEnded() const { return m_optionsHaveEnded; }
    [[nodiscard]] const QStringList& given() const { return m_given; }

    [[nodiscard]] Candidates commands() const
    {
        Candidates found;
        for (const Command* command : below(m_program.commands, m_words))
            found.append({text(command->name()), text(command->description)});
        return found;
    }
    [[nodiscard]] Candidates options() const
    {
        Candidates found;
        for (const Parameter* parameter : parameters()) {
            if (parameter->isOption())
                found.append({text(parameter->name), text(parameter->description)});
        }
        return found + Candidates{{QStringLiteral("--help"), QStringLiteral("Show the help")}};
    }

private:
    [[nodiscard]] std::vector<const Parameter*> parameters() const
    {
        std::vector<const Parameter*> all;
        const auto add = [&all](const std::vector<Parameter>& parameters) {
            for (const Parameter& parameter : parameters) {
                if (!parameter.isHidden)
                    all.push_back(&parameter);
            }
        };
        if (m_command)
            add(m_command->parameters);
        add(m_program.options);
        return all;
    }

    void take(const QString& word)
    {
        const bool mayBeOption = !m_optionsHaveEnded && word.startsWith(QLatin1Char('-'));
        if (m_option)
            m_option = nullptr;
        else if (mayBeOption && word == QLatin1String("--"))
            m_optionsHaveEnded = true;
        else if (mayBeOption)
            takeOption(word.toStdString());
        else if (m_optionsHaveEnded || !takeCommand(word.toStdString()))
            takeArgument(word);
    }

    void takeOption(const std::string& name)
    {
        for (const Parameter* parameter : parameters()) {
            if (parameter->name == name && !typeOf(*parameter).empty())
                m_option = parameter;
        }
    }

    bool takeCommand(const std::string& word)
    {
        for (const Command* command : below(m_program.commands, m_words)) {
            if (command->name() != word)
                continue;
            m_command = command;
            m_words = command->words;
            for (const Parameter& parameter : command->parameters) {
                if (!parameter.isOption() && !parameter.isHidden)
                    m_arguments.append(&parameter);
            }
            return true;
        }
        return false;
    }

    void takeArgument(const QString& word)
    {
        m_given.append(word);
        if (!m_arguments.isEmpty() && m_arguments.first()->kind != Parameter::Kind::Texts)
            m_arguments.removeFirst();
    }

    const Program& m_program;
    const Command* m_command = nullptr;
    std::string m_words;
    const Parameter* m_option = nullptr;
    bool m_optionsHaveEnded = false;       ///< by "--"
    QVector<const Parameter*> m_arguments; ///< that are still to come
    QStringList m_given;                   ///< arguments that are there
};

Candidates valuesOf(const Parameter& parameter, const Line& line)
{
    if (parameter.choices.empty()) {
        const auto source = sourceOf(parameter);
        return source == TypeRow::Source::None ? Candidates() : liveWords(source, line.given());
    }
    Candidates found;
    for (const std::string& choice : parameter.choices)
        found.append({text(choice), {}});
    return found;
}

/// A word that begins with a dash would be taken for an option, but for one after "--".
bool isTakenAsItIs(const QString& word, const Line& line)
{
    return line.optionsHaveEnded() || line.awaitsValue() || !word.startsWith(QLatin1Char('-'));
}

void show(const Candidates& candidates, const QString& begin)
{
    QStringList shown;
    for (const Candidate& candidate : candidates) {
        const bool fits = candidate.word.startsWith(begin) && !candidate.word.isEmpty() &&
                          printable(candidate.word) == candidate.word;
        if (!fits || shown.contains(candidate.word))
            continue;
        shown.append(candidate.word);
        const QString meaning = printable(candidate.meaning);
        Output::text(
            (meaning.isEmpty() ? candidate.word : candidate.word + QLatin1Char('\t') + meaning)
                .toStdString() +
            "\n");
    }
}

} // namespace

int complete(const Program& program, const QStringList& words)
{
    const Line line(program, words);
    const QString begin = words.value(words.size() - 1);
    if (!isTakenAsItIs(begin, line)) {
        show(line.options(), begin);
        return 0;
    }
    const Parameter* parameter = line.parameter();
    if (parameter && sourceOf(*parameter) == TypeRow::Source::Files)
        return completesFiles;
    Candidates found = parameter ? valuesOf(*parameter, line) : line.commands();
    found.erase(std::remove_if(found.begin(), found.end(),
                               [&](const Candidate& candidate) {
                                   return !isTakenAsItIs(candidate.word, line);
                               }),
                found.end());
    show(found, begin);
    return 0;
}

} // namespace ctl
