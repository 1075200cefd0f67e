#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The whole device beside other network managers, on the same cable with the same DHCP server, in turns.

    run.py BUILD PACKAGES [IDLE-SECONDS [TURNS]]

Each runs alone, with a bus of its own, in namespaces. PACKAGES is the tree into which they were unpacked. Prints one
JSON document a line: a measure, and the median of each."""
import collections, contextlib, json, os, pathlib, signal, statistics, subprocess, sys, time

SOURCE = pathlib.Path(__file__).resolve().parents[2]
os.environ.setdefault("ORVA_BUILD", os.path.abspath(sys.argv[1]))
sys.path[:0] = [str(SOURCE / "tests/support"), str(SOURCE / "tests/wired")]

import dbus, dbus.mainloop.glib
from gi.repository import GLib

import network
from managers import MANAGERS
from network import DEV, ip
from privatebus import BUILD, PrivateBus

ROUNDS, CHANGES, LIMIT = 3, 1000, 60
# A veth pair leaves checksums to nobody, and connman drops what has none.
WHOLE_CHECKSUMS = """import ctypes, fcntl, socket, struct
tx_off = ctypes.create_string_buffer(struct.pack("II", 0x17, 0))
fcntl.ioctl(socket.socket(), 0x8946, struct.pack("16sP8x", b"r0", ctypes.addressof(tx_off)))"""
figures = collections.defaultdict(lambda: collections.defaultdict(list))


def field(pid, name, file="status"):
    with contextlib.suppress(OSError):  # one that has just ended
        for line in pathlib.Path(f"/proc/{pid}/{file}").read_text(encoding="utf-8").splitlines():
            if line.startswith(name + ":"):
                return int(line.split()[1])
    return 0


class Measured:
    """One manager that runs, its cable out."""

    def __init__(self, manager, packages):
        self.manager, self.net = manager, network.Network()
        subprocess.run([*network.ROUTER, "/usr/bin/python3", "-c", WHOLE_CHECKSUMS], check=True)
        self.net.serve(lease="2h")
        conf = pathlib.Path("/run/lumod.conf")
        conf.write_text(json.dumps({"helperDirectory": str(BUILD / "bin")}), encoding="utf-8")
        self.bus = PrivateBus(DEVICE_LUMOD_CONF=str(conf))
        manager.start(self.bus, packages)
        self.loop, self.connected = GLib.MainLoop(), False
        self.connection = dbus.bus.BusConnection(self.bus.address, mainloop=dbus.mainloop.glib.DBusGMainLoop())
        self.connection.add_signal_receiver(self.heard, *manager.signal)
        self.bus.until(lambda: self.connection.name_has_owner(manager.service))
        time.sleep(2)

    def close(self):
        self.connection.close()
        for pid in self.processes():
            with contextlib.suppress(ProcessLookupError):  # an engine ends with its manager
                os.kill(pid, signal.SIGTERM)
        self.bus.until(lambda: not self.processes())
        self.bus.close()
        self.net.close()

    def heard(self, *words):
        said = self.manager.said(*words)
        if said is not None and said != self.connected:
            self.connected = said
            self.loop.quit()

    def note(self, measure, value):
        figures[measure][self.manager.name].append(value)

    def processes(self):
        """All that runs for it: whatever is in its network namespace, but the bus."""
        inside, pids = os.stat("/run/netns/dev").st_ino, []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if os.stat(process / "ns/net").st_ino == inside and (process / "comm").read_text() != "dbus-daemon\n":
                    pids.append(int(process.name))
            except OSError:
                continue
        return pids

    def cable(self, plugged):
        """Milliseconds until it says so."""
        began = time.monotonic()
        late = GLib.timeout_add_seconds(LIMIT, lambda: self.loop.quit() or True)
        self.net.cable(plugged)
        while self.connected != plugged and time.monotonic() < began + LIMIT:
            self.loop.run()
        GLib.source_remove(late)
        if self.connected != plugged:
            raise TimeoutError(f"{self.manager.name} says nothing for {LIMIT} s: {self.bus.logged()}")
        return 1000 * (time.monotonic() - began)

    def latency(self):
        for _ in range(ROUNDS):
            for plugged, measure in (True, "carrier to connected, ms"), (False, "carrier lost to told, ms"):
                self.note(measure, self.cable(plugged))
                time.sleep(1.5)  # the kernel tells of a second change of the carrier within a second late
        self.cable(True)

    def processor(self):
        return sum(int(path.read_text().split()[0]) for pid in self.processes()
                   for path in pathlib.Path(f"/proc/{pid}/task").glob("*/schedstat")) / 1e6

    def storm(self):
        lines = [f"addr {verb} 198.51.{i // 250}.{i % 250 + 1}/32 dev eth0" for verb in ("add", "del") for i in range(CHANGES // 2)]
        before = self.processor()
        subprocess.run([*DEV, "ip", "-batch", "-"], input="\n".join(lines[:-1]), text=True, check=True)
        sent = time.monotonic()
        while self.manager.addresses and self.manager.addresses(self.connection).count("198.51.") != 1:
            if time.monotonic() > sent + LIMIT:
                raise TimeoutError(f"{self.manager.name} does not say the truth")
            time.sleep(0.01)
        if self.manager.addresses:
            self.note(f"{CHANGES} addresses to the truth, ms", 1000 * (time.monotonic() - sent))
        time.sleep(2)
        self.note(f"{CHANGES} addresses, ms of CPU", self.processor() - before)
        ip("-n", "dev", *lines[-1].split())

    def memory(self):
        pids = self.processes()
        self.note("processes", len(pids))
        for measure, name in ("private dirty, KiB", "Private_Dirty"), ("proportional, KiB", "Pss"):
            self.note(measure, sum(field(pid, name, "smaps_rollup") for pid in pids))

    def wakeups(self):
        return sum(field(f"{pid}/task/{thread}", "voluntary_ctxt_switches") for pid in self.processes()
                   for thread in os.listdir(f"/proc/{pid}/task"))

    def idle(self, seconds):
        time.sleep(15)  # router solicitations come to their end
        before = self.wakeups()
        time.sleep(seconds)
        self.note(f"wake-ups in {seconds} s, connected", self.wakeups() - before)


def measure(manager, packages, idle):
    measured = Measured(manager, packages)
    try:
        measured.latency()
        measured.memory()
        measured.storm()
        if idle:
            measured.idle(idle)
    finally:
        measured.close()


def main():
    packages = sys.argv[2]
    idle, turns = int((sys.argv[3:] or [60])[0]), int((sys.argv[4:] or [3])[0])
    for turn in range(turns):
        for manager in MANAGERS:
            print(f"Turn {turn + 1} of {turns}: {manager.name}", file=sys.stderr)
            try:
                measure(manager, packages, idle if turn == 0 else 0)
            except (OSError, AssertionError, dbus.DBusException) as fault:
                print(f"{manager.name}: {fault}", file=sys.stderr)
    for measured, values in figures.items():
        print(json.dumps({"what": measured, **{name: round(statistics.median(found), 1) for name, found in values.items()}}))


if __name__ == "__main__":
    network.enclose("--net", "--uts")
    main()
