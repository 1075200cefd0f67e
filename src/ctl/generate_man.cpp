#include "generate.h"

#include <sstream>

namespace ctl {

namespace {

/// Text that roff leaves as it is.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char character : text) {
        const bool lineStart = result.empty() || result.back() == '\n';
        if (lineStart && (character == '.' || character == '\''))
            result += "\\&";
        if (character == '\\')
            result += "\\e";
        else if (character == '-')
            result += "\\-";
        else
            result += character;
    }
    return result;
}

std::vector<const CLI::Option*> shownOptions(const CLI::App& app, bool positional)
{
    return app.get_options([positional](const CLI::Option* option) {
        return option->get_positional() == positional && !option->get_group().empty();
    });
}

/// What follows the option's name, as --help has it.
std::string argumentOf(const CLI::App& command, const CLI::Option& option)
{
    const std::string type = command.get_formatter()->get_label(option.get_type_name());
    return option.get_items_expected_max() == 0 || type.empty() ? ""
                                                                : " \\fI" + escaped(type) + "\\fP";
}

std::string synopsisOf(const CLI::App& command, const std::string& path)
{
    std::string line = "\\fB" + escaped(path) + "\\fP";
    for (const CLI::Option* argument : shownOptions(command, true)) {
        const bool required = argument->get_required();
        const bool repeats = argument->get_items_expected_max() > 1;
        line.append(required ? " \\fI" : " [\\fI").append(escaped(argument->get_name()));
        line.append("\\fP").append(repeats ? "..." : "").append(required ? "" : "]");
    }
    return line;
}

void writeOptions(std::ostream& out, const CLI::App& command)
{
    for (const bool positional : {true, false}) {
        for (const CLI::Option* option : shownOptions(command, positional)) {
            if (option == command.get_help_ptr())
                continue;
            const std::string type = positional ? "" : argumentOf(command, *option);
            out << ".RS\n.TP\n\\fB" << escaped(option->get_name()) << "\\fP" << type << "\n"
                << escaped(option->get_description()) << "\n.RE\n";
        }
    }
}

void writeCommands(std::ostream& out, const CLI::App& app, const std::string& path)
{
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        const std::string full =
            path.empty() ? command->get_name() : path + " " + command->get_name();
        const bool isGroup = command->get_require_subcommand_min() > 0;
        if (!isGroup) {
            out << ".TP\n"
                << synopsisOf(*command, full) << "\n"
                << escaped(command->get_description()) << ".\n";
            writeOptions(out, *command);
        }
        writeCommands(out, *command, full);
    }
}

} // namespace

std::string manPage(const CLI::App& app)
{
    std::ostringstream out;
    out << ".TH ORVACTL 1\n.SH NAME\norvactl \\- client of the network manager's host\n"
        << ".SH SYNOPSIS\n.B orvactl\n[\\fB\\-\\-json\\fP] \\fICOMMAND\\fP [\\fIARGUMENTS\\fP]\n"
        << ".SH DESCRIPTION\n"
        << escaped(app.get_description()) << "\n"
        << ".PP\n"
        << escaped(app.get_footer()) << "\n"
        << ".SH OPTIONS\n";
    writeOptions(out, app);
    out << ".SH COMMANDS\n";
    writeCommands(out, app, {});
    return out.str();
}

} // namespace ctl
