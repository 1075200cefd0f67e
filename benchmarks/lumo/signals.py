#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What a signal of the connection daemon costs: how long until a client of the host sees what it changed, and
what ten thousand of each kind leave behind.

    signals.py BUILD

Plays the daemon itself, on a bus of its own, against BUILD/bin/orva-host with BUILD's module. Prints one JSON
document a line. The client is written in Python too: compare with the Ping of the same client."""
import json
import os
import pathlib
import subprocess
import sys
import time

import dbus
import dbus.mainloop.glib
from gi.repository import GLib

os.environ["ORVA_BUILD"] = os.path.abspath(sys.argv[1])
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tests/support"))

from playeddaemon import PlayedDaemon
from privatebus import BUILD, PrivateBus

DETAILS = {"Present": dbus.Int32(1), "Mac": "02:00:00:00:00:01", "Ips": "192.0.2.2/24"}


class Client:
    """Waits for what the host announces."""

    def __init__(self, context):
        self.context, self.heard = context, 0
        self.bus = dbus.SystemBus(private=True)
        self.bus.add_signal_receiver(self.hear, dbus_interface="org.orva.Host1", byte_arrays=True)

    def hear(self, path, *_value):
        self.heard += path in ("network/state/cable", "network/scan/results")

    def call(self, interface, method, *arguments):
        answers = []
        self.bus.call_async("org.orva.Host1", "/org/orva/Host1", interface, method,
                            "s" * len(arguments), arguments,
                            lambda *values: answers.append(values),
                            lambda error: answers.append(error))
        while not answers:
            self.context.iteration(True)
        return answers[0]

    def timed(self, action):
        began, before = time.perf_counter(), self.heard
        action()
        while self.heard == before:
            self.context.iteration(True)
        return time.perf_counter() - began


def report(what, samples, ping=None):
    samples = sorted(samples)
    p50, p99 = (samples[int(len(samples) * part)] * 1e6 for part in (0.5, 0.99))
    print(json.dumps({"what": what, "p50_us": round(p50, 1), "p99_us": round(p99, 1),
                      "p50_to_ping": round(p50 / (ping or p50), 2)}), flush=True)
    return p50


def cost(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rsplit(")", 1)[1].split()
    seconds = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
    return seconds, int(fields[21]) * os.sysconf("SC_PAGE_SIZE") // 1024


def networks(count):
    return {f"network {i}": dbus.Dictionary({"type": "wpa_psk", "signal": dbus.Int32(-50 - i % 40),
                                             "bssid": "02:00:00:00:00:02", "channel": dbus.Int32(6),
                                             "frequency": dbus.Int32(2437)}, signature="sv")
            for i in range(count)}


def flood(daemon, client, pid, kind, arguments, signature):
    for turn in ("first", "second"):
        seconds, memory = cost(pid)
        for i in range(10000):
            daemon.say(kind, *arguments(i), signature=signature)
            while daemon_waits(client.context):
                pass
        client.call("org.orva.Host1", "GetValue", "network/info")
        after, grown = cost(pid)
        print(json.dumps({"what": f"10000 x {kind}, {turn} time", "cpu_s": round(after - seconds, 2),
                          "rss_growth_kib": grown - memory}), flush=True)


def daemon_waits(context):
    return context.iteration(False)


def measure(device):
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    context = GLib.MainContext.default()
    daemon = PlayedDaemon(device.address, {"eth0": DETAILS, "wlan0": DETAILS})
    host = subprocess.Popen([BUILD / "bin/orva-host", "--config", device.directory / "host.json", "--state-dir",
                             device.directory / "state", "--log-level", "error"], stderr=subprocess.DEVNULL)
    try:
        client = Client(context)
        began = time.monotonic()
        while isinstance(client.call("org.orva.Host1", "GetValue", "network/info"), Exception):
            if time.monotonic() - began > 20:
                raise SystemExit("the host does not answer")
        peer = "org.freedesktop.DBus.Peer"
        pings = []
        for _ in range(1000):
            began = time.perf_counter()
            client.call(peer, "Ping")
            pings.append(time.perf_counter() - began)
        ping = report("Ping", pings)
        report("CableStatus to ValueChanged", [client.timed(
            lambda i=i: daemon.say("CableStatus", i % 2 == 0, signature="b")) for i in range(1000)], ping)
        for count in (1, 10, 1000):
            report(f"ScanResults of {count} to RowsChanged", [client.timed(
                lambda: daemon.say("ScanResults", networks(count), signature="a{sv}"))
                for _ in range(100)], ping)
        for kind, arguments, signature in [
                ("CableStatus", lambda i: [i % 2 == 1], "b"), ("Error", lambda i: ["trouble"], "s"),
                ("Connected", lambda i: ["eth0"], "s"), ("Disconnected", lambda i: ["eth0"], "s"),
                ("Disconnecting", lambda i: ["eth0"], "s"), ("AddressesChanged", lambda i: [], ""),
                ("AuthError", lambda i: ["nobody", "wrong key"], "ss"),
                ("InterfaceStatusChanged", lambda i: ["wlan0", 2], "si"),
                ("StationConnected", lambda i: ["02:00:00:00:00:03"], "s"),
                ("StationDisconnected", lambda i: ["02:00:00:00:00:03"], "s"),
                ("ScanResults", lambda i, few=networks(10): [few], "a{sv}")]:
            flood(daemon, client, host.pid, kind, arguments, signature)
    finally:
        host.terminate()
        host.wait(10)


def main():
    device = PrivateBus()
    os.environ.update(device.environment)
    device.start_bus()
    try:
        measure(device)
    finally:
        device.close()


if __name__ == "__main__":
    main()
