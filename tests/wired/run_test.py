# SPDX-License-Identifier: Apache-2.0
"""./run --real: in the sandbox it connects, on an interface it asks before and leaves all as it was."""
import os, pathlib, signal, subprocess, tempfile, unittest

import network
from privatebus import BUILD, until
from wiredcase import processes

RUN = pathlib.Path(__file__).parents[2] / "run"
BEFORE = """ip link set lo up; ip netns add rt; ip link add eth7 type veth peer name r0 netns rt; ip -n rt link set r0 up
    ip -n rt addr add 192.0.2.1/24 dev r0; ip link set eth7 up; ip addr add 10.1.1.5/24 broadcast 10.1.1.255 dev eth7
    ip route add default via 10.1.1.1 dev eth7 metric 50"""
PICTURE = "ip -o -4 addr show scope global; ip route; cat /etc/resolv.conf; grep -s . /proc/sys/net/ipv[46]/conf/eth7/* || true"


class Run(unittest.TestCase):
    def setUp(self):
        self.state = tempfile.TemporaryDirectory()
        self.addCleanup(self.state.cleanup)
        self.line = [RUN, "--build", BUILD, "--state", self.state.name]

    def shell(self, text):
        return subprocess.run(["sh", "-c", text], capture_output=True, text=True, check=True).stdout

    def start(self, *words):
        device = subprocess.Popen([*self.line, "--real", *words], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL, start_new_session=True)
        self.addCleanup(device.kill)
        until(pathlib.Path(self.state.name, "device/pid").exists)
        until(lambda: "192.0.2." in subprocess.run([*self.line, "orvactl", "status"], capture_output=True, text=True,
                                                        check=False).stdout)
        return device

    def end(self, device):
        os.killpg(device.pid, signal.SIGINT)
        device.wait(60)
        until(lambda: not processes("lumod", "dhcpcd", "lumod-keep", "dnsmasq", "orva-host"))

    def test_sandbox(self):
        self.end(self.start("--sandbox"))

    def test_interface(self):
        self.shell(BEFORE)
        before = self.shell(PICTURE)
        refused = subprocess.run([*self.line, "--real", "eth7"], input="n\n", capture_output=True, text=True, check=False)
        self.assertEqual((refused.returncode, self.shell(PICTURE)), (1, before))
        server = subprocess.Popen(["ip", "netns", "exec", "rt", "dnsmasq", "-k", "-C", "/dev/null", "--user=root", "--port=0",
                                   "--interface=r0", "--bind-dynamic", "--dhcp-authoritative", "--pid-file=",
                                   "--dhcp-range=192.0.2.10,192.0.2.99,2m", "--dhcp-leasefile=/run/leases"])
        device = self.start("eth7", "--yes")
        self.assertNotEqual(self.shell(PICTURE), before)
        server.kill()
        server.wait()
        self.end(device)
        self.assertEqual(self.shell(PICTURE), before)


if __name__ == "__main__":
    network.enclose("--net")
    unittest.main()
