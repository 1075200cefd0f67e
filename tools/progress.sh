# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# The commands' words while they work, and when they cannot.

progress_source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# tell_steps WHAT PATTERN LOG: keeps the lines on stdin in LOG, and tells the bracketed part of those that match
# PATTERN: by one line that moves on a terminal, otherwise by a line every half minute.
tell_steps() {
    local line told=$SECONDS text
    while IFS= read -r line || [ -n "$line" ]; do
        printf '%s\n' "$line" 2>/dev/null # where there is no room, who writes the lines fails too
        [[ $line =~ $2 ]] || continue
        text="$1: ${BASH_REMATCH[1]}"
        if [ -t 2 ]; then
            printf '\r\e[K%.60s  (all of it in %s)' "$text" "${3#"$progress_source/"}" >&2
        elif ((SECONDS - told >= 30)); then
            echo "$text" >&2
            told=$SECONDS
        fi
    done >"$3"
    [ ! -t 2 ] || printf '\r\e[K' >&2
}

# explain LOG: in a sentence, what a person can do about the failure that LOG tells of, where it is a usual one.
explain() {
    local words sentence available no_room='There is no room left on a disk; "df -h" tells on which.'
    available=$(df --output=avail -- "$(dirname "$1")" 2>/dev/null | tail -n 1) # the log may be missing
    [ "${available:-65}" -gt 64 ] || { echo "$no_room" >&2 && return; }
    while IFS='|' read -r words sentence; do
        grep -asqE -- "${words//;/|}" "$1" && echo "$sentence" >&2 && break
    done <<END
No space left on device;Disk quota exceeded;enough free space|$no_room
Could not get lock|Another program is installing packages; try again when it has ended.
Could not resolve;Temporary failure resolving;[Cc]ould not connect;Unable to connect;Failed to fetch|Debian's mirror cannot be reached; /etc/apt says which it is and by which proxy.
Unable to locate package;no installation candidate|Debian 12 and 13 have these packages; this system's lists lack them.
CMAKE_CXX_COMPILER not set;not able to compile a simple|There is no compiler that works; where CXX or CXXFLAGS are set, are they right?
Permission denied;Read-only file system|Something cannot be written here; does it belong to another user?
END
}
