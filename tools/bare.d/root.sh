# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC1091,SC2016
# Bare Debian systems, each in a directory: made, entered and taken down. Sourced by tools/bare and by what
# runs in its roots; wants root, and packages_bare installed.
#
#   bare_make RELEASE   a new root in $bare_root: Debian 12 or 13 as debootstrap leaves it, with
#                       ca-certificates and git, and the machine's mirror and settings of apt
#   bare_clone ROOT     the project's committed tree in ROOT's $bare_tree, and nothing beside it
#   bare_in ROOT CMD... runs CMD in ROOT, in that tree where there is one, with namespaces of its own for
#                       mounts and processes; returns CMD's status
#   bare_install ROOT DEB...   installs these packages there, with what they depend on
#   bare_boot ROOT FILE SECONDS   boots ROOT under systemd, runs FILE there as a service, shows what it says and
#                       returns its status; the journal of a boot that fails is kept in $bare_journal
#   bare_end            ends what runs in the roots and removes them; also done when the shell ends

bare_source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
bare_tree=/root/orva
bare_roots=${BARE_ROOTS:-/var/cache/orva-bare} # where roots are, and the base of each release
bare_base_days=7                             # how long a base serves
bare_root='' bare_own=() bare_pid=''
bare_journal=$bare_source/build/boot.journal

bare_make() {
    local codename base
    case $1 in
        12) codename=bookworm ;;
        13) codename=trixie ;;
        *) echo "Neither 12 nor 13: $1" >&2 && return 2 ;;
    esac
    mkdir -p "$bare_roots" && bare_remove_stale || return 1
    base=$bare_roots/base-$codename.tar
    bare_unless_fresh "$base" bare_debootstrap "$codename" "$base" 8>"$base.lock" || return 1
    bare_new_root && tar -C "$bare_root" --numeric-owner --xattrs -xf "$base"
}

bare_clone() {
    local changes
    changes=$(bare_git status --porcelain)
    [ -z "$changes" ] || echo "What is not committed stays out of the bare root." >&2
    bare_git bundle create --quiet "$1/clone.bundle" HEAD --tags &&
        git -c advice.detachedHead=false clone --quiet "$1/clone.bundle" "$1$bare_tree" && rm "$1/clone.bundle"
}

bare_in() {
    local root=$1
    shift
    bare_apart bash -euc "$bare_enter" "$root" "$bare_tree" "$@"
}

bare_install() {
    local root=$1 names=("${@:2}")
    mkdir -p "$root/root/packages" && cp "${names[@]}" "$root/root/packages" || return 1
    names=("${names[@]##*/}")
    # shellcheck disable=SC2016
    bare_in "$root" sh -euc 'export DEBIAN_FRONTEND=noninteractive; log=$(mktemp)
        { apt-get update && apt-get install -y "$@"; } >"$log" 2>&1 </dev/null || { tail -n 30 "$log"; exit 1; }' \
        sh "${names[@]/#//root/packages/}"
}

# The manager powers off by a signal (SIGRTMIN+4), since the bus may be away by then.
bare_boot() {
    local root=$1 limit=$3 units=$1/etc/systemd/system status
    cp "$2" "$root/root/at-boot" && mkdir -p "$root/var/log/journal" "$units/multi-user.target.wants" || return 1
    printf '[Service]\nType=oneshot\nExecStart=/root/at-boot\nStandardOutput=file:/root/said\n%s\n' \
        'ExecStopPost=/bin/sh -c "echo $$EXIT_STATUS >/root/status; kill -38 1"' \
        >"$units/at-boot.service"
    ln -s ../at-boot.service "$units/multi-user.target.wants"
    bare_apart timeout --kill-after=20 "$limit" systemd-nspawn --quiet --directory="$root" --boot --register=no \
        --keep-unit --private-network --console=pipe >"$root/root/console" 2>&1 </dev/null
    status=$(cat "$root/root/status" 2>/dev/null)
    cat "$root/root/said" 2>/dev/null
    [ "$status" = 0 ] || {
        mkdir -p "${bare_journal%/*}" && journalctl --directory="$root/var/log/journal" >"$bare_journal" 2>/dev/null
        echo "The boot failed${status:+ with status $status}; its journal is $bare_journal"
        return 1
    }
}

bare_end() {
    local root
    [ -z "$bare_pid" ] || bare_kill
    for root in "${bare_own[@]}"; do
        rm -rf --one-file-system "$root"
    done
    bare_own=() bare_pid=''
}
trap bare_end EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# bare_apart CMD...: CMD in namespaces of its own for mounts and processes, which end with this shell, however
# that ends. The shell waits, so that it hears its signals at once.
bare_apart() {
    local status
    setpriv --pdeathsig KILL unshare --mount --pid --fork --kill-child=KILL --mount-proc "$@" <&0 8>&- &
    bare_pid=$!
    wait "$bare_pid"
    status=$?
    bare_pid=''
    return "$status"
}

# --- entering ------------------------------------------------------------------------------------------

# Runs as the first process of the new namespaces: $0 is the root, $1 the tree, then the command. The root
# is a mount of its own and the old one goes, so that ip netns and user namespaces work as on a machine.
bare_enter='
    tree=$1 && shift
    mount --bind "$0" "$0" && cd "$0"
    mount -t proc proc proc
    mount -t sysfs sysfs sys
    mount --rbind /dev dev && mount --make-rslave dev
    mount -t tmpfs -o mode=755 tmpfs run
    pivot_root . . && umount -l .
    [ -d ".$tree" ] || tree=/root
    exec env -i --default-signal=INT,QUIT HOME=/root LANG=C.UTF-8 TERM="${TERM:-dumb}" \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
        chroot . bash -c "cd \"\$0\" && \"\$@\"; exit \$?" "$tree" "$@"
'

# The namespace ends with its first process, whatever runs in it, and that one with its unshare.
bare_kill() {
    local first
    first=$(pgrep -P "$bare_pid")
    kill -KILL "$bare_pid"
    wait "$bare_pid"
    while [ -n "$first" ] && [ -d "/proc/$first" ]; do
        sleep 0.05
    done
} 2>/dev/null

# --- making --------------------------------------------------------------------------------------------

# bare_unless_fresh FILE CMD...: one caller at a time.
bare_unless_fresh() {
    local file=$1
    shift
    flock 8
    [ -n "$(find "$file" -mtime "-$bare_base_days" 2>/dev/null)" ] || "$@"
}

# bare_debootstrap CODENAME TAR: what every root of that release begins as.
bare_debootstrap() {
    local codename=$1 tar=$2 log=$2.log mirror
    mirror=$(bare_sources "$codename" | awk 'NR == 1 { print $2 }')
    echo "Making a base of $codename from $mirror" >&2
    bare_new_root
    bare_apart debootstrap --variant=minbase --include=ca-certificates,git "$codename" "$bare_root" "$mirror" \
        >"$log" 2>&1 || { tail -n 20 "$log" >&2 && return 1; }
    bare_sources "$codename" >"$bare_root/etc/apt/sources.list"
    bare_apt_settings >"$bare_root/etc/apt/apt.conf.d/90machine"
    echo force-unsafe-io >"$bare_root/etc/dpkg/dpkg.cfg.d/throwaway" # no root outlives a crash of the machine
    rm -rf "$bare_root"/var/cache/apt/archives/*.deb
    tar -C "$bare_root" --numeric-owner --xattrs -cf "$tar.new" . && mv "$tar.new" "$tar"
    rm -rf --one-file-system "$bare_root"
}

# A directory for a root, of mode 0755, or other users could load no library there.
bare_new_root() {
    bare_root=$(mktemp -d "$bare_roots/root.$$.XXXXXX") && chmod 755 "$bare_root" && bare_own+=("$bare_root")
}

# The remains of a shell that was killed.
bare_remove_stale() {
    local root pid
    for root in "$bare_roots"/root.*; do
        pid=${root##*/root.} && pid=${pid%.*}
        [ ! -d "$root" ] || [ -d "/proc/$pid" ] || rm -rf --one-file-system "$root"
    done
}

# The machine's own sources of Debian with CODENAME for its release; Debian's mirror where it has none.
bare_sources() {
    local own
    own=$(. /etc/os-release && echo "${VERSION_CODENAME-}")
    apt-get indextargets --no-release-info --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 2>/dev/null |
        awk -v own="${own:-none}" -v wanted="$1" '
            $2 == own || $2 == own "-updates" || $2 == own "-security" {
                sub(own, wanted, $2)
                line = "deb " $1 " " $2 " " $3
                if (!seen[line]++) print line
                base = base || $2 == wanted
            }
            END { if (!base) print "deb http://deb.debian.org/debian " wanted " main" }' |
        sort -s -k 3,3
}

# The machine's settings of where and how apt gets its files: a proxy, a clock that is not trusted.
bare_apt_settings() {
    apt-config dump | grep -E '^Acquire::([a-z]+::Proxy|Check-|Retries|Languages|ForceIP)' 
}

bare_git() {
    git -c safe.directory="$bare_source" -C "$bare_source" "$@"
}
