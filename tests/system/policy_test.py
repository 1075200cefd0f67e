# SPDX-License-Identifier: Apache-2.0
"""Who may do what on the bus, under the policies that are installed: a user outside the group netdev nothing,
one in it everything but read keys, and nobody but its owner speaks as the daemon."""
import os, subprocess, unittest, warnings, xml.etree.ElementTree as XML

from privatebus import SOURCE, PrivateBus

CANARY = "canary-passphrase"
SECRETS = [f"settings/network/{name}-profile" for name in ("current", "backup")] + ["settings/network/softap-config"]
USERS = {"outside": ["--clear-groups"], "netdev": ["--groups", "4711"]}
HOST, LUMOD = (["org.orva.Host1", "/org/orva/Host1"], ["org.orva.lumod", "/org/orva/lumod"])
DENIED = "Access denied"
PYTHON = "import dbus, dbus.lowlevel, sys; bus = dbus.SystemBus()\n"
LISTEN = PYTHON + """
import dbus.mainloop.glib; from gi.repository import GLib
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True); bus = dbus.SystemBus(private=True)
hear = lambda *words, sender=None, member=None: print(sender, member, *words, flush=True)
bus.add_signal_receiver(hear, sender_keyword="sender", member_keyword="member")
bus.call_blocking("org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping", "", [])
print("listening", flush=True); GLib.MainLoop().run()"""
FORGE = PYTHON + """
for to in (None, sys.argv[1]):
    for member, signature, words in (("AuthError", "ss", ["forged", "forged"]), ("Error", "s", ["forged"]),
                                     ("Started", "", []), ("Disconnected", "s", ["eth0"])):
        signal = dbus.lowlevel.SignalMessage("/org/orva/lumod", "org.orva.lumod", member)
        signal.append(*words, signature=signature)
        to and signal.set_destination(to)
        bus.send_message(signal)
bus.flush(); bus.call_blocking("org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping", "", [])"""


def calls(target, *files):
    """Every method that the interfaces describe, and those that each object has."""
    for file in files:
        for interface in XML.parse(SOURCE / "dbus" / file).iter("interface"):
            for method in interface.iter("method"):
                yield [*target, interface.get("name"), method.get("name")]
    yield [*target, "org.freedesktop.DBus.Introspectable", "Introspect"]
    yield [*target, "org.freedesktop.DBus.Properties", "GetAll", "s", target[0]]


@unittest.skipUnless(os.geteuid() == 0, "only root can be somebody else")
class PolicyTest(unittest.TestCase):
    def setUp(self):
        warnings.simplefilter("ignore", ResourceWarning)
        self.device = PrivateBus(DEVICE_LOG_LEVEL="trace")
        self.addCleanup(self.device.close)
        groups = self.device.write("group", "root:x:0:\nnogroup:x:65534:\nnetdev:x:4711:\n")
        self.device.start_bus("unshare", "--mount", "sh", "-c", 'mount --bind "$0" /etc/group && exec "$@"', groups)
        self.device.start_host(log_level="trace")
        self.device.orvactl("wait", "network/state/connected==true", "--timeout", "20")

    def run_as(self, user, *command):
        return [*(["setpriv", "--reuid", "games", "--regid", "nogroup", *USERS[user]] if user else []), *command]

    def python(self, user, *words):
        return self.device.run(*self.run_as(user, "/usr/bin/python3", "-c", *words))

    def call(self, *words, user=None):
        done = self.device.run(*self.run_as(user, "busctl", "--timeout=10", "call", *words))
        return done.stdout + done.stderr

    def write(self, path, value, user=None):
        return self.call(*HOST, HOST[0], "SetValue", "sa{sv}", path, "1", *value, user=user)

    def listen(self, user):
        ear = self.device.start(*self.run_as(user, "/usr/bin/python3", "-c", LISTEN), stdout=subprocess.PIPE)
        self.addCleanup(ear.stdout.close)
        self.assertEqual(ear.stdout.readline(), "listening\n")
        return ear

    def heard(self, ear):
        """All that came until now, which is when a further connection comes."""
        now = self.python(None, PYTHON + "print(bus.get_unique_name())").stdout.strip()
        return "".join(iter(ear.stdout.readline, f"org.freedesktop.DBus NameOwnerChanged {now}  {now}\n"))

    def test_calls(self):
        for user in USERS:
            for method in [*calls(HOST, "org.orva.Host1.xml"),
                           *calls(LUMOD, "org.orva.lumod.xml", "org.orva.lumod.World.xml")]:
                with self.subTest(user, call=method[-1]):
                    inside = user == "netdev" and method[0] == HOST[0]
                    self.assertEqual(DENIED not in self.call(*method, user=user), inside)

    def test_keys(self):
        profile = ["networkProfile", "a{sv}", "1", "wireless", "a{sv}", "2", "ssid", "s", "Home", "key", "s", CANARY]
        for path in SECRETS:
            with self.subTest(path):
                self.write(path, profile)
                self.assertIn(CANARY, self.call(*HOST, HOST[0], "GetValue", "s", path))
                refused = self.call(*HOST, HOST[0], "GetValue", "s", path, user="netdev")
                self.assertIn("for root and the host's own user alone.", refused)
                self.write(path, ["networkProfile", "a{sv}", "0"], user="netdev")
                self.assertIn(CANARY, self.call(*HOST, HOST[0], "GetValue", "s", path))

    def test_limits(self):
        silent = PYTHON + """
for member, words in (("SetValue", ("interfaces/wired", {"string": "x"})), ("Invoke", ("network/scan", {})),
                      ("SetValue", ("interfaces/wired", {"string": "x" * (5 << 20)})),
                      ("GetValue", ("network/info",))):
    call = dbus.lowlevel.MethodCallMessage("org.orva.Host1", "/org/orva/Host1", "org.orva.Host1", member)
    call.append(*words, signature="sa{sv}"[:1 + 5 * (len(words) - 1)]); call.set_no_reply(True)
    bus.send_message(call)
bus.flush(); host = dbus.Interface(bus.get_object("org.orva.Host1", "/org/orva/Host1"), "org.orva.Host1")
print(host.GetValue("network/state/connected"))
bus.call_blocking("org.orva.Host1", "/org/orva/Host1", "org.orva.Host1", "GetValue", "h", [dbus.types.UnixFd(0)])"""
        done = self.python("netdev", silent)
        self.assertIn("dbus.Boolean", done.stdout)
        self.assertIn("AccessDenied", done.stderr)
        rejected = [line for line in self.device.logged().splitlines() if "Rejected send message" in line]
        self.assertEqual([line for line in rejected if "type=\"method_call\"" not in line], [])

    def test_names(self):
        for user in USERS:
            for name in (HOST[0], LUMOD[0]):
                own = f"{PYTHON}bus.request_name('{name}', 2)"
                with self.subTest(user, name=name):
                    self.assertIn("AccessDenied", self.python(user, own).stderr)

    def test_signals(self):
        ears = {user: self.listen(user) for user in USERS}
        self.call(*LUMOD, LUMOD[0] + ".World", "Unplug")
        self.device.until(lambda: "false" in self.call(*HOST, HOST[0], "GetValue", "s", "network/state/cable"))
        self.write(SECRETS[0], ["networkProfile", "a{sv}", "1", "wireless", "a{sv}", "1", "key", "s", CANARY])
        heard = {user: self.heard(ear) for user, ear in ears.items()}
        self.assertNotIn("Changed", heard["outside"].replace("NameOwnerChanged", ""))
        self.assertIn("ValueChanged network/state/cable", heard["netdev"])
        self.assertIn(f"ValueChanged {SECRETS[0]} dbus.Dictionary({{}}", heard["netdev"])
        self.assertNotRegex(heard["netdev"], f"{CANARY}|CableStatus|InterfaceStatusChanged")

    def test_forged_signals(self):
        host = self.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetNameOwner", "s", HOST[0])
        ear = self.listen(None)
        for user in (*USERS, None):  # root too may not speak as a daemon whose name it does not own
            self.assertEqual(self.python(user, FORGE, host.split('"')[1]).stderr, "")
        self.assertEqual(self.heard(ear).count("AuthError forged forged"), len(USERS) + 1)
        self.call(*LUMOD, LUMOD[0] + ".World", "Unplug")
        self.device.until(lambda: "false" in self.call(*HOST, HOST[0], "GetValue", "s", "network/state/cable"))
        self.assertNotIn("forged", self.device.logged())


if __name__ == "__main__":
    unittest.main()
