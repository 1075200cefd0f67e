# SPDX-License-Identifier: Apache-2.0
"""A daemon on a simulated radio, in the guest of tools/radio, and what the machine says beside it."""
import json, pathlib, re, subprocess, sys, time, unittest, warnings

import playground, privatebus
from air import Air, run
from playground import BUILD, Playground
from walls import Unit

playground.LIMIT = privatebus.LIMIT = 60  # the guest is slow
CONF = {"helperDirectory": str(BUILD / "bin"), "frequencies": [2437, 2462], "country": "DE"}
TOLD_ANEW = ("InterfaceStatusChanged", "CableStatus", "AddressesChanged")


def known(*networks):
    """(name, key or "") in the order of preference."""
    return {name: {**({"wpa_psk": key} if key else {"unsecured": True}), "priority": len(networks) - place}
            for place, (name, key) in enumerate(networks)}


def link():
    """What iw says of the connection: name and access point."""
    for _ in range(5):  # it asks the kernel twice, and fails when a connection ends between
        done = subprocess.run(["iw", "dev", "wlan0", "link"], capture_output=True, text=True, check=False)
        if done.returncode == 0:
            break
    text = done.stdout
    found = re.search(r"Connected to (\S+) .*?SSID: (.*?)\n.*?freq: (\d+)", text, re.DOTALL)
    return found and (found[2].encode().decode("unicode_escape").encode("latin-1"), found[1], int(found[3]))


def addresses(interface):
    return [f"{a['local']}/{a['prefixlen']}" for entry in json.loads(run("ip", "-j", "-4", "addr", "show", interface))
            for a in entry["addr_info"]]


class RadioCase(unittest.TestCase):
    """One daemon for all cases of a class; each begins with everything off."""
    settings, choices = {}, {}  # of lumod.conf; of tools/device.sh

    @classmethod
    def setUpClass(cls):
        warnings.simplefilter("ignore", ResourceWarning)
        conf = pathlib.Path("/run/lumod.conf")
        conf.write_text(json.dumps({**CONF, **cls.settings}), encoding="utf-8")
        cls.p = Playground(under=Unit("lumod.service").root(), DEVICE_LUMOD_CONF=str(conf), **cls.choices)  # as on a device
        cls.addClassCleanup(cls.p.close)
        cls.p.set("LogLevel", 3)
        cls.p.wait("InterfaceStatusChanged", "wlan0", 2)
        cls.addClassCleanup(lambda: pathlib.Path(f"/out/{cls.__name__}.log").write_text(cls.p.logged(), encoding="utf-8"))

    def setUp(self):
        self.began = time.monotonic()
        self.p.call("SetOffMode")
        self.p.until(lambda: not self.p.details("wlan0")["Connected"] and not link())
        self.forget()

    def tearDown(self):
        self.assertNotRegex(self.p.logged(), "lumod .*not permitted")
        print(f"{time.monotonic() - self.began:6.1f} s  {self.id().split('.', 1)[1]}", flush=True)

    def forget(self):
        time.sleep(0.2)
        while not self.p.signals.empty():
            self.p.signals.get()

    def know(self, *networks, mode="wireless"):
        self.p.set("WirelessNetworks", known(*networks))
        self.p.call("SetNormalMode", mode)

    def join(self, *networks, mode="wireless"):
        self.know(*networks, mode=mode)
        self.p.wait("Connected", "wlan0")

    def agree(self, name):
        """The daemon says the same of the connection as the kernel does."""
        details, (ssid, bssid, frequency) = self.p.details("wlan0"), link()
        self.assertEqual((details["Ssid"], details["Ssid"].encode(), details["Bssid"], details["Frequency"]),
                         (name, ssid, bssid, frequency))
        self.assertEqual([ip for ip in details["Ips"].split() if "." in ip], addresses("wlan0"))
        self.assertIn(details["Signal"], range(-90, -10))
        self.assertEqual(details["Channel"], {2437: 6, 2462: 11}[frequency])

    def heard(self, seconds, *of):
        """The signals of these names within that time, with their first arguments."""
        time.sleep(seconds)
        heard = []
        while not self.p.signals.empty():
            name, payload = self.p.signals.get()
            if name in of:
                heard.append((name, *payload["data"][:1]))
        return heard

    def scan(self):
        self.forget()
        self.p.call("Scan")
        return {name: {key: value["data"] for key, value in row["data"].items()} for name, row in self.p.wait("ScanResults")[0].items()}


def main():
    pathlib.Path("/run/lumod").mkdir(exist_ok=True)
    RadioCase.air = Air()
    program = unittest.main(exit=False, verbosity=0)
    RadioCase.air.close()
    sys.exit(not program.result.wasSuccessful())
