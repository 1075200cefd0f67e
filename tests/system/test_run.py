#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""./run on a built tree: what a person gets from it, and what it leaves behind."""
import json, os, pathlib, pty, signal, subprocess, tempfile, unittest

from privatebus import SOURCE, until

RUN = str(SOURCE / "run")
LIMIT = 60  # seconds that anything here may take


class Device(unittest.TestCase):
    """A device of the test's own: its state, its runtime directory, its user's environment."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.home = pathlib.Path(temporary.name)
        self.home.chmod(0o755)
        self.runtime = self.home / "runtime"
        self.runtime.mkdir()
        self.state = self.home / "state"
        self.environment = {**os.environ, "XDG_RUNTIME_DIR": str(self.runtime)}
        self.run_line = [RUN, "--build", os.environ["ORVA_BUILD"], "--state", str(self.state)]

    def run_(self, *words, under=(), **more):
        return subprocess.run([*under, *self.run_line, *words], env=self.environment, text=True,
                              capture_output=True, timeout=LIMIT, **more)

    def out(self, *words, **more):
        result = self.run_(*words, **more)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def get(self, path, kind, **more):
        return json.loads(self.out("--fake", "orvactl", "--json", "get", path, **more))[kind]

    def start(self):
        """./run --fake without a command, on a terminal; returns when others can use it."""
        pid, terminal = pty.fork()
        if pid == 0:
            os.execve(RUN, [*self.run_line, "--fake"], self.environment)
        self.addCleanup(os.close, terminal)
        until(lambda: any(self.runtime.glob("orva-run.*/pid")), limit=LIMIT)
        return pid, terminal

    def programs(self):
        """The processes that belong to this device, whoever their parent is."""
        mark = f"unix:path={self.runtime}".encode()
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if mark in (process / "environ").read_bytes():
                    found.append((process / "comm").read_text().strip())
            except OSError:
                pass  # it ended, or it is another user's
        return found

    def assert_nothing_left(self):
        until(lambda: not self.programs(), limit=LIMIT)
        self.assertEqual(list(self.runtime.iterdir()), [])


class AWorkerOfOnesOwn(Device):
    def test_runs_beside_the_module(self):
        library = os.path.join(os.environ["ORVA_BUILD"], "lib", "libhost_test_worker.so")
        echo = self.out("--worker", library + '={"of": "its own&"}', "orvactl", "--json", "invoke", "test/echo", '{"i32": 7}')
        self.assertIn('"i32":7', echo)
        for words, said in [(library + "=[]", "no JSON object"), (library + "=none", "no JSON object"),
                            ("/none.so", "no library /none.so")]:
            refused = self.run_("--worker", words)
            self.assertEqual((refused.returncode, said in refused.stderr), (2, True), refused.stderr)


class TheCommands(unittest.TestCase):
    def test_say_how_they_are_used(self):
        for command in [file for place in (".", "tools", "fuzz") for file in (SOURCE / place).iterdir()
                        if file.is_file() and os.access(file, os.X_OK)]:
            with self.subTest(command.name):
                help_ = subprocess.run([command, "--help"], capture_output=True, timeout=LIMIT)
                self.assertEqual((help_.returncode, help_.stderr, bool(help_.stdout)), (0, b"", True))

    def test_tell_their_steps_and_what_a_failure_means(self):
        for line, told in [
                ("[3/94] Building CXX object x.o", "Building: 3/94"),
                ("fatal error: error writing to /tmp/x.s: No space left on device", "no room left"),
                ("E: Could not get lock /var/lib/dpkg/lock", "Another program is installing"),
                ("W: Failed to fetch http://x/  Unable to connect\nE: Unable to locate package g++", "mirror cannot be reached"),
                ("E: Unable to locate package g++", "Debian 12 and 13 have these"),
                ("CMake Error: CMAKE_CXX_COMPILER not set, after EnableLanguage", "no compiler that works"),
                ("-- The CXX compiler identification is GNU 12.2.0", "")]:
            with self.subTest(line), tempfile.NamedTemporaryFile() as log:
                ours, terminal = pty.openpty()
                script = f". '{SOURCE}/tools/progress.sh'; tell_steps Building '^.([0-9]+/[0-9]+)' $1; explain $1"
                subprocess.run(["bash", "-c", script, "bash", log.name], input=line, stderr=terminal, text=True, timeout=LIMIT)
                os.write(terminal, b".")
                said = os.read(ours, 4096).decode()
                self.assertIn(told, said)
                self.assertEqual(bool(told), len(said) > len("\r\x1b[K."), said)
                os.close(ours), os.close(terminal)


class ACommand(Device):
    def test_has_stdin_stdout_and_status_to_itself(self):
        result = self.run_("--fake", "sh", "-c", "cat; exit 7", input="what it reads")
        self.assertEqual((result.stdout, result.returncode), ("what it reads", 7), result.stderr)
        self.assert_nothing_left()

    def test_finds_the_running_device_and_leaves_it_running(self):
        pid, terminal = self.start()
        bus = self.out("sh", "-c", "echo $DBUS_SYSTEM_BUS_ADDRESS")
        self.assertEqual(self.out("sh", "-c", "echo $DBUS_SYSTEM_BUS_ADDRESS"), bus)
        self.out("busctl", "introspect", "org.orva.Host1", "/org/orva/Host1")
        self.assertNotEqual(self.run_("--fake", "true").returncode, 0, "other options, same device")
        os.write(terminal, b"\x03")
        os.waitpid(pid, 0)
        self.assert_nothing_left()


class TheDevice(Device):
    def test_only_records_what_rfkill_was_asked(self):
        self.assertEqual(self.out("--fake", "sh", "-c", 'cat "$ORVA_RFKILL_RECORD"'), "unblock all\n")

    def test_that_was_killed_takes_its_programs_along_and_its_directory_is_swept(self):
        pid, _ = self.start()
        os.kill(pid, signal.SIGKILL)
        os.waitpid(pid, 0)
        until(lambda: not self.programs(), limit=LIMIT)
        self.out("--fake", "true")
        self.assert_nothing_left()

    def test_says_where_it_cannot_write(self):
        self.state.touch()
        result = self.run_("--fake", "true")
        self.assertEqual((result.returncode, result.stderr.splitlines()[1:]), (1, []))
        self.assertIn(f"{self.state} cannot be written", result.stderr)

    def test_says_so_when_the_host_ends(self):
        result = self.run_("--fake", "sh", "-c", 'kill -KILL $(pgrep -P $PPID orva-host); sleep 60')
        self.assertEqual(result.returncode, 1)
        self.assertIn("ended by itself", result.stderr)
        self.assert_nothing_left()


@unittest.skipUnless(os.geteuid() == 0, "network namespaces are root's")
class TheFakeBackend(Device):
    def setUp(self):
        super().setUp()
        self.namespace = f"orva-run-{os.getpid()}"
        self.ip("netns", "add", self.namespace)
        self.addCleanup(self.ip, "netns", "del", self.namespace)
        self.inside = ["ip", "netns", "exec", self.namespace]

    @staticmethod
    def ip(*words):
        subprocess.run(["ip", *words], check=True)

    def test_reports_the_interface_of_the_default_route(self):
        for line in ("link add up0 type veth peer name far0", "link set far0 up", "link set lo up",
                     "link set up0 address 02:00:00:aa:bb:cc up",
                     "address add 192.0.2.7/24 dev up0",
                     "address add 2001:db8::7/64 dev up0 nodad",
                     "route add default via 192.0.2.1"):
            self.ip("-n", self.namespace, *line.split())
        info = self.get("network/info", "networkInfo", under=self.inside)
        self.assertEqual(info["wired"]["mac"], "02:00:00:AA:BB:CC")
        self.assertEqual(sorted((a["ip"], a["prefix"]) for a in info["wired"]["addresses"]),
                         [("192.0.2.7", 24), ("2001:db8::7", 64)])
        self.assertEqual(self.get("network/webserver/url", "string", under=self.inside),
                         "http://192.0.2.7:80/")

    def test_falls_back_to_loopback_without_a_default_route(self):
        info = self.get("network/info", "networkInfo", under=self.inside)
        self.assertEqual(info["wired"]["mac"], "00:01:02:03:04:05")
        self.assertEqual([a["ip"] for a in info["wired"]["addresses"]], ["127.0.0.1", "::1"])
        self.assertEqual([g["ip"] for g in info["gateways"]], ["10.0.0.1"])


if __name__ == "__main__":
    unittest.main()
