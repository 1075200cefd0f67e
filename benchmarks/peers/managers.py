# SPDX-License-Identifier: Apache-2.0
"""The network managers that are measured side by side: how each is started, and how it says on the bus what it knows.
All of them have DHCP on eth0, and IPv6 where a router advertises it."""
import json, pathlib, shutil

import dbus

from network import DEV

PROPERTIES = "org.freedesktop.DBus.Properties"
# In a mount namespace, where it finds nothing of an earlier run: what was fetched lies over /usr and /etc, /sys cannot be
# written, as in a container, so that nobody waits for udev, and there is no radio switch. No clock can be set.
PEER = """set -e
[ "$(readlink /proc/self/ns/net)" != "$(readlink /proc/1/ns/net)" ]
for own in /run /var/lib; do mount -t tmpfs own $own; done
mkdir -p /run/over/up /run/over/work
mount -t overlay over -o "lowerdir=$0/usr:/usr" /usr
mount -t overlay over -o "lowerdir=$0/etc:/etc,upperdir=/run/over/up,workdir=/run/over/work" /etc
mount -o remount,bind,ro /sys
[ ! -e /dev/rfkill ] || mount --bind /dev/null /dev/rfkill
file=$1 && mkdir -p "${file%/*}" && printf %s "$2" >"$file" && chmod 644 "$file" && shift 2
[ -z "$1" ] || install -d -o "$1" -g "$1" "$2"
shift 2
exec setpriv --bounding-set -sys_time,-sys_module,-sys_boot "$@" """


class Manager:
    """One that Debian has: its rows are `name`, `command`, a `file` with its `text` below /etc, `directory` with its `owner`,
    the `signal` (member, interface) and what `said` makes of it."""
    owner = directory = ""

    def start(self, bus, packages):
        pathlib.Path(bus.directory, "system.d/peers.conf").write_text(
            f'<busconfig><policy context="default"><allow own="{self.service}"/><allow send_destination="{self.service}"/>'
            '<allow send_type="method_call"/></policy></busconfig>', encoding="utf-8")
        bus.start_bus(*DEV)
        bus.start(*DEV, "unshare", "--mount", "sh", "-c", PEER, packages, self.file, self.text, self.owner, self.directory,
                  *self.command)

    def proxy(self, bus, path, interface):
        return dbus.Interface(bus.get_object(self.service, path, introspect=False), interface)


class Orva:
    name, service = "orva", "org.orva.Host1"
    signal = "ValueChanged", "org.orva.Host1"

    def start(self, bus, packages):
        shutil.rmtree("/var/lib/dhcpcd", ignore_errors=True)
        bus.start_bus(*DEV)
        bus.start_host(*DEV)

    def said(self, path, value):
        return bool(value["bool"]) if path == "network/state/connected" else None

    def addresses(self, bus):
        return str(bus.get_object(self.service, "/org/orva/Host1", introspect=False).GetValue(
            "network/info", dbus_interface="org.orva.Host1")["networkInfo"]["wired"]["addresses"])


class NetworkManager(Manager):
    name, service = "NetworkManager", "org.freedesktop.NetworkManager"
    command = "/usr/sbin/NetworkManager", "--no-daemon", "--config=/etc/NetworkManager/peers.conf"
    file = "/etc/NetworkManager/peers.conf"
    text = """[main]
plugins=keyfile
auth-polkit=false
hostname-mode=none
[keyfile]
path=/run/connections
[connectivity]
enabled=false
"""
    signal = "StateChanged", "org.freedesktop.NetworkManager.Device"

    def said(self, new, old, reason):
        return new == 100  # activated

    def addresses(self, bus):
        manager = self.proxy(bus, "/org/freedesktop/NetworkManager", self.service)
        device = manager.GetDeviceByIpIface("eth0")
        config = self.proxy(bus, device, PROPERTIES).Get(self.service + ".Device", "Ip4Config")
        return str(self.proxy(bus, config, PROPERTIES).Get(self.service + ".IP4Config", "AddressData"))


class Networkd(Manager):
    name, service = "systemd-networkd", "org.freedesktop.network1"
    command = "/lib/systemd/systemd-networkd",
    file, text = "/etc/systemd/network/eth0.network", "[Match]\nName=eth0\n[Network]\nDHCP=ipv4\n"
    owner, directory = "systemd-network", "/run/systemd/netif"
    signal = "PropertiesChanged", PROPERTIES

    def said(self, interface, changed, invalidated):
        state = changed.get("OperationalState")
        return state == "routable" if state and interface == self.service + ".Manager" else None

    def addresses(self, bus):
        text = self.proxy(bus, "/org/freedesktop/network1", self.service + ".Manager").Describe()
        links = {link["Name"]: link for link in json.loads(text)["Interfaces"]}
        return str([".".join(map(str, a["Address"])) for a in links["eth0"].get("Addresses", [])])


class Connman(Manager):
    name, service = "connman", "net.connman"
    command = "/usr/sbin/connmand", "--nodaemon", "--nodnsproxy", "--config=/etc/connman/peers.conf"
    file, text = "/etc/connman/peers.conf", "[General]\nAllowHostnameUpdates=false\nEnableOnlineCheck=false\n"
    signal = "PropertyChanged", "net.connman.Manager"

    def said(self, name, value):
        return value in ("ready", "online") if name == "State" else None

    addresses = None  # of others it does not tell


MANAGERS = [Orva(), NetworkManager(), Networkd(), Connman()]
