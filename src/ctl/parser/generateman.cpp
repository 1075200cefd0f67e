// SPDX-License-Identifier: Apache-2.0
#include "output/outcome.h"
#include "parser/generate.h"

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

/// The text that follows the name, as --help has it.
std::string argumentOf(const Parameter& option)
{
    const std::string type = shownType(typeOf(option));
    return type.empty() ? "" : " \\fI" + escaped(type) + "\\fP";
}

std::string synopsisOf(const Command& command)
{
    std::string line = "\\fB" + escaped(command.words) + "\\fP";
    for (const Parameter& argument : command.parameters) {
        if (argument.isOption())
            continue;
        const bool repeats = argument.kind == Parameter::Kind::Texts;
        line.append(argument.isRequired ? " \\fI" : " [\\fI").append(escaped(argument.name));
        line.append("\\fP").append(repeats ? "..." : "").append(argument.isRequired ? "" : "]");
    }
    return line;
}

void writeParameters(std::ostream& out, const std::vector<Parameter>& parameters)
{
    for (const bool options : {false, true}) {
        for (const Parameter& parameter : parameters) {
            if (parameter.isOption() != options || parameter.isHidden)
                continue;
            out << ".RS\n.TP\n\\fB" << escaped(parameter.name) << "\\fP"
                << (options || !parameter.choices.empty() ? argumentOf(parameter) : "") << "\n"
                << escaped(parameter.description) << "\n.RE\n";
        }
    }
}

void writeStatuses(std::ostream& out)
{
    out << ".SH EXIT STATUS\nThe word begins the text on standard error, \"orvactl: key\\-refused: "
           "...\".\n";
    for (const StatusRow& row : statusRows()) {
        out << ".TP\n\\fB" << row.number << "\\fP";
        out << (row.reason.empty() ? "" : " " + escaped(row.reason)) << "\n"
            << escaped(row.meaning) << "\n";
    }
}

void writeNotes(std::ostream& out, const char* heading, const std::vector<Note>& notes)
{
    out << ".SH " << heading << "\n";
    for (const Note& note : notes)
        out << ".TP\n\\fB" << escaped(note.subject) << "\\fP\n" << escaped(note.text) << "\n";
}

/// Paragraphs as roff has them.
std::string paragraphs(const std::string& text)
{
    std::string result = escaped(text);
    for (size_t at = 0; (at = result.find("\n\n", at)) != std::string::npos;)
        result.replace(at, 2, "\n.PP\n");
    return result;
}

void writeCommands(std::ostream& out, const Program& program, const std::string& words)
{
    for (const Command* command : below(program.commands, words)) {
        if (command->isGroup() && words.empty())
            continue; // has a heading of its own
        if (!command->isGroup()) {
            out << ".TP\n"
                << synopsisOf(*command) << "\n"
                << escaped(command->description) << ".\n";
            writeParameters(out, command->parameters);
        }
        writeCommands(out, program, command->words);
    }
}

/// The families, each under its heading.
void writeFamilies(std::ostream& out, const Program& program)
{
    for (const Command* command : below(program.commands, {})) {
        if (!command->isGroup())
            continue;
        out << ".SS orvactl " << escaped(command->words) << "\n"
            << escaped(command->description) << ".\n";
        writeCommands(out, program, command->words);
    }
}

} // namespace

std::string manPage(const Program& program)
{
    std::ostringstream out;
    out << ".TH ORVACTL 1\n.SH NAME\norvactl \\- client of the network manager's host\n"
        << ".SH SYNOPSIS\n.B orvactl\n[\\fIOPTIONS\\fP] \\fICOMMAND\\fP [\\fIARGUMENTS\\fP]\n"
        << ".SH DESCRIPTION\n"
        << escaped(program.description) << "\n"
        << ".PP\n"
        << paragraphs(program.footer) << "\n"
        << ".SH OPTIONS\n";
    writeParameters(out, program.options);
    out << ".SH COMMANDS\n";
    writeCommands(out, program, {});
    writeFamilies(out, program);
    writeStatuses(out);
    writeNotes(out, "ENVIRONMENT", program.environment);
    writeNotes(out, "EXAMPLES", program.examples);
    out << ".SH SEE ALSO\n.BR orva\\-host (8),\n.BR lumod (8),\n.BR host.json (5),\n"
           ".BR lumod.conf (5),\n.BR orva\\-web (8),\n.BR orva\\-nodes (7),\n.BR busctl (1)\n";
    return out.str();
}

} // namespace ctl
