# SPDX-License-Identifier: Apache-2.0
"""orvactl against the host: exit statuses, values, machine output, waiting, completion."""
import json, os, pathlib, pty, re, select, signal, subprocess, termios, threading, time, unittest

from privatebus import BUILD, LIMIT, PrivateBus

NOBODY = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--inh-caps=+dac_read_search",
          "--ambient-caps=+dac_read_search"]
DEEP = '{"a":' * 14 + "1" + "}" * 14
MAXIMUM, SSID, AIRPLANE, RADIOS, PROFILE, BEFORE, CRITERIA = ("settings/network/" + name for name in (
    "max-wifi-networks", "softap-default-ssid", "airplane-mode", "airplane-mode-type", "current-profile", "rollback-profile",
    "wifi-restart-criteria"))

STAND_IN = """import sys, time, dbus, dbus.mainloop.glib, dbus.service; from gi.repository import GLib
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
class Host(dbus.service.Object):
    @dbus.service.method("org.freedesktop.DBus.Properties", "ss", "v")
    def Get(self, interface, name): return sys.argv[1]
    @dbus.service.method("org.orva.Host1", "", f"a({sys.argv[2]})")
    def ListNodes(self): return [("a", "value", "", "default", True, "string")[:len(sys.argv[2])]]
    @dbus.service.signal("org.orva.Host1", "sa{sv}")
    def ValueChanged(self, path, value): pass
    def turn(self, state): Host.info = {"networkInfo": dbus.Dictionary({"state": state}, "sv")}; self.ValueChanged("network/info", Host.info)
    @dbus.service.method("org.orva.Host1", "s", "a{sv}")
    def GetValue(self, path):
        if path == "secret": raise dbus.DBusException("no", name="org.orva.Error.AccessDenied")
        return Host.info if path == "network/info" else {"networkProfile": dbus.Dictionary({"wireless": dbus.Dictionary({"ssid": "Known", "key": "****"}, "sv")}, "sv")}
    @dbus.service.method("org.orva.Host1", "sa{sv}", "a{sv}", async_callbacks=("done", "failed"))
    def Invoke(self, path, value, done, failed):
        print(path, flush=True); Host.asked = Host.asked + 1
        if path in ("network/restart", "network/profile/rollback", "network/profile/restore-backup"): done({}); self.turn(1)
        elif path == "network/wps/pbc" and Host.wps.pop(0): time.sleep(0.5); failed(dbus.DBusException("busy", name="org.orva.Error.Networking"))
        elif path == "network/wireless/rssi": self.turn(0); done({}); GLib.timeout_add(1000, self.turn, 1)
        elif Host.asked == 2 or path == "network/wps/cancel": done({})
    asked, wps, info = 0, [True, False], {"networkInfo": dbus.Dictionary({"state": 0, "wirelessNetworks": [dbus.Dictionary({"ssid": "Else", "credentialsSuspect": True}, "sv")]}, "sv")}
host = Host(dbus.service.BusName("org.orva.Host1", dbus.SystemBus()), "/org/orva/Host1"); print(flush=True)
GLib.MainLoop().run()"""


class Device(PrivateBus):
    """A bus with the host on it, over the daemon that plays the world, else the backend that configures nothing."""

    def __init__(self, world=None, **configuration):
        super().__init__(DEVICE_BACKEND="lumod" if world else "fake", NO_COLOR="1")
        if world:
            self.environment["ORVA_LUMOD_WORLD"] = self.write("world.json", json.dumps(world))
        self.write("host.json", json.dumps(configuration))
        self.start_bus()
        self.bus = self.children[-1]
        self.start_host()

    def start_host(self):
        super().start_host(log_level="trace", node="webserver/port")

    def shell(self, command, stdin="", under=()):
        return self.run(*under, "bash", "-c", command, input=stdin)


class WithDevice(unittest.TestCase):
    configuration, world = {}, None

    @classmethod
    def setUpClass(cls):
        cls.device = Device(cls.world, **cls.configuration)
        cls.addClassCleanup(cls.device.close)

    def ends(self, status, command, **more):
        done = self.device.shell(command, **more)
        self.assertEqual(done.returncode, status, f"{command}: {done.stderr}")
        self.assertEqual(bool(done.stderr), status != 0, f"{command}: a fault, and only a fault, has a text")
        return done.stderr if status else done.stdout

    def json(self, command):
        documents = [json.loads(line) for line in self.ends(0, command).splitlines()]
        self.assertEqual({document.pop("schema") for document in documents if "orvactl" in command} - {1}, set(), command)
        return documents

    def get(self, path, kind):
        return self.json(f"orvactl --json get {path}")[0][kind]

    def connect_by_prompt(self, ssid, key, wait=0, pause=0):
        pid, terminal = pty.fork()
        if pid == 0:
            os.execvpe("orvactl", ["orvactl", "wifi", "connect", ssid, "--wait", str(wait)], self.device.environment)
        self.addCleanup(os.close, terminal)
        shown = b""
        while b"Key of" not in shown:
            shown += os.read(terminal, 100)
        self.device.until(lambda: not termios.tcgetattr(terminal)[3] & termios.ECHO)
        time.sleep(pause)
        os.write(terminal, key.encode() + b"\n")
        shown += os.read(terminal, 100)
        self.assertEqual(os.waitpid(pid, 0)[1], 0)
        self.assertNotIn(key.encode(), shown)


def complete(test, words, line=None):
    typed = "${COMP_WORDS[*]}" if line is None else "orvactl " + line
    return test.ends(0, f'source {BUILD}/src/ctl/orvactl; COMP_WORDS=(orvactl {words}); COMP_CWORD=$((${{#COMP_WORDS[@]}}-1)); COMP_LINE="{typed}"\n'
                        '_orvactl; printf "%s\\n" "${COMPREPLY[@]}"').strip("\n").split("\n")


class Nodes(WithDevice):
    """The host without a worker: its settings and stand-ins are nodes enough."""

    def test_exit_status_tells_what_happened(self):
        for status, command in [
                (0, f"orvactl get {MAXIMUM}"), (1, "orvactl nodes >/dev/full"), (1, "orvactl nodes >&-"), (1, "orvactl --help >/dev/full"),
                (1, "orvactl --json get webserver/port >&-"), (0, "orvactl get webserver/port <&-"),
                (2, f"orvactl wait '{SSID}=={{\"strin\":\"x\"}}'"), (2, f"orvactl wait '{SSID}=={{\"i32\":1}}'"),
                (2, f"orvactl wait '{MAXIMUM}=={{\"i32\":\"x\"}}'"), (2, f"orvactl wait '{CRITERIA}=={{\"checkIntervalMs\":1}}'"), (2, "orvactl"), (2, "orvactl bogus"), (2, "orvactl get"),
                (2, "orvactl wait ==1"), (2, f"head -c 1100000 /dev/zero | tr '\\0' a | orvactl set {SSID} -"), (2, "orvactl wol maybe"), (2, "orvactl wait network/state"), (2, "orvactl wifi scan --wait 0"),
                (2, f"orvactl set {MAXIMUM} many"), (2, f"orvactl set {RADIOS} some"), (2, f"orvactl set {RADIOS} 2"), (2, f"orvactl set {MAXIMUM} '{{'"),
                (2, f"orvactl set {SSID} '\"\\u0000\"'"), (2, f"orvactl set {SSID} '{{\"string\":\"\\ud800\"}}'"),
                (2, f"orvactl set {SSID} $'\\xff'"), (2, f"orvactl set {MAXIMUM} '{'[' * 20}{']' * 20}'"),
                (2, f"orvactl set {MAXIMUM} '{DEEP}'"), (2, "orvactl invoke power/target/request 1"),
                (3, f"orvactl wait {MAXIMUM}==77 --timeout 0.2"),
                (4, f"orvactl set {MAXIMUM} '{{\"i32\":5000000000}}'"),
                (4, f"orvactl set {AIRPLANE} '{{\"bool\":3}}'"), (4, "orvactl set webserver/port 1"),
                (4, "orvactl get wifi-restart/restart"), (6, "orvactl get no/such"), (6, "orvactl set no/such 1"),
                (6, "orvactl invoke no/such"), (6, "orvactl rows no/such"), (6, "orvactl watch no/such"),
                (6, "orvactl status"), (8, "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nowhere orvactl nodes")]:
            with self.subTest(command):
                self.ends(status, command)

    def test_a_mistake_is_told_with_what_is_right(self):
        time_fault = "takes seconds, more than 0"
        for status, text, command in [
                (2, 'no command "wifi conect". Did you mean "wifi connect"?', "wifi conect x"), (2, 'Did you mean "status"?', "sttaus"),
                (2, 'no command "xyzzy".\n', "xyzzy"), (2, 'no command "sttaus"', "--terse SSID sttaus"),
                (2, 'Did you mean "--hidden"?', "--color always wifi connect x --hiden"), (2, "too many arguments", "wifi connect Home hunter2secret"), (2, "wifi wps --help", "wifi wps"), (2, 'Did you mean "--json"?', "--jsn nodes"),
                (2, "--key-file FILE", "wifi connect Home --key secret"), (2, "--key-file FILE", "wifi connect Home --key=secret"),
                (2, '"0" is no time', "get x --wait 0"), (2, time_fault, "get x --wait -1"), (2, time_fault, "get x --wait abc"), (2, time_fault, "get x --wait inf"),
                (6, 'Did you mean "webserver/port"?', "get webserver/prot"), (6, 'Did you mean "power/target"?', "watch power/targt"), (6, 'node "x".\n', "rows x"),
                (4, '"orvactl invoke wifi-restart/restart"', "get wifi-restart/restart"), (4, '"orvactl rows power/modules"', "get power/modules"),
                (4, '"orvactl get webserver/port"', "invoke webserver/port"), (4, "wrong-kind: power/target is a value", "rows power/target")]:
            with self.subTest(command):
                done = self.device.shell("orvactl " + command)
                self.assertEqual((done.returncode, text in done.stderr, "secret" in done.stderr), (status, True, False), done.stderr)

    @unittest.skipUnless(os.geteuid() == 0, "only root can become somebody else")
    def test_the_bus_policy_refuses_a_stranger(self):
        self.assertIn("netdev may", self.ends(5, "orvactl nodes", under=NOBODY))

    def test_words_and_json_become_typed_values(self):
        for path, text, value in [
                (MAXIMUM, "7", {"i32": 7}), (MAXIMUM, "-3", {"i32": -3}), (MAXIMUM, '{"i32":9}', {"i32": 9}),
                (AIRPLANE, "on", {"bool": True}), (AIRPLANE, "false", {"bool": False}),
                (RADIOS, "wifiOnly", {"airplaneModeType": 1}), (RADIOS, "0", {"airplaneModeType": 0}),
                (RADIOS, '{"airplaneModeType":"wifionly"}', {"airplaneModeType": 1}), (SSID, "7", {"string": "7"}), (SSID, '"a b"', {"string": "a b"}), (SSID, "Café 😀", {"string": "Café 😀"}),
                (SSID, "true", {"string": "true"}), (SSID, '{"string":"x"}', {"string": "x"})]:
            with self.subTest(text):
                self.ends(0, f"orvactl set {path} '{text}'")
                self.assertEqual(self.json(f"orvactl --json get {path}"), [value])
                self.ends(0, f"orvactl --json get {path} | orvactl set {path} -")
        self.ends(0, f"orvactl set {SSID} -", stdin="from\x1bstdin\n")
        self.assertEqual(self.ends(0, f"orvactl get {SSID}"), "from\\u{1b}stdin\n")  # harmless on a terminal

    def test_no_text_rules_the_terminal(self):
        watcher = self.device.start("orvactl", "monitor", CRITERIA, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        for stream in watcher.stdout, watcher.stderr:
            self.addCleanup(stream.close)
        watcher.stderr.readline()
        evil = json.dumps("\u009b\u202e\u001b")
        self.ends(0, f"""orvactl set {CRITERIA} '{{"wifiRestartCriteria":{{"a":[{{"ssid":{evil}}}],{evil}:{evil}}}}}'""")
        shown = "".join(watcher.stdout.readline() for _ in range(2))
        for command in f"get {CRITERIA}", f"--json get {CRITERIA}", f"watch {CRITERIA} & sleep 0.3; kill $!":
            shown += self.ends(0, "orvactl " + command)
        self.assertEqual([character for character in shown if not character.isprintable() and character != "\n"], [])
        self.assertIn(r"\u009b\u202e\u001b", shown)

    def test_integers_travel_as_32_bits(self):
        self.ends(0, f"orvactl set {PROFILE} '{{\"networkProfile\":{{\"type\":2,\"x\":5000000000}}}}'")
        raw = self.json(f"busctl --json=short call org.orva.Host1 /org/orva/Host1 org.orva.Host1 GetValue s {PROFILE}")
        fields = raw[0]["data"][0]["networkProfile"]["data"]
        self.assertEqual((fields["type"]["type"], fields["x"]["type"]), ("i", "x"))

    def test_machine_output_is_one_document_a_line(self):
        nodes = {node["path"]: node for node in self.json("orvactl nodes --json")}
        self.assertEqual(nodes["webserver/port"]["kind"], "value")
        self.assertTrue(nodes["webserver/port"]["readOnly"])
        self.assertEqual((nodes["webserver/port"]["type"], nodes[RADIOS]["type"]), ("i32", "airplaneModeType"))
        self.ends(0, "orvactl invoke power/target/request '{\"target\":1}'")
        self.assertEqual(self.json("orvactl --json get power/target"), [{"i32": 1}])
        self.assertTrue(all("id" in row for row in self.json("orvactl --json rows power/requests")))

    def test_watch_and_wait_follow_a_change(self):
        self.ends(0, f"orvactl set {MAXIMUM} 1")
        watcher = self.device.start("orvactl", "--json", "watch", MAXIMUM, stdout=subprocess.PIPE)
        self.addCleanup(watcher.stdout.close)
        self.assertEqual(json.loads(watcher.stdout.readline()), {"path": MAXIMUM, "schema": 1, "value": {"i32": 1}})
        threading.Timer(0.3, self.device.shell, [f"orvactl set {SSID} {time.monotonic()}; orvactl set {MAXIMUM} 2"]).start()
        self.ends(0, f"orvactl wait {MAXIMUM}==2 --timeout {LIMIT}")
        self.assertEqual(json.loads(watcher.stdout.readline()), {"path": MAXIMUM, "schema": 1, "value": {"i32": 2}})

    def test_a_change_has_its_type(self):
        self.ends(0, f"orvactl set {MAXIMUM} 1; orvactl set {RADIOS} 0")
        watcher = self.device.start("orvactl", "--json", "monitor", "settings/network/", stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        for stream in watcher.stdout, watcher.stderr:
            self.addCleanup(stream.close)
        watcher.stderr.readline()
        self.ends(0, f"orvactl set {MAXIMUM} 2; orvactl set {RADIOS} wifiOnly; orvactl set {CRITERIA} '{{\"wifiRestartCriteria\":{{\"a\":[true]}}}}'")
        changes = [json.loads(watcher.stdout.readline()) for _ in range(3)]
        self.assertEqual([[change[name] for name in ("path", "field", "from", "to")] for change in changes],
                         [[MAXIMUM, "", 1, 2], [RADIOS, "", 0, 1], [CRITERIA, "a[0]", None, True]])

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
                ("invoke wifi", ["wifi-restart/restart"]), ("nodes --kind r", ["rows"]), ("get --j", ["--json"]),
                ("--v", ["--version"]), (f"set {RADIOS} ''", ["allRadios", "wifiOnly"]), ("set network/wake ''", [""]), ("wifi wps p", ["pbc", "pin"]),
                ("--color ''", ["auto", "always", "never"]), ("wait power/t", ["power/target"]), ("wifi connect x --key-file ''", [""])]:
            with self.subTest(words):
                self.assertEqual(complete(self, words), expected)


class Network(WithDevice):
    """The network manager on its fake backend."""

    configuration = {"workers": [{"library": str(BUILD / "lib/libnetworking.so")}], "activate": ["network/start"]}

    def setUp(self):
        self.device.until(lambda: self.get("network/state/connected", "bool"))

    def stored(self):
        return [(network["ssid"], network["key"]) for network in self.get(PROFILE, "networkProfile")["wirelessNetworks"]]

    def test_a_key_comes_by_file_stdin_or_prompt_and_stays_secret(self):
        key = self.device.directory / "key"
        key.write_text("by-a-file\n", encoding="utf-8")
        self.ends(0, f"orvactl wifi connect First --key-file {key} --wait 0")
        self.ends(0, "orvactl wifi connect Second --key-file - --wait 0", stdin="by-stdin-")
        self.ends(0, "orvactl wifi connect First --wait 0")
        self.connect_by_prompt("Third", "by-prompt")
        self.assertEqual(self.stored(), [("Third", "by-prompt"), ("First", "by-a-file"), ("Second", "by-stdin-")])
        published = self.get("network/profile", "networkProfile")["wirelessNetworks"]
        self.assertEqual({network["key"] for network in published}, {"****"})
        for secret in "by-a-file", "by-stdin-", "by-prompt":
            self.assertNotIn(secret, self.device.logged())
        self.ends(0, "orvactl wifi forget First")
        self.assertNotIn("First", self.ends(0, "orvactl wifi known"))

    def test_an_empty_key_is_an_error_and_open_is_said(self):
        self.ends(0, "orvactl wifi connect Café --key-file - --wait 0", stdin="long enough")
        for command in "connect Café --key-file -", "connect Café --open --ask-key", "connect Café --open --key-file -":
            self.ends(2, f"orvactl wifi {command} --wait 0", stdin="\n")
        self.assertIn(("Café", "long enough"), self.stored())
        self.ends(0, "orvactl wifi connect Café --open --wait 0")
        self.assertIn(("Café", ""), self.stored())
        open_ones = [row["networkScanResult"]["ssid"] for row in self.json("orvactl --json wifi scan")
                     if not row["networkScanResult"].get("encryption")]
        for ssid in open_ones[:1]:  # what the backend finds is random
            self.ends(0, f"orvactl wifi connect '{ssid}' --wait 0")
            self.assertIn((ssid, ""), self.stored())

    def test_columns_stand_below_each_other(self):
        for ssid in "日本", "Cafe\u0301", " x ", "😀":
            self.ends(0, f"orvactl wifi connect '{ssid}' --key-file - --wait 0", stdin="long enough")
        rows = self.ends(0, "orvactl wifi known").splitlines()
        for row in "😀             WPA-PSK", r"\u{20}x\u{20}  WPA-PSK", "Cafe\u0301           WPA-PSK", "日本           WPA-PSK":
            self.assertIn(row, [row.partition("  connected")[0] for row in rows])

    def test_an_edit_leaves_what_it_does_not_name(self):
        self.ends(0, """orvactl invoke network/profile/set '{"networkProfile":{"wired":{"ours":1},"more":[1]}}'""")
        self.ends(0, "orvactl wifi connect Home --key-file - --wait 0", stdin="long enough")
        self.ends(0, "orvactl profile set --ip 10.0.0.9 --netmask 255.255.255.0 --dns 9.9.9.9,1.1.1.1 --wait 0")
        profile = self.get(PROFILE, "networkProfile")
        wired = dict(dhcp=False, ip="10.0.0.9", netmask="255.255.255.0", ours=1, dns=["9.9.9.9", "1.1.1.1"])
        self.assertEqual((profile["wired"], profile["more"], self.stored()[0]), (wired, [1], ("Home", "long enough")))

    def test_what_the_network_refuses_is_a_failure_with_its_text(self):
        for text, command in [("Network is not configured", "orvactl wifi forget Nowhere"),
                              ("8 to 63 characters", "orvactl wifi connect Nowhere --key-file - --wait 0 <<<short"),
                              ("already started", "orvactl network start"),
                              ("exactly 8 digits", "orvactl wifi wps pin 1234567"),
                              ("hold without timeout", "orvactl softap request me --hold")]:
            with self.subTest(command):
                done = self.device.shell(command)
                self.assertEqual((done.returncode, text in done.stderr, "router" in done.stderr), (4, True, False), done.stderr)

    def test_enumerations_are_words_in_and_out(self):
        self.assertEqual(self.ends(0, "orvactl get network/state"), "connected\n")
        self.assertEqual(self.get("network/state", "networkState"), 1)
        self.assertIn('"state": "connected"', self.ends(0, "orvactl get network/info"))
        self.assertEqual(self.ends(0, "orvactl watch network/state & sleep 0.3; kill $!"), 'network/state {"networkState":"connected"}\n')
        for wanted in "state==connected", "state==1", """info=={"networkInfo":{"wired":{"state":"connected"}}}""":
            self.ends(0, f"orvactl wait 'network/{wanted}' --timeout {LIMIT}")
        self.ends(0, "orvactl invoke network/softap/revoke me")  # takes a record or a word
        for number, command in [(1, "profile set --type wired --wait 0"), (0, "profile set --type 0 --wait 0"),
                                (2, """invoke network/profile/set '{"networkProfile":{"type":"wireless"}}'"""), (0, "profile set --type auto --wait 0")]:
            self.ends(0, "orvactl " + command)
            self.assertEqual(self.get(PROFILE, "networkProfile")["type"], number)
        for words, command in [("disconnected, connected, disconnecting.", "wait network/state==up"), ("{auto,wired,wireless", "profile set --type 3"),
                               ("auto, wired, wireless.", """invoke network/profile/set '{"networkProfile":{"type":"up"}}'""")]:
            done = self.device.shell("orvactl " + command)
            self.assertEqual((done.returncode, words in done.stderr), (2, True), done.stderr)

    def test_a_scan_is_a_table_by_signal(self):
        levels = [row["networkScanResult"]["signal"] for row in self.json("orvactl --json wifi scan")]
        self.assertEqual(levels, sorted(levels, reverse=True))
        self.assertEqual(len(self.ends(0, "orvactl wifi list").splitlines()), len(levels) + 1)

    def test_actions_reach_the_state_that_they_ask_for(self):
        self.ends(0, f"orvactl airplane on --wait {LIMIT}")
        self.assertIn("Airplane mode on", self.ends(0, "orvactl status"))
        self.ends(0, f"orvactl airplane off --wait {LIMIT} && orvactl network restart --wait {LIMIT}")

    def test_settings_that_cannot_be_stored_are_told(self):
        state = self.device.directory / "state"
        away = state.rename(state.with_name("away"))
        self.ends(4, f"orvactl set {MAXIMUM} 7")
        self.assertIn("Settings      not stored: No such file or directory", self.ends(0, "orvactl status"))
        away.rename(state)
        self.ends(0, f"orvactl set {MAXIMUM} 8")
        self.assertNotIn("Settings", self.ends(0, "orvactl status"))


class Joining(WithDevice):
    """Actions that wait for their result, in a small world."""

    configuration = {**Network.configuration, "settings": {"settings/network/softap-auto-enabled": {"bool": False}}}
    world = {"timeFactor": 0.02, "cable": {"plugged": False, "network": "home"}, "networks": {"home": {"subnet": "192.168.178.0/24"}, "mute": {"dhcp": False}},
             "accessPoints": [{"ssid": "Home", "security": "wpa-psk", "key": "correct horse", "wps": True, "network": "home"},
                              {"ssid": "Mute", "network": "mute"}, {"ssid": "Attic", "security": "wep"},
                             {"ssid": "Work", "security": "enterprise", "signal": -90}, {"ssid": "$(touch evaluated) `touch e`:", "signal": -80}]}

    def does(self, command, status=0, reason="", stdin=""):
        done = self.device.shell("orvactl " + command, stdin)
        self.assertEqual((done.returncode, f"orvactl: {reason}" in done.stderr if reason else not done.stderr), (status, True), done.stderr)

    def known(self):
        return [network["ssid"] for network in self.get("network/profile", "networkProfile").get("wirelessNetworks", [])]

    def test_it_ends_with_its_reason_and_goes_back(self):
        for status, reason, command in [(10, "not-in-range: ", "Nowhere"), (4, "unsupported: The security of \"Attic\" is WEP", "Attic"), (11, "key-refused: ", "Home --key-file -"), (12, "no-address: ", "Mute --wait 1 --json >/dev/full")]:
            self.does("wifi connect " + command, status, reason, stdin="mistaken key")
            self.assertEqual(self.known(), [], command)
        self.assertEqual(self.ends(0, "orvactl --terse SSID,SECURITY wifi list | grep sup"), "Attic:WEP (not supported)\nWork:enterprise (not supported)\n")
        for command in "network restart", "wifi reconnect", "profile set --type wired", "profile set --type wireless", "profile set --type auto":
            self.does(command + " --wait 0.5", 17, "no-network: ")
        self.connect_by_prompt("Home", "correct horse", wait=2, pause=2)
        self.assertEqual(self.get("network/info", "networkInfo")["wireless"]["ssid"], "Home")
        self.does("wifi connect Mute --wait 2", 12, "no-address: ")
        self.does("wifi connect Home --wait 10")
        waiter = self.device.start("orvactl", "wifi", "connect", "Mute")
        self.device.until(lambda: self.known() == ["Mute", "Home"])
        waiter.send_signal(signal.SIGINT)
        self.assertEqual((waiter.wait(LIMIT), self.known()), (-signal.SIGINT, ["Home"]))
        for command in "network restart", "wifi reconnect", "profile set --type wireless", "wifi connect Home":
            self.does(command)
            self.assertEqual(self.get("network/info", "networkInfo")["wireless"]["state"], 1, command)
        self.does("wifi connect Mute --keep --wait 2", 12, "no-address: ")
        self.assertEqual(self.known(), ["Mute", "Home"])
        self.does("wifi connect Home")
        waiter = self.device.start("orvactl", "wifi", "connect", "Mute")
        self.device.until(lambda: self.known() == ["Mute", "Home"])
        self.does("profile set --type auto --wait 0")  # by somebody else meanwhile
        waiter.send_signal(signal.SIGINT)
        self.assertEqual((waiter.wait(LIMIT), self.known(), self.get(PROFILE, "networkProfile")["type"]), (-signal.SIGINT, ["Home", "Mute"], 0))
        self.does("airplane on")
        self.does("wifi connect Home", 14, "airplane-mode: ")
        self.does("airplane off; orvactl profile set --type auto --wait 0; orvactl world plug; orvactl wait 'network/info=={\"networkInfo\":{\"wired\":{\"state\":1}}}'")
        self.does("wifi connect Home", 13, "cable-first: ")
        self.does("profile set --ip 192.168.178.9 --netmask 255.255.255.0")
        self.assertIn("192.168.178.9/24", self.ends(0, "orvactl status"))
        self.does("profile set --gateway 192.168.178.254 --dns 9.9.9.8")
        self.assertRegex(self.ends(0, "orvactl status"), r"192\.168\.178\.254\nName servers *9\.9\.9\.8")
        self.does("world delay softAp 60000; timeout 5 orvactl softap request me --wait 0 && orvactl softap revoke me")
        self.does("softap request me --wait 0 --hold", 4, "failed: Requested hold")
        self.does("network stop; orvactl get network/state | grep -qx disconnected")
        self.does("wifi connect Home --keep", 4, 'failed: Networking is not started. "orvactl network start" ')
        self.does("network start")
        self.does("wifi connect Mute --key-file - --wait 0", stdin="long enough")  # not open, where a key is given
        self.assertEqual(self.get(PROFILE, "networkProfile")["wireless"]["key"], "long enough")
        self.does("wifi forget Mute && orvactl wifi forget Home && orvactl world unplug")

    def test_a_profile_in_force_is_not_that_of_before(self):
        self.addCleanup(self.device.shell, "orvactl world delay dhcp 20; orvactl profile set --dhcp --type auto; orvactl wifi forget Home; orvactl world unplug")
        self.does("wifi connect Home --key-file - && orvactl profile set --type wireless && orvactl world delay dhcp 600 && orvactl world plug", stdin="correct horse")
        for command in "type auto", "ip 192.168.178.9 --netmask 255.255.255.0 --dns 9.9.9.8,1.1.1.1; orvactl world hang 600", "dns 1.1.1.1":
            self.does("profile set --" + command)
            info = self.get("network/info", "networkInfo")
            self.assertEqual(info["wired"]["state"], 1, command)
        self.assertEqual([server["ip"] for server in info["dns"]], ["1.1.1.1"])

    def test_a_closed_soft_ap_and_its_code(self):
        self.does("softap qr", 4, "failed: No soft access point runs")
        self.does("world delay softAp 0; orvactl softap request me --ssid 'a;b' --key-file -", stdin="1234567", status=4, reason="failed: SoftAp passphrase")
        for key, text in ('12:4"678', r'WIFI:T:WPA;S:a\;b;P:12\:4\"678;;'), ("", r"WIFI:T:nopass;S:a\;b;;"):
            self.does("softap request me --ssid 'a;b'" + " --key-file -" * bool(key), stdin=key)
            for wrong in ("1234567", "0" * 64) if key else ():
                self.does("softap qr --key-file -", 2, "A pass phrase has 8 to 63 ", stdin=wrong)
            self.assertEqual(json.loads(self.ends(0, "orvactl --json softap qr --key-file -", stdin=key))["text"], text)
            lines = self.ends(0, "orvactl softap qr --key-file -", stdin=key).splitlines()
            self.assertEqual([len(line) for line in lines], [2 * len(lines) - 1] * len(lines))
            self.assertTrue(lines[2].startswith("█" * 4 + " ▄▄▄▄▄ "))  # a corner's mark
            self.assertEqual(("****" in self.ends(0, "orvactl --json softap list"), key == ""), (bool(key), not key))
            self.does("softap revoke me")
        self.assertNotIn("12:4", self.device.logged())

    def test_a_profile_on_trial_goes_back_unless_it_is_confirmed(self):
        self.addCleanup(self.device.shell, "orvactl wifi forget Home; orvactl wifi forget Mute")
        self.does("wifi connect Mute --keep --wait 3", 12, 'no-address: "Mute" was not joined: it gave no address.')
        for line in '"Mute" was not joined, ', ": it gave no address\n":
            self.assertIn(line, self.ends(0, "orvactl status"))
        self.does("wifi forget Mute; orvactl wifi connect Home --key-file -", stdin="correct horse")
        for trial in "Mute --confirm 99 --wait 2", "Mute --confirm 99 --keep --wait 2":
            self.does("wifi connect " + trial, 12, "no-address: ")
            self.assertEqual(self.known(), ["Home"] if "--keep" not in trial else ["Mute", "Home"])
        self.assertIn("comes back in 1 minute;", self.ends(0, "orvactl status"))
        self.device.host.kill()  # and not a word of farewell
        self.device.host.wait()
        stored = json.loads((self.device.directory / "state/settings.json").read_text(encoding="utf-8"))
        for path, networks in (PROFILE, ["Mute", "Home"]), (BEFORE, ["Home"]):
            self.assertEqual([network["ssid"] for network in stored[path]["networkProfile"]["wirelessNetworks"]], networks)
        self.device.start_host()
        self.device.until(lambda: self.known() == ["Home"])
        self.assertEqual((self.get(BEFORE, "networkProfile"), self.get("network/profile/pending", "networkPendingProfile")), ({}, {}))
        self.does("profile confirm", 4, "failed: No profile is on trial.")
        for end, type_ in ("confirm", 2), ("rollback", 2):
            self.assertIn("unless", self.device.shell(f"orvactl profile set --confirm 99 --type {'wireless' if end == 'confirm' else 'auto'}").stderr)
            self.does("profile " + end)
            self.assertEqual(self.get("network/profile", "networkProfile")["type"], type_)
        self.does("profile set --type auto; orvactl wifi connect Home --keep --key-file -", 11, "key-refused: ", stdin="mistaken key")
        self.device.until(lambda: self.known() == [])
        self.does("profile restore-backup --wait 0")
        self.assertEqual(self.known(), ["Home"])

    def test_wps_ends_with_who_wants_it(self):
        def status():
            return self.get("network/info", "networkInfo")["wireless"]["wps"]["status"]
        for ended, end in [(-signal.SIGINT, lambda: session.send_signal(signal.SIGINT)), (4, lambda: self.does("wifi wps cancel"))]:
            session = self.device.start("orvactl", "wifi", "wps", "pbc")
            self.device.until(lambda: status() == 1)
            self.does("wifi scan --wait 0.1", 16, "busy: A WPS session runs; the scan waits")
            end()
            self.assertEqual((session.wait(LIMIT), status()), (ended, 3))
        self.does("wifi wps cancel", 4, "failed: No WPS session runs.")

    def test_a_bound_request_goes_with_its_client(self):
        for end, status in (lambda client: client.kill(), -9), (lambda client: client.send_signal(signal.SIGINT), -2), (
                lambda _: self.does("softap revoke me"), 4):
            client = self.device.start("orvactl", "softap", "request", "me", "--bound", stderr=subprocess.DEVNULL)
            self.device.until(lambda: "me    uap0" in self.ends(0, "orvactl softap list"))
            self.assertIsNone(client.poll())
            end(client)
            self.assertEqual(client.wait(LIMIT), status)
            self.device.until(lambda: "me" not in self.ends(0, "orvactl softap list"))

    def complete_at_a_terminal(self, shell, options, load):
        pid, terminal = pty.fork()
        if pid == 0:
            os.execvpe(shell, [shell, options], {**self.device.environment, "TERM": "dumb", "HOME": str(self.device.directory)})
        self.addCleanup(lambda: os.kill(pid, signal.SIGKILL) or os.waitpid(pid, 0) and os.close(terminal))
        os.write(terminal, load.encode() + b"\r")
        for typed, wanted in [("M", "Mute "), (r"\$", r"\$\(touch\ evaluated\)\ \`touch\ e\`:"), ("'$", "'$(touch evaluated) `touch e`:")]:
            os.write(terminal, f"\x15orvactl wifi connect {typed}\t".encode())
            wanted, shown = "connect " + (wanted.replace(r"\`", "`") if shell == "fish" else wanted), b""
            while wanted not in shown.decode(errors="replace"):
                self.assertTrue(select.select([terminal], [], [], 5)[0], f"{typed} becomes {shown}")
                shown += os.read(terminal, 1000)

    def test_names_are_completed_and_never_evaluated(self):
        evil = "$(touch evaluated) `touch e`:"
        self.ends(0, "orvactl wifi scan >/dev/null; orvactl softap request 'a b' --wait 0; orvactl wifi connect Home --key-file - --wait 0", stdin="correct horse")
        self.addCleanup(self.device.shell, "orvactl softap revoke 'a b'; orvactl wifi forget Home")
        here = self.device.directory
        for words, expected in [("wifi connect ''", {"Home", "Mute", evil}), ("wifi connect '$('", {evil}), (r"wifi connect \$\(", {evil}),
                                ("wifi forget ''", {"Home"}), ("softap revoke a", {"a b"}), ("""wifi connect '"M'""", {"Mute"})]:
            self.assertEqual(set(complete(self, words)), expected, words)
        self.ends(0, "orvactl world ap add a:b:c; orvactl world ap add -- -dash; orvactl wifi scan >/dev/null")
        self.addCleanup(self.device.shell, "orvactl world ap remove a:b:c; orvactl world ap remove -- -dash; orvactl wifi scan")
        for words, line, expected in [("wifi connect a : b", "wifi connect a:b", {"b:c"}), ("wifi connect a :", "wifi connect a:", {"b:c"}), ("wifi connect a", None, {"a:b:c"}),
                                      ("wifi connect -d", None, {""}), ("wifi connect -- -d", None, {"-dash"})]:
            self.assertEqual(set(complete(self, words, line)), expected, words)
        self.assertNotIn("-dash", complete(self, "wifi connect ''"))
        self.assertEqual(list(here.glob("evaluated")) + list(pathlib.Path.cwd().glob("evaluated")), [])
        for words, expected in [("M", ""), ("'$('", "filenames\n")]:  # with which a name that is a directory's gets a slash
            self.assertEqual(self.ends(0, f"source {BUILD}/src/ctl/orvactl; compopt() {{ echo $2; }}; COMP_WORDS=(orvactl wifi connect {words}); COMP_CWORD=3; COMP_LINE=\"${{COMP_WORDS[*]}}\"; _orvactl"), expected)
        for shell, options, load in [("zsh", "-fi", f"autoload -Uz compinit; compinit -u -D; source {BUILD}/src/ctl/_orvactl"),
                                     ("fish", "-iN", f"source {BUILD}/src/ctl/orvactl.fish")]:
            with self.subTest(shell):
                self.complete_at_a_terminal(shell, options, load)
        self.assertEqual(self.ends(0, "orvactl --terse SSID,SECURITY wifi list | grep touch"), "$(touch evaluated) `touch e`\\::open\n")
        for command in "--terse SSD wifi list", "--terse SSID status":
            self.ends(2, "orvactl " + command)

    def test_colour_comes_where_it_is_wanted(self):
        for colour, command in [(True, "--color always status"), (False, "status"), (False, "--color never status")]:
            for setting in "", "CLICOLOR_FORCE=1 ", "CLICOLOR_FORCE=1 NO_COLOR= ":
                wanted = colour or (command == "status" and "NO_COLOR= " in setting)
                self.assertEqual("\033[" in self.ends(0, f"{setting}orvactl {command}"), wanted, setting + command)


class Outputs(WithDevice):
    configuration, world = Joining.configuration, Joining.world

    def test_every_output_is_as_written_down(self):
        golden = pathlib.Path(__file__).parent / "golden.txt"
        blocks = re.split(r"^(?=\$ )", golden.read_text(encoding="utf-8"), flags=re.MULTILINE)
        shown = blocks[:1] + [f"{block.splitlines()[0]}\n{self.shown(block.splitlines()[0][2:])}\n" for block in blocks[1:]]
        if os.environ.get("ORVA_WRITE_GOLDEN"):
            golden.write_text("".join(shown).rstrip("\n") + "\n", encoding="utf-8")
        self.assertEqual("".join(shown).rstrip("\n") + "\n", golden.read_text(encoding="utf-8"))

    def shown(self, command):
        done = self.device.shell(command)
        return done.stdout + done.stderr + (f"[{done.returncode}]\n" if done.returncode else "")


class Commands(WithDevice):
    """Each command as the manual page has it."""

    configuration = Network.configuration
    words = {"STATE": "on", "STEP": "scan", "MILLISECONDS": "1", "KIND": "none"}

    def test_every_command_runs_to_an_end_of_its_own(self):
        manual = self.ends(0, "orvactl --generate man")
        self.assertIn(r"\-\-version", manual)
        synopses = re.findall(r"^\.TP\n\\fB([a-z ]+)\\fP(.*)\n((?:(?!\.TP\n\\fB[a-z]).*\n)*)", manual, re.MULTILINE)
        self.assertGreater(len(synopses), 40)
        for command, arguments, told in synopses:
            if command not in ("monitor", "watch", "wait"):  # which have no end
                given = [self.words.get(name, "x") for name in re.findall(r"\\fI(\w+)\\fP", arguments)]
                given += ["--wait", "1"] if r"\-\-wait" in told else []
                with self.subTest(command):
                    done = self.device.run("orvactl", *command.split(), *given, stdin=subprocess.DEVNULL)
                    self.assertIn(done.returncode, range(19), done.stderr)


class LostHost(WithDevice):
    def test_who_watches_ends_with_the_host_and_who_waits_waits_for_it(self):
        watcher, waiter = (self.device.start("orvactl", *words, stdout=subprocess.PIPE) for words in [
            ["watch", MAXIMUM], ["wait", f"{MAXIMUM}==9", "--timeout", str(LIMIT)]])
        for stream in watcher.stdout, waiter.stdout:
            self.addCleanup(stream.close)
        watcher.stdout.readline()
        self.device.host.kill()
        self.assertEqual(watcher.wait(LIMIT), 8)
        self.assertIn('"systemctl start orva-host"', self.ends(8, "orvactl nodes"))
        self.ends(3, f"orvactl wait {MAXIMUM}==9 --timeout 0.5")
        self.device.start_host()
        self.ends(0, f"orvactl set {MAXIMUM} 9")
        self.assertEqual(waiter.wait(LIMIT), 0)

    def test_who_waits_waits_for_the_bus(self):
        nowhere = self.device.directory / "later"
        waiter = self.device.start("env", f"DBUS_SYSTEM_BUS_ADDRESS=unix:path={nowhere}",
                                   "orvactl", "wait", "webserver/port==80", "--timeout", str(LIMIT))
        time.sleep(0.3)
        nowhere.symlink_to(self.device.address.partition("=")[2])
        self.assertEqual(waiter.wait(LIMIT), 0)


class StoppedHost(WithDevice):
    """A host that hears nothing, and then a bus that does not."""

    def stopped(self, command):
        began = time.monotonic()
        self.ends(3, command)
        self.assertLess(time.monotonic() - began, 10, command)

    def test_deadlines_hold(self):
        self.device.host.send_signal(signal.SIGSTOP)
        began = time.monotonic()
        patient = self.device.start("orvactl", "get", MAXIMUM)
        for command in [f"wait {MAXIMUM}==77 --timeout 1", "airplane on --wait 1", f"get {MAXIMUM} --wait 1",
                        "nodes --wait 1", "wifi connect Home --wait 1", "wifi scan --wait 1", "network start --wait 1"]:
            with self.subTest(command):
                self.stopped("orvactl " + command)
        self.assertEqual(complete(self, "get ''"), [""])
        self.assertLess(time.monotonic() - began, 23)
        self.assertEqual(patient.wait(LIMIT), 3)
        self.assertGreater(time.monotonic() - began, 24)
        self.device.bus.send_signal(signal.SIGSTOP)
        for command in f"wait {MAXIMUM}==77 --timeout 1", f"get {MAXIMUM} --wait 1":
            with self.subTest("no bus: " + command):
                self.stopped("orvactl " + command)


class OtherHost(WithDevice):
    def test_who_leaves_off_while_asking_takes_it_back(self):
        self.device.host.kill()
        self.device.host.wait()
        version = self.ends(0, "orvactl --version").split()[1]
        host = self.device.start("/usr/bin/python3", "-c", STAND_IN, version, "ssssbs", stdout=subprocess.PIPE)
        self.addCleanup(host.stdout.close)
        host.stdout.readline()
        done = self.device.shell("orvactl wifi connect Known --hidden --key-file - --wait 1", "another key")
        self.assertEqual((done.returncode, "give it again" in done.stderr, "as it was" in done.stderr), (3, True, False), done.stderr)
        self.assertEqual([host.stdout.readline() for _ in range(2)], ["network/profile/set\n"] * 2)
        for shell, wait, signals in [("", 9, [signal.SIGINT]), ("trap '' INT; ", 9, [signal.SIGINT, signal.SIGTERM]), ("", 1, [signal.SIGINT])]:
            with self.subTest(shell, wait=wait):
                began = time.monotonic()
                client = self.device.start("bash", "-c", f"{shell}exec orvactl wifi connect Nowhere --hidden --open --wait {wait}")
                self.assertEqual(host.stdout.readline(), "network/profile/set\n")
                for number in signals if wait > 1 else []:
                    client.send_signal(number)
                self.assertIn("remove", host.stdout.readline())
                self.device.until(lambda: client.send_signal(signals[-1]) or client.poll() is not None)
                self.assertEqual(client.returncode, -signals[-1])
                self.assertLess(time.monotonic() - began, 6)
        for _ in range(2):  # of which the first is refused: somebody else's session runs
            client = self.device.start("orvactl", "wifi", "wps", "pbc")
            self.assertEqual(host.stdout.readline(), "network/wps/pbc\n")
            client.send_signal(signal.SIGINT)
            client.wait(LIMIT)
        self.assertEqual((client.returncode, host.stdout.readline()), (-signal.SIGINT, "network/wps/cancel\n"))
        self.ends(5, "orvactl get secret")
        for command in "network restart", "profile rollback", "profile restore-backup":
            began = time.monotonic()
            self.ends(0, "orvactl " + command)
            self.assertGreater(time.monotonic() - began, 1, f"{command}: the network of before is not that of after")

    def test_a_host_of_another_version_is_named_and_not_asked(self):
        self.device.host.kill()
        self.device.host.wait()
        ours = self.ends(0, "orvactl --version").split()[1]
        major, minor, _ = map(int, ours.split("."))
        for theirs, node, status in [
                (f"{major}.{minor}.99", "ssssbs", 0), (f"{major}.{minor + 1}.0", "ssssbs", 1), (f"{major + 1}.{minor}.0", "sss", 1),
                ("0.1.0", "ssssb", 1), ("", "ssssbs", 1), ("new", "ssssbs", 1)]:
            with self.subTest(theirs):
                host = self.device.start("/usr/bin/python3", "-c", STAND_IN, theirs, node, stdout=subprocess.PIPE)
                host.stdout.readline()
                done = self.device.shell("orvactl nodes")
                self.assertEqual((done.returncode, bool(done.stdout)), (status, not status), done.stderr)
                if status:
                    self.assertIn(f"orvactl {ours} and the host {theirs} ", done.stderr)
                host.kill()
                host.wait()
                host.stdout.close()


if __name__ == "__main__":
    unittest.main()
