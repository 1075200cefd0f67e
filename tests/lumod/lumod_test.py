# SPDX-License-Identifier: Apache-2.0
"""The stand-in daemon: what is on the wire, what its world plays, how it takes and makes faults."""
import time, unittest, warnings

from cable import CableStories
from playground import LUMOD, Playground, Refused

KEY, CAFE_KEY = "correct horse", "espresso doppio"
STATION, PIN = "02:bb:00:00:00:01", "12345670"
HOME = {"ssid": "Home", "security": "wpa-psk", "key": KEY, "wps": True, "network": "home"}
WORLD = {
    "timeFactor": 0.01,
    "networks": {"home": {"subnet": "10.1.0.0/24", "gateway": "10.1.0.1", "dns": ["10.1.0.1", "9.9.9.9"],
                          "subnet6": "2001:db8:1::", "gateway6": "fe80::1"}},
    "accessPoints": [{**HOME, "bssid": "02:a0:00:00:00:01", "channel": 6, "signal": -70},
                     {**HOME, "bssid": "02:a0:00:00:00:02", "channel": 44, "signal": -50},
                     {"ssid": "Café", "security": "wpa-psk", "key": CAFE_KEY, "wps": True, "wpa3": True},
                     {"ssid": "Attic", "security": "wep", "key": "abcde"}, {"ssid": "Open"},
                     {"ssid": "Work", "security": "enterprise"}, {"ssid": "x" * 33}]}
COMMON = dict(Present="i", Mac="s", Connected="b", Dhcp="b", Ips="s", Dns="s", Gateway="s", Gateway6="s")
DETAILS = {"eth0": dict(COMMON, CableStatus="b"), "uap0": dict(COMMON, SoftApUp="b", Ssid="s", Channel="i"),
           "wlan0": dict(COMMON, Encryption="s", Ssid="s", Bssid="s", Frequency="i", Signal="i", Channel="i"),
           "eth7": dict(Present="i")}
PROPERTIES = {"Connected": "b", "Details": "a{sv}", "LogLevel": "i", "Mode": "s", "SoftApModeSettings": "a{sv}",
              "WiredIpSettings": "a{sv}", "WirelessIpSettings": "a{sv}", "WirelessNetworks": "a{sv}"}
SIGNALS = {"AddressesChanged": "", "AuthError": "ss", "CableStatus": "b", "Connected": "s", "Disconnected": "s",
           "Disconnecting": "s", "Error": "s", "InterfaceStatusChanged": "si", "ScanResults": "a{sv}", "SoftApError": "ss", "Started": "",
           "StationConnected": "s", "StationDisconnected": "s", "WpsCredentials": "a{sv}", "WpsError": "s"}
SCANNED = {"type": "s", "signal": "i", "bssid": "s", "channel": "i", "frequency": "i", "ies": "ay", "wpa3": "b"}


def types(variants):
    return {key: value["type"] for key, value in variants.items()}


def known(**networks):  # by SSID a key, "" for none, and a priority
    return {ssid: {**({"wpa_psk": key} if key else {"unsecured": True}), "priority": priority}
            for ssid, (key, priority) in networks.items()}


class LumodTest(unittest.TestCase):
    def setUp(self):
        warnings.simplefilter("ignore", ResourceWarning)
        self.p = Playground(WORLD)
        self.addCleanup(self.p.close)

    def hear(self, *signals):
        for signal in signals:
            self.p.wait(*signal.split())

    def hear_any(self):
        name, payload = self.p.next()
        return name, payload["data"]

    def join(self, mode="wireless", **networks):
        self.p.set("WirelessNetworks", known(**networks))
        self.p.call("SetNormalMode", mode)

    def test_tells_cable_and_statuses_at_its_start_and_after_each_mode(self):
        told = [("CableStatus", [True]), ("InterfaceStatusChanged", ["eth0", 2]),
                ("InterfaceStatusChanged", ["wlan0", 2]), ("InterfaceStatusChanged", ["uap0", 1])]
        self.p.call("InterfaceDetails", "eth0")  # the bus starts it
        for heard in [("Started", []), *told]:
            self.assertEqual(heard, self.hear_any())
        self.p.call("SetNormalMode", "wireless")
        for heard in told:
            self.assertEqual(heard, self.hear_any())

    def test_properties_and_details_have_their_types(self):
        self.assertEqual({name: self.p.get(name)["type"] for name in PROPERTIES}, PROPERTIES)
        for interface, keys in DETAILS.items():
            answer = self.p.call("InterfaceDetails", interface)
            self.assertEqual((answer["type"], types(answer["data"][0])), ("a{sv}", keys))

    def test_every_method_answers_and_every_signal_has_its_type(self):
        p, heard = self.p, {}

        def gather(*names):
            end = time.monotonic() + 10
            while not heard.keys() >= set(names):
                self.assertLess(time.monotonic(), end, set(names) - heard.keys())
                heard.setdefault(*p.next())

        p.set("WirelessNetworks", known(Home=("wrong key", 1)))
        for step in [("SetNormalMode", "wireless"), ("ForceWifiReconnect",), ("Scan",), ("WpsPbc",), ("WpsPin", PIN),
                     ("StartSoftAp", "uap0", {"ssid": "Device", "channel": 1})]:
            self.assertIsNone(p.call(*step), step)
        for step in [("StartSoftAp", "uap7", {}), ("SetNormalMode", "sideways"), ("WpsPin", "１２３４５６７８")]:
            self.assertRaises(Refused, p.call, *step)
        p.act("EnterWpsPin", "Café", PIN)
        gather("Connected", "AuthError", "WpsCredentials", "ScanResults")
        p.act("JoinStation", "uap0", STATION)
        p.call("StopSoftAp", "uap0")
        p.call("SetOffMode")
        gather(*SIGNALS)
        self.assertEqual(types(heard), SIGNALS)
        scanned = heard["ScanResults"]["data"][0]
        for network in scanned.values():
            self.assertEqual((network["type"], types(network["data"])), ("a{sv}", SCANNED))
        self.assertEqual([(ssid, network["data"]["type"]["data"]) for ssid, network in sorted(scanned.items())],
                         [("Attic", "wep"), ("Café", "wpa_psk"), ("Home", "wpa_psk"), ("Open", "unsecured"),
                          ("Work", "wpa_eap")])
        self.assertEqual([name for name, network in scanned.items() if network["data"]["wpa3"]["data"]], ["Café"])
        self.assertEqual(scanned["Home"]["data"]["frequency"]["data"], 5220)  # the stronger one
        self.assertEqual(bytes(scanned["Open"]["data"]["ies"]["data"]), b"\0\4Open\3\1\6")
        self.assertEqual({key: tuple(value.values()) for key, value in heard["WpsCredentials"]["data"][0].items()},
                         {"ssid": ("s", "Café"), "type": ("s", "wpa-psk"), "wpa_psk": ("s", CAFE_KEY)})

    def test_joins_by_priority_and_moves_when_that_changes(self):
        self.join(Home=(KEY, 1), Open=("not so open", 2))
        self.hear("Connected wlan0")
        self.assertEqual(self.p.details("wlan0")["Ssid"], "Home")
        self.join(Home=(KEY, 1), Open=("", 2))
        self.hear("Connected wlan0")
        self.assertEqual(self.p.details("wlan0")["Ssid"], "Open")
        self.join(Home=(KEY, 2), Open=("", 1))
        self.hear("Disconnecting wlan0", "Disconnected wlan0", "Connected wlan0", "AddressesChanged")
        self.assertLessEqual(dict(
            Ssid="Home", Bssid="02:a0:00:00:00:02", Channel=44, Frequency=5220, Signal=-50, Encryption="wpa-psk",
            Dhcp=True, Ips="10.1.0.21/24 fe80::ff:fe00:1002/64l 2001:db8:1::21/64", Dns="10.1.0.1 9.9.9.9",
            Gateway="10.1.0.1", Gateway6="fe80::1").items(), self.p.details("wlan0").items())
        self.p.act("RemoveAccessPoint", "Home")
        self.hear("Disconnected wlan0", "Connected wlan0")
        self.assertEqual(self.p.details("wlan0")["Bssid"], "02:a0:00:00:00:01")
        self.p.call("ForceWifiReconnect")
        self.hear("Disconnecting wlan0", "Disconnected wlan0", "Connected wlan0")

    def test_wrong_key_fails_again_and_again_and_yields_to_the_next(self):
        self.join(Home=("wrong key", 2))
        self.hear("AuthError Home", "AuthError Home", "AuthError Home")
        self.join(Home=("wrong key", 2), Café=(CAFE_KEY, 1))
        self.hear("AuthError Home", "Connected wlan0")
        self.assertEqual(self.p.details("wlan0")["Ssid"], "Café")
        self.p.act("ChangeAccessPoint", "Café", {"key": "changed over night"})
        self.hear("Disconnected wlan0", "AuthError Café")

    def test_the_cable_comes_before_wifi(self):
        self.join("auto", Home=(KEY, 1))
        self.hear("Connected eth0")
        self.p.call("SetNormalMode", "auto")
        self.hear("Connected eth0", "AddressesChanged")  # told again
        self.assertFalse(self.p.details("wlan0")["Connected"])
        self.p.act("Unplug")
        self.hear("CableStatus", "Disconnected eth0", "Connected wlan0")
        self.p.act("Plug")
        self.hear("CableStatus", "Connected eth0", "Disconnected wlan0")
        self.p.set("WiredIpSettings", {"Ip": "10.9.0.5", "Netmask": "255.255.0.0", "Gateway": "10.9.0.1", "Dns": ""})
        self.join("wired", Home=(KEY, 1))
        self.hear("Disconnected eth0", "Connected eth0")
        self.assertEqual(self.p.details("eth0")["Ips"].split()[0], "10.9.0.5/16")
        self.p.call("SetOffMode")
        self.hear("Disconnected eth0")
        self.assertEqual(self.p.get("Mode")["data"], "OffMode")

    def test_soft_ap_is_told_after_every_start(self):
        self.p.call("StartSoftAp", "uap0", {"ssid": "Device", "apAddress": "10.5.0.1", "apNetmask": "255.255.0.0"})
        self.hear("Connected uap0")
        self.assertEqual(self.p.get("Mode")["data"], "SoftApMode")
        self.assertEqual(self.p.details("uap0")["Ips"], "10.5.0.1/16")
        self.p.act("JoinStation", "uap0", STATION)
        self.p.call("StartSoftAp", "uap0", {"ssid": "Renamed", "channel": 11})
        self.hear("StationConnected " + STATION, "StationDisconnected " + STATION, "Connected uap0")
        self.assertRaises(Refused, self.p.call, "StartSoftAp", "uap0", {"ssid": "x" * 33})
        self.assertEqual(self.p.details("uap0")["Ssid"], "Renamed")
        self.join(Open=("", 1))
        self.hear("Connected wlan0")
        self.assertEqual(self.p.get("Mode")["data"], "wireless")
        self.p.call("SetOffMode")
        self.hear("Disconnected uap0")
        self.assertEqual(self.p.get("SoftApModeSettings")["data"], {})

    def test_what_is_asked_for_again_comes_once(self):
        start = "StartSoftAp", "uap0", {"ssid": "Device"}
        for step in ["scan", "softAp"]:
            self.p.act("SetDelay", step, ("u", "600"))
        for step in [start, ("StopSoftAp", "uap0"), ("Scan",), ("Scan",)]:
            self.p.call(*step)
        self.p.act("SetDelay", "softAp", ("u", "2000"))
        self.p.call(*start)
        heard = []
        while "Connected" not in heard:
            heard.append(self.hear_any()[0])
        self.assertEqual(heard.count("ScanResults"), 1)

    def test_wps_succeeds_overlaps_fails_and_stays_silent(self):
        p = self.p
        p.act("SetDelay", "wpsWalk", ("u", "0"))
        p.call("WpsPbc")
        p.wait("InterfaceStatusChanged", "wlan0", 5)
        p.act("PressWps", "Home")
        self.assertEqual(p.wait("WpsCredentials")[0]["ssid"]["data"], "Home")
        p.wait("InterfaceStatusChanged", "wlan0", 2)
        p.act("PressWps", "Home")
        p.act("PressWps", "Café")
        p.call("WpsPbc")
        self.assertIn("overlap", p.wait("WpsError")[0])
        p.call("WpsPin", PIN)
        p.act("EnterWpsPin", "Home", "00000000")
        self.assertIn("another WPS PIN", p.wait("WpsError")[0])
        for cancel in "WpsCancel", "SetOffMode":
            p.call("WpsPbc")
            p.call(cancel)
            p.wait("WpsError", "WPS was cancelled")
        p.act("SetDelay", "wpsWalk", ("u", "30"))
        p.call("WpsPbc")
        p.wait("WpsError", "WPS timed out")

    def test_takes_malformed_maps_and_never_logs_a_key(self):
        p, pair = self.p, ("a(ii)", "1", "1", "2")
        for name, value in [("WirelessNetworks", {"A": "text", "B": pair, "C": {}, "D": {"wpa_psk": pair},
                                                  "E": {"priority": ("t", str(2**64 - 1))}}),
                            ("WiredIpSettings", {"Ip": 5, "Netmask": ("ay", "1", "7")}),
                            ("WirelessIpSettings", {"Ip": "::1", "Netmask": "255.0.255.0", "Dns": {}})]:
            p.set(name, value)
            self.assertEqual(p.get(name)["type"], "a{sv}")
            p.call("SetNormalMode", "auto")
        p.call("StartSoftAp", "uap0", {"ssid": 7, "channel": "x", "apAddress": "?", "apNetmask": {}})
        self.hear("Connected uap0")
        p.call("StartSoftAp", "uap0", {"apAddress": "10", "apNetmask": "16"})
        self.hear("Connected uap0")
        self.assertEqual(p.details("uap0")["Ips"], "192.168.4.1/24")
        for action in [("AddAccessPoint", {"ssid": "x" * 33}), ("AddAccessPoint", {"ssid": "a", "signal": "loud"}),
                       ("PressWps", "Open"), ("ChangeAccessPoint", "Home", {"bssid": "02:a0:00:00:00:01"}),
                       ("JoinStation", "uap0", "me"), ("Garble", "nicely"), ("SetDelay", "lunch", ("u", "1"))]:
            self.assertRaises(Refused, p.act, *action)
        self.assertRaises(Refused, p.call, "SetNormalMode", "\u009b\u202e\x1b\n<")
        self.assertIn(r"\u009b\u202e\u001b\u000a<", p.logged())
        self.join("auto", **{"Home": (KEY, 1), "Ä" * 17: (KEY, 2)})  # 34 bytes
        self.assertEqual(list(p.get("WirelessNetworks")["data"]), ["Home"])
        text = p.logged() + p.act("Snapshot")["data"][0]
        self.assertEqual(("****" in text, KEY in text, CAFE_KEY in text), (True, False, False))

    def test_plays_a_faulty_daemon(self):
        p = self.p
        for kind, check in [("wrong-types", lambda map: map["Mac"]["type"] == "i"),
                            ("missing-keys", lambda map: "Present" not in map and "Mac" in map),
                            ("oversized", lambda map: len(map["Ips"]["data"]) == 1000000)]:
            p.act("Garble", kind)
            self.assertEqual(len(p.wait("ScanResults")[0]) > 5000, kind == "oversized")
            self.assertTrue(check(p.call("InterfaceDetails", "eth0")["data"][0]), kind)
        before = time.monotonic()
        p.act("Hang", ("u", "300"))
        self.assertGreaterEqual(time.monotonic() - before, 0.3)
        self.assertRaisesRegex(Refused, "without replying", p.act, "Crash")
        self.assertEqual(p.details("eth0")["Present"], 1)  # the bus starts it again

    def test_ends_when_it_cannot_serve(self):
        lumod = self.p.start(LUMOD)
        self.hear("Started")
        for command in [[], ["--world", self.p.write("broken.json", "{\n// fine\nnot json")]]:
            self.assertEqual(self.p.start(LUMOD, *command).wait(10), 1)
        self.p.children[0].kill()  # the bus
        self.assertEqual(lumod.wait(10), 1)


class PlayedCable(unittest.TestCase, CableStories):
    def begin(self, silent=False):
        warnings.simplefilter("ignore", ResourceWarning)
        self.p = Playground({"timeFactor": 0.05, "delays": {"retry": 60000}, "interfaces": {"wired": {"name": "eth0"}},
                             "cable": {"plugged": False, "network": "home"}, "networks": {"home": {"dhcp": not silent}}})
        self.addCleanup(self.p.close)
        self.p.call("InterfaceDetails", "eth0")
        self.p.wait("InterfaceStatusChanged", "eth0")

    def end(self):
        pass

    def plug(self):
        self.p.act("Plug")

    def unplug(self):
        self.p.act("Unplug")


if __name__ == "__main__":
    unittest.main()
