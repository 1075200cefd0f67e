#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The driver of ./soak: plays against the device whose bus is DBUS_SYSTEM_BUS_ADDRESS, and judges it."""
import argparse
import collections
import os
import pathlib
import random
import signal
import sys
import time

import dbus
import dbus.mainloop.glib
from gi.repository import GLib

import accounts
import players

HOST = ("org.orva.Host1", "/org/orva/Host1")
DAEMON = ("org.orva.lumod", "/org/orva/lumod")
BUS = ("org.freedesktop.DBus", "/org/freedesktop/DBus")
PATIENCE = 150  # s; a WPS session that nobody answers takes 130
NOBODY = {"ServiceUnknown", "NoReply", "NameHasNoOwner", "Disconnected", "Spawn.ChildExited"}


def bus_value(value):
    """A plain value as the bus carries it: each member of a map or list a variant."""
    if isinstance(value, dict):
        return dbus.Dictionary({key: bus_value(item) for key, item in value.items()}, signature="sv")
    if isinstance(value, list):
        return dbus.Array([bus_value(item) for item in value], signature="v")
    return dbus.Int32(value) if type(value) is int else value


def leaves(path, value):
    """The plain values in a tree of maps and lists, each with its path."""
    if isinstance(value, (dict, list)):
        yield path, "[]" if isinstance(value, list) else "{}"
        for key, item in value.items() if isinstance(value, dict) else enumerate(value):
            yield from leaves(f"{path}/{key}", item)
    else:
        yield path, value


class Device:
    """The device as its clients and its surroundings meet it. Everything asked is noted until answered."""

    def __init__(self, host, rng):
        self.host, self.rng, self.deeds, self.open = host, rng, [], {}
        self.answers, self.slowest, self.faults = collections.Counter(), 0, []
        self.clients = [self.connect() for _ in range(4)]
        self.clients[0].add_signal_receiver(self.hear, dbus_interface=HOST[0])

    @staticmethod
    def connect():
        connection = dbus.bus.BusConnection(os.environ["DBUS_SYSTEM_BUS_ADDRESS"])
        connection.set_exit_on_disconnect(False)
        return connection

    def hear(self, *arguments):
        self.answers["signals"] += 1
        self.look_for_keys("a signal", arguments)

    def look_for_keys(self, where, what):
        if players.KEY in str(what):
            self.faults.append(f"a key is shown by {where}")

    def send(self, client, target, interface, method, *arguments, done=None, failed=None):
        number = self.answers["asked"] = self.answers["asked"] + 1
        self.open[number] = (client, f"{method} {arguments[:1]}")
        began = time.monotonic()

        def answered(*values):
            if self.open.pop(number, None) and method == "GetValue":
                self.slowest = max(self.slowest, time.monotonic() - began)
            if "wps" not in str(arguments[:1]):  # who asks for WPS is given the key
                self.look_for_keys(f"{method} {arguments[:1]}", values)
            if done:
                done(*values)

        def refused(error):
            self.open.pop(number, None)
            self.look_for_keys(f"the refusal of {method}", error)
            name = error.get_dbus_name().replace("org.freedesktop.DBus.Error.", "")
            self.answers["refused"] += 1
            if target is HOST and name in NOBODY:
                self.faults.append(f"{method} {arguments[:1]} ended with {name}: {error.get_dbus_message()}")
            if failed:
                failed(error)

        client.get_object(*target, introspect=False).get_dbus_method(method, interface)(
            *map(bus_value, arguments), reply_handler=answered, error_handler=refused, timeout=PATIENCE)

    def ask(self, method, *arguments, **more):
        self.send(self.rng.choice(self.clients), HOST, HOST[0], method, *arguments, **more)

    def invoke(self, path, value=None, **more):
        self.ask("Invoke", path, value or {}, **more)

    def act(self, method, *arguments):
        self.send(self.clients[0], DAEMON, "org.orva.lumod.World", method, *arguments)

    def kill_daemon(self):
        """The daemon was started by this device's bus, which knows its process."""
        self.send(self.clients[0], BUS, BUS[0], "GetConnectionUnixProcessID", DAEMON[0],
                  done=lambda pid: os.kill(pid, signal.SIGKILL))

    def replace_client(self):
        """One that leaves with its requests open: nobody is there for their answers."""
        leaving = self.clients.pop()
        self.open = {number: asked for number, asked in self.open.items() if asked[0] is not leaving}
        leaving.close()
        self.clients.append(self.connect())

    # --- looking at it, between the actions --------------------------------------------------------

    def get(self, path):
        return self.clients[0].call_blocking(*HOST, HOST[0], "GetValue", "s", [path])

    def matches(self):
        return int(self.clients[0].call_blocking(*BUS, BUS[0] + ".Debug.Stats", "GetConnectionStats", "s",
                                                 [HOST[0]])["MatchRules"])

    def picture(self):
        paths = ["network/info", "network/profile", "network/softap/requests", "network/softap/stations",
                 "network/airplane-mode", "power/resource/wifi", "network/webserver/url"]
        wps = "network/info/networkInfo/wireless/wps"  # tells of the last session
        return {leaf: value for path in paths for leaf, value in leaves(path, self.get(path))
                if not leaf.startswith(wps)}


def until(condition, what, seconds):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise SystemExit(f"FAILED: waited {seconds} s in vain for {what()}")
        GLib.MainContext.default().iteration(False) or time.sleep(0.005)


def wait(seconds):
    end = time.monotonic() + seconds
    until(lambda: time.monotonic() > end, str, seconds + 60)


def play(device, rng, seconds):
    """Does what the random numbers choose, some thirty things a second."""
    names, weights = list(players.ALL), list(players.ALL.values())
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        action = rng.choices(names, weights)[0]
        device.deeds.append((time.time(), action.__name__))
        action(device, rng)
        wait(rng.choice([0, 0.02, 0.1]))


def settle(device):
    """Brings the device back to where it began: a new world, the settings as they were, nobody asking."""
    device.deeds.append((time.time(), "crash"))
    device.act("Crash")
    until(lambda: not device.open, lambda: f"answers to {sorted({w for _, w in device.open.values()})}", PATIENCE)
    for path, value in [("softap-auto-enabled", {"bool": False}), ("max-auth-failures", {"i32": 3}),
                        ("max-wifi-networks", {"i32": 10}), ("airplane-mode-type", {"airplaneModeType": 0}),
                        ("wifi-restart-criteria", {"wifiRestartCriteria": {}})]:
        device.ask("SetValue", "settings/network/" + path, value)
    device.ask("SetValue", "network/airplane-mode", {"bool": False})
    until(lambda: not device.open, lambda: "answers", PATIENCE)
    device.invoke("network/wake-on-lan/set-enabled", {"bool": False})
    for path in ("network/stop", "network/start"):
        device.deeds.append((time.time(), "start"))
        device.invoke(path)
        until(lambda: not device.open, lambda: "answers", PATIENCE)
    device.invoke("network/profile/set", {"networkProfile": {"type": 0, "wired": {"dhcp": True}, "wireless": {},
                                                             "wirelessNetworks": []}})
    until(lambda: device.get("network/state/connected").get("bool"), lambda: "a connection", 60)
    device.invoke("network/scan")  # what a spoilt one found goes
    until(lambda: not device.open, lambda: "answers", PATIENCE)
    until(lambda: not device.get("power/resource/wifi").get("bool"), lambda: "the radio to rest", 60)
    wait(4)  # memory is given back three seconds after the last change
    return {**accounts.uses(device.host), "match rules": device.matches()}, device.picture()


def differences(before, after, options):
    for what in sorted({*before, *after}):
        was, now = before.get(what), after.get(what)
        may_grow = what.endswith("KiB") and (options.no_memory or now - was <= options.slack)
        if was != now and not may_grow:
            yield f"{what} was {was}, is {now}"


def judge(device, before, after, options):
    faults = list(dict.fromkeys(device.faults))
    for was, now in zip(before, after):
        faults += differences(was, now, options)
    faults += [f"in the log: {line}" for line in accounts.unprovoked(options.log, device.deeds)]
    if players.KEY in options.log.read_text(encoding="utf-8", errors="replace"):
        faults.append("a key is in the log")
    return faults


def report(device, before, after):
    done = collections.Counter(name for _, name in device.deeds)
    print(f"{sum(done.values())} actions: " + ", ".join(f"{n} {name}" for name, n in done.most_common()))
    print("{asked} requests, all answered, {refused} of them refused; {signals} signals; "
          .format(**device.answers) + f"slowest read {device.slowest * 1000:.0f} ms")
    for what in before:
        print(f"{what:>14}: {before[what]} before, {after[what]} after")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--minutes", type=float, required=True)
    parser.add_argument("--seed", type=int, required=True)
    parser.add_argument("--host", type=int, required=True, help="the host's process")
    parser.add_argument("--log", type=pathlib.Path, required=True)
    parser.add_argument("--no-memory", action="store_true", help="its size says nothing")
    parser.add_argument("--slack", type=int, default=512, help="KiB that memory may differ by")
    options = parser.parse_args()
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    print(f"seed {options.seed}", flush=True)
    rng = random.Random(options.seed)
    device = Device(options.host, random.Random(options.seed))
    play(device, rng, options.minutes * 60 / 3)  # buffers grow to their size
    before = settle(device)
    play(device, rng, options.minutes * 60 * 2 / 3)
    after = settle(device)
    report(device, before[0], after[0])
    faults = judge(device, before, after, options)
    for fault in faults[:30]:
        print(f"FAILED: {fault}")
    print("The device is as it was." if not faults else f"{len(faults)} faults; seed {options.seed}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
