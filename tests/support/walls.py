# SPDX-License-Identifier: Apache-2.0
"""The walls of a unit that is shipped, put around what a test starts: its capabilities, the system calls and the address
families that it lets through. Who calls another one is killed."""
import subprocess

from privatebus import BUILD

# What the sanitizers call themselves, ptrace for one, the unit does not let through.
SANITIZED = "ORVA_SANITIZE:BOOL=ON" in (BUILD / "CMakeCache.txt").read_text(encoding="utf-8")

ENTER = """
import os, seccomp, socket, sys
walls = seccomp.SyscallFilter(seccomp.KILL_PROCESS)
for name in sys.argv[1].split(","):
    try: walls.add_rule(seccomp.ALLOW, name)
    except (RuntimeError, ValueError): pass  # another processor's
for family in sys.argv[2].split(","):
    walls.add_rule(seccomp.ALLOW, "socket", seccomp.Arg(0, seccomp.EQ, getattr(socket, family)))
walls.load()
os.execvp(sys.argv[3], sys.argv[3:])"""


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


class Unit:
    def __init__(self, name):
        self.lines = [line.split("=", 1) for line in (BUILD / "dist" / name).read_text(encoding="utf-8").splitlines()
                      if "=" in line and not line.startswith("#")]

    def words(self, key):
        return [value.split() for name, value in self.lines if name == key]

    def capabilities(self, key):
        """As setpriv takes them."""
        return ",".join(["-all", *("+" + word[4:].lower() for words in self.words(key) for word in words)])

    def calls(self):
        calls = members(["@default"])
        for first, *more in self.words("SystemCallFilter"):
            calls = calls - members([first[1:], *more]) if first.startswith("~") else calls | members([first, *more])
        return calls - {"socket"}

    def filter(self):
        """The words before a command that the filter is to hold."""
        return ["/usr/bin/python3", "-c", ENTER, ",".join(self.calls()), ",".join(self.words("RestrictAddressFamilies")[0])]

    def root(self):
        """The words before a command that root is to run behind the walls."""
        return ["setpriv", "--inh-caps=-all", "--bounding-set=" + self.capabilities("CapabilityBoundingSet"), "--no-new-privs",
                *([] if SANITIZED else self.filter())]
