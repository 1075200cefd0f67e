"""orvactl against the host: exit statuses, values, machine output, waiting, completion."""
import getpass, json, os, pathlib, shutil, subprocess, tempfile, threading, time, unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
NOBODY = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--inh-caps=+dac_read_search",
          "--ambient-caps=+dac_read_search"]
DEEP = '{"a":' * 14 + "1" + "}" * 14
LIMIT = 30  # seconds that anything here may take
MAXIMUM, SSID, AIRPLANE, PROFILE, CRITERIA = ("settings/network/" + name for name in (
    "max-wifi-networks", "softap-default-ssid", "airplane-mode", "current-profile", "wifi-restart-criteria"))


class Device:
    """A bus with the installed policy, and the host on it."""

    def __init__(self, workers=(), activate=()):
        self.directory = pathlib.Path(tempfile.mkdtemp(prefix="orvactl-test-"))
        self.directory.chmod(0o755)
        self.children = []
        self.environment = {
            **os.environ, "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.directory}/bus", "NO_COLOR": "1",
            "ORVA_MOUNT_TABLE": str(SOURCE / "examples/mounts-nfs"), "ORVA_RFKILL_RECORD": str(self.directory / "rfkill"),
            "PATH": f"{SOURCE}/tools/stand-ins:{pathlib.Path(os.environ['ORVACTL']).parent}:{os.environ['PATH']}:/usr/sbin"}
        (self.directory / "system.d").mkdir()
        for name in "private-bus.conf", "system.d/org.orva.Host1.conf":
            template = SOURCE / "dbus" / (pathlib.Path(name).name + ".in")
            (self.directory / name).write_text(template.read_text().replace("@ORVA_USER@", getpass.getuser()))
        (self.directory / "host.json").write_text(json.dumps({"workers": workers, "activate": activate}))
        self.log = open(self.directory / "log", "w+", encoding="utf-8")
        self.start("dbus-daemon", "--nofork", "--nopidfile", f"--config-file={self.directory}/private-bus.conf",
                   "--address=" + self.environment["DBUS_SYSTEM_BUS_ADDRESS"])
        self.until(lambda: (self.directory / "bus").exists())
        self.host = self.start(os.environ["HOST"], "--config", f"{self.directory}/host.json", "--log-level", "trace",
                               "--state-dir", f"{self.directory}/state")
        self.until(lambda: self.run("orvactl nodes").returncode == 0)

    def start(self, *command):
        self.children.append(subprocess.Popen(command, env=self.environment, stdout=self.log, stderr=self.log))
        return self.children[-1]

    def until(self, condition):
        end = time.monotonic() + LIMIT
        while not condition():
            if time.monotonic() > end:
                self.log.seek(0)
                raise AssertionError("waited in vain; the log says: " + self.log.read())
            time.sleep(0.02)

    def run(self, command, stdin="", under=()):
        return subprocess.run([*under, "bash", "-c", command], env=self.environment, input=stdin, text=True,
                              capture_output=True, timeout=LIMIT, check=False)

    def close(self):
        for child in reversed(self.children):
            child.kill()
            child.wait()
        self.log.close()
        shutil.rmtree(self.directory)


class Nodes(unittest.TestCase):
    """The host without a worker: its settings and stand-ins are nodes enough."""

    @classmethod
    def setUpClass(cls):
        cls.device = Device()
        cls.addClassCleanup(cls.device.close)

    def ends(self, status, command, **more):
        done = self.device.run(command, **more)
        self.assertEqual(done.returncode, status, f"{command}: {done.stderr}")
        self.assertEqual(bool(done.stderr), status != 0, f"{command}: a fault, and only a fault, has a text")
        return done.stdout

    def json(self, command):
        return [json.loads(line) for line in self.ends(0, command).splitlines()]

    def test_exit_status_tells_what_happened(self):
        for status, command in [
                (0, f"orvactl get {MAXIMUM}"),
                (2, "orvactl"), (2, "orvactl bogus"), (2, "orvactl get"), (2, "orvactl wol maybe"),
                (2, "orvactl wait network/state"), (2, "orvactl wifi scan --wait 0"),
                (2, f"orvactl set {MAXIMUM} many"), (2, f"orvactl set {MAXIMUM} '{{'"),
                (2, f"orvactl set {SSID} '\"\\u0000\"'"), (2, f"orvactl set {SSID} '{{\"string\":\"\\ud800\"}}'"),
                (2, f"orvactl set {SSID} $'\\xff'"), (2, f"orvactl set {MAXIMUM} '{'[' * 20}{']' * 20}'"),
                (2, f"orvactl set {MAXIMUM} '{DEEP}'"),
                (2, "orvactl invoke power/target/request 1"),
                (3, f"orvactl wait {MAXIMUM}==77 --timeout 0.2"),
                (4, f"orvactl set {MAXIMUM} '{{\"i32\":5000000000}}'"), (4, f"orvactl set {AIRPLANE} '{{\"bool\":3}}'"),
                (4, "orvactl set webserver/port 1"), (4, "orvactl get wifi-restart/restart"),
                (6, "orvactl get no/such"), (6, "orvactl set no/such 1"), (6, "orvactl invoke no/such"),
                (6, "orvactl rows no/such"), (6, "orvactl watch no/such"), (6, "orvactl status"),
                (8, "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nowhere orvactl nodes"), (8, "orvactl world plug")]:
            with self.subTest(command):
                self.ends(status, command)

    @unittest.skipUnless(os.geteuid() == 0, "only root can become somebody else")
    def test_the_bus_policy_refuses_a_stranger(self):
        self.ends(5, "orvactl nodes", under=NOBODY)

    def test_words_and_json_become_typed_values(self):
        for path, text, value in [
                (MAXIMUM, "7", {"i32": 7}), (MAXIMUM, "-3", {"i32": -3}), (MAXIMUM, '{"i32":9}', {"i32": 9}),
                (AIRPLANE, "on", {"bool": True}), (AIRPLANE, "false", {"bool": False}),
                (SSID, "7", {"string": "7"}), (SSID, '"a b"', {"string": "a b"}), (SSID, "Café 😀", {"string": "Café 😀"}),
                (SSID, "true", {"string": "true"}), (SSID, '{"string":"x"}', {"string": "x"})]:
            with self.subTest(text):
                self.ends(0, f"orvactl set {path} '{text}'")
                self.assertEqual(self.json(f"orvactl --json get {path}"), [value])
                self.ends(0, f"orvactl --json get {path} | orvactl set {path} -")
        self.ends(0, f"orvactl set {SSID} -", stdin="from stdin\n")
        self.assertEqual(self.ends(0, f"orvactl get {SSID}"), "from stdin\n")

    def test_integers_travel_as_32_bits(self):
        self.ends(0, f"orvactl set {PROFILE} '{{\"networkProfile\":{{\"type\":2,\"x\":5000000000}}}}'")
        raw = self.device.run(f"busctl --json=short call org.orva.Host1 /org/orva/Host1 org.orva.Host1 GetValue s {PROFILE}")
        fields = json.loads(raw.stdout)["data"][0]["networkProfile"]["data"]
        self.assertEqual((fields["type"]["type"], fields["x"]["type"]), ("i", "x"))

    def test_a_person_sees_no_control_characters(self):
        self.ends(0, f"orvactl set {SSID} '\"\\u001b[31mred\"'")
        self.assertEqual(self.ends(0, f"orvactl get {SSID}"), "\\u{1b}[31mred\n")

    def test_machine_output_is_one_document_a_line(self):
        nodes = {node["path"]: node for node in self.json("orvactl nodes --json")}
        self.assertEqual(nodes["webserver/port"]["kind"], "value")
        self.assertTrue(nodes["webserver/port"]["readOnly"])
        self.ends(0, "orvactl invoke power/target/request '{\"target\":1}'")
        self.assertEqual(self.json("orvactl --json get power/target"), [{"i32": 1}])
        self.assertTrue(all("id" in row for row in self.json("orvactl --json rows power/requests")))

    def test_watch_and_wait_follow_a_change(self):
        self.ends(0, f"orvactl set {MAXIMUM} 1")
        watcher = subprocess.Popen(["orvactl", "--json", "watch", MAXIMUM], env=self.device.environment, text=True,
                                   stdout=subprocess.PIPE)
        self.addCleanup(watcher.stdout.close)
        self.addCleanup(watcher.wait)
        self.addCleanup(watcher.kill)
        self.assertEqual(json.loads(watcher.stdout.readline()), {"path": MAXIMUM, "value": {"i32": 1}})
        later = threading.Timer(0.3, self.ends, (0, f"orvactl set {MAXIMUM} 2"))
        later.start()
        self.ends(0, f"orvactl wait {MAXIMUM}==2 --timeout {LIMIT}")
        later.join()
        self.assertEqual(json.loads(watcher.stdout.readline()), {"path": MAXIMUM, "value": {"i32": 2}})

    def test_a_map_is_waited_for_by_the_fields_named(self):
        self.ends(0, "orvactl watchdog set --interval 20 --threshold 3 --path wifi-restart/restart")
        self.ends(0, "orvactl watchdog set --threshold 4")
        self.ends(0, f"orvactl wait '{CRITERIA}=={{\"wifiRestartCriteria\":{{\"checkIntervalMs\":20000}}}}' --timeout 1")
        self.ends(3, f"orvactl wait '{CRITERIA}=={{\"wifiRestartCriteria\":{{\"other\":1}}}}' --timeout 0.1")
        self.assertIn("every 20 s, restarts through wifi-restart/restart after 4", self.ends(0, "orvactl watchdog status"))

    def test_completion_knows_commands_and_live_nodes(self):
        for words, expected in [
                ("w", ["wifi", "wol", "watchdog", "watch", "wait", "world"]), ("airplane ''", ["on", "off"]),
                ("get power/", ["power/resource/wifi", "power/target"]), ("rows ''", ["power/modules", "power/requests"]),
                ("invoke wifi", ["wifi-restart/restart"]), ("nodes --kind r", ["rows"]), ("get --j", ["--json"])]:
            with self.subTest(words):
                done = self.ends(0, f'source "$COMPLETION"; COMP_WORDS=(orvactl {words}); COMP_CWORD=$((${{#COMP_WORDS[@]}}-1))\n'
                                    '_orvactl; printf "%s\\n" "${COMPREPLY[@]}"')
                self.assertEqual(done.split(), expected)

    def test_every_command_is_in_the_manual(self):
        manual = self.ends(0, "orvactl --generate man")
        for command in "status", "network start", "wifi connect", "wifi wps pbc", "softap request", "world ap add":
            self.assertIn(f"\\fB{command}\\fP", manual)


class LostHost(unittest.TestCase):
    def test_a_host_that_leaves_ends_who_waits_for_it(self):
        device = Device()
        self.addCleanup(device.close)
        killer = threading.Timer(0.5, device.host.kill)
        killer.start()
        done = device.run(f"orvactl wait {MAXIMUM}==77")
        killer.join()
        self.assertEqual((done.returncode, bool(done.stderr)), (8, True))


if __name__ == "__main__":
    unittest.main()
