# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# How the commands build. Sourced by them; wants $root.
. "$(dirname "${BASH_SOURCE[0]}")/progress.sh"

build_options=() # of CMake, beside those of the preset

# build_tree DIR PRESET [TARGET...]: configures the build tree DIR, as PRESET says where it is new, and builds it,
# one caller at a time. A tree that has the tests too serves the release as it is. Quiet but for a line that says how
# far it is; on failure the first error.
build_tree() {
    local dir=$1 log=$1/build.log
    mkdir -p "$dir" 2>/dev/null && [ -w "$dir" ] || {
        echo "$dir cannot be written, where the build goes; does it belong to another user?" >&2
        return 1
    }
    one_at_a_time "$@" </dev/null 9>&- 2>&1 | tell_steps Building '^\[([0-9]+/[0-9]+)\]' "$log"
    [ "${PIPESTATUS[0]}" -eq 0 ] || {
        grep -a -A 40 -m 1 -E '^FAILED|CMake Error' "$log" >&2 || tail -n 40 "$log" >&2
        explain "$log"
        echo "The build failed; all of it is in $log" >&2
        return 1
    }
}

# Configuring writes into the tree as well.
one_at_a_time() {
    local turn
    exec {turn}<"$1" && flock "$turn" && configure_and_build "$@"
}

configure_and_build() {
    local dir=$1 preset=$2
    shift 2
    { [[ $preset = release* && -e $dir/build.ninja && -z ${build_options[*]} ]] ||
        cmake -S "$root" --preset "$preset" "${build_options[@]}"; } && ninja -C "$dir" "$@"
}
