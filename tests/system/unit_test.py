# SPDX-License-Identifier: Apache-2.0
"""The shipped unit's walls: the host and the programs that it runs get through them, and nothing else does."""
import os, pathlib, signal, socket, subprocess, unittest

from privatebus import PrivateBus
from walls import Unit

NETDEV = "4711"
UNIT = Unit("orva-host.service")
# A mount namespace in which /dev holds a plain file as the radios' device.
RADIOS = ["unshare", "--mount", "sh", "-c", """
    mkdir -p "$0/dev" && mount --bind /dev "$0/dev" && mount -t tmpfs none /dev && touch /dev/null /dev/rfkill &&
    mount --bind "$0/dev/null" /dev/null && touch "$0/rfkill" && chgrp 4711 "$0/rfkill" && chmod 664 "$0/rfkill" &&
    mount --bind "$0/rfkill" /dev/rfkill && exec "$@" """]


@unittest.skipUnless(os.geteuid() == 0, "only root can be somebody else")
class UnitTest(unittest.TestCase):
    def setUp(self):
        self.device = PrivateBus(DEVICE_BACKEND="fake")
        self.addCleanup(self.device.close)
        self.enter = UNIT.filter()
        ambient, bounding = map(UNIT.capabilities, ("AmbientCapabilities", "CapabilityBoundingSet"))
        self.user = ["setpriv", "--reuid=games", "--regid=nogroup", "--groups=" + NETDEV, "--inh-caps=" + ambient,
                     "--ambient-caps=" + ambient, "--bounding-set=" + bounding, "--no-new-privs"]

    def test_what_the_host_runs_gets_through_and_nothing_else(self):
        for status, command in [
                (0, "/bin/ping -c 1 -W 3 127.0.0.1"), (0, "/usr/sbin/rfkill block all"), (0, "/usr/sbin/rfkill unblock all"),
                (-signal.SIGSYS, "chown games /"), (-signal.SIGSYS, "chroot / true"), (-signal.SIGSYS, "mount -t tmpfs n /mnt"),
                (-signal.SIGSYS, "date --set now"), (-signal.SIGSYS, "nice true"),
                (-signal.SIGSYS, "setpriv --clear-groups true"), (-signal.SIGSYS, "setpriv --reuid 0 true")]:
            with self.subTest(command):
                done = self.device.run(*RADIOS, self.device.directory, *self.user, *self.enter,
                                       *command.split())
                self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertEqual(len(pathlib.Path(self.device.directory, "rfkill").read_bytes()), 8)

    def test_the_host_gets_through(self):
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.bind(f"\0orva-test-{os.getpid()}")
        self.device.start_bus()
        self.device.environment |= {"NOTIFY_SOCKET": f"@orva-test-{os.getpid()}", "WATCHDOG_USEC": "20000000"}
        self.device.start_host(*self.enter)
        self.device.orvactl("wait", "network/state/connected==true", "--timeout", "20")
        self.device.orvactl("airplane", "on", "--wait", "10")
        told = {manager.recv(99, socket.MSG_DONTWAIT) for _ in range(2)}
        self.assertEqual(told, {b"READY=1", b"WATCHDOG=1"})


if __name__ == "__main__":
    unittest.main()
