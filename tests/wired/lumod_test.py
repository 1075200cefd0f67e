"""The daemon on a real cable: what the kernel, a DHCP server and resolv.conf say is what it tells."""
import json, os, pathlib, subprocess, time, unittest, warnings

import network
from cable import CableStories
from network import DEV, Network, ip
from playground import BUILD, Playground

RUN = pathlib.Path("/run/lumod")
CONF = {"helperDirectory": str(BUILD / "bin"), "dhcpDeadline": 1.5}


def processes():
    """Names by pid of everything that runs here, but for what the test itself is made of."""
    names = {}
    for status in pathlib.Path("/proc").glob("[0-9]*/status"):
        try:
            fields = dict(line.split(":\t", 1) for line in status.read_text().splitlines() if ":\t" in line)
            if fields["State"][0] != "Z":
                names[int(fields["Pid"])] = fields["Name"]
        except (OSError, KeyError):
            pass
    return names


def left_over():
    """What a test must find again as it was."""
    engines = sorted(name for name in processes().values() if name in ("dhcpcd", "lumod-keep", "dhcp-event", "lumod"))
    files = sorted(str(path) for path in [*RUN.glob("*"), *pathlib.Path("/run/dhcpcd").glob("*")])
    routes = [route for family in ("-4", "-6") for route in ip("-n", "dev", family, "route")
              if route.get("protocol") != "kernel"]
    addresses = [address["local"] for link in ip("-n", "dev", "addr") for address in link["addr_info"]
                 if address["scope"] == "global"]
    return dict(engines=engines, files=files, routes=routes, addresses=addresses)


class RealCable(unittest.TestCase, CableStories):
    def setUp(self):
        warnings.simplefilter("ignore", ResourceWarning)

    def begin(self, **settings):
        self.net = Network()
        self.addCleanup(self.net.close)
        self.net.serve()
        conf = pathlib.Path("/run/lumod.conf")
        conf.write_text("// a test's\n" + json.dumps({**CONF, **settings}), encoding="utf-8")
        self.p = Playground(under=DEV, DEVICE_LUMOD_CONF=str(conf))
        self.addCleanup(self.p.close)
        self.p.call("InterfaceDetails", "eth0")
        self.p.wait("InterfaceStatusChanged", "uap0", 0)

    def end(self):
        lumod = next((pid for pid, name in processes().items() if name == "lumod"), 0)
        os.kill(lumod, 15)
        self.p.until(lambda: "lumod" not in processes().values())
        nothing = dict(engines=[], files=[], routes=[], addresses=[])
        self.assertEqual(left_over(), nothing, self.p.logged())

    def plug(self):
        self.net.cable(True)

    def unplug(self):
        self.net.cable(False)

    def silence(self):
        self.net.silence()


if __name__ == "__main__":
    network.enclose()
    unittest.main()
