# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034,SC2154
# A device on a real interface, for ./run --real: what that changes, the way back, and a sandbox that changes
# nothing.

real_interface='' real_saved='' real_settings=''

# real_ask INTERFACE YES: says what is going to happen; false unless that is wanted.
real_ask() {
    local answer=''
    [ "$(id -u)" -eq 0 ] || { echo "--real configures interfaces, which wants root" >&2 && return 1; }
    [ -z "${real_sandboxed-}" ] || return 0
    ip link show dev "$1" >/dev/null || return 1
    echo "Until Ctrl-C the device configures $1 by DHCP, over whatever does so now: its addresses and routes" >&2
    echo "change, and come back afterwards. Name servers, wireless interfaces and everything else stay as they are." >&2
    ! pgrep -x NetworkManager >/dev/null && ! pgrep -x systemd-network >/dev/null && ! pgrep -x dhcpcd >/dev/null ||
        echo "A network manager runs here; keep it off $1 meanwhile, or the two disagree." >&2
    [ -n "$2" ] || { read -r -p "Go on? [y/N] " answer && [[ $answer == [yY]* ]]; }
}

# real_configure INTERFACE DIR BUILD: the daemon's configuration, and the host's interface.
real_configure() {
    real_interface=$1 real_saved=$(real_picture "$1") real_settings=$(real_kernel_settings "$1")
    DEVICE_LUMOD_CONF=$2/lumod.conf DEVICE_WIRED=$1
    printf '{"wired": "%s", "wireless": "", "softAp": "", "helperDirectory": "%s", "runtimeDirectory": "%s",
        "nameServers": "file", "resolvConf": "%s"}\n' \
        "$1" "$3/bin" "$2/lumod" "$2/lumod/resolv.conf" >"$DEVICE_LUMOD_CONF"
}

# real_picture INTERFACE: the commands of ip(8) by which it is again as it is now.
real_picture() {
    ip -j addr show dev "$1" | jq -r '.[] | .ifname as $name | (.addr_info[] | select(.scope == "global") |
        "addr replace \(.local)/\(.prefixlen) dev \($name)" +
        if .broadcast then " broadcast \(.broadcast)" else "" end +
        if .valid_life_time < 4294967295
        then " valid_lft \(.valid_life_time) preferred_lft \(.preferred_life_time)" else "" end),
        (if (.flags | index("UP")) then empty else "link set \($name) down" end)'
    local family
    for family in -4 -6; do
        ip "$family" route show dev "$1" | grep -v 'proto kernel' | sed "s|^|route replace |; s| expires [0-9]*sec||; s|\$| dev $1|"
    done
}

# real_kernel_settings INTERFACE: FILE:VALUE, one a line. dhcpcd takes what it does itself from the kernel, such as
# router advertisements, and does not give it back.
real_kernel_settings() {
    grep -s . /proc/sys/net/ipv[46]/conf/"$1"/*
}

# real_restore: what real_configure found; what came since has gone with the device.
real_restore() {
    local file value
    [ -n "$real_interface" ] || return 0
    while IFS=: read -r file value; do
        [ "$(<"$file")" = "$value" ] || echo "$value" >"$file"
    done <<<"$real_settings" 2>/dev/null
    ip -force -batch - <<<"$real_saved" >/dev/null 2>&1
}

# real_sandbox CMD...: runs CMD where eth0 leads to a router of its own, and nothing is the machine's.
real_sandbox() {
    [ "$(id -u)" -eq 0 ] || { echo "The sandbox is made of namespaces, which want root" >&2 && return 1; }
    exec unshare --mount --net bash -c ". '$device_source/tools/real.sh' && real_inside \"\$@\"" sandbox "$@"
}

real_inside() {
    mount -t tmpfs run /run && mount -t tmpfs lib /var/lib && ip netns add rt || return 1
    unset XDG_RUNTIME_DIR
    export real_sandboxed=1
    ip link set lo up
    ip link add eth0 type veth peer name r0 netns rt
    ip -n rt addr add 192.0.2.1/24 dev r0
    ip -n rt addr add 2001:db8:1::1/64 dev r0 nodad
    ip -n rt link set r0 up
    ip netns exec rt setpriv --pdeathsig TERM dnsmasq --keep-in-foreground --conf-file=/dev/null --user=root --port=0 \
        --interface=r0 --bind-dynamic --dhcp-authoritative --dhcp-range=192.0.2.10,192.0.2.99,2m --enable-ra \
        --dhcp-range=::,constructor:r0,slaac,64,2m '--dhcp-option=option6:dns-server,[2001:db8:1::1]' \
        --dhcp-option=option:dns-server,192.0.2.1,9.9.9.9 --dhcp-leasefile=/run/leases --pid-file= >/dev/null 2>&1 &
    echo "A router of its own serves eth0. Its end of the cable, in another terminal:" >&2
    echo "  nsenter --target $$ --mount --net ip -n rt link set r0 down     # or up" >&2
    "$@"
    local status=$?
    kill %1
    return "$status"
}
