#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What a start takes, in counts that depend neither on how fast the machine is nor on what else it does.

    counts.py BUILD [--write]

Runs BUILD's host with BUILD's module three times on a bus of its own, beside a played daemon that answers at once, and
ends it as soon as it has published the true picture. Compares the counts with those that kept.txt has for this system,
and fails where one has grown by more than a twentieth; --write keeps them instead."""
import os
import pathlib
import platform
import re
import shutil
import subprocess
import sys
import tempfile
import time

import dbus.bus
import dbus.mainloop.glib
from gi.repository import GLib

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILT = pathlib.Path(sys.argv[1]).resolve()
STRIPPED = pathlib.Path(tempfile.mkdtemp(prefix="orva-start-"))  # as a device has it; the host looks into its workers
os.environ["ORVA_BUILD"] = str(STRIPPED)
sys.path[:0] = [str(SOURCE / "tests/support"), str(SOURCE / "benchmarks/lumo")]

from playeddaemon import PlayedDaemon
from privatebus import PrivateBus

KEPT = pathlib.Path(__file__).with_name("kept.txt")
FIGURES = ("instructions", "messages", "system-calls", "relocations", "anonymous-KiB")
TOLERATED = 0.05
LIMIT = 60  # seconds; callgrind takes some five
DETAILS = {
    "eth0": {"Present": dbus.Int32(1), "Mac": "02:00:00:00:00:01", "CableStatus": True, "Connected": True,
             "Dhcp": True, "Ips": "192.0.2.2/24 2001:db8::2/64", "Dns": "192.0.2.1", "Gateway": "192.0.2.1"},
    "wlan0": {"Present": dbus.Int32(1), "Mac": "02:00:00:00:00:02"},
}
URL = "http://192.0.2.2:80/"  # what is published last
WAITS = {"poll", "ppoll", "futex", "clock_nanosleep", "restart_syscall"}  # the more, the slower the others are


class Start:
    """One start of the host on a bus of its own, until its picture is true."""

    def __init__(self):
        self.counts = {}
        self.device = PrivateBus()
        try:
            self.device.start_bus()
            self.observe()
            self.run()
        finally:
            self.device.close()

    def under(self):
        """The words of a program that runs the host."""
        return []

    def observe(self):
        """From now on the host may come."""

    def pictured(self, pid):
        """The host's picture is true."""

    def ended(self, pid):
        """The host has ended."""

    def run(self):
        pictured = self.watch()
        daemon = PlayedDaemon(self.device.address, DETAILS,
                              lambda command: self.connect(daemon) if command == "SetNormalMode" else None)
        host = subprocess.Popen(
            [*self.under(), STRIPPED / "bin/orva-host", "--config", self.device.directory / "host.json",
             "--state-dir", self.device.directory / "state"], stderr=self.device.log,
            env={**self.device.environment, "QT_HASH_SEED": "0"})
        end = time.monotonic() + LIMIT
        GLib.timeout_add(100, lambda: True)
        while not pictured:
            GLib.MainContext.default().iteration(True)
            assert time.monotonic() < end and host.poll() is None, self.device.logged()
        self.pictured(host.pid)
        host.terminate()
        assert host.wait(LIMIT) == 0, self.device.logged()
        self.ended(host.pid)

    def watch(self):
        """A list that is no longer empty when the picture is true."""
        pictured = []
        self.client = dbus.bus.BusConnection(self.device.address)
        self.client.add_signal_receiver(lambda path, value: value.get("string") == URL and pictured.append(path),
                                        "ValueChanged", "org.orva.Host1")
        self.client.get_name_owner("org.freedesktop.DBus")  # an answer: the bus has the rule
        return pictured

    @staticmethod
    def connect(daemon):
        daemon.say("Connected", "eth0", signature="s")
        daemon.say("AddressesChanged")


class Counted(Start):
    """Instructions, those of the end too."""

    def under(self):
        return ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]

    def ended(self, pid):
        self.counts["instructions"] = int(re.search(r"Collected : (\d+)", self.device.logged())[1])


class Traced(Start):
    """System calls, without those of the programs that the host runs, those that wait and those that wake a thread."""

    def under(self):
        return ["strace", "-D", "-f", "-q", "-y", "-o", self.device.directory / "trace"]

    def ended(self, pid):
        trace = (self.device.directory / "trace").read_text(encoding="utf-8", errors="replace")
        calls = re.findall(r"^(\d+) +(\w+)\((.*)", trace, re.M)
        threads = {str(pid), *re.findall(r"CLONE_THREAD.*parent_tid=\[(\d+)\]", trace),
                   *re.findall(r"resumed> => \{parent_tid=\[(\d+)\]", trace)}
        # How often a loader looks in vain depends on the processor.
        self.counts["system-calls"] = sum(
            thread in threads and call not in WAITS and "[eventfd]" not in rest and "-1 ENOENT" not in rest
            for thread, call, rest in calls)


class Watched(Start):
    """Messages, relocations and memory."""

    def under(self):
        return ["env", "LD_DEBUG=statistics"]

    def observe(self):
        self.monitor = self.device.start("dbus-monitor", "--address", self.device.address, stdout=subprocess.PIPE)
        for line in self.monitor.stdout:
            if "NameLost" in line:
                return  # what the bus tells a monitor when it has become one

    def pictured(self, pid):
        rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii")
        self.counts["anonymous-KiB"] = int(re.search(r"Anonymous: +(\d+)", rollup)[1])

    def ended(self, pid):
        counted = re.findall(rf"^ *{pid}:\s+final number of relocations: (\d+)", self.device.logged(), re.M)
        self.counts["relocations"] = int(counted[-1])
        self.counts["messages"] = self.messages()

    def messages(self):
        """Those that the host sent, and those that were sent to it alone."""
        messages, host = [], None
        for line in self.monitor.stdout:
            if f'string "{URL}"' in line:
                return sum(host in ends for ends in messages)
            if ends := re.match(r"\S.* sender=(\S+) -> destination=(\S+)", line):
                messages.append(ends.groups())
                if "member=RequestName" in line:
                    host = ends[1]  # it asks after the daemon
        raise EOFError("the bus has gone")


def system():
    """What the counts depend on."""
    release = dict(line.split("=", 1) for line in pathlib.Path("/etc/os-release").read_text().splitlines() if line)
    version = re.search(r"^ORVA_QT:\w+=(\d)", (BUILT / "CMakeCache.txt").read_text(), re.M)[1]
    name = (release["ID"] + release.get("VERSION_ID", "")).replace('"', "")
    return f"{name}-qt{version}-{platform.machine()}"


def measure():
    for folder, names in (("bin", ["orva-host"]), ("lib", ["libnetworking.so"])):
        (STRIPPED / folder).mkdir()
        for name in names:
            subprocess.run(["strip", "-o", STRIPPED / folder / name, BUILT / folder / name], check=True)
    counts = {}
    for kind in (Counted, Traced, Watched):
        counts.update(kind().counts)
    return counts


def read_kept():
    lines = [line.split() for line in KEPT.read_text(encoding="ascii").splitlines()]
    return {line[0]: dict(zip(FIGURES, map(int, line[1:]))) for line in lines[1:]}


def write_kept(kept):
    rows = [("system", *FIGURES)] + [(name, *(kept[name][figure] for figure in FIGURES)) for name in sorted(kept)]
    KEPT.write_text("".join(f"{row[0]:24}" + "".join(f"{cell:>15}" for cell in row[1:]) + "\n" for row in rows),
                    encoding="ascii")


def compare(name, counts, kept):
    """Tells what differs; whether nothing has grown."""
    grown = False
    for figure in FIGURES:
        change = counts[figure] / kept[figure] - 1
        print(f"{figure:15}{counts[figure]:>12}{kept[figure]:>12} kept  {100 * change:+.1f} %")
        if change > TOLERATED:
            grown = True
            print(f"A start takes {100 * change:.0f} % more {figure} than what is kept for {name}.")
        elif change < -TOLERATED:
            print(f"A start takes {-100 * change:.0f} % fewer {figure}: ./bench --check --write keeps that.")
    return not grown


def main():
    counts, name, kept = measure(), system(), read_kept()
    if "--write" in sys.argv[2:]:
        write_kept({**kept, name: counts})
        print(f"Kept for {name}: {counts}")
    elif name not in kept:
        print(f"There are no kept figures for this system, {name}: nothing was compared. Here they are: {counts}")
    else:
        sys.exit(not compare(name, counts, kept[name]))


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
try:
    main()
finally:
    shutil.rmtree(STRIPPED)
