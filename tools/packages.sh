# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034
# The Debian packages that the project needs, one list a purpose, and the step that installs them.
. "$(dirname "${BASH_SOURCE[0]}")/progress.sh"

packages_run=(
    g++ cmake ninja-build pkg-config
    qtbase5-dev qtbase5-dev-tools libnl-3-dev libnl-route-3-dev libnl-genl-3-dev liblog4cplus-dev libcli11-dev
    libdbus-1-dev libsystemd-dev libmicrohttpd-dev libqrencode-dev
    dbus-daemon systemd # systemd brings busctl
    iproute2 iputils-ping jq procps util-linux
)
packages_qt6=(qt6-base-dev) # beside those of packages_run
packages_real=(dhcpcd-base dnsmasq-base) # for ./run --real; neither starts anything
packages_test=(
    "${packages_real[@]}"
    git doxygen
    python3 python3-dbus python3-gi
    python3-seccomp rfkill # the host's service runs rfkill under a filter
    curl # asks the page by addresses of its own
    zsh fish # complete the commands of orvactl
    make # a plug-in author's CMake calls it unless told otherwise
    etherwake wakeonlan netbase # wakeonlan looks its protocol up in netbase's files
)
[ "$(. /etc/os-release && echo "${VERSION_ID-}")" != 12 ] || # no other release has the version that is asked
    packages_test+=(clang-format-14 clang-tidy-14)
packages_radio=( # fetched and unpacked, never installed: some would start services
    qemu-system-x86 qemu-system-data seabios ipxe-qemu busybox-static kmod
    wpasupplicant hostapd wireless-regdb iw rfkill tcpdump
    libfaketime # for an engine whose own time runs faster
)
packages_check=(binutils strace valgrind) # for ./bench --check, beside those of packages_test
packages_peers=(network-manager connman) # fetched as well, for ./bench --peers; systemd has its own
packages_web=(chromium chromium-driver python3-selenium) # the page in a browser
packages_package=(debhelper) # beside those of packages_run
packages_bare=(systemd-container debootstrap debian-archive-keyring git procps util-linux)
packages_arm64=( # beside those of packages_run and packages_test
    g++-aarch64-linux-gnu qemu-user
    {libc6-dev,qtbase5-dev,libnl-3-dev,libnl-route-3-dev,libnl-genl-3-dev,liblog4cplus-dev,libdbus-1-dev,libsystemd-dev,libmicrohttpd-dev,libqrencode-dev}:arm64
)

# install_clang: clang with the sanitizers' runtime, which it only recommends and which bears its version.
install_clang() {
    install_packages clang && install_packages "libclang-rt-$(clang -dumpversion | sed 's/\..*//')-dev"
}

# missing_packages NAME...: those of NAME... that are not installed, one a line.
missing_packages() {
    dpkg-query --show --showformat '${binary:Package} ${db:Status-Status}\n' "$@" 2>/dev/null |
        awk '$2 == "installed" { print $1 }' | sed "s/:$(dpkg --print-architecture)\$//" | sort -u |
        comm -13 - <(printf '%s\n' "$@" | sort -u)
}

# install_packages NAME...: installs what is missing; leaves apt alone when nothing is.
install_packages() {
    local missing log as_root=()
    command -v apt-get >/dev/null || {
        echo "Debian's apt-get, which installs what is missing, is not here. What is needed: tools/packages.sh" >&2
        return 1
    }
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -gt 0 ] || return 0

    echo "Installing from Debian: ${missing[*]}" >&2
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "Not root, and no sudo here. As root: apt-get install ${missing[*]}" >&2
            return 1
        }
        as_root=(sudo)
    fi
    log=$(mktemp) || return 1
    apt_install "${missing[@]}" 2>&1 </dev/null | tell_steps Installing '^..status:[^:]*:[^:]*:(.*)' "$log"
    [ "${PIPESTATUS[0]}" -eq 0 ] || {
        grep -aE '^(E|Err|W):' "$log" | tail -n 10 >&2
        explain "$log"
        echo "The packages were not installed; all that apt says is in $log" >&2
        return 1
    }
    rm -f "$log"
}

# apt_install NAME...: with its steps on stdout, as lines.
apt_install() {
    local get=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o APT::Status-Fd=1 -o DPkg::Lock::Timeout=300)
    [[ "$*" != *:arm64* ]] || "${as_root[@]}" dpkg --add-architecture arm64
    "${get[@]}" update && "${get[@]}" install -y --no-install-recommends "$@"
}
