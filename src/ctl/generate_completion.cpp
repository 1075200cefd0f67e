// SPDX-License-Identifier: Apache-2.0
#include "generate.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace ctl {

namespace {

/// The beginning of the script; the function that describes each command follows.
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

/// The completion of each option's values; options of the same name mean the same in every command.
using Values = std::map<std::string, std::string>;

/// The words that may follow a command.
struct Following
{
    std::string words;               ///< sub-commands, or the choices of the first argument
    std::string options = " --help"; ///< names that begin with a dash
    std::string argument;            ///< type name of the first argument
};

/// The words of a parameter that is a choice, as in "{on,off}"; empty where any text does.
std::string choicesOf(const Parameter& parameter)
{
    const std::string type = typeOf(parameter);
    if (type.empty() || type.front() != '{')
        return {};
    std::string choices = type.substr(1, type.size() - 2);
    std::replace(choices.begin(), choices.end(), ',', ' ');
    return choices;
}

void addOption(Following& following, Values& values, const Parameter& option)
{
    following.options += " " + option.name;
    const std::string choices = choicesOf(option);
    const std::string type = typeOf(option);
    if (type == "FILE")
        values[option.name] = "COMPREPLY=($(compgen -f -- \"$cur\"))";
    else if (type == "ACTION-NODE")
        values[option.name] = "_orvactl_paths --kind activate";
    else if (!choices.empty())
        values[option.name] = "COMPREPLY=($(compgen -W \"" + choices + "\" -- \"$cur\"))";
    else if (!type.empty())
        values[option.name] = ":";
}

void addParameter(Following& following, Values& values, const Parameter& parameter)
{
    if (parameter.isHidden)
        return;
    if (parameter.isOption()) {
        addOption(following, values, parameter);
        return;
    }
    if (following.argument.empty())
        following.argument = typeOf(parameter);
    following.words += choicesOf(parameter);
}

void writeCases(std::ostream& out, Values& values, const Program& program, const std::string& words,
                const std::vector<Parameter>& parameters)
{
    Following following;
    const auto children = below(program.commands, words);
    for (const Command* child : children)
        following.words += child->name() + " ";
    for (const Parameter& parameter : parameters)
        addParameter(following, values, parameter);
    out << "        \"" << words << "\") words=\"" << following.words << "\" options+=\""
        << following.options << "\" argument=\"" << following.argument << "\" ;;\n";
    for (const Command* child : children)
        writeCases(out, values, program, child->words, child->parameters);
}

} // namespace

std::string completion(const Program& program)
{
    std::ostringstream out;
    Values values;
    out << prologue;
    writeCases(out, values, program, {}, program.options);
    out << body;
    for (const auto& [option, action] : values)
        out << "        " << option << ") " << action << "; return ;;\n";
    out << epilogue;
    return out.str();
}

} // namespace ctl
