# SPDX-License-Identifier: Apache-2.0
"""WPS with a real router's half: button, PIN, and how it ends otherwise."""
import pathlib, re, time

from air import WPS, wpa2
from radiocase import RadioCase, link

PIN, KEY = "12345670", "correct horse"
ROUTER = wpa2("Home", KEY, **WPS)


class Session(RadioCase):
    def ends(self, text):
        self.assertIn(text, self.p.wait("WpsError")[0])
        self.p.wait("InterfaceStatusChanged", "wlan0", 2)

    def start(self, *call):
        self.forget()
        self.p.call(*call)
        self.p.wait("InterfaceStatusChanged", "wlan0", 5)


class Wps(Session):
    def credentials(self):
        return {key: value["data"] for key, value in self.p.wait("WpsCredentials")[0].items()}

    def test_1_button_while_joined_elsewhere(self):
        self.air.start("wlan1", ROUTER)
        self.air.start("wlan2", wpa2("Other", KEY))
        self.join(("Other", KEY))
        self.start("WpsPbc")
        for step in "Disconnecting", "Disconnected":
            self.p.wait(step, "wlan0")
        self.air.command("wlan1", "wps_pbc")
        found = self.credentials()
        self.assertEqual((found["ssid"], found["type"]), ("Home", "wpa-psk"))
        self.assertTrue(re.fullmatch("[0-9a-f]{64}", found["wpa_psk"]))
        self.know(("Home", found["wpa_psk"]))
        self.p.until(lambda: self.p.details("wlan0")["Ssid"] == "Home")  # the other one may have come up again first
        self.agree("Home")
        self.assertIn("WPS-CRED-RECEIVED ****", self.p.logged())
        self.assertNotIn(found["wpa_psk"], self.p.logged().lower())

    def test_2_pin_right_and_wrong(self):
        self.air.start("wlan1", ROUTER)
        self.start("WpsPin", PIN)
        self.air.command("wlan1", "wps_pin", "any", PIN)
        self.assertEqual(self.credentials()["ssid"], "Home")
        self.start("WpsPin", PIN)
        self.air.command("wlan1", "wps_pin", "any", "87654325")
        self.ends("another WPS PIN")

    def test_3_open_router(self):
        self.air.start("wlan1", {"ssid": "Free", **WPS})
        self.start("WpsPbc")
        self.air.command("wlan1", "wps_pbc")
        self.assertEqual(self.credentials(), {"ssid": "Free", "type": "unsecured"})

    def test_4_replaced_and_cancelled(self):
        self.air.start("wlan1", ROUTER)
        self.air.start("wlan2", wpa2("Other", KEY))
        self.know(("Other", KEY))
        self.start("WpsPbc")
        self.p.call("WpsPin", PIN)
        self.air.command("wlan1", "wps_pbc")  # which is not what it waits for any more
        self.assertEqual(self.heard(10, "WpsCredentials", "WpsError"), [])
        self.p.call("SetOffMode")
        self.ends("WPS was cancelled")
        time.sleep(2)
        self.assertIsNone(link())


class HastyWps(Session):
    """wpa_supplicant's two minutes are over in ten seconds; the daemon's own limit is not."""
    settings = {"wpaSupplicant": "/run/hasty"}

    @classmethod
    def setUpClass(cls):
        hasty = pathlib.Path("/run/hasty")
        hasty.write_text("#!/bin/sh\nexport LD_PRELOAD='/usr/$LIB/faketime/libfaketime.so.1' FAKETIME='+0 x12'\n"
                         'exec /usr/sbin/wpa_supplicant "$@"\n', encoding="utf-8")
        hasty.chmod(0o755)
        super().setUpClass()

    def test_nobody_presses(self):
        self.air.stop("wlan1")  # whose button may still be pressed
        self.start("WpsPbc")
        self.ends("WPS timed out")
