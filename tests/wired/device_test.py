# SPDX-License-Identifier: Apache-2.0
"""The whole device on a real cable: after each step it says what the machine says."""
import os, pathlib, signal, subprocess, threading, time, unittest

import network
from network import DEV, ip
from privatebus import BUILD
from wiredcase import CONNECTED, IPV6, NOT, Device, processes, routes


class Cable(Device):
    # --- the cable

    def test_in_and_out_ten_times_and_a_hundred_flaps(self):
        self.begin()
        for plugged in [True, False] * 10:
            self.net.cable(plugged)
            self.agree(plugged)
        end = time.monotonic() + 1
        for i in range(200):
            self.net.cable(i % 2 == 0)
            time.sleep(max(0, (end - time.monotonic()) / (200 - i)))
        self.agree(NOT)
        self.plug()
        self.agree(CONNECTED)
        self.assertEqual(len(processes("lumod-keep")), 1)

    def test_interface_renamed_removed_and_added_while_up(self):
        self.connect()
        for away, back in [(("set", "eth0", "name", "eth9"), ("set", "eth9", "name", "eth0")),
                           (("delete", "eth0"), None)]:
            if "name" in away:
                ip("-n", "dev", "link", "set", "eth0", "down")
            ip("-n", "dev", "link", *away)
            self.p.until(lambda: self.p.details("eth0")["Present"] == 0)
            self.p.until(lambda: not self.device()["connected"])
            ip("-n", "dev", "link", *back) if back else self.net.add_interface()
            self.plug()
            self.agree(CONNECTED, "192.0.2.")

    # --- addresses

    def test_static_and_back(self):
        self.connect()
        self.assertIn("the world that it plays", self.p.run(*DEV, "orvactl", "world", "plug").stderr)
        self.orvactl("profile", "set", "--ip", "192.0.2.77", "--netmask", "255.255.255.0", "--gateway", "192.0.2.1", "--dns",
                     "192.0.2.1,1.1.1.1")
        self.agree(CONNECTED, "192.0.2.77/24")
        self.unplug()
        self.agree(NOT)
        self.plug()
        self.assertEqual(self.agree(CONNECTED, "192.0.2.77/24")["dns"], ["192.0.2.1", "1.1.1.1"])
        self.orvactl("profile", "set", "--dhcp")
        self.assertNotIn("192.0.2.77/24", self.agree(CONNECTED, "9.9.9.9")["addresses"])

    def test_a_silent_server_and_a_late_one(self):
        self.begin(serve=False)
        self.plug()
        self.errors("No DHCP answer on eth0")
        self.agree(NOT)
        self.net.serve()
        self.agree(CONNECTED, "192.0.2.")

    def test_gateway_and_servers_change_with_a_renewal(self):
        self.connect()
        ip("-n", "rt", "addr", "add", "192.0.2.3/24", "dev", "r0")
        self.silence()
        self.net.serve(gateway="192.0.2.3", servers="192.0.2.3,169.254.0.1")
        self.p.run(*DEV, "dhcpcd", "-n", "eth0")
        state = self.agree(CONNECTED, "192.0.2.3")
        self.assertEqual((state["gateways"], state["dns"]), (["192.0.2.3"], ["192.0.2.3", "169.254.0.1"]))

    def test_two_uplinks(self):
        self.begin(serve=False)
        self.net.serve(*self.net.advertise())
        ip("link", "add", "other", "netns", "dev", "type", "veth", "peer", "name", "r1", "netns", "rt")
        for words in [("-n", "rt", "link", "set", "r1", "up"), ("-n", "dev", "link", "set", "other", "up"),
                      ("-n", "dev", "addr", "add", "198.51.100.2/24", "dev", "other"),
                      ("-n", "dev", "addr", "add", "2001:db8:2::2/64", "dev", "other", "nodad"),
                      ("-n", "dev", "route", "add", "default", "via", "198.51.100.1", "metric", "600"),
                      ("-n", "dev", "-6", "route", "add", "default", "via", "2001:db8:2::1", "metric", "600")]:
            ip(*words)
        used = lambda: [ip("-n", "dev", "route", "get", to)[0]["dev"] for to in ("203.0.113.1", "2001:db8:ff::1")]
        for _ in range(2):
            self.plug()
            self.agree(CONNECTED, "192.0.2.", *IPV6)
            self.p.until(lambda: used() == ["eth0", "eth0"])
            self.unplug()
            self.agree(NOT)
            self.p.until(lambda: used() == ["other", "other"])
        ip("-n", "dev", "link", "delete", "other")

    # --- programs that end

    def test_host_restarted_while_the_daemon_stays(self):
        self.connect()
        engine = processes("lumod-keep")
        self.host.kill()
        self.host.wait()
        self.start_host()
        self.agree(CONNECTED, "192.0.2.")
        self.assertEqual(processes("lumod-keep"), engine)

    def test_engines_and_daemon_killed(self):
        def addresses():
            return [a for link in ip("-n", "dev", "-4", "addr", "show", "eth0") for a in link.get("addr_info", [])]

        self.connect()
        for victim in "dhcpcd", "lumod-keep", "lumod":
            with self.subTest(victim):
                before = processes(victim)
                for pid in before[:1]:
                    os.kill(pid, signal.SIGKILL)
                self.p.until(lambda: processes(victim) and not set(before) & set(processes(victim)))
                self.agree(CONNECTED, "192.0.2.")
                self.p.until(lambda: len(processes("lumod-keep")) == len(processes("lumod")) == 1)
                self.p.until(lambda: len(addresses()) == 1 and len(routes("default")) == 1)

    def test_storm_of_addresses(self):
        self.connect()
        lines = [f"addr {verb} 198.51.{i // 250}.{i % 250 + 1}/32 dev eth0" for verb in ("add", "del") for i in range(500)]
        storm = subprocess.Popen([*DEV, "ip", "-batch", "-"], stdin=subprocess.PIPE, text=True)
        feeder = threading.Thread(target=storm.communicate, args=("\n".join(lines * 30 + lines[:500] + lines[501:]),))
        feeder.start()
        answers = 0
        while feeder.is_alive():  # 30 000 events, as fast as the kernel makes them
            self.p.busctl("--timeout=2", "call", "org.orva.lumod", "/org/orva/lumod", "org.orva.lumod", "InterfaceDetails", "s", "eth0")
            answers += 1
        self.assertEqual((storm.returncode, answers > 0), (0, True))
        self.agree(CONNECTED, "198.51.0.1/32")
        ip("-n", "dev", *lines[500].split())
        self.agree(CONNECTED, "192.0.2.")

    def test_each_list_of_the_kernel_changes_while_it_is_read(self):
        self.connect(under=(*DEV, "env", f"LD_PRELOAD={BUILD}/lib/libinterrupted.so", "ASAN_OPTIONS=verify_asan_link_order=0"))
        self.p.call("SetOffMode")
        self.agree(NOT)
        self.p.until(lambda: not routes("default"))
        self.p.call("SetNormalMode", "wired")
        self.agree(CONNECTED, "192.0.2.")
        self.assertNotIn("cannot be preloaded", self.p.logged())

    # --- files

    def test_the_engine_is_not_installed(self):
        self.begin(dhcpcd="/run/dhcpcd-later")
        self.addCleanup(lambda: pathlib.Path("/run/dhcpcd-later").unlink(missing_ok=True))
        self.plug()
        self.errors("Addresses need the program /run/dhcpcd-later, which is not here; the package dhcpcd-base has it")
        self.agree(NOT)
        pathlib.Path("/run/dhcpcd-later").symlink_to("/usr/sbin/dhcpcd")
        self.agree(CONNECTED, "192.0.2.", limit=20)

    def test_no_room_for_the_engine_s_files(self):
        pathlib.Path("/run/small").mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=4k", "small", "/run/small"], check=True)
        ballast = pathlib.Path("/run/small/ballast")
        ballast.write_text("x" * 4096, encoding="utf-8")
        self.begin(runtimeDirectory="/run/small")
        self.plug()
        self.errors("Cannot write /run/small/dhcpcd-eth0.conf")
        self.agree(NOT)
        ballast.unlink()
        self.agree(CONNECTED, "192.0.2.")


if __name__ == "__main__":
    network.enclose()
    unittest.main()
