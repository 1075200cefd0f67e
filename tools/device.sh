# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# A device on this machine: a private system bus, the host with the module, and the daemon that the bus
# starts when the module first speaks to it. Sourced by ./run and by the tests.
#
# The variables that a caller may set before device_start:
DEVICE_BACKEND=${DEVICE_BACKEND:-lumod}    # lumod, or fake: as on a root file system from the network
DEVICE_RADIOS=${DEVICE_RADIOS:-stand-in}   # stand-in: rfkill is only recorded; real: it runs
DEVICE_LOG_LEVEL=${DEVICE_LOG_LEVEL:-info} # of the host
DEVICE_WORLD=${DEVICE_WORLD:-}             # the daemon's world; default examples/world.json
DEVICE_LUMOD_CONF=${DEVICE_LUMOD_CONF:-}   # how the daemon drives real interfaces; empty: it plays its world
DEVICE_WIRED=${DEVICE_WIRED:-eth0}         # the host's wired interface
DEVICE_WORKERS=''                          # entries of the host's configuration, each after a comma; device_worker adds one
DEVICE_RUNNER=()                           # the words of a program that runs the host, valgrind say

device_source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
device_bus_pid='' device_host_pid='' device_page_pid=''

# device_start BUILD DIR STATE LOG: starts a device from the build tree BUILD. DIR is an empty directory
# for its run, STATE keeps its settings, LOG takes what it writes. Returns when its nodes can be read.
device_start() {
    local build=$1 dir=$2 state=$3 log=$4
    mkdir -p "$dir/system.d" "$dir/services" "$state"
    (umask 077 && : >"$log")
    device_configure "$build" "$dir"
    device_environment "$dir"

    # Whatever ends this shell ends the two programs with it, and the daemon follows its bus.
    setpriv --pdeathsig TERM dbus-daemon --nofork --nopidfile --nosyslog \
        --config-file="$dir/bus.conf" --address="$(device_address "$dir")" \
        </dev/null >>"$log" 2>&1 9>&- &
    device_bus_pid=$!
    device_await 10 test -S "$dir/bus" || return 1

    setpriv --pdeathsig TERM "${DEVICE_RUNNER[@]}" "$build/bin/orva-host" --config "$dir/host.json" \
        --state-dir "$state" --log-level "$DEVICE_LOG_LEVEL" \
        </dev/null >>"$log" 2>&1 9>&- &
    device_host_pid=$!
    device_await 40 device_answers
}

# device_worker LIB[=CONFIG]: has the host load a library too; CONFIG is a JSON object or a file with one.
device_worker() {
    local library=${1%%=*} config='{}' entry
    [[ $1 != *=* ]] || config=${1#*=}
    [ -f "$library" ] || { echo "There is no library $library" >&2 && return 1; }
    [ ! -f "$config" ] || config=$(<"$config")
    entry=$(jq -cne --arg library "$(realpath -- "$library")" --argjson config "$config" \
        'if $config | type == "object" then {$library, $config} else false end' 2>/dev/null) || {
        echo "The configuration of $library is no JSON object, nor a file with one: $config" >&2 && return 1
    }
    DEVICE_WORKERS+=", $entry"
}

# device_page BUILD DIR LOG: serves the page that people see on this machine's loopback alone, and says where.
device_page() {
    local port=8480
    while (: <>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; do
        ((port++))
    done
    printf '{"port": %d, "listen": ["127.0.0.1"]}\n' "$port" >"$2/web.json"
    setpriv --pdeathsig TERM "$1/bin/orva-web" --config "$2/web.json" </dev/null >>"$3" 2>&1 &
    device_page_pid=$!
    echo "Its page: http://localhost:$port/" >&2
}

# device_stop: ends what device_start started, the host first, and the daemon that the bus started.
device_stop() {
    device_end "$device_page_pid"
    device_end "$device_host_pid"
    [ -z "$device_bus_pid" ] || device_end "$(device_daemon_pid)"
    device_end "$device_bus_pid"
    device_host_pid='' device_bus_pid='' device_page_pid=''
}

# device_address DIR: the bus address of the device that runs in DIR.
device_address() {
    printf 'unix:path=%s/bus\n' "$1"
}

# device_alive DIR: whether a device runs in DIR.
device_alive() {
    local pid
    pid=$(cat "$1/pid" 2>/dev/null) && tr '\0' ' ' <"/proc/$pid/cmdline" 2>/dev/null |
        grep -qF -- "$1/bus.conf"
}

# --- the steps of device_start -----------------------------------------------------------------------

# The files that the bus and the host read, made from those that a device installs.
device_configure() {
    local build=$1 dir=$2
    ln -s "$build" "$dir/build"
    device_fill "$dir" private-bus.conf.in "$dir/bus.conf"
    device_fill "$dir" org.orva.Host1.conf.in "$dir/system.d/org.orva.Host1.conf"
    device_fill "$dir" org.orva.lumod.conf.in "$dir/system.d/org.orva.lumod.conf"
    device_fill "$dir" org.orva.lumod.service.in "$dir/services/org.orva.lumod.service"
    device_fill "$dir" ../examples/host.json.in "$dir/host.json"
    local text line policy
    text=$(<"$dir/host.json") line=$(grep -F libnetworking.so "$dir/host.json")
    printf '%s\n' "${text/"$line"/"$line$DEVICE_WORKERS"}" >"$dir/host.json"
    for policy in {/etc,/usr/share}/dbus-1/system.d/wpa_supplicant.conf; do # who may be it, where it is installed
        [ ! -e "$policy" ] || ln -sf "$policy" "$dir/system.d/"
    done
}

# device_fill DIR TEMPLATE FILE
device_fill() {
    local lumod=$1/build/bin/lumod${DEVICE_LUMOD_CONF:+ --config $DEVICE_LUMOD_CONF}
    sed -e "s|@ORVA_USER@|$(id -un)|; s|@ORVA_LUMOD@|$lumod|" \
        -e "s|\"wired\": \"eth0\"|\"wired\": \"$DEVICE_WIRED\"|" \
        -e "s|@ORVA_MODULE@|$1/build/lib/libnetworking.so|" "$device_source/dbus/$2" >"$3"
}

# The environment of the bus, the daemon, the host and the clients.
device_environment() {
    local dir=$1
    export DBUS_SYSTEM_BUS_ADDRESS ORVA_RFKILL_RECORD
    DBUS_SYSTEM_BUS_ADDRESS=$(device_address "$dir")
    [ -n "$DEVICE_LUMOD_CONF" ] || export ORVA_LUMOD_WORLD="${DEVICE_WORLD:-$device_source/examples/world.json}"
    ORVA_RFKILL_RECORD=$dir/rfkill.log
    PATH=$(readlink "$dir/build")/bin:$PATH:/usr/sbin:/sbin
    [ "$DEVICE_RADIOS" = real ] || PATH=$device_source/tools/stand-ins:$PATH
    [ "$DEVICE_BACKEND" != fake ] || export ORVA_MOUNT_TABLE=$device_source/examples/mounts-nfs
}

# Whether the host's nodes can be read.
device_answers() {
    busctl --timeout=2 call org.orva.Host1 /org/orva/Host1 org.orva.Host1 GetValue s network/info \
        >/dev/null 2>&1
}

# The bus starts the daemon as nobody's child, so the bus is asked.
device_daemon_pid() {
    busctl --timeout=2 call org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus \
        GetConnectionUnixProcessID s org.orva.lumod 2>/dev/null | cut -d ' ' -f 2
}

# device_await SECONDS CMD...: until CMD succeeds, at most SECONDS, and while the device lives.
device_await() {
    local tries=$(($1 * 20))
    shift
    until "$@"; do
        ((tries-- > 0)) && device_any_alive "$device_bus_pid" &&
            { [ -z "$device_host_pid" ] || device_any_alive "$device_host_pid"; } || return 1
        sleep 0.05
    done
}

# device_descendants PID: the processes below PID.
device_descendants() {
    local child
    for child in $(pgrep -P "$1"); do
        echo "$child"
        device_descendants "$child"
    done
}

# device_end PID: ends PID and the processes below it: asks, and insists after five seconds.
device_end() {
    [ -n "$1" ] || return 0
    local pids tries=100
    mapfile -t pids < <(echo "$1" && device_descendants "$1")
    kill "${pids[@]}" 2>/dev/null
    while device_any_alive "${pids[@]}" && ((tries-- > 0)); do
        sleep 0.05
    done
    kill -KILL "${pids[@]}" 2>/dev/null
    return 0
}

# device_any_alive PID...: one that has ended but was not collected yet does not count.
device_any_alive() {
    local pid
    for pid in "$@"; do
        grep -qs '^State:[[:space:]]*[^ZX[:space:]]' "/proc/$pid/status" && return 0
    done
    return 1
}
