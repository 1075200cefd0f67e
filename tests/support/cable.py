# SPDX-License-Identifier: Apache-2.0
"""What a cable does, whichever world it is in: the same steps and the same signals, in the same order."""
import queue

STATIC = {"Ip": "192.0.2.77", "Netmask": "255.255.255.0", "Gateway": "192.0.2.1", "Dns": "192.0.2.1 9.9.9.9"}
UP = ["Connected eth0", "AddressesChanged"]
DOWN = ["Disconnected eth0", "AddressesChanged"]
LEAVING = "Disconnecting eth0"
TRY, IDLE, OUT = (f"InterfaceStatusChanged eth0 {status}" for status in (4, 2, 1))
NONE, SILENT = "There is no wireless interface to scan with", "No DHCP answer on eth0"

TOLD = {word: [f"CableStatus {word != 'out'}", {"try": TRY, "idle": IDLE, "out": OUT}[word]] for word in ("try", "idle", "out")}
PLUGGED, PULLED = ["CableStatus True", IDLE], TOLD["out"]

# A step is a method of the test with its argument, and what is heard in consequence.
STORIES = {
    "in, out and in": [("scan", ["Error " + NONE, "ScanResults {}"]), ("mode auto", TOLD["out"]),
                       ("plug", [*PLUGGED, TRY, IDLE, *UP]), ("unplug", [*PULLED, *DOWN]),
                       ("plug", [*PLUGGED, TRY, IDLE, *UP])],
    "off and on": [("plug", PLUGGED), ("mode wired", [TRY, *TOLD["try"], IDLE, *UP]), ("mode wired", [*UP, *TOLD["idle"]]),
                   ("off", [LEAVING, *DOWN]), ("mode auto", [TRY, *TOLD["try"], IDLE, *UP]),
                   ("mode wireless", [LEAVING, *TOLD["idle"], *DOWN]), ("unplug", PULLED)],
    "static and back": [("static", []), ("mode auto", TOLD["out"]), ("plug", [*PLUGGED, TRY, IDLE, *UP]), ("dhcp", []),
                        ("mode auto", [LEAVING, *TOLD["idle"], *DOWN, TRY, IDLE, *UP]), ("static", []),
                        ("mode auto", [LEAVING, *TOLD["idle"], *DOWN, TRY, IDLE, *UP])],
    "a silent server": [("mode auto", TOLD["out"]), ("plug", [*PLUGGED, TRY, "Error " + SILENT, IDLE]),
                        ("unplug", PULLED)],
    "pulled while a server is asked": [("mode auto", TOLD["out"]),
                                       ("plug-briefly", [*PLUGGED, TRY, *PULLED])],
}


class CableStories:
    """For a test case with a playground `p` whose cable is out and whose interface eth0 is off."""

    def mode(self, mode):
        self.p.call("SetNormalMode", mode)

    def scan(self):
        self.p.call("Scan")

    def off(self):
        self.p.call("SetOffMode")

    def static(self):
        self.p.set("WiredIpSettings", STATIC)

    def dhcp(self):
        self.p.set("WiredIpSettings", {})

    # The signals that follow, as text, until as many as `expected` were heard and none comes for a while. What tells
    # of the other interfaces, and a change of addresses beside that of a connection, has no fixed place.
    def overheard(self, expected, calm=0.1):
        heard = []
        try:
            while len(heard) < len(expected) or calm:
                name, payload = self.p.next(10 if len(heard) < len(expected) else calm)
                text = " ".join([name, *map(str, payload["data"])])
                if "eth0" in text or NONE in text or name in ("CableStatus", "ScanResults") or (name == "AddressesChanged" and heard[-1:] in UP_OR_DOWN):
                    heard.append(text)
        except queue.Empty:
            pass
        return heard

    def test_cable_stories(self):
        for name, story in STORIES.items():
            with self.subTest(name):
                try:
                    self.begin(silent="server" in name)
                    for step, expected in story:
                        self.take(step, expected)
                    self.end()
                finally:
                    self.doCleanups()

    def take(self, step, expected):
        while not self.p.signals.empty():
            self.p.signals.get()
        action, *arguments = step.split()
        if action == "plug-briefly":
            self.plug()
            self.assertEqual(self.overheard(expected[:3], 0), expected[:3], step)
            self.unplug()
            self.assertEqual(self.overheard(expected[3:]), expected[3:], step + self.p.logged())
        else:
            getattr(self, action)(*arguments)
            self.assertEqual(self.overheard(expected), expected, step + self.p.logged())


UP_OR_DOWN = [["Connected eth0"], ["Disconnected eth0"]]
