# SPDX-License-Identifier: Apache-2.0
"""A real cable, and what takes its time: leases that end, addresses that are taken, IPv6."""
import pathlib, signal, unittest

import network
from network import ip
from wiredcase import CONNECTED, NOT, Device, routes


class Lease(Device):
    def test_a_lease_that_expires(self):
        self.begin(serve=False)
        self.net.start("/usr/bin/python3", str(pathlib.Path(__file__).with_name("lease_server.py")), "20")
        self.plug()
        self.agree(CONNECTED, "192.0.2.50/24")
        self.net.servers[0].send_signal(signal.SIGUSR1)
        self.agree(NOT, limit=40)
        self.p.until(lambda: not routes("default"))
        self.silence()
        self.net.serve()
        self.agree(CONNECTED, "192.0.2.", limit=30)

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
        self.assertNotEqual(self.agree(CONNECTED, "192.0.2.", limit=60)["addresses"][0], held)

    def test_ipv6_beside_ipv4_and_alone(self):
        ipv6 = "/64'", "'2001:db8:1::1'", "'fe80:"  # an address, the name server, the gateway: they come one by one
        self.begin(serve=False, dhcpDeadline=8)
        self.net.serve(*self.net.advertise())
        self.plug()
        self.agree(CONNECTED, "192.0.2.")
        self.assertEqual(len(self.agree(CONNECTED, *ipv6, limit=30)["gateways"]), 2)
        self.unplug()
        self.agree(NOT)
        self.silence()
        self.net.serve(*self.net.advertise(), ipv4=False)
        self.plug()
        state = self.agree(CONNECTED, *ipv6, limit=30)
        self.assertEqual((len(state["addresses"]), state["dns"]), (1, ["2001:db8:1::1"]))
        self.assertNotIn("No DHCP answer", self.p.logged())


if __name__ == "__main__":
    network.enclose()
    unittest.main()
