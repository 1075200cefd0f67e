# SPDX-License-Identifier: Apache-2.0
"""The daemon on a real cable: the same stories as in the played world."""
import re, unittest

import network
from cable import CableStories
from playground import LUMOD
from wiredcase import WiredCase, routes

BAD = {"wired": "a/b", "wireless": "-x", "softAp": "x" * 16, "dhcpcd": "dhcpcd", "resolvconf": 1, "wpaSupplicant": "", "runtimeDirectory": "run",
       "dhcpDeadline": 3601, "wiredMetric": 0, "wirelessMetric": 1000001, "country": "de", "powerSave": 1, "backgroundScan": "yes",
       "frequencies": [2411], "probeAddresses": None, "captivePortal": 0, "nameServers": "me", "resolvConf": "resolv.conf"}
LIMITS = {"wireless": "x" * 15, "dhcpDeadline": 3600, "wiredMetric": 1, "wirelessMetric": 1000000, "country": "", "frequencies": [2412, 7115]}


class RealCable(WiredCase, CableStories):
    def begin(self, silent=False):  # a machine under load is not to be taken for a silent server
        super().begin(serve=not silent, dhcpDeadline=5 if silent else 60)

    # An interface that has just been set up looks for a moment as if its cable were in, and dhcpcd believes it.
    def mode(self, mode):
        super().mode(mode)
        if not self.net.plugged:
            self.p.until(lambda: any(text in self.p.logged() for text in ("waiting for carrier", "carrier lost")))

    def test_settings(self):
        for name, values, metric in ("that cannot be", BAD, 100), ("at their limits", LIMITS, 1):
            with self.subTest(name):
                try:
                    super().begin(unknown=1, **values)
                    self.plug()
                    super().mode("wired")
                    self.p.wait("Connected", "eth0")
                    self.assertEqual(routes("default")[0]["metric"], metric)
                    said = re.findall(r'(ignoring it: |the default of )"(\w+)"', self.p.logged())
                    refused = sorted(BAD) if values is BAD else []
                    self.assertEqual(sorted(said), [("ignoring it: ", "unknown"), *(("the default of ", key) for key in refused)])
                    broken = self.p.run(LUMOD, "--config", self.p.write("broken", "{"))
                    self.assertEqual((broken.returncode, "Cannot read the configuration" in broken.stderr), (1, True))
                    self.end()
                finally:
                    self.doCleanups()


if __name__ == "__main__":
    network.enclose()
    unittest.main()
