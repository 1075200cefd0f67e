# SPDX-License-Identifier: Apache-2.0
"""A lumod on a bus of its own, spoken to and overheard through busctl: no code of ours reads the wire."""
import json, queue, subprocess, threading, time

from privatebus import BUILD, LIMIT, PrivateBus

LUMOD = str(BUILD / "bin/lumod")
OBJECT = ["org.orva.lumod", "/org/orva/lumod"]


def encode(value):
    """A value as busctl's signature and arguments; a tuple is just that already."""
    if isinstance(value, dict):
        return ["a{sv}", str(len(value)), *(word for item in value.items() for word in [item[0], *encode(item[1])])]
    if isinstance(value, tuple):
        return value
    return {bool: ["b", str(value).lower()], int: ["i", str(value)], str: ["s", value]}[type(value)]


class Refused(Exception):
    pass


class Playground(PrivateBus):
    """Starts a bus that activates lumod with `world`, or with what the choices say, `under` other programs."""

    def __init__(self, world=None, under=(), **choices):
        super().__init__(**choices)
        if world is not None:
            self.environment["ORVA_LUMOD_WORLD"] = self.write("world.json", "// a test's world\n" + json.dumps(world))
        self.signals, self.overhears = queue.Queue(), threading.Event()
        self.start_bus(*under)
        monitor = self.start("busctl", "--address=" + self.address, "--json=short", "monitor", stdout=subprocess.PIPE)
        threading.Thread(target=self.overhear, args=(monitor.stdout,), daemon=True).start()
        self.until(self.overheard, "busctl's monitor does not hear what is said on the bus")

    # Whether what is said now is overheard, and so all that follows.
    def overheard(self):
        self.busctl("call", "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId")
        return self.overhears.wait(0.2)

    def overhear(self, stream):
        for line in stream:
            self.overhears.set()
            message = json.loads(line)
            if message["type"] == "signal" and message["path"] == OBJECT[1]:
                self.signals.put((message["member"], message["payload"]))

    def next(self, limit=LIMIT):
        return self.signals.get(timeout=limit)  # its name and its payload

    # The data of the next such signal; the ones before it are passed over.
    def wait(self, member, *values):
        passed, end = [], time.monotonic() + LIMIT
        while True:
            try:
                name, payload = self.next(max(0, end - time.monotonic()))
            except queue.Empty:
                raise AssertionError(f"no {member} {values} after {passed[-20:]}") from None
            passed.append((name, *(value for value in payload["data"] if not isinstance(value, dict))))
            if name == member and payload["data"][:len(values)] == list(values):
                return payload["data"]

    def busctl(self, *words, prefix=()):
        done = self.run(*prefix, "busctl", "--address=" + self.address, "--json=short", f"--timeout={LIMIT - 5}", *words)
        if done.returncode:
            raise Refused(done.stderr.strip())
        return json.loads(done.stdout) if done.stdout else None

    def call(self, method, *values, interface="org.orva.lumod", prefix=()):
        words = [encode(value) for value in values]
        return self.busctl("call", *OBJECT, interface, method, "".join(word[0] for word in words),
                           *(argument for word in words for argument in word[1:]), prefix=prefix)

    def act(self, method, *values):
        return self.call(method, *values, interface="org.orva.lumod.World")

    def get(self, name):
        return self.busctl("get-property", *OBJECT, "org.orva.lumod", name)

    def set(self, name, value):
        self.busctl("set-property", *OBJECT, "org.orva.lumod", name, *encode(value))

    def details(self, interface):
        return {key: value["data"] for key, value in self.call("InterfaceDetails", interface)["data"][0].items()}
