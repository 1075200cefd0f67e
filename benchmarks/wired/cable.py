#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What a real cable costs, with a real DHCP server: from carrier to the host's client, a storm of addresses, memory,
and what wakes when nothing happens.

    cable.py BUILD [IDLE-SECONDS]

In namespaces of its own, as the tests do it. Prints one JSON document a line."""
import json, os, pathlib, subprocess, sys, time

SOURCE = pathlib.Path(__file__).resolve().parents[2]
os.environ.setdefault("ORVA_BUILD", os.path.abspath(sys.argv[1]))
sys.path[:0] = [str(SOURCE / "tests/support"), str(SOURCE / "tests/wired")]

import dbus, dbus.mainloop.glib
from gi.repository import GLib

import network
from wiredcase import DEV, Device, ip, processes

STACK = ("orva-host", "lumod", "lumod-keep", "dhcpcd")


def figure(what, **values):
    print(json.dumps({"what": what, **values}), flush=True)


def percentiles(milliseconds):
    ordered = sorted(milliseconds)
    return {"p50 ms": round(ordered[len(ordered) // 2], 1), "worst ms": round(ordered[-1], 1)}


def field(pid, name, file="status"):
    for line in pathlib.Path(f"/proc/{pid}/{file}").read_text().splitlines():
        if line.startswith(name + ":"):
            return int(line.split()[1])
    return 0


def wakeups():
    return {name: sum(field(pid, "voluntary_ctxt_switches") for pid in processes(name)) for name in STACK}


def processor(pid):
    times = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return 1000 * (int(times[11]) + int(times[12])) / os.sysconf("SC_CLK_TCK")


class Cable(Device):
    def runTest(self):
        idle = int(sys.argv[2]) if len(sys.argv) > 2 else 60
        self.begin(serve=False, dhcpDeadline=10)
        self.net.serve(lease="2h")
        self.p.set("LogLevel", 2)
        self.latency(20)
        self.plug()
        self.agree(True, "192.0.2.")
        self.storm()
        self.memory()
        time.sleep(15)  # router solicitations come to their end
        before = wakeups()
        time.sleep(idle)
        figure(f"cable: wake-ups in {idle} s, connected", **{name: wakeups()[name] - before[name] for name in STACK})

    def latency(self, rounds):
        bus = dbus.bus.BusConnection(self.p.address, mainloop=dbus.mainloop.glib.DBusGMainLoop())
        loop, told = GLib.MainLoop(), {"connected": None}

        def changed(path, value):
            if path == "network/state/connected":
                told["connected"] = bool(value["bool"])
                loop.quit()

        bus.add_signal_receiver(changed, "ValueChanged", "org.orva.Host1")
        taken = {True: [], False: []}
        for i in range(2 * rounds):
            plugged = i % 2 == 0
            began = time.monotonic()
            self.net.cable(plugged)
            while told["connected"] != plugged:
                loop.run()
            taken[plugged].append(1000 * (time.monotonic() - began))
            time.sleep(1.5)  # the kernel tells of a second change of the carrier within a second late
        figure("cable: carrier to connected at a client", **percentiles(taken[True]))
        figure("cable: carrier lost to a client", **percentiles(taken[False]))

    def storm(self):
        lumod, changes = processes("lumod")[0], 1000
        before, began = processor(lumod), time.monotonic()
        lines = [f"addr {verb} 198.51.{i // 250}.{i % 250 + 1}/32 dev eth0" for verb in ("add", "del")
                 for i in range(changes // 2)]
        subprocess.run([*DEV, "ip", "-batch", "-"], input="\n".join(lines[:-1]), text=True, check=True)
        sent = time.monotonic()
        self.agree(True, f"198.51.1.{changes // 2 - 250}/32")
        figure(f"cable: {changes} changes of addresses in {round(1000 * (sent - began))} ms",
               **{"cpu ms of lumod": round(processor(lumod) - before), "ms to the truth": round(1000 * (time.monotonic() - sent))})
        ip("-n", "dev", *lines[-1].split())

    def memory(self):
        for name in STACK[1:]:
            pids = processes(name)
            figure(f"cable: memory of {name}", processes=len(pids), **{
                "resident KiB": sum(field(pid, "Rss", "smaps_rollup") for pid in pids),
                "private dirty KiB": sum(field(pid, "Private_Dirty", "smaps_rollup") for pid in pids)})


if __name__ == "__main__":
    network.enclose()
    result = Cable().run()
    for _, text in result.failures + result.errors:
        print(text, file=sys.stderr)
    sys.exit(not result.wasSuccessful())
