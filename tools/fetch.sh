# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Debian packages that are fetched and unpacked below a build directory, never installed.

# fetch_debs DIR PACKAGE...: the packages, and what they need beyond what this machine has installed.
fetch_debs() {
    mkdir -p "$1/partial"
    apt-get install -qq -y --no-install-recommends --reinstall --download-only -o Dir::Cache::archives="$1" "${@:2}"
}

# unpack_debs DIR TREE: unpacks all packages of DIR. TREE can lie over a root whose /bin, /sbin and /lib are links into
# /usr.
unpack_debs() {
    local tree=$2 package directory
    mkdir -p "$tree"
    for package in "$1"/*.deb; do
        dpkg-deb --extract "$package" "$tree" || return 1
    done
    for directory in bin sbin lib lib64; do
        [ -d "$tree/$directory" ] || continue
        mkdir -p "$tree/usr/$directory" && cp -a "$tree/$directory/." "$tree/usr/$directory/" && rm -rf "${tree:?}/$directory"
    done
}
