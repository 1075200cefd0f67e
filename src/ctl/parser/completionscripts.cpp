// SPDX-License-Identifier: Apache-2.0
#include "parser/completion.h"

#include <map>

namespace ctl {

namespace {

// Bash hands the words as they were typed. What the line editor takes for the name of a file it
// quotes by itself, within quotes as well; where a directory has that name it adds a slash, so that
// words that need no quotes are none. It takes a word apart at the colons and completes what is
// after the last.
const char bash[] = R"sh(# bash completion for orvactl

_orvactl()
{
    local word answer status blanks current known i words=() rest=$COMP_LINE
    for ((i = 0; i <= COMP_CWORD; i++)); do
        blanks=${rest%%[![:blank:]]*}
        rest=${rest#"$blanks"}
        rest=${rest#"${COMP_WORDS[i]}"}
        if ((i)) && [[ -z $blanks ]]; then
            words[${#words[@]}-1]+=${COMP_WORDS[i]}
        else
            words+=("${COMP_WORDS[i]}")
        fi
    done
    current=${words[${#words[@]}-1]#[\"\']}
    current=${current//\\/}
    words[${#words[@]}-1]=$current
    words=("${words[@]:1}")
    [[ $current == *[:=]* && $COMP_WORDBREAKS == *:* ]] && known=${current%"${current##*[:=]}"} || known=
    COMPREPLY=()
    answer=$(orvactl __complete "${words[@]}" 2>/dev/null)
    status=$?
    if ((status == 10)); then
        compopt -o default 2>/dev/null
        return
    fi
    while IFS=$'\t' read -r word _; do
        [[ -n $word ]] || continue
        COMPREPLY+=("${word#"$known"}")
        [[ $(printf %q "$word") == "$word" ]] || compopt -o filenames 2>/dev/null
    done <<<"$answer"
}
complete -F _orvactl orvactl
)sh";

// Zsh keeps an opening quote out of PREFIX.
const char zsh[] = R"sh(#compdef orvactl

_orvactl() {
    local answer line
    local -a found told
    answer=$(orvactl __complete "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)
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
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    string match -qr '[\\\\\'"]' -- $current; and set current '' # fish itself compares what is quoted
    set -l answer (orvactl __complete $words[2..-1] "$current" 2>/dev/null)
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
