# SPDX-License-Identifier: Apache-2.0
"""The whole device on a real radio: host, page and orvactl above the daemon, a phone beside it."""
import json, os, pathlib, signal, subprocess, time

from air import AIR, run, wpa2
from phone import Phone
from playground import BUILD
from radiocase import RadioCase, addresses, link
from station_test import pids

KEY = "correct horse"
CONNECTED, KEY_REFUSED = 1, 2
PAGE = "http://192.168.7.1/"


def is_on_air():
    """True while the device's own access point is; its interface comes and goes with it."""
    return "ssid " in subprocess.run(["iw", "dev", "uap0", "info"], capture_output=True, text=True, check=False).stdout


class Device(RadioCase):
    """Each case begins where the one before has ended: a day of a device."""
    choices = {"DEVICE_RADIOS": "real"}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.p.start_host()
        cls.web = cls.p.start(BUILD / "bin/orva-web", "--config", cls.p.write("web.json", json.dumps({"listen": ["0.0.0.0"], "port": 80})))
        cls.phone = Phone()
        cls.addClassCleanup(cls.phone.leave)

    def setUp(self):
        self.began = time.monotonic()

    def info(self, *path):
        found = self.p.orvactl("get", "network/info")["networkInfo"]
        for name in path:
            found = found.get(name, {})
        return found

    def is_connected(self, name):
        return self.info("wireless", "ssid") == name and self.info("wireless", "state") == CONNECTED and addresses("wlan0")

    def post(self, action, **body):
        """What the page asks for, from the phone in the access point of the device."""
        token = json.loads(self.phone.fetch(PAGE + "api/token"))["token"]
        return json.loads(run(*AIR, "curl", "--silent", "--max-time", "60", "-H", "Content-Type: application/json", "-H",
                              "X-Orva-Token: " + token, "-d", json.dumps(body), PAGE + "api/" + action))

    def phone_joins(self):
        name = self.p.orvactl("softap", "list")["softApRequests"][0]["applied"]["ssid"]
        self.phone.join(name)
        self.p.until(self.phone.joined, "the phone does not join " + name)
        self.assertRegex(self.phone.lease(), "^192.168.7.")

    def test_1_is_joined_from_the_command_line(self):
        self.air.start("wlan1", wpa2("Home", KEY))
        self.p.orvactl("wifi", "scan")
        began = time.monotonic()
        self.p.orvactl("wifi", "connect", "Home", "--key-file", self.p.write("key", KEY))
        print(f"{time.monotonic() - began:6.1f} s  of it wifi connect until connected", flush=True)
        self.p.until(lambda: self.is_connected("Home"))
        wireless = self.info("wireless")
        name, bssid, frequency = link()
        self.assertEqual((wireless["ssid"].encode(), wireless["bssid"].lower(), wireless["frequency"]), (name, bssid, frequency))
        self.assertEqual([f"{a['ip']}/{a['prefix']}" for a in wireless["addresses"] if ":" not in a["ip"]], addresses("wlan0"))

    def test_2_costs_little(self):
        programs = {name: pids(name) for name in ("orva-host", "orva-web", "lumod", "lumod-keep", "wpa_supplicant", "dhcpcd")}

        def switches():
            return sum(int(line.split()[1]) for own in programs.values() for pid in own
                       for line in pathlib.Path(f"/proc/{pid}/status").read_text(encoding="utf-8").splitlines()
                       if line.startswith("voluntary_ctxt_switches"))

        def dirty(pid):
            return sum(int(line.split()[1]) for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="utf-8").splitlines()
                       if line.startswith("Private_Dirty"))

        before = switches()
        time.sleep(10)
        told = {name: f"{sum(map(dirty, own))} KiB" for name, own in programs.items() if own}
        print(f"         private memory {told}; {switches() - before} context switches in 10 s", flush=True)
        self.assertTrue(all(programs[name] for name in ("orva-host", "orva-web", "lumod")))

    def test_3_is_set_up_anew_by_a_phone_after_a_wrong_key(self):
        self.p.orvactl("wifi", "forget", "Home")
        self.p.orvactl("softap", "request", "case", "--timeout", "60")
        self.p.until(lambda: is_on_air(), "no access point")
        self.phone_joins()
        self.assertIn("<title>", self.phone.fetch(PAGE))
        self.assertEqual(self.post("join", ssid="Home", key="mistaken key").get("error", ""), "")
        self.p.until(lambda: self.p.orvactl("get", "network/wireless/last-join")["networkLastJoin"].get("reason") == KEY_REFUSED, "no refusal told")
        self.p.until(self.phone.joined, "the phone is not back in the access point")
        began = time.monotonic()
        self.post("join", ssid="Home", key=KEY)
        self.p.until(lambda: self.is_connected("Home"), "not joined by the page")
        print(f"{time.monotonic() - began:6.1f} s  of it from the page's tap until connected", flush=True)
        self.p.until(lambda: json.loads(self.phone.fetch(PAGE + "captive")) == {"captive": False} if self.phone.joined() else True)

    def test_4_flies_and_lands(self):
        self.addCleanup(run, "rfkill", "unblock", "all")
        self.p.orvactl("airplane", "on")
        self.p.until(lambda: not link() and not is_on_air() and self.info("airplaneMode"))
        self.assertEqual(set(run("rfkill", "-n", "-o", "SOFT").split()), {"blocked"})  # the router's radio, too
        self.p.orvactl("airplane", "off")
        self.air.start("wlan1", wpa2("Home", KEY))
        self.p.until(lambda: self.is_connected("Home") and is_on_air(), "not all is back")

    def test_5_opens_its_access_point_for_as_long_as_it_is_asked(self):
        self.p.orvactl("softap", "revoke", "case")
        self.p.until(lambda: not is_on_air(), "the access point stays")
        self.p.orvactl("softap", "request", "short", "--timeout", "3")
        self.p.until(lambda: is_on_air(), "no access point")
        self.p.until(lambda: not is_on_air(), "it has not expired")
        self.assertTrue(self.is_connected("Home"))

    def test_6_is_woken_over_the_air(self):
        self.p.orvactl("wol", "on")
        mac = self.info("wireless", "mac")
        for packet in ["etherwake", "-i", "wlan1", mac], ["wakeonlan", "-i", "10.1.0.255", mac]:
            asked = self.wakings()
            run(*AIR, *packet)
            self.p.until(lambda: self.wakings() > asked, f"not woken by {packet[0]}")

    def wakings(self):
        return self.p.run("orvactl", "--json", "rows", "power/requests").stdout.count("{")

    def test_7_survives_its_daemon(self):
        daemon = pids("lumod")
        os.kill(daemon[0], signal.SIGKILL)
        self.p.until(lambda: pids("lumod") not in ([], daemon) and self.is_connected("Home"), "not back in the network")

    def test_8_restarts_a_link_that_only_sends(self):
        self.p.orvactl("watchdog", "set", "--interval", "10", "--threshold", "1", "--path", "network/wireless/reconnect")
        self.forget()
        run("ip", "-n", "air", "addr", "flush", "dev", "wlan1")  # nobody answers any more
        self.p.wait("Disconnected", "wlan0")
        run("ip", "-n", "air", "addr", "add", "10.1.0.1/24", "dev", "wlan1")
        self.p.until(lambda: self.is_connected("Home"), "not back in the network")
