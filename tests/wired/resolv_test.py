# SPDX-License-Identifier: Apache-2.0
"""Who writes the name servers down on a real cable, and what becomes of it when that goes wrong."""
import pathlib, subprocess, unittest

import network
from cable import STATIC
from wiredcase import RESOLV, WiredCase, program

PROGRAM, TOLD = pathlib.Path("/run/resolvconf"), pathlib.Path("/run/told")
RECORDS = "sleep 0.3\n{ [ $1 = -d ] && echo $1 $2 || { echo $1 $2 $IF_METRIC; cat; }; } >>/run/told"
ASKED = "-a eth0.lumod 100\nsearch lan.test\nnameserver 192.0.2.1\nnameserver 9.9.9.9\n"


class NameServers(WiredCase):
    def test_resolv_conf(self):
        ours, foreign, asked = "# Written by lumod; changes are lost.\n", "nameserver 198.51.100.53\n", "nameserver 192.0.2.1\n"
        directory, file = pathlib.Path("/run/etc"), pathlib.Path("/run/etc/resolv.conf")
        full = "mount -t tmpfs -o size=4k t /run/etc && head -c 4096 /dev/zero >/run/etc/ballast"
        for name, prepare, found, left in [
                ("missing", "true", asked, None), ("owned", f"printf '{ours}nameserver 1.2.3.4\n' >{file}", asked, None),
                ("empty", f": >{file}", asked, None), ("foreign", f"printf '{foreign}' >{file}", foreign, foreign),
                ("link", f"ln -s {RESOLV} {file}", asked, None),
                ("foreign link", f"printf '{foreign}' >/run/other.conf; ln -s /run/other.conf {file}", foreign, foreign),
                ("read-only", "mount -t tmpfs -o ro t /run/etc", None, None),
                ("full", full, None, None)]:
            with self.subTest(name):
                try:
                    directory.mkdir()
                    subprocess.run(["sh", "-c", prepare], check=True)
                    self.begin(resolvConf=str(file))
                    self.connect()
                    text = file.read_text(encoding="utf-8") if file.exists() else None
                    self.assertEqual(found and found in text and found, found)
                    self.assertEqual(file.is_symlink(), "link" in name)
                    self.assertEqual("Name servers: " in self.p.logged(), found != asked)
                    self.end()
                    self.assertEqual(file.read_text(encoding="utf-8") if file.exists() else None, left)
                finally:
                    self.doCleanups()
                    subprocess.run("umount /run/etc 2>/dev/null; rm -r /run/etc", shell=True, check=True)

    def test_the_program_resolvconf(self):
        for name, script, owner, fault in [
                ("it is there", RECORDS, "auto", None), ("it is wanted", RECORDS, "resolvconf", None), ("it is missing", None, "resolvconf", "No such file"),
                ("it fails", "echo no room; exit 1", "auto", "exit status 1 no room"),
                ("it hangs", "exec sleep 120", "auto", "exit status 9"), ("nobody", RECORDS, "none", None)]:
            with self.subTest(name):
                TOLD.write_text("", encoding="utf-8")
                PROGRAM.unlink(missing_ok=True)
                if script:
                    program(PROGRAM, script)
                try:
                    self.begin(resolvconf=str(PROGRAM), nameServers=owner)
                    self.connect()
                    recorded = script == RECORDS and owner != "none"
                    self.assertEqual(TOLD.read_text(encoding="utf-8"), ASKED if recorded else "")
                    self.assertFalse(RESOLV.exists())
                    if fault:
                        self.assertIn(fault, self.p.logged())
                    self.end()
                    self.assertEqual(TOLD.read_text(encoding="utf-8").splitlines()[4:], ["-d eth0.lumod"] if recorded else [])
                finally:
                    self.doCleanups()

    def test_a_change_while_the_program_runs(self):
        TOLD.write_text("", encoding="utf-8")
        program(PROGRAM, RECORDS.replace("0.3", "2"))
        self.begin(resolvconf=str(PROGRAM))
        self.connect()
        self.p.call("SetOffMode")
        self.p.call("SetNormalMode", "auto")
        self.p.wait("Connected", "eth0")
        self.assertEqual(TOLD.read_text(encoding="utf-8"), ASKED + "-d eth0.lumod\n" + ASKED)
        self.end()

    def test_a_static_server_with_its_scope(self):
        self.begin(serve=False)
        self.p.set("WiredIpSettings", {**STATIC, "Dns": "fe80::1%eth0 fe80::2"})
        self.connect()
        self.assertIn("\nnameserver fe80::1%eth0\nnameserver fe80::2%eth0\n", RESOLV.read_text(encoding="utf-8"))
        self.end()

    def connect(self):
        self.plug()
        self.p.call("SetNormalMode", "auto")
        self.p.wait("Connected", "eth0")


if __name__ == "__main__":
    network.enclose()
    unittest.main()
