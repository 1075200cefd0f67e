# SPDX-License-Identifier: Apache-2.0
"""A real cable, and what takes its time: leases that end, addresses that are taken, IPv6."""
import pathlib, signal, unittest

import network
from network import ip
from wiredcase import CONNECTED, IPV6, NOT, Device, routes


class Lease(Device):
    def test_a_lease_that_expires(self):
        self.begin(serve=False)
        self.net.start("/usr/bin/python3", str(pathlib.Path(__file__).with_name("lease_server.py")), "20")
        self.plug()
        self.agree(CONNECTED, "192.0.2.50/24")
        self.p.until(lambda: self.p.logged().count("eth0: leased 192.0.2.50") == 2)  # renewed at half its time
        self.agree(CONNECTED, "192.0.2.50/24")
        self.assertNotIn("Disconnected", [name for name, _ in self.p.signals.queue])
        self.net.servers[0].send_signal(signal.SIGUSR1)
        self.agree(NOT)
        self.p.until(lambda: not routes("default"))
        self.silence()
        self.net.serve()
        self.agree(CONNECTED, "192.0.2.")

    def test_an_address_that_somebody_else_holds(self):
        held = self.connect()["addresses"][0]
        self.unplug()
        self.agree(NOT)
        self.end()
        self.doCleanups()
        self.begin(serve=False, probeAddresses=True, dhcpDeadline=60)
        self.net.serve("--dhcp-broadcast")  # what is sent to the address alone would not leave the router
        ip("-n", "rt", "addr", "add", held, "dev", "r0")
        self.plug()
        self.assertNotEqual(self.agree(CONNECTED, "192.0.2.")["addresses"][0], held)

    def test_a_static_address_that_somebody_else_holds(self):
        self.begin(serve=False, probeAddresses=True, dhcpDeadline=12)  # probing takes 7 s of it
        ip("-n", "rt", "addr", "add", "192.0.2.77/24", "dev", "r0")
        self.orvactl("profile", "set", "--ip", "192.0.2.77", "--netmask", "255.255.255.0", "--gateway", "192.0.2.1")
        self.plug()
        self.errors("Cannot use the address 192.0.2.77 on eth0")
        self.agree(NOT)
        self.unplug()
        self.agree(NOT)
        ip("-n", "rt", "addr", "delete", "192.0.2.77/24", "dev", "r0")
        self.plug()
        self.agree(CONNECTED, "192.0.2.77/24")

    def test_ipv6_beside_ipv4_and_alone(self):
        self.begin(serve=False, dhcpDeadline=12)
        self.net.serve(*self.net.advertise())
        self.plug()
        self.agree(CONNECTED, "192.0.2.")
        self.assertEqual(len(self.agree(CONNECTED, *IPV6)["gateways"]), 2)
        self.unplug()
        self.agree(NOT)
        self.silence()
        self.net.serve(*self.net.advertise(), ipv4=False)
        self.plug()
        state = self.agree(CONNECTED, *IPV6)
        self.assertEqual((len(state["addresses"]), state["dns"]), (1, ["2001:db8:1::1", "fe80::1"]))
        self.assertEqual(self.p.details("eth0")["Dns"], "2001:db8:1::1 fe80::1l")
        self.assertNotIn("No DHCP answer", self.p.logged())
        self.silence()  # an advertisement is worth three intervals
        self.p.until(lambda: not routes("default"))
        self.agree(NOT)


if __name__ == "__main__":
    network.enclose()
    unittest.main()
