# SPDX-License-Identifier: Apache-2.0
"""The state that another version left: nothing of it is lost."""
import json, pathlib, shutil, unittest

from privatebus import PrivateBus

STATES = pathlib.Path(__file__).resolve().parent / "states"
UNKNOWN = "settings/network/roaming"  # a setting that no version has yet
CURRENT, LIMIT_OF_NETWORKS = "settings/network/current-profile", "settings/network/max-wifi-networks"


class Device(PrivateBus):
    def __init__(self, settings):
        super().__init__()
        (self.directory / "state").mkdir()
        self.write("state/settings.json", settings)
        self.start_bus()
        self.start_host()

    def stored(self):
        return json.loads((self.directory / "state/settings.json").read_text())


class Upgrade(unittest.TestCase):
    def device(self, settings):
        device = Device(settings)
        self.addCleanup(device.close)
        return device

    def check_all_is_there(self, device, settings, unknown=()):
        known = {path: value for path, value in settings.items() if path not in unknown}
        self.assertEqual({path: device.orvactl("get", path) for path in known}, known)
        self.assertEqual(device.stored(), settings)
        self.assertNotIn(" ERROR ", device.logged())

    def test_each_version_s_state_is_taken_over_whole(self):
        for file in sorted(STATES.glob("*.json")):
            with self.subTest(file.stem):
                settings = json.loads(file.read_text())
                device = self.device(file.read_text())
                self.check_all_is_there(device, settings)
                self.assertEqual(device.orvactl("get", "network/airplane-mode"), {"bool": True})
                device.orvactl("set", LIMIT_OF_NETWORKS, "8")
                self.check_all_is_there(device, {**settings, LIMIT_OF_NETWORKS: {"i32": 8}})

    def test_what_a_newer_version_left_stays(self):
        settings = json.loads((STATES / "0.1.0.json").read_text())
        profile = settings[CURRENT]["networkProfile"]
        profile["roaming"] = {"minimum": 7}
        for interface in [profile["wireless"], *profile["wirelessNetworks"]]:
            interface["band"] = "6 GHz"
        settings[UNKNOWN] = {"roaming": {"allowed": True}}
        device = self.device(json.dumps(settings))
        self.check_all_is_there(device, settings, [UNKNOWN])
        self.assertEqual(device.logged().count(UNKNOWN), 1)
        device.orvactl("set", LIMIT_OF_NETWORKS, "8")
        self.check_all_is_there(device, {**settings, LIMIT_OF_NETWORKS: {"i32": 8}}, [UNKNOWN])
        device.orvactl("wifi", "connect", "Home", "--wait", "0")
        stored = device.stored()
        now = stored[CURRENT]["networkProfile"]
        self.assertEqual((now["roaming"], now["wireless"]["ssid"]), (profile["roaming"], "Home"))
        self.assertEqual({network["band"] for network in [now["wireless"], *now["wirelessNetworks"]]}, {"6 GHz"})
        self.assertEqual(stored[UNKNOWN], settings[UNKNOWN])


if __name__ == "__main__":
    unittest.main()
