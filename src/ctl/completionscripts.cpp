// SPDX-License-Identifier: Apache-2.0
#include "completion.h"

#include <map>

namespace ctl {

namespace {

// Bash hands the words as they were typed. What the line editor takes for the name of a file it
// quotes by itself, within quotes as well; where a directory has that name it adds a slash, so that
// words that need no quotes are none.
const char bash[] = R"sh(# bash completion for orvactl

_orvactl()
{
    local word answer status words=("${COMP_WORDS[@]:1:COMP_CWORD}") current=${COMP_WORDS[COMP_CWORD]}
    current=${current#[\"\']}
    words[COMP_CWORD-1]=${current//\\/}
    COMPREPLY=()
    answer=$(orvactl __complete "${words[@]}" 2>/dev/null)
    status=$?
    if ((status == 10)); then
        compopt -o default 2>/dev/null
        return
    fi
    while IFS=$'\t' read -r word _; do
        [[ -n $word ]] || continue
        COMPREPLY+=("$word")
        [[ $(printf %q "$word") == "$word" ]] || compopt -o filenames 2>/dev/null
    done <<<"$answer"
}
complete -F _orvactl orvactl
)sh";

const char zsh[] = R"sh(#compdef orvactl

_orvactl() {
    local answer line
    local -a found told
    answer=$(orvactl __complete "${(@Q)words[2,CURRENT]}" 2>/dev/null)
    if (( $? == 10 )); then
        _files
        return
    fi
    for line in "${(@f)answer}"; do
        [[ -n $line ]] || continue
        found+=("${line%%$'\t'*}")
        told+=("${line/$'\t'/  -- }")
    done
    compadd -l -d told -a found
}

if [[ $funcstack[1] == _orvactl ]]; then
    _orvactl "$@"
else
    compdef _orvactl orvactl
fi
)sh";

const char fish[] = R"sh(# fish completion for orvactl

function __orvactl_complete
    set -l words (commandline -opc) (commandline -ct)
    set -l answer (orvactl __complete $words[2..-1] 2>/dev/null)
    if test $status -eq 10
        __fish_complete_path (commandline -ct)
        return
    end
    printf '%s\n' $answer
end
complete -c orvactl -f -a '(__orvactl_complete)'
)sh";

} // namespace

std::string completionScript(const std::string& shell)
{
    static const std::map<std::string, std::string> scripts = {
        {"bash", bash}, {"zsh", zsh}, {"fish", fish}};
    return scripts.at(shell);
}

} // namespace ctl
