// SPDX-License-Identifier: Apache-2.0
#include "parser/commandline.h"

#include "parser/usagefault.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <deque>
#include <sstream>

namespace ctl {

namespace {

using Kind = Parameter::Kind;

/// The parser's own description of the program, and where it puts what it reads.
class Parser
{
public:
    explicit Parser(const Program& program);

    [[nodiscard]] std::variant<Choice, ExitStatus> parse(int argc, char** argv);

private:
    void add(const Command& command);
    void add(CLI::App& app, Arguments& arguments, const std::vector<Parameter>& parameters);
    CLI::Option* add(CLI::App& app, Arguments& arguments, const Parameter& parameter);
    [[nodiscard]] ExitStatus end(const CLI::ParseError& error, const QStringList& arguments) const;
    [[nodiscard]] QDeadlineTimer deadline() const;
    [[nodiscard]] OutputStyle style() const;

    const Program& m_program;
    CLI::App m_app;
    std::map<std::string, CLI::App*> m_apps; ///< by their words
    std::deque<Arguments> m_arguments;       ///< of all commands: the parser points into them
    Arguments m_global;
    const Command* m_command = nullptr;
    const Arguments* m_given = nullptr;
    std::optional<double> m_seconds;
};

CLI::Option* addOption(CLI::App& app, const Parameter& parameter, Arguments::Value& place)
{
    const auto add = [&app, &parameter](auto& value) {
        if constexpr (std::is_same_v<decltype(value), bool&>)
            return app.add_flag(parameter.name, value, parameter.description);
        else
            return app.add_option(parameter.name, value, parameter.description);
    };
    return std::visit(add, place);
}

void describe(CLI::Option& option, const Parameter& parameter)
{
    if (parameter.kind != Kind::Flag)
        option.type_name(typeOf(parameter));
    option.required(parameter.isRequired);
    if (parameter.isHidden)
        option.group("");
    if (!parameter.fallback.empty()) // its text too, since CLI11's versions do not show it alike
        option.default_val(parameter.fallback)
            ->option_text(typeOf(parameter) + "=" + parameter.fallback);
    if (parameter.kind == Kind::Addresses || parameter.kind == Kind::Names)
        option.delimiter(',')->allow_extra_args(false);
}

/// Why `text` is no time, 0 being one or not; empty where it is one.
std::string timeFault(const std::string& text, bool mayBeNone)
{
    bool isNumber = false;
    const double seconds = QString::fromStdString(text).toDouble(&isNumber);
    if (isNumber && std::isfinite(seconds) && (seconds > 0 || (mayBeNone && seconds == 0)))
        return {};
    return "\"" + text + "\" is no time; it takes seconds, more than 0, such as 30 or 0.5.";
}

bool isTime(Kind kind)
{
    return kind == Kind::Seconds || kind == Kind::Time || kind == Kind::Wait;
}

/// A check's own description would stand in the help, beside the type: it goes.
void check(CLI::Option& option, const Parameter& parameter)
{
    if (!parameter.choices.empty()) {
        std::vector<std::string> texts = parameter.choices;
        texts.insert(texts.end(), parameter.synonyms.begin(), parameter.synonyms.end());
        option.check(CLI::IsMember(texts).description(""));
    }
    if (isTime(parameter.kind)) {
        const bool mayBeNone = parameter.kind == Kind::Wait;
        option.check(CLI::Validator(
            [mayBeNone](std::string& text) { return timeFault(text, mayBeNone); }, ""));
    }
    if (parameter.kind == Kind::Address || parameter.kind == Kind::Addresses)
        option.check(CLI::ValidIPV4.description(""));
}

Parser::Parser(const Program& program)
    : m_program(program)
    , m_app(program.description, "orvactl")
    , m_apps{{"", &m_app}}
{
    m_app.fallthrough();
    m_app.footer(program.footer +
                 "\n\norvactl(1) has examples and tells what each exit status means.");
    m_app.get_formatter()->column_width(32);
    m_app.get_formatter()->label("REQUIRED", "");
    for (const TypeRow& row : typeRows())
        m_app.get_formatter()->label(row.type, row.shown);
    add(m_app, m_global, program.options);
    m_app.require_subcommand(0, 1);
    for (const Command& command : program.commands)
        add(command);
}

void Parser::add(const Command& command)
{
    CLI::App* app =
        m_apps.at(command.parent())->add_subcommand(command.name(), command.description);
    app->footer("");
    m_apps[command.words] = app;
    if (command.isGroup()) {
        app->require_subcommand(1);
        return;
    }
    Arguments& arguments = m_arguments.emplace_back();
    add(*app, arguments, command.parameters);
    app->callback([this, &command, &arguments] {
        m_command = &command;
        m_given = &arguments;
    });
}

void Parser::add(CLI::App& app, Arguments& arguments, const std::vector<Parameter>& parameters)
{
    // The description says what is in place of what; beside the type it would part the two.
    const auto hideExclusion = [](CLI::Option& option) {
        const std::string type = shownType(option.get_type_name());
        option.option_text(type.empty() ? " " : type);
    };
    for (const Parameter& parameter : parameters) {
        CLI::Option* option = add(app, arguments, parameter);
        // Those that it excludes stand before it.
        for (const std::string& other : parameter.excludes) {
            hideExclusion(*option->excludes(app.get_option(other)));
            hideExclusion(*app.get_option(other));
        }
    }
}

CLI::Option* Parser::add(CLI::App& app, Arguments& arguments, const Parameter& parameter)
{
    if (parameter.kind == Kind::Version)
        return app.set_version_flag(parameter.name, "orvactl " ORVA_VERSION, parameter.description);
    const bool isForAll = parameter.kind == Kind::Time || parameter.kind == Kind::Wait;
    CLI::Option* option = isForAll
                              ? app.add_option(parameter.name, m_seconds, parameter.description)
                              : addOption(app, parameter, arguments.place(parameter));
    describe(*option, parameter);
    check(*option, parameter);
    return option;
}

std::variant<Choice, ExitStatus> Parser::parse(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromUtf8(argv[i]));
    try {
        m_app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return end(error, arguments);
    }
    const QString generate = m_global.text("--generate");
    if (!m_command && generate.isEmpty()) {
        std::fputs(m_app.help().c_str(), stderr);
        return ExitStatus::Usage;
    }
    return Choice{m_command,  m_given ? *m_given : Arguments(),
                  deadline(), m_seconds != 0.0,
                  style(),    generate};
}

/// Help and version are no faults.
ExitStatus Parser::end(const CLI::ParseError& error, const QStringList& arguments) const
{
    std::ostringstream out;
    std::ostringstream fault;
    if (m_app.exit(error, out, fault) == 0) {
        Output::text(out.str());
        return ExitStatus::Done;
    }
    const bool hasSurplus = error.get_exit_code() == int(CLI::ExitCodes::ExtrasError);
    const QString why =
        usageFault(m_program, arguments, QString::fromUtf8(error.what()), hasSurplus);
    Output().failure({ExitStatus::Usage, why});
    return ExitStatus::Usage;
}

OutputStyle Parser::style() const
{
    return {m_global.flag("--json"), m_global.flag("--quiet"), m_global.text("--color"),
            m_global.texts("--terse")};
}

QDeadlineTimer Parser::deadline() const
{
    // A day is for ever here, and keeps the milliseconds inside an int.
    constexpr double day = 86400;
    return m_seconds && *m_seconds > 0 ? QDeadlineTimer(qint64(std::min(*m_seconds, day) * 1000))
                                       : QDeadlineTimer(QDeadlineTimer::Forever);
}

} // namespace

std::variant<Choice, ExitStatus> parseCommandLine(const Program& program, int argc, char** argv)
{
    return Parser(program).parse(argc, argv);
}

} // namespace ctl
