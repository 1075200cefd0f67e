# SPDX-License-Identifier: Apache-2.0
"""The soft access point on a real radio: what is in its beacons, who joins it, and how it shares the radio."""
import os, pathlib, signal

from air import run, wpa2
from phone import Phone
from playground import Refused
from radiocase import RadioCase, addresses
from station_test import pids

KEY, PHRASE = "correct horse", 'door "bell" # =1'
OPEN = {"ssid": "Device"}
FULL = {"ssid": "Büro # =\n\"x", "channel": 11, "countryCode": "de", "apAddress": "10.9.0.1", "apNetmask": "255.255.0.0", "passphrase": PHRASE,
        "dhcpRangeFrom": "10.9.8.7", "dhcpRangeTo": "10.9.8.9", "domainName": "speaker.lan", "vendorSpecificData": "dd050a0b0caabb",
        "bssid": "02:00:00:0a:0b:0c"}


def engines(name):
    """The pids of lumod's programs of that name; the air has some too."""
    return [pid for keeper in pids("lumod-keep") for pid in pids(name, "-P", str(keeper))]


class SoftAp(RadioCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.phone = Phone()
        cls.addClassCleanup(cls.phone.leave)

    def setUp(self):
        self.phone.leave()
        for radio in list(self.air.points):
            self.air.stop(radio)
        super().setUp()
        self.p.until(lambda: not engines("hostapd") and not engines("dnsmasq"))
        self.forget()

    def start(self, settings):
        self.p.call("StartSoftAp", "uap0", settings)
        self.p.wait("Connected", "uap0")
        details = self.p.details("uap0")
        info = run("iw", "dev", "uap0", "info")
        self.assertIn("type AP", info)
        self.assertIn(f"channel {details['Channel']} ", info)
        self.assertIn(f"addr {details['Mac']}", info)
        self.assertEqual((details["SoftApUp"], details["Ssid"], details["Ips"].split()), (True, settings["ssid"], addresses("uap0")))
        return details

    def switch(self):
        return next(line.split()[0] for line in run("rfkill", "-n", "-o", "ID,DEVICE").splitlines() if line.endswith("phy0"))

    def stop(self):
        self.p.call("StopSoftAp", "uap0")
        self.p.wait("Disconnected", "uap0")
        self.assertEqual((addresses("uap0"), engines("hostapd"), engines("dnsmasq")), ([], [], []))

    def test_1_every_field_is_in_the_air(self):
        details = self.start(FULL)
        self.assertEqual((details["Mac"], details["Ips"], details["Channel"]), (FULL["bssid"], "10.9.0.1/16", 11))
        for name in "hostapd-uap0.conf", "dnsmasq-uap0.conf":
            self.assertEqual(pathlib.Path("/run/lumod", name).stat().st_mode & 0o777, 0o600)
        beacon = self.phone.beacon("B\\xc3\\xbcro # =\\x0a\"x")
        for text in "RSN:", "Country: DE", "aa bb", "02:00:00:0a:0b:0c":
            self.assertIn(text, beacon)
        self.phone.join(FULL["ssid"], "wrong horse")
        self.assertEqual(self.heard(10, "StationConnected"), [])
        self.phone.join(FULL["ssid"], PHRASE)
        self.p.wait("StationConnected", self.phone.mac)
        self.assertIn(self.phone.lease(), [f"10.9.8.{i}/16" for i in (7, 8, 9)])
        server = self.p.start("python3", "-m", "http.server", "80", "--directory", "/out")
        self.addCleanup(server.kill)
        self.assertIn("Directory listing", self.phone.fetch("http://speaker.lan/"))
        self.assertEqual((self.phone.page(), self.phone.finds("check.example")), ("http://10.9.0.1/", ["10.9.0.1"]))
        self.phone.leave()
        self.p.wait("StationDisconnected", self.phone.mac)
        self.stop()
        self.assertEqual(self.p.details("uap0")["Ips"], "")
        self.assertNotIn(PHRASE, self.p.logged() + run("ps", "-eo", "args"))
        self.assertNotIn(PHRASE, str(self.p.get("SoftApModeSettings")))

    def test_2_on_the_channel_of_the_station(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.join(("Home", KEY))
        details = self.start({**OPEN, "channel": 11})
        self.assertEqual(details["Channel"], 6)
        self.agree("Home")
        self.phone.join("Device")
        self.p.wait("StationConnected", self.phone.mac)
        self.assertTrue(self.phone.lease().startswith("192.168.4."))
        self.assertEqual((self.phone.page(), self.phone.finds("check.example")), ("http://192.168.4.1/", []))
        self.p.call("StartSoftAp", "uap0", {**OPEN, "passphrase": PHRASE})  # it begins anew
        for step in ("StationDisconnected", self.phone.mac), ("InterfaceStatusChanged", "uap0", 4), ("Connected", "uap0"):
            self.p.wait(*step)
        self.phone.leave()
        self.assertIn("RSN:", self.phone.beacon("Device"))
        self.agree("Home")
        self.stop()
        self.agree("Home")

    def test_3_makes_way_for_a_station_that_is_refused(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.start({**OPEN, "channel": 11})
        self.know(("Home", KEY))
        self.p.wait("Disconnected", "uap0")
        self.p.until(lambda: all(self.p.details(interface)["Connected"] for interface in ("uap0", "wlan0")))
        self.agree("Home")
        self.assertEqual(self.p.details("uap0")["Channel"], 6)
        self.phone.join("Device")
        self.p.wait("StationConnected", self.phone.mac)
        self.forget()
        self.air.stop("wlan1")
        self.p.wait("Disconnected", "wlan0")
        self.air.start("wlan2", wpa2("Home", KEY))  # the router is on another channel now
        self.p.wait("Connected", "wlan0")
        self.p.until(lambda: self.p.details("uap0")["SoftApUp"])
        self.agree("Home")
        self.assertEqual(self.p.details("uap0")["Channel"], 11)
        self.p.until(self.phone.joined)

    def test_4_engines_killed(self):
        self.start(OPEN)
        for name, told in ("hostapd", ["Disconnected", "Connected"]), ("dnsmasq", []), ("lumod-keep", ["Disconnected", "Connected"]):
            with self.subTest(name):
                self.forget()
                for pid in engines(name) or pids(name):
                    os.kill(pid, signal.SIGKILL)
                self.p.wait("Error")
                for step in told:
                    self.p.wait(step, "uap0")
                self.p.until(lambda: len(engines("dnsmasq")) == len(engines("hostapd")) == 1)
                self.phone.join("Device")
                self.p.wait("StationConnected", self.phone.mac)
                self.assertTrue(self.phone.lease().startswith("192.168.4."))
                self.phone.leave()

    def test_5_radio_switched_off_and_on(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.join(("Home", KEY))
        self.start({**OPEN, "channel": 11})
        switch = self.switch()
        self.addCleanup(run, "rfkill", "unblock", switch)
        for home in True, False:
            with self.subTest(home=home):
                self.forget()
                run("rfkill", "block", switch)
                self.p.wait("Disconnected", "uap0")
                self.p.until(lambda: not engines("hostapd"))
                self.assertFalse(self.p.details("uap0")["SoftApUp"])
                run("rfkill", "unblock", switch)
                self.p.wait("Connected", "uap0")
                if home:
                    self.agree("Home")
                    self.p.call("SetNormalMode", "wired")
                    self.p.until(lambda: not self.p.details("wlan0")["Connected"])
                self.assertIn("type AP", run("iw", "dev", "uap0", "info"))

    def test_6_taken_from_under_it(self):
        self.start(OPEN)
        run("iw", "dev", "uap0", "del")
        for step in "Disconnected", "Connected":
            self.p.wait(step, "uap0")
        self.start(OPEN)


    def test_7_switched_off_amid_a_restart(self):
        self.start(OPEN)
        switch = self.switch()
        self.addCleanup(run, "rfkill", "unblock", switch)
        for pid in engines("hostapd"):
            os.kill(pid, signal.SIGSTOP)
        self.p.call("StartSoftAp", "uap0", {**OPEN, "channel": 11})
        run("rfkill", "block", switch)
        for step in ("InterfaceStatusChanged", "uap0", 4), ("Disconnected", "uap0"):
            self.p.wait(*step)
        run("rfkill", "unblock", switch)
        self.p.wait("Connected", "uap0")

    def test_8_says_why_it_does_not_run(self):
        self.p.call("StartSoftAp", "uap0", {**OPEN, "channel": 14})
        self.assertRegex(self.p.wait("Error")[0], "does not run: .*Hardware does not support configured channel$")
        self.assertIn("does not run", self.p.wait("SoftApError", "uap0")[1])


    def test_9_a_killed_daemon_leaves_nothing(self):
        for victims in ("lumod",), ("lumod-keep", "lumod"):
            with self.subTest(victims):
                self.start(FULL)
                for pid in [pid for name in victims for pid in pids(name)]:
                    os.kill(pid, signal.SIGKILL)
                self.p.until(lambda: not pids("lumod"))
                self.assertEqual(self.p.get("Mode")["data"], "OffMode")  # by which the next one is started
                self.p.until(lambda: not pathlib.Path("/sys/class/net/uap0").exists())
                self.assertEqual((engines("hostapd"), engines("dnsmasq"), list(pathlib.Path("/run/lumod").glob("*uap0.conf"))), ([], [], []))
                self.start(OPEN)
                self.stop()


class WithoutSoftApEngine(RadioCase):
    settings = {"dnsmasq": "/usr/sbin/none"}

    def test_says_what_is_missing(self):
        with self.assertRaisesRegex(Refused, "dnsmasq-base"):
            self.p.call("StartSoftAp", "uap0", OPEN)
        self.assertIn("dnsmasq-base", self.p.wait("SoftApError", "uap0")[1])
