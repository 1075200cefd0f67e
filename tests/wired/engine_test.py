# SPDX-License-Identifier: Apache-2.0
"""Engines on a real cable that are frozen or killed: what they configured is taken back, and nothing of anybody else's."""
import contextlib, os, pathlib, re, resource, signal, subprocess, unittest

import network
from cable import STATIC
from network import DEV, ip
from playground import BUILD, LUMOD
from walls import Unit
from wiredcase import WiredCase, left_over, processes, program

FOREIGN = """link set eth0 up
addr add 198.51.100.5/24 dev eth0
addr add 198.51.100.6/24 dev eth0 noprefixroute
addr add 2001:db8:9::9/64 dev eth0 nodad
route add 203.0.113.0/24 via 198.51.100.1 proto dhcp metric 100
-6 route add 2001:db8:a::/64 via 2001:db8:9::1 proto ra metric 100"""
DHCPCD = pathlib.Path("/run/bin/dhcpcd")  # a link to the real one, which can be lost
WALLED = *DEV, *Unit("lumod.service").root()  # as on a device
KILL, STOP = signal.SIGKILL, signal.SIGSTOP

# The mishap and its victim, and what happens to lumod then.
STORIES = {
    "frozen at the end": ((STOP, "dhcpcd"), "stop"),
    "killed amid the end": ((STOP, "dhcpcd"), "stop and kill"),
    "frozen while it is switched off": ((STOP, "dhcpcd"), "off"),
    "killed for good": ((KILL, "dhcpcd"), "nothing"),
    "killed, and back to a silent server": ((KILL, "dhcpcd"), "lose IPv4 alone"),
    "killed for good, and the kernel cannot be asked": ((KILL, "dhcpcd"), "off without files"),
    "its keeper killed at the end": ((KILL, "lumod-keep"), "stop"),
    "its keeper killed while it is switched off": ((KILL, "lumod-keep"), "off"),
    "frozen, and its keeper": ((STOP, "dhcpcd", "lumod-keep"), "stop"),
    "killed, and its keeper": ((KILL, "main", "lumod-keep"), "come back and stop"),
    "its keeper killed, and lumod": ((KILL, "lumod-keep", "lumod"), "come back and stop"),
}


def configured():
    return {what: sorted(names) for what, names in left_over().items() if what in ("routes", "addresses")}


def send(number, *names):
    for name in names:
        for pid in processes("dhcpcd")[:1] if name == "main" else processes(name):
            with contextlib.suppress(ProcessLookupError):  # its children end by themselves
                os.kill(pid, number)


class Engines(WiredCase):
    def test_what_an_engine_could_not_take_back(self):
        for i, (name, (fault, then)) in enumerate(STORIES.items()):
            with self.subTest(name):
                try:
                    self.play(name, fault, then, static=i % 2)
                finally:
                    self.doCleanups()

    def play(self, name, fault, then, static):
        DHCPCD.parent.mkdir(exist_ok=True)
        DHCPCD.symlink_to("/usr/sbin/dhcpcd")
        self.addCleanup(DHCPCD.unlink, missing_ok=True)
        self.begin(serve=False, under=WALLED, dhcpcd=str(DHCPCD), dhcpDeadline=2 if "IPv4" in then else 5)
        for line in FOREIGN.splitlines():
            ip("-n", "dev", *line.split())
        before = configured()
        self.net.serve(*self.net.advertise())
        self.p.set("WiredIpSettings", {**STATIC, "Netmask": "255.255.255.255"} if static else {})
        self.p.call("SetNormalMode", "wired")
        self.plug()
        self.p.wait("Connected", "eth0")
        self.p.until(lambda: "2001:db8:1::/64" in str(routes := configured()["routes"]) and "'default via fe80" in str(routes))
        if "for good" in name:
            DHCPCD.unlink()
        engine = processes("dhcpcd")
        send(*fault)
        getattr(self, then.replace(" ", "_"))(engine)
        self.p.until(lambda: configured() == before, f"not as before: {before}")
        self.assertNotRegex(self.p.logged(), "lumod .*not permitted")
        self.stop()
        self.assertEqual({**left_over(), **configured()}, {**before, "engines": 0, "files": []}, self.p.logged())

    def stop(self, engine=()):
        super().stop()

    def stop_and_kill(self, engine):
        send(signal.SIGTERM, "lumod")
        send(KILL, "dhcpcd")

    def off(self, engine):
        self.p.call("SetOffMode")
        self.p.wait("Disconnected", "eth0")
        self.p.until(lambda: not processes("dhcpcd", "lumod-keep"))

    def nothing(self, engine):
        self.p.wait("Disconnected", "eth0")

    def lose_IPv4_alone(self, engine):
        self.net.silence()
        self.net.serve(*self.net.advertise(), ipv4=False)
        self.p.until(lambda: "192.0.2." not in self.p.details("eth0")["Ips"])
        self.assertIn("2001:db8:1:", self.p.details("eth0")["Ips"])
        self.stop()

    def off_without_files(self, engine):
        self.errors("which is not here")
        lumod, limit = processes("lumod")[0], resource.RLIMIT_NOFILE
        opened = list(map(int, os.listdir(f"/proc/{lumod}/fd")))
        before = resource.prlimit(lumod, limit)
        resource.prlimit(lumod, limit, (next(fd for fd in range(99) if fd not in opened), before[1]))
        self.p.call("SetOffMode")
        self.errors("Cannot read what dhcpcd has left")
        resource.prlimit(lumod, limit, before)
        self.stop()

    def come_back_and_stop(self, engine):
        self.p.call("SetNormalMode", "wired")
        self.p.wait("Connected", "eth0")
        self.assertNotIn(engine[0], processes("dhcpcd"))
        self.stop()

    def test_what_one_tells_amid_its_end(self):
        self.begin(serve=False, dhcpDeadline=60)
        self.plug()
        self.p.call("SetNormalMode", "wired")
        self.errors("soliciting a DHCP lease")
        ended = processes("dhcpcd")
        send(STOP, "dhcpcd")
        self.p.set("WiredIpSettings", STATIC)
        self.p.call("SetNormalMode", "wired")
        ip("-n", "dev", "addr", "add", "192.0.2.78/24", "dev", "eth0")
        event = dict(reason="BOUND", interface="eth0", protocol="dhcp", if_up="true", new_ip_address="192.0.2.78", LUMOD_START=1,
                     LUMOD_EVENTS="/run/lumod/events")
        self.p.run("env", *(f"{name}={value}" for name, value in event.items()), BUILD / "bin/dhcp-event")
        self.p.wait("Connected", "eth0")
        self.assertEqual([pid for pid in ended if pid in processes("dhcpcd")], [])
        self.stop()

    def test_a_stranger_gets_the_keeper_s_process_id(self):
        self.begin(serve=False, dhcpcd=program("/run/fails", "echo $PPID >>/run/keepers; exit 1"))
        self.p.call("SetNormalMode", "wired")
        keepers = lambda: pathlib.Path("/run/keepers").read_text(encoding="utf-8").split()
        self.p.until(lambda: self.p.logged().count("dhcpcd on eth0 has ended") == 5)
        ended = [float(line.split()[0][-6:]) for line in self.p.logged().splitlines() if "has ended" in line]
        # Each pause is twice the one before; the daemon's timers may be a twentieth early.
        self.assertTrue(all((b - a) % 60 >= 0.09 * 2 ** i for i, (a, b) in enumerate(zip(ended, ended[1:]))), ended)
        pathlib.Path("/proc/sys/kernel/ns_last_pid").write_text(str(int(keepers()[-1]) - 1), encoding="utf-8")
        stranger = subprocess.Popen(["sleep", "60"], start_new_session=True)
        self.addCleanup(stranger.kill)
        self.assertEqual(str(stranger.pid), keepers()[-1])
        self.p.until(lambda: len(keepers()) > 5)
        self.assertIsNone(stranger.poll())
        self.end()

    def test_a_second_daemon_waits_for_the_first_one_s_engines(self):
        self.begin()
        self.p.call("SetNormalMode", "wired")
        self.plug()
        self.p.wait("Connected", "eth0")
        send(STOP, "dhcpcd")
        send(signal.SIGTERM, "lumod")
        told = lambda pid: int(re.search(r"ShdPnd:\t(\w+)", pathlib.Path(f"/proc/{pid}/status").read_text())[1], 16)
        self.p.until(lambda: told(processes("dhcpcd")[0]) & 1 << signal.SIGTERM - 1)
        second = self.p.run(*DEV, LUMOD, "--config", "/run/lumod.conf")
        self.assertIn("another lumod has it", second.stderr)
        self.p.until(lambda: not processes("lumod"))
        self.end()

    def test_the_wireless_engine_goes_with_its_keeper(self):
        self.begin(serve=False, wireless="wlan0", wpaSupplicant=program("/run/wpa_supplicant", "exec sleep 600"))
        ip("-n", "dev", "link", "add", "wlan0", "type", "veth", "peer", "name", "air")
        for _ in range(2):
            self.p.until(lambda: processes("sleep"))
            old = processes("sleep")
            send(KILL, "lumod-keep")
            self.p.until(lambda: not set(old) & set(processes("sleep")))
        self.p.until(lambda: processes("sleep"))
        send(STOP, "lumod-keep")
        self.end()
        self.assertEqual(processes("sleep"), [])

    def test_the_pid_file_of_somebody_else(self):
        pidfile = pathlib.Path("/run/dhcpcd/eth0.pid")
        pidfile.parent.mkdir(exist_ok=True)
        pidfile.write_text(str(os.getpid()), encoding="utf-8")
        self.begin()
        self.plug()
        self.p.call("SetNormalMode", "wired")
        self.p.wait("Connected", "eth0")
        self.end()

    def test_another_dhcpcd_is_left_alone(self):
        self.begin()
        other = self.p.start(*DEV, "dhcpcd", "-B", "-f", "/dev/null", "-c", "/bin/true", "eth0")
        self.p.until(pathlib.Path("/run/dhcpcd/eth0.pid").exists)
        self.p.call("SetNormalMode", "wired")
        self.p.wait("Error", f"Another dhcpcd, process {other.pid}, holds eth0, waiting for its end")
        self.p.call("SetOffMode")
        self.p.call("SetNormalMode", "wired")
        self.assertIsNone(other.poll())
        other.terminate()
        other.wait()
        self.plug()
        self.p.wait("Connected", "eth0")
        self.end()


if __name__ == "__main__":
    network.enclose()
    unittest.main()
