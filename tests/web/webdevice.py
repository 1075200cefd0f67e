# SPDX-License-Identifier: Apache-2.0
"""A device in the played world with orva-web on it: bus, host and daemon of its own."""
import http.client, json, socket, time

from playground import Playground
from privatebus import BUILD

HOME = {"ssid": "Home", "security": "wpa-psk", "key": "correct horse", "wps": True, "network": "home", "signal": -47}
WORLD = {
    "timeFactor": 0.02, "cable": {"plugged": False, "network": "home"},
    "networks": {"home": {"subnet": "192.168.178.0/24", "gateway": "192.168.178.1", "dns": ["192.168.178.1"]}},
    "accessPoints": [{**HOME, "bssid": "02:a0:00:00:00:01"}, {**HOME, "bssid": "02:a0:00:00:00:02", "signal": -70},
                     {"ssid": "Café Zoë", "security": "wpa-psk", "key": "espresso doppio", "signal": -71},
                     {"ssid": "<b>Guests", "signal": -60, "network": "home"}, {"ssid": "", "signal": -50}]}
SECRETS = ("correct horse", "espresso doppio", "mistaken key", "1234-code")


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


class WebDevice(Playground):
    def __init__(self, under=(), world=WORLD, **settings):  # under: the words of a program that runs orva-web
        super().__init__(world)
        self.token, self.said = "", []
        self.port = settings.setdefault("port", free_port())
        self.write("web.json", "// a test's\n" + json.dumps({"listen": ["127.0.0.1"], **settings}))
        self.under = under
        self.start_host()
        self.start_web()

    def start_host(self):
        self.host = self.start(BUILD / "bin/orva-host", "--config", self.directory / "host.json",
                               "--state-dir", self.directory / "state")

    def start_web(self):
        self.web = self.start(*self.under, BUILD / "bin/orva-web", "--config", self.directory / "web.json")

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
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=timeout)

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
        end = time.monotonic() + limit
        for event, data in self.events():
            if event == name and condition(data):
                return data
            assert time.monotonic() < end, f"no such {name}; last {data}"
        raise AssertionError("the stream ended")

    def state(self):
        return self.wait("state")
