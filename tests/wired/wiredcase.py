# SPDX-License-Identifier: Apache-2.0
"""A device with a real cable, and whether what it says is what the machine says."""
import json, os, pathlib, signal, time, unittest, warnings

import network
from network import DEV, Network, ip
from playground import BUILD, Playground

RUN, RESOLV = pathlib.Path("/run/lumod"), pathlib.Path("/run/lumod/resolv.conf")
CONF = {"helperDirectory": str(BUILD / "bin"), "dhcpDeadline": 5}
CONNECTED, NOT = True, False
IPV6 = ("/64'", "'2001:db8:1::1'", "'fe80:")  # an address, the name server, the gateway: they come one by one
ENGINES = ("dhcpcd", "lumod-keep", "dhcp-event", "lumod", "resolvconf")


def processes(*names):
    """The pids of what runs under one of these names."""
    pids = []
    for status in pathlib.Path("/proc").glob("[0-9]*/status"):
        try:
            fields = dict(line.split(":\t", 1) for line in status.read_text().splitlines() if ":\t" in line)
        except OSError:
            continue
        if fields["Name"] in names and fields["State"][0] != "Z":
            pids.append(int(fields["Pid"]))
    return sorted(pids)


def program(name, script):
    """A program of that path that is a shell script."""
    pathlib.Path(name).write_text("#!/bin/sh\n" + script + "\n", encoding="utf-8")
    pathlib.Path(name).chmod(0o755)
    return name


def routes(*words):
    return [route for family in ("-4", "-6") for route in ip("-n", "dev", family, "route", "show", *words)]


def left_over():
    """What lumod and its engines must have taken away at their end."""
    return dict(engines=len(processes(*ENGINES)),
                files=[str(path) for path in [*RUN.glob("*"), *pathlib.Path("/run/dhcpcd").glob("*")]],
                routes=[f"{route['dst']} via {route.get('gateway')}" for route in routes() if route.get("protocol") != "kernel"],
                addresses=[address["local"] for link in ip("-n", "dev", "addr") for address in link["addr_info"]
                           if address["scope"] == "global"])


class WiredCase(unittest.TestCase):
    host = None

    def setUp(self):
        warnings.simplefilter("ignore", ResourceWarning)

    def begin(self, serve=True, under=DEV, **settings):
        """A daemon that serves, its cable out; `settings` stand in lumod.conf."""
        self.net = Network()
        self.addCleanup(self.net.close)
        if serve:
            self.net.serve()
        conf = pathlib.Path("/run/lumod.conf")
        conf.write_text("// a test's\n" + json.dumps({**CONF, **settings}), encoding="utf-8")
        self.p = Playground(under=under, DEVICE_LUMOD_CONF=str(conf))
        self.addCleanup(self.p.close)
        self.p.set("LogLevel", 3)
        self.p.wait("InterfaceStatusChanged", "uap0", 0)

    def start_host(self):
        self.p.start_host(*DEV)
        self.host = self.p.host

    def orvactl(self, *words):
        done = self.p.run(*DEV, str(BUILD / "bin/orvactl"), "--json", *words)
        return json.loads(done.stdout) if done.returncode == 0 and done.stdout.strip() else {}

    def stop(self):
        """Ends the device, the daemon as its service manager does."""
        if self.host:
            self.host.kill()
            self.host.wait()
        for lumod in processes("lumod"):
            os.kill(lumod, signal.SIGTERM)
        self.p.until(lambda: not processes("lumod"))

    def end(self):
        """The same, and nothing is left."""
        self.stop()
        self.assertEqual(left_over(), dict(engines=0, files=[], routes=[], addresses=[]), self.p.logged())

    def errors(self, text):
        self.p.until(lambda: text in self.p.logged())

    def plug(self):
        self.net.cable(True)

    def unplug(self):
        self.net.cable(False)

    def silence(self):
        self.net.silence()

    # --- what the machine says, and what the device says

    def machine(self, connected):
        link = next(iter(ip("-n", "dev", "addr", "show", "eth0")), {})
        usable = [a for a in link.get("addr_info", []) if a["scope"] == "global" and not a.get("tentative") and
                  not a.get("deprecated") and not a.get("dadfailed")]
        best = [min((r for r in ip("-n", "dev", family, "route", "show", "default") if r["dev"] == "eth0" and "gateway" in r),
                    key=lambda r: r.get("metric", 0), default={}).get("gateway") for family in ("-4", "-6")]
        lines = RESOLV.read_text(encoding="utf-8").splitlines() if RESOLV.exists() else []
        return dict(cable="LOWER_UP" in link.get("flags", []), connected=connected,
                    addresses=sorted(f"{a['local']}/{a['prefixlen']}" for a in usable) if connected else [],
                    gateways=[gateway for gateway in best if gateway and connected],
                    dns=[line.split()[1].replace("fe80::1%eth0", "fe80::1") for line in lines if line.startswith("nameserver")])

    def device(self):
        info = self.orvactl("get", "network/info").get("networkInfo", {})
        wired = info.get("wired", {})
        return dict(cable=wired.get("cableConnected"), connected=wired.get("state") == 1,
                    addresses=sorted(f"{a['ip']}/{a['prefix']}" for a in wired.get("addresses", [])),
                    gateways=[a["ip"] for a in info.get("gateways", [])], dns=[a["ip"] for a in info.get("dns", [])])

    def agree(self, connected, *has, limit=60):
        """Until device and machine say the same, it is connected or not, and each of `has` is among what they say."""
        end = time.monotonic() + limit
        while True:
            device, machine = self.device(), self.machine(connected)
            if device == machine and all(text in str(device) for text in has):
                return device
            if time.monotonic() > end:
                self.fail(f"after {limit} s, looking for {has!r}:\ndevice  {device}\nmachine {machine}\n{self.p.logged()}")
            time.sleep(0.05)


class Device(WiredCase):
    def begin(self, **more):
        super().begin(**more)
        self.start_host()
        self.addCleanup(self.end)

    def connect(self, **more):
        self.begin(**more)
        self.plug()
        return self.agree(CONNECTED, "192.0.2.")
