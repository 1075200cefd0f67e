# SPDX-License-Identifier: Apache-2.0
"""A device in the played world with orva-web on it: bus, host and daemon of its own."""
import ctypes, http.client, json, os, socket, subprocess, time

from playground import Playground
from privatebus import BUILD

HOME = {"ssid": "Home", "security": "wpa-psk", "key": "correct horse", "wps": True, "network": "home", "signal": -47}
WORLD = {
    "timeFactor": 0.02, "cable": {"plugged": False, "network": "home"},
    "networks": {"home": {"subnet": "192.168.178.0/24", "gateway": "192.168.178.1", "dns": ["192.168.178.1"]}},
    "accessPoints": [{**HOME, "bssid": "02:a0:00:00:00:01"}, {**HOME, "bssid": "02:a0:00:00:00:02", "signal": -70},
                     {"ssid": "Café Zoë", "security": "wpa-psk", "key": "espresso doppio", "signal": -71},
                     {"ssid": "<b>Guests", "signal": -60, "network": "home"}, {"ssid": "Office", "security": "enterprise", "signal": -65},
                     {**HOME, "ssid": "Attic", "hidden": True, "signal": -75}, {"ssid": "", "signal": -50}]}
SECRETS = ("correct horse", "espresso doppio", "mistaken key", "1234-code", "canary of the air")
SOFT_AP, CABLE, WIFI, STATIC, ELSEWHERE = "192.168.7.1", "192.168.178.20", "192.168.178.21", "192.168.178.9", "10.9.9.9"


def own_network():
    """From here on this program has a network of its own, with the device's addresses on its loopback, so that connections
    can come by each of its ways. False where it may not."""
    if os.geteuid() or ctypes.CDLL(None).unshare(0x40000000):  # CLONE_NEWNET
        return False
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    for ip in (SOFT_AP, WIFI, ELSEWHERE):  # each stands for all of its subnet
        subprocess.run(["ip", "address", "add", ip.rpartition(".")[0] + ".254/24", "dev", "lo"], check=True)
    return True


def cut(ip, change="add"):
    """Nothing reaches that address any more; connections to it stay and hear nothing. `change` "del": as before."""
    subprocess.run(["ip", "route", change, "blackhole", ip, "table", "local"], check=True)


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


class WebDevice(Playground):
    def __init__(self, world=WORLD, **settings):
        super().__init__(world)
        self.token, self.said, self.by, self.source = "", [], "127.0.0.1", None
        self.port = settings.setdefault("port", free_port())
        self.write("web.json", "// a test's\n" + json.dumps({"listen": ["127.0.0.1"], **settings}))
        self.start_host()
        self.start_web()

    def start_host(self):
        self.host = self.start(BUILD / "bin/orva-host", "--config", self.directory / "host.json",
                               "--state-dir", self.directory / "state")

    def start_web(self):
        self.web = self.start(BUILD / "bin/orva-web", "--config", self.directory / "web.json")

    def ready(self):
        self.until(self.answers)
        self.wait("state", lambda state: state["host"])
        return self

    def answers(self):
        try:
            self.token = self.ask("GET", "/api/token")[1].get("token", "")
            return True
        except OSError:
            return False

    def connection(self, timeout=20):
        return http.client.HTTPConnection(self.by, self.port, timeout=timeout, source_address=self.source and (self.source, 0))

    def come(self, by, source=None):
        """What is asked from here on goes to that address of the device, from that one."""
        self.by, self.source = by, source
        return self

    def ask(self, method, path, body=None, headers=(), token=None):
        """The status and what was answered; everything answered is kept, so that tests can look for keys."""
        connection = self.connection()
        own = {"X-Orva-Token": self.token if token is None else token, "Content-Type": "application/json"}
        text = body if body is None or isinstance(body, (str, bytes)) else json.dumps(body)
        connection.request(method, path, text, {**own, **dict(headers)})
        response = connection.getresponse()
        answer = response.read().decode()
        connection.close()
        self.said.append(str(response.getheaders()) + answer)
        try:
            return response.status, json.loads(answer)
        except ValueError:
            return response.status, answer

    def do(self, action, **body):
        return self.ask("POST", "/api/" + action, body)

    def events(self):
        """The events of a stream, as they come: pairs of a name and what it carries."""
        connection = self.connection()
        connection.request("GET", "/api/events?token=" + self.token)
        response, name = connection.getresponse(), None
        try:
            while line := response.readline().decode():
                self.said.append(line)
                if line.startswith("event: "):
                    name = line[7:].strip()
                elif line.startswith("data: "):
                    yield name, json.loads(line[6:])
        finally:
            connection.close()

    def wait(self, name, condition=lambda data: True, limit=20):
        end, last = time.monotonic() + limit, None
        for event, data in self.events():
            last = data if event == name else last
            if event == name and condition(data):
                return data
            assert time.monotonic() < end, f"no such {name}; last {last}"
        raise AssertionError("the stream ended")

    def state(self):
        return self.wait("state")

    def request(self):
        """The page's own request for the access point."""
        return next((row for row in self.orvactl("softap", "list")["softApRequests"] if row["name"] == "web"), {})
