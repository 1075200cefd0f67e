"""A lumod on a bus of its own, spoken to and overheard through busctl: no code of ours reads the wire.

The environment names the program in LUMOD."""
import json, os, queue, shutil, subprocess, tempfile, threading, time

CONFIGURATION = """<busconfig><type>session</type><listen>unix:path={0}/bus</listen>
<auth>EXTERNAL</auth><servicedir>{0}</servicedir><policy context="default"><allow user="*"/>
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
<include ignore_missing="yes">{1}</include></busconfig>"""
OBJECT = ["org.orva.lumod", "/org/orva/lumod"]
LIMIT = 10


def encode(value):
    """A value as busctl's signature and arguments; a tuple is just that already."""
    if isinstance(value, dict):
        return ["a{sv}", str(len(value)), *(word for item in value.items() for word in [item[0], *encode(item[1])])]
    if isinstance(value, tuple):
        return value
    return {bool: ["b", str(value).lower()], int: ["i", str(value)], str: ["s", value]}[type(value)]


class Refused(Exception):
    pass


class Playground:
    """Starts a bus that activates lumod with `world`."""

    def __init__(self, world, policy=""):
        self.directory = tempfile.mkdtemp(prefix="lumod-test-")
        os.chmod(self.directory, 0o755)
        self.signals, self.children = queue.Queue(), []
        self.address = f"unix:path={self.directory}/bus"
        self.environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self.address, ORVA_LUMOD_WORLD=self.write(
            "world.json", "// a test's world\n" + json.dumps(world)))
        self.write("lumod.service", "[D-BUS Service]\nName=org.orva.lumod\nExec=" + os.environ["LUMOD"])
        self.log = open(self.directory + "/log", "w+", encoding="utf-8")
        bus = self.start("dbus-daemon", "--nofork", "--nopidfile", "--print-address", "--config-file=" +
                         self.write("bus.conf", CONFIGURATION.format(self.directory, policy)))
        bus.stdout.readline()
        monitor = self.start("busctl", "--address=" + self.address, "--json=short", "monitor", stderr=subprocess.PIPE)
        monitor.stderr.readline()  # it says when it listens
        threading.Thread(target=self.overhear, args=(monitor.stdout,), daemon=True).start()

    def write(self, name, text):
        with open(f"{self.directory}/{name}", "w", encoding="utf-8") as file:
            file.write(text)
        return file.name

    def start(self, *command, stderr=None):
        self.children.append(subprocess.Popen(command, env=self.environment, text=True, stdout=subprocess.PIPE,
                                              stderr=stderr or self.log))
        return self.children[-1]

    def close(self):
        for child in reversed(self.children):
            child.kill()
            child.wait()
        self.log.close()
        shutil.rmtree(self.directory)

    def overhear(self, stream):
        for line in stream:
            message = json.loads(line)
            if message["type"] == "signal" and message["path"] == OBJECT[1]:
                self.signals.put((message["member"], message["payload"]))

    def next(self, limit=LIMIT):
        return self.signals.get(timeout=limit)  # its name and its payload

    # The data of the next such signal; the ones before it are passed over.
    def wait(self, member, *values):
        passed, end = [], time.monotonic() + LIMIT
        while True:
            try:
                name, payload = self.next(max(0, end - time.monotonic()))
            except queue.Empty:
                raise AssertionError(f"no {member} {values} after {passed[-20:]}") from None
            passed.append((name, *(value for value in payload["data"] if not isinstance(value, dict))))
            if name == member and payload["data"][:len(values)] == list(values):
                return payload["data"]

    def busctl(self, *words, prefix=()):
        command = [*prefix, "busctl", "--address=" + self.address, "--json=short", f"--timeout={LIMIT}", *words]
        done = subprocess.run(command, text=True, capture_output=True, check=False)
        if done.returncode:
            raise Refused(done.stderr.strip())
        return json.loads(done.stdout) if done.stdout else None

    def call(self, method, *values, interface="org.orva.lumod", prefix=()):
        words = [encode(value) for value in values]
        return self.busctl("call", *OBJECT, interface, method, "".join(word[0] for word in words),
                           *(argument for word in words for argument in word[1:]), prefix=prefix)

    def act(self, method, *values):
        return self.call(method, *values, interface="org.orva.lumod.World")

    def get(self, name):
        return self.busctl("get-property", *OBJECT, "org.orva.lumod", name)

    def set(self, name, value):
        self.busctl("set-property", *OBJECT, "org.orva.lumod", name, *encode(value))

    def details(self, interface):
        return {key: value["data"] for key, value in self.call("InterfaceDetails", interface)["data"][0].items()}
