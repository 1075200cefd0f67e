# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# How the commands build. Sourced by them; wants $root.

# build_tree DIR PRESET [TARGET...]: configures the build tree DIR, as PRESET says where it is new, and
# builds it, one caller at a time. A tree that
# has the tests too serves the release as it is. Quiet but for a line that says how far it is; on failure the first error.
build_tree() {
    local dir=$1 preset=$2 log=$1/build.log
    shift 2
    mkdir -p "$dir"
    configure_and_build "$dir" "$preset" "$@" </dev/null 9>&- 2>&1 | tee "$log" | tell_progress
    [ "${PIPESTATUS[0]}" -eq 0 ] || {
        grep -a -A 40 -m 1 -E '^FAILED|CMake Error' "$log" >&2 || tail -n 40 "$log" >&2
        echo "The build failed; all of it is in $log" >&2
        return 1
    }
}

configure_and_build() {
    local dir=$1 preset=$2
    shift 2
    { [[ $preset = release* && -e $dir/build.ninja ]] || cmake -S "$root" --preset "$preset"; } && flock "$dir" ninja -C "$dir" "$@"
}

# tell_progress: of what ninja says on stdin, how far it is: one line that moves on a terminal, otherwise a
# line every half minute.
tell_progress() {
    local line told=$SECONDS
    while IFS= read -r line; do
        [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]] || continue
        if [ -t 2 ]; then
            printf '\rBuilding: %d of %d ' "${BASH_REMATCH[@]:1}" >&2
        elif ((SECONDS - told >= 30)); then
            echo "Building: ${BASH_REMATCH[1]} of ${BASH_REMATCH[2]}" >&2
            told=$SECONDS
        fi
    done
    [ ! -t 2 ] || printf '\r\e[K' >&2
}
