# SPDX-License-Identifier: Apache-2.0
"""The cable and Wi-Fi at once, both with IPv4 and IPv6: the cable's routes go first, by their metric alone."""
import json, os, signal, subprocess

from air import AIR, run, wpa2
from privatebus import until
from radiocase import RadioCase
from station_test import KEY, pids

METRICS = {"eth0": 100, "wlan0": 600}
TO = "203.0.113.1", "2001:db8:ff::1"


def used():
    """The interfaces by which the machine reaches the world, by IPv4 and by IPv6."""
    found = [subprocess.run(["ip", "-j", "route", "get", to], capture_output=True, text=True, check=False).stdout for to in TO]
    return [json.loads(text)[0].get("dev") if text.strip() else None for text in found]


def defaults():
    return {(family, route["dev"], route["metric"]) for family in ("-4", "-6")
            for route in json.loads(run("ip", "-j", family, "route", "show", "default"))}


class Uplinks(RadioCase):
    def setUp(self):
        super().setUp()
        self.air.start("wlan1", wpa2("Home", KEY))
        # As the router of the wired tests: nobody waits for its address, and a pulled cable takes none from it.
        run(*AIR, "sh", "-c", "cd /proc/sys/net/ipv6/conf/r0 && echo 0 >accept_dad && echo 1 >keep_addr_on_down")
        for number, interface in enumerate(("wlan1", "r0")):
            run("ip", "-n", "air", "addr", "replace", f"2001:db8:{number}::1/64", "dev", interface, "nodad")
        router = subprocess.Popen([*AIR, "dnsmasq", "--keep-in-foreground", "--conf-file=/dev/null", "--user=root", "--port=0",
                                   "--bind-dynamic", "--enable-ra", "--pid-file=", "--dhcp-leasefile=/run/leases6",
                                   *(f"--dhcp-range=::,constructor:{name},slaac" for name in ("wlan1", "r0")),
                                   *(f"--ra-param={name},4" for name in ("wlan1", "r0"))])
        self.addCleanup(lambda: (router.kill(), router.wait()))
        self.addCleanup(self.air.cable, False)

    def stand(self, leads, *uplinks):
        """Until these have default routes of both families, each with its metric, and the first one is used."""
        expected = [leads] * 2, {(family, name, METRICS[name]) for family in ("-4", "-6") for name in (leads, *uplinks)}
        until(lambda: (used(), defaults()) == expected,
              lambda: f"{used()}, {defaults()} and not {expected}; the log says: {self.p.logged()}")

    def test_1_the_cable_goes_first_by_metric(self):
        self.join(("Home", KEY), mode="auto")
        self.stand("wlan0")
        lumod = pids("lumod")[0]
        os.kill(lumod, signal.SIGSTOP)  # or it would leave Wi-Fi as soon as the cable is up
        try:
            for plugged in True, False, True:
                self.air.cable(plugged)
                self.stand(*(("eth0", "wlan0") if plugged else ("wlan0",)))
        finally:
            os.kill(lumod, signal.SIGCONT)
        for step in ("Connected", "eth0"), ("Disconnected", "wlan0"):
            self.p.wait(*step)
        self.stand("eth0")
        self.air.cable(False)
        self.p.wait("Connected", "wlan0")
        self.stand("wlan0")
