#include "generate.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace ctl {

namespace {

/// What the script begins with; the function that describes each command follows.
const char prologue[] = R"sh(# bash completion for orvactl

# Sets the words, the options and the type of the first argument that may follow the command "$1".
_orvactl_describe()
{
    words="" options="--json --help" argument=""
    case "$1" in
)sh";

/// Between the descriptions and the completion of option values.
const char body[] = R"sh(    esac
}

_orvactl_paths()
{
    COMPREPLY=($(compgen -W "$(orvactl nodes --paths --wait 2 "$@" 2>/dev/null)" -- "$cur"))
}

_orvactl()
{
    local cur=${COMP_WORDS[COMP_CWORD]} command="" words options argument word i
    _orvactl_describe ""
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        [[ " $words " == *" $word "* ]] || continue
        command="${command:+$command }$word"
        _orvactl_describe "$command"
    done
    case "${COMP_WORDS[COMP_CWORD-1]}" in
)sh";

const char epilogue[] = R"sh(    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    case "$argument" in
        VALUE-NODE) _orvactl_paths --kind value ;;
        ACTION-NODE) _orvactl_paths --kind activate ;;
        ROWS-NODE) _orvactl_paths --kind rows ;;
        NODE) _orvactl_paths ;;
        *) COMPREPLY=($(compgen -W "$words" -- "$cur")) ;;
    esac
}
complete -F _orvactl orvactl
)sh";

/// The words of an option that is a choice, as in "{on,off}"; empty where any text does.
std::string choicesOf(const CLI::Option& option)
{
    const std::string type = option.get_type_name();
    if (type.empty() || type.front() != '{')
        return {};
    std::string choices = type.substr(1, type.size() - 2);
    std::replace(choices.begin(), choices.end(), ',', ' ');
    return choices;
}

/// What completes the values of each option; options of the same name mean the same in every
/// command.
using Values = std::map<std::string, std::string>;

struct Command
{
    std::string words;    ///< sub-commands, or the choices of the first argument
    std::string options;  ///< names that begin with a dash
    std::string argument; ///< type name of the first argument
};

void addOption(Command& command, Values& values, const CLI::Option& option)
{
    if (option.get_positional()) {
        if (command.argument.empty())
            command.argument = option.get_type_name();
        command.words += choicesOf(option);
        return;
    }
    const std::string name = "--" + option.get_lnames().front();
    command.options += " " + name;
    const std::string choices = choicesOf(option);
    if (option.get_type_name() == "FILE")
        values[name] = "COMPREPLY=($(compgen -f -- \"$cur\"))";
    else if (option.get_type_name() == "ACTION-NODE")
        values[name] = "_orvactl_paths --kind activate";
    else if (!choices.empty())
        values[name] = "COMPREPLY=($(compgen -W \"" + choices + "\" -- \"$cur\"))";
    else if (option.get_items_expected_max() != 0)
        values[name] = ":";
}

void writeCases(std::ostream& out, Values& values, const CLI::App& app, const std::string& path)
{
    Command command;
    for (const CLI::App* child : app.get_subcommands([](const CLI::App*) { return true; }))
        command.words += child->get_name() + " ";
    for (const CLI::Option* option :
         app.get_options([](const CLI::Option* o) { return !o->get_group().empty(); }))
        addOption(command, values, *option);
    out << "        \"" << path << "\") words=\"" << command.words << "\" options+=\""
        << command.options << "\" argument=\"" << command.argument << "\" ;;\n";
    for (const CLI::App* child : app.get_subcommands([](const CLI::App*) { return true; }))
        writeCases(out, values, *child,
                   path.empty() ? child->get_name() : path + " " + child->get_name());
}

} // namespace

std::string completion(const CLI::App& app)
{
    std::ostringstream out;
    Values values;
    out << prologue;
    writeCases(out, values, app, {});
    out << body;
    for (const auto& [option, action] : values)
        out << "        " << option << ") " << action << "; return ;;\n";
    out << epilogue;
    return out.str();
}

} // namespace ctl
