# SPDX-License-Identifier: Apache-2.0
"""A system bus of a test's own, as tools/device.sh makes it for a device, and programs on it."""
import json, os, pathlib, shutil, subprocess, tempfile, time

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["ORVA_BUILD"])
LIMIT = 30  # seconds that anything here may take
PREPARE = """. "$0/tools/device.sh" && mkdir "$2/system.d" "$2/services" && device_configure "$1" "$2" &&
    device_environment "$2" && env -0"""


def until(condition, otherwise="waited in vain", limit=LIMIT):
    """Until it holds; `otherwise`, or what that returns, says what is wrong."""
    end = time.monotonic() + limit
    while not condition():
        assert time.monotonic() < end, otherwise() if callable(otherwise) else otherwise
        time.sleep(0.02)


class PrivateBus:
    """Its directory, the environment of what runs on it, and its log. Nothing outlives the test."""

    def __init__(self, **choices):
        self.directory = pathlib.Path(tempfile.mkdtemp(prefix="orva-test-"))
        self.directory.chmod(0o755)
        prepared = subprocess.run(["bash", "-c", PREPARE, SOURCE, BUILD, self.directory], text=True, check=True,
                                  stdout=subprocess.PIPE, env={**os.environ, **choices}).stdout
        self.environment = dict(line.split("=", 1) for line in prepared.split("\0")[:-1])
        self.address = self.environment["DBUS_SYSTEM_BUS_ADDRESS"]
        self.log = open(self.directory / "log", "w", encoding="utf-8")
        self.children = []

    def start_bus(self, *under):
        bus = self.start(*under, "dbus-daemon", "--nofork", "--nopidfile", f"--config-file={self.directory}/bus.conf",
                         "--address=" + self.address, "--print-address", stdout=subprocess.PIPE)
        bus.stdout.readline()  # printed once it listens

    def write(self, name, text):
        (self.directory / name).write_text(text, encoding="utf-8")
        return str(self.directory / name)

    def logged(self):
        return (self.directory / "log").read_text(encoding="utf-8")

    def start(self, *command, **streams):
        self.children.append(subprocess.Popen(["setpriv", "--pdeathsig=KILL", *command], env=self.environment,
                                              text=True, **{"stdout": self.log, "stderr": self.log, **streams}))
        return self.children[-1]

    def start_host(self, *under, log_level="info", node="network/info"):
        self.host = self.start(*under, BUILD / "bin/orva-host", "--config", self.directory / "host.json",
                               "--state-dir", self.directory / "state", "--log-level", log_level)
        self.until(lambda: self.run(BUILD / "bin/orvactl", "get", node, "--wait", "2").returncode == 0)

    def orvactl(self, *words, under=()):
        """What it prints as JSON; it must succeed."""
        done = self.run(*under, BUILD / "bin/orvactl", "--json", *words)
        assert not done.returncode, done.stderr
        answer = json.loads(done.stdout) if done.stdout.strip() else None
        if isinstance(answer, dict):
            answer.pop("schema")
        return answer

    def run(self, *command, **more):
        return subprocess.run(command, env=self.environment, text=True, capture_output=True, timeout=LIMIT,
                              check=False, **more)

    def until(self, condition, otherwise="waited in vain"):
        until(condition, lambda: f"{otherwise}; the log says: {self.logged()}")

    def close(self):
        for child in reversed(self.children):
            child.kill()
            child.wait()
        self.log.close()
        shutil.rmtree(self.directory)
