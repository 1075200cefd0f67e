# SPDX-License-Identifier: Apache-2.0
"""The shipped unit's walls: the host and the programs that it runs get through them, and nothing else does."""
import os, pathlib, signal, socket, subprocess, unittest

from privatebus import BUILD, PrivateBus

NETDEV = "4711"
UNIT = [line.split("=", 1) for line in (BUILD / "dist/orva-host.service").read_text(encoding="utf-8").splitlines()
        if "=" in line and not line.startswith("#")]
# Puts itself under a filter that lets in the system calls named, and becomes the program.
ENTER = """
import os, seccomp, sys
walls = seccomp.SyscallFilter(seccomp.KILL_PROCESS)
for name in open(sys.argv[1]).read().split():
    try: walls.add_rule(seccomp.ALLOW, name)
    except (RuntimeError, ValueError): pass  # another processor's
walls.load()
os.execvp(sys.argv[2], sys.argv[2:])"""
# A mount namespace in which /dev holds a plain file as the radios' device.
RADIOS = ["unshare", "--mount", "sh", "-c", """
    mkdir -p "$0/dev" && mount --bind /dev "$0/dev" && mount -t tmpfs none /dev && touch /dev/null /dev/rfkill &&
    mount --bind "$0/dev/null" /dev/null && touch "$0/rfkill" && chgrp 4711 "$0/rfkill" && chmod 664 "$0/rfkill" &&
    mount --bind "$0/rfkill" /dev/rfkill && exec "$@" """]


def words(key):
    return [value.split() for name, value in UNIT if name == key]


def members(names):
    """System calls with the groups among them opened, as the service manager knows them."""
    found = set()
    for name in names:
        if name.startswith("@"):
            listed = subprocess.run(["systemd-analyze", "syscall-filter", name], text=True, check=True,
                                    stdout=subprocess.PIPE).stdout.splitlines()[1:]
            found |= members(word for word in map(str.strip, listed) if word and not word.startswith("#"))
        else:
            found.add(name)
    return found


def allowed():
    calls = members(["@default"])
    for first, *more in words("SystemCallFilter"):
        calls = calls - members([first[1:], *more]) if first.startswith("~") else calls | members([first, *more])
    return calls


@unittest.skipUnless(os.geteuid() == 0, "only root can be somebody else")
class UnitTest(unittest.TestCase):
    def setUp(self):
        self.device = PrivateBus(DEVICE_BACKEND="fake")
        self.addCleanup(self.device.close)
        self.enter = ["/usr/bin/python3", "-c", ENTER, self.device.write("calls", " ".join(allowed()))]
        ambient, bounding = (",".join(["-all", *("+" + word[4:].lower() for word in words(key)[0])])
                             for key in ("AmbientCapabilities", "CapabilityBoundingSet"))
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
