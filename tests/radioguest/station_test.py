# SPDX-License-Identifier: Apache-2.0
"""The station on a real radio: scans, joins, wrong keys, access points that go and come."""
import os, pathlib, signal, subprocess

from air import mixed, raw, run, wpa2, wpa3
from radiocase import RadioCase, addresses, link

DIGITS = "0123456789abcdef" * 4
KEY, OTHER = "correct horse", "battery staple"
NAMES = {  # by name: what the access point is, what a scan says, and the key
    "Home": (wpa2("Home", KEY), "wpa_psk", KEY), "Third": (wpa3("Third", KEY), "wpa_psk", KEY),
    "Mixed": (mixed("Mixed", KEY), "wpa_psk", KEY), "Open": ({"ssid": "Open"}, "unsecured", ""),
    "Digits": ({**wpa2("Digits", KEY), "wpa_psk": DIGITS}, "wpa_psk", DIGITS),
    "Café ☕ \"x\\": ({**wpa2("", KEY), "ssid": None, **raw("Café ☕ \"x\\".encode())}, "wpa_psk", KEY),
    "Work": ({"ssid": "Work", "ieee8021x": 1, "eap_server": 1, "eap_user_file": "/run/users", "wpa": 2, "wpa_key_mgmt": "WPA-EAP",
              "rsn_pairwise": "CCMP"}, "wpa_eap", None)}
HIDDEN = {**wpa2("Hidden", KEY), "ignore_broadcast_ssid": 1}


def plain(network):
    return {key: value for key, value in network.items() if value is not None and not (key == "wpa_passphrase" and "wpa_psk" in network)}


def pids(name, *which):
    return [int(pid) for pid in subprocess.run(["pgrep", *which, "-x", name], capture_output=True, text=True, check=False).stdout.split()]


class Station(RadioCase):
    def test_1_scan_and_join_each_kind(self):
        pathlib.Path("/run/users").write_text("* MD5\n", encoding="utf-8")
        self.air.start("wlan1", *(plain(row[0]) for row in NAMES.values()), HIDDEN, raw(b"Caf\xe9"))
        seen = self.scan()
        self.assertEqual({name: row["type"] for name, row in seen.items()}, {name: row[1] for name, row in NAMES.items()})
        self.assertEqual({name for name, row in seen.items() if row["wpa3"]}, {"Third", "Mixed"})
        home = seen["Home"]
        self.assertEqual((home["bssid"], home["frequency"], home["channel"]), ("02:00:00:00:06:00", 2437, 6))
        self.assertTrue(bytes(home["ies"]).startswith(b"\0\4Home"))
        self.assertEqual(self.p.logged().count(b"Caf\xe9".hex()), 1)
        for name, key in [*((name, row[2]) for name, row in NAMES.items() if row[2] is not None), ("Hidden", KEY)]:
            with self.subTest(name):
                self.join((name, key))
                self.agree(name)
                self.assertEqual(self.p.details("wlan0")["Encryption"], "wpa-psk" if key else "none")
                self.assertIn("metric 600", run("ip", "route", "show", "default"))
                self.p.call("SetOffMode")
                self.p.until(lambda: not link() and not addresses("wlan0"))
        self.assertIn("off", run("iw", "dev", "wlan0", "get", "power_save"))
        self.assertIn("country DE", run("iw", "reg", "get"))

    def test_2_prefers_the_first_and_stays(self):
        self.air.start("wlan1", wpa2("Second", OTHER))
        self.air.start("wlan2", wpa2("First", KEY))
        both = ("First", KEY), ("Second", OTHER)
        self.join(*both)
        self.agree("First")
        self.forget()
        self.scan()
        self.know(*both)  # the same once more
        self.know(("First", KEY), ("Third", KEY))  # another one beside it
        self.assertEqual(self.heard(3, "Connected", "Disconnecting", "Disconnected"), [("Connected", "wlan0")] * 2)
        self.agree("First")
        self.know(*reversed(both))
        for step in "Disconnecting", "Disconnected", "Connected":
            self.p.wait(step, "wlan0")
        self.agree("Second")
        self.know(*both)
        self.p.wait("Connected", "wlan0")
        self.agree("First")
        self.forget()
        self.air.stop("wlan2", farewell=False)
        for step in "Disconnected", "Connected":
            self.p.wait(step, "wlan0")
        self.agree("Second")
        self.air.start("wlan2", wpa2("First", KEY))
        self.forget()
        self.assertEqual(len(self.scan()), 2)
        self.assertEqual(self.heard(3, "Disconnecting", "Disconnected"), [])
        self.p.call("ForceWifiReconnect")
        for step in "Disconnecting", "Disconnected", "Connected":
            self.p.wait(step, "wlan0")

    def test_3_tells_a_wrong_key_from_other_failures(self):
        for name, point in [("Second", wpa2("Home", KEY)), ("Third", wpa3("Home", KEY)), ("Mixed", mixed("Home", KEY))]:
            with self.subTest(name):
                self.air.start("wlan1", point)
                self.know(("Home", "wrong horse"))
                self.p.wait("AuthError", "Home")
                if name == "Mixed":
                    self.p.wait("AuthError", "Home")
                self.p.call("SetOffMode")
        self.air.start("wlan2", wpa2("Next", OTHER))
        self.know(("Home", "wrong horse"), ("Next", OTHER))
        self.assertEqual(self.p.wait("AuthError")[0], "Home")
        self.p.wait("Connected", "wlan0")
        self.agree("Next")
        self.p.call("SetOffMode")
        self.air.start("wlan1", wpa2("Home", KEY, macaddr_acl=1))  # it refuses everybody
        self.know(("Home", KEY))
        self.assertEqual(self.heard(15, "AuthError", "Connected"), [])

    def test_4_access_point_goes_and_comes(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.join(("Home", KEY))
        for farewell in True, False:
            self.forget()
            self.air.stop("wlan1", farewell)
            self.p.wait("Disconnected", "wlan0")
            self.p.until(lambda: not addresses("wlan0"))
            self.assertFalse(self.p.details("wlan0")["Connected"])
            self.air.start("wlan1", wpa2("Home", KEY))
            self.p.wait("Connected", "wlan0")
            self.agree("Home")

    def test_5_the_cable_goes_first(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.join(("Home", KEY), mode="auto")
        self.air.cable(True)
        for step in ("Connected", "eth0"), ("Disconnected", "wlan0"):
            self.p.wait(*step)
        self.p.until(lambda: not link())
        self.air.cable(False)
        for step in ("Disconnected", "eth0"), ("Connected", "wlan0"):
            self.p.wait(*step)
        self.agree("Home")

    def test_6_silent_server(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.air.silence()
        self.know(("Home", KEY))
        self.p.wait("Error", "No DHCP answer on wlan0")
        self.air.serve()
        self.p.wait("Connected", "wlan0")
        self.agree("Home")

    def test_7_engine_killed_and_radio_replaced(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.join(("Home", KEY))
        for pid in pids("wpa_supplicant"):
            os.kill(pid, signal.SIGKILL)
        for step in "Disconnected", "Connected":
            self.p.wait(step, "wlan0")
        self.agree("Home")
        run("iw", "dev", "wlan0", "del")
        self.p.wait("InterfaceStatusChanged", "wlan0", 0)
        self.p.until(lambda: not pids("wpa_supplicant"))
        run("iw", "phy", "phy0", "interface", "add", "wlan0", "type", "managed")
        self.p.wait("Connected", "wlan0")
        self.agree("Home")

    def test_8_switched_off_and_on(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.join(("Home", KEY))
        switch = next(line.split()[0] for line in run("rfkill", "-n", "-o", "ID,DEVICE").splitlines() if line.endswith("phy0"))
        self.addCleanup(run, "rfkill", "unblock", switch)
        run("rfkill", "block", switch)
        self.p.wait("Disconnected", "wlan0")
        self.forget()
        self.p.call("Scan")
        self.p.wait("Error", "Cannot scan: Network is down")
        self.assertEqual(self.p.wait("ScanResults"), [{}])
        run("rfkill", "unblock", switch)
        self.p.wait("Connected", "wlan0")
        self.agree("Home")

    def test_9_no_key_is_told(self):
        text = self.p.logged() + run("ps", "-eo", "args")
        for key in KEY, OTHER, DIGITS, DIGITS.upper():
            self.assertNotIn(key, text.replace(f"wpa_passphrase={key}", ""))
        for path in pathlib.Path("/run/lumod").rglob("*"):
            if path.is_file():
                self.assertNotIn(KEY, path.read_text(encoding="utf-8"))


class WithoutEngine(RadioCase):
    settings = {"wpaSupplicant": "/usr/sbin/none"}

    def test_says_what_is_missing(self):
        self.p.call("Scan")
        self.assertIn("/usr/sbin/none", self.p.wait("Error")[0])
        self.assertEqual(self.p.wait("ScanResults"), [{}])
        self.p.call("WpsPbc")
        self.assertIn("/usr/sbin/none", self.p.wait("WpsError")[0])
