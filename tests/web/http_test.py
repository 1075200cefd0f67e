# SPDX-License-Identifier: Apache-2.0
"""The server of the page, by plain HTTP: who is let in, what is taken, what is told, and that no key is."""
import json, os, re, socket, threading, time, unittest, warnings

from webdevice import CABLE, ELSEWHERE, SECRETS, SOFT_AP, STATIC, WIFI, WebDevice, own_network

IN_OWN_NETWORK = own_network()


class Case(unittest.TestCase):
    def joins(self, device, ssid):
        device.wait("state", lambda s: s.get("wireless", {}).get("ssid") == ssid and s["wireless"]["state"] == "connected"
                    and s["wireless"]["addresses"])


class WithDevice(Case):
    settings = {}

    @classmethod
    def setUpClass(cls):
        warnings.simplefilter("ignore", ResourceWarning)
        cls.device = WebDevice(**cls.settings)
        cls.addClassCleanup(cls.device.close)
        cls.device.ready()

    def tearDown(self):
        for text in self.device.said + [self.device.logged()]:
            for secret in SECRETS:
                self.assertNotIn(secret, text)


class TheServer(WithDevice):
    def test_refuses_what_is_not_for_it(self):
        d, own = self.device, f"127.0.0.1:{self.device.port}"
        for status, method, path, body, headers, token in [
                (200, "GET", "/", None, {}, ""), (200, "HEAD", "/page.js", None, {}, ""),
                (405, "POST", "/", "{}", {}, ""), (404, "GET", "/no", None, {}, ""), (404, "GET", "/../x", None, {}, ""),
                (200, "GET", "/", None, {"Host": f"localhost:{d.port}"}, ""),
                (421, "GET", "/", None, {"Host": "evil.example"}, ""), (421, "GET", "/", None, {"Host": ""}, ""),
                (421, "GET", "/generate_204", None, {"Host": "evil.example"}, ""),
                (421, "GET", "/", None, {"Host": "127.0.0.1.evil.example"}, ""),
                (421, "GET", "/", None, {"Host": "192.168.178.20"}, ""),
                (421, "POST", "/api/scan", "{}", {"Host": "evil.example"}, None),
                (403, "POST", "/api/scan", "{}", {"Origin": "http://evil.example"}, None),
                (403, "POST", "/api/scan", "{}", {"Origin": "null"}, None),
                (403, "POST", "/api/scan", "{}", {"Origin": f"https://{own}"}, None),
                (403, "POST", "/api/scan", "{}", {"Sec-Fetch-Site": "cross-site"}, None),
                (403, "GET", "/api/token", None, {"Origin": "http://evil.example"}, ""),
                (200, "GET", "/api/token", None, {"Origin": f"http://{own}", "Sec-Fetch-Site": "same-origin"}, ""),
                (403, "POST", "/api/scan", "{}", {}, ""), (403, "POST", "/api/scan", "{}", {}, "0" * 32),
                (403, "GET", "/api/events", None, {}, ""), (404, "GET", "/api/scan", None, {}, None),
                (404, "POST", "/api/no", "{}", {}, None), (405, "DELETE", "/api/scan", None, {}, None),
                (415, "POST", "/api/scan", "{}", {"Content-Type": "text/plain"}, None),
                (400, "POST", "/api/scan", "", {}, None), (400, "POST", "/api/scan", "[]", {}, None),
                (400, "POST", "/api/scan", '{"a":1}', {}, None), (400, "POST", "/api/scan", b"\xff", {}, None),
                (400, "POST", "/api/forget", '{"ssid":1}', {}, None),
                (400, "POST", "/api/airplane", '{"on":"yes"}', {}, None),
                (400, "POST", "/api/join", '{"ssid":""}', {}, None),
                (400, "POST", "/api/join", json.dumps({"ssid": "ä" * 17}), {}, None),
                (409, "POST", "/api/join", '{"ssid":"Home","key":"short"}', {}, None),
                (400, "POST", "/api/join", '{"ssid":' * 40, {}, None),
                (400, "POST", "/api/address", '{"interface":"wired","dhcp":false,"ip":"10.1"}', {}, None),
                (400, "POST", "/api/address", '{"interface":"lo","dhcp":true}', {}, None),
                (400, "POST", "/api/softap", json.dumps({"ssid": "x" * 33}), {}, None),
                (400, "POST", "/api/softap", '{"passphrase":8}', {}, None),
                (409, "POST", "/api/softap", '{"passphrase":"short"}', {}, None),
                (409, "POST", "/api/confirm", "{}", {}, None), (409, "POST", "/api/rollback", "{}", {}, None),
                (413, "POST", "/api/join", b"x" * 20000, {}, None)]:
            with self.subTest(method=method, path=path, body=body, headers=headers, token=token):
                self.assertEqual(d.ask(method, path, body, headers, token)[0], status)

    def test_forbids_the_page_all_that_it_does_not_need(self):
        self.device.ask("GET", "/")
        for text in ("default-src 'none'", "script-src 'self'", "frame-ancestors 'none'", "nosniff", "no-referrer"):
            self.assertIn(text, self.device.said[-1])
        self.assertNotIn("Access-Control", self.device.said[-1])
        page = self.device.ask("GET", "/")[1]
        files = re.findall(r'(?:src|href)="([^"]*)"', page)
        self.assertEqual(len(files), 7)
        self.assertLess(len(page.encode()) + sum(len(self.device.ask("GET", "/" + file)[1].encode()) for file in files), 60000)

    def test_bounds_who_sends_slowly_and_who_sends_much(self):
        port = self.device.port

        def lasts(*pieces):  # for how many seconds a connection on which these come, one each second, is kept
            began = time.monotonic()
            with socket.create_connection(("127.0.0.1", port)) as s:
                s.settimeout(1)
                for piece in pieces:
                    try:
                        s.sendall(piece)
                        if not s.recv(100):
                            break
                    except socket.timeout:
                        continue
                    except OSError:
                        break
            return time.monotonic() - began

        drops, results = [b"POST /api/scan HTTP/1.1\r\nHost: x\r\n"] + [b"A"] * 40, []
        body = [b"POST /api/scan HTTP/1.1\r\nHost: x\r\nContent-Length: 9000\r\n\r\n"] + [b"{"] * 40
        threads = [threading.Thread(target=lambda p=p: results.append(lasts(*p))) for p in [drops, body, [b""] * 40]]
        chunked = b"POST /api/scan HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n"
        for thread in threads:
            thread.start()
        self.assertLess(lasts(b"GET / HTTP/1.1\r\n" + b"A: " + b"x" * 100000, *[b"x"] * 5), 4)
        self.assertLess(lasts(chunked + b"4000\r\n" + b"x" * 0x4000 + b"\r\n" + b"4000\r\n" + b"x" * 0x4000, *[b""] * 5), 4)
        for thread in threads:
            thread.join()
        self.assertLess(max(results), 20)
        readers = [self.device.events() for _ in range(16)]
        for reader in readers:
            next(reader)
        self.assertEqual(self.device.ask("GET", "/api/events?token=" + self.device.token)[0], 503)
        for reader in readers:  # in the middle of what is said to them
            reader.close()
        self.device.until(lambda: next(self.device.events(), None), "who left is still there")
        crowd = [socket.create_connection(("127.0.0.1", port)) for _ in range(100)]
        for s in crowd:
            s.close()
        self.device.until(self.device.answers, "it does not answer after a crowd")


class TheDevice(WithDevice):
    def test_is_set_up_and_told_apart(self):
        d = self.device
        self.assertEqual(d.do("scan"), (200, {}))
        networks = d.wait("networks", lambda seen: any(n["ssid"] == "Home" for n in seen))  # which come last
        self.assertEqual([(n["ssid"], n["security"], n.get("unsupported")) for n in networks],
                         [("Home", "wpaPsk", None), ("<b>Guests", "none", None), ("Office", "none", "enterprise"),
                          ("Café Zoë", "wpaPsk", None)])
        self.assertEqual(d.do("join", ssid="Home", key="mistaken key"), (200, {}))
        d.wait("state", lambda s: any(n["suspect"] for n in s["known"]) and s["lastJoin"]["reason"] == "keyRefused")
        self.assertEqual(d.do("join", ssid="Home", key="correct horse"), (200, {}))
        self.joins(d, "Home")
        self.assertEqual((d.state()["lastJoin"]["ssid"], d.state()["lastJoin"]["result"]), ("Home", "joined"))
        self.assertEqual(d.do("join", ssid="<b>Guests"), (200, {}))
        self.joins(d, "<b>Guests")
        self.assertEqual(d.do("join", ssid="Home"), (200, {}))
        self.joins(d, "Home")
        self.assertEqual([n["ssid"] for n in d.state()["known"]], ["Home", "<b>Guests"])
        self.assertEqual(d.do("address", interface="wireless", dhcp=False, ip="192.168.178.9", netmask="255.255.255.0",
                              gateway="", dns=["9.9.9.9"]), (200, {}))
        d.wait("state", lambda s: "192.168.178.9" in s["wireless"]["addresses"])
        self.assertEqual(d.state()["wirelessAddress"]["dns"], ["9.9.9.9"])
        self.assertEqual(d.do("forget", ssid="Home"), (200, {}))
        self.joins(d, "<b>Guests")
        self.assertEqual(d.do("airplane", on=True), (200, {}))
        d.wait("state", lambda s: s["airplane"])
        self.assertEqual(d.do("airplane", on=False), (200, {}))
        self.assertEqual(d.do("softap-auto", on=False), (200, {}))
        d.wait("state", lambda s: not s["airplane"] and not s["softAp"]["auto"])

    def test_joins_by_wps(self):
        d, results = self.device, []
        session = threading.Thread(target=lambda: results.append(d.do("wps-button")))
        session.start()
        d.wait("state", lambda s: s["wireless"]["wps"] == "inProgress")
        d.act("PressWps", "02:a0:00:00:00:01")
        session.join()
        self.assertEqual(results, [(200, {"ssid": "Home"})])
        self.joins(d, "Home")
        pin = d.do("wps-new-pin")[1]["pin"]
        self.assertRegex(pin, "^[0-9]{8}$")
        session = threading.Thread(target=lambda: results.append(d.do("wps-pin", pin=pin)))
        session.start()
        d.wait("state", lambda s: s["wireless"]["wps"] == "inProgress")
        d.act("FailWps", "as told")
        session.join()
        self.assertEqual((results[1][0], "as told" in results[1][1]["message"]), (409, True))

    def test_keeps_the_access_point_only_while_somebody_is_there(self):
        d, stream = self.device, self.device.events()
        next(stream)
        self.assertEqual(d.do("softap", ssid="Setup", passphrase="canary of the air"), (200, {}))
        d.wait("state", lambda s: (s["softAp"]["state"], s["softAp"]["name"], s["softAp"]["secured"]) == ("connected", "Setup", True))
        asked = d.request()
        self.assertEqual((asked["expiresAtMs"] > 0, asked["bound"], asked["settings"]["passphrase"]), (True, True, "****"))
        self.assertEqual(d.do("softap", ssid="Setup 2"), (200, {}))
        d.wait("state", lambda s: (s["softAp"]["name"], s["softAp"]["secured"]) == ("Setup 2", True))
        self.assertEqual(d.do("finish"), (200, {}))
        d.wait("state", lambda s: s["softAp"]["name"] != "Setup")
        stream.close()

    def test_may_go_and_come_again(self):
        d = self.device
        d.host.kill()
        d.host.wait()
        d.wait("state", lambda s: not s["host"])
        self.assertEqual(d.do("scan")[0], 503)
        self.assertEqual(d.do("join", ssid="Home")[0], 503)
        d.start_host()
        d.wait("state", lambda s: s["host"])


class ThePageWithACode(WithDevice):
    settings = {"accessCode": "1234-code"}

    @classmethod
    def setUpClass(cls):
        warnings.simplefilter("ignore", ResourceWarning)
        cls.device = WebDevice(**cls.settings)
        cls.addClassCleanup(cls.device.close)
        cls.device.until(cls.device.answers)

    def test_asks_for_it_and_slows_down_who_guesses(self):
        d = self.device
        self.assertEqual(d.ask("GET", "/api/token"), (403, {"error": "code", "message": ""}))
        self.assertEqual(d.do("scan")[0], 403)
        status, answer = d.do("token", code="1234-code")
        self.assertEqual((status, len(answer["token"])), (200, 32))
        self.assertEqual([d.do("token", code=guess)[0] for guess in ("", "1234", "1234-codf", "x")], [403, 403, 403, 429])
        self.assertEqual(d.do("token", code="1234-code")[0], 429)
        d.until(lambda: d.do("token", code="1234-code")[0] == 200)


@unittest.skipUnless(IN_OWN_NETWORK, "network namespaces are root's")
class TheAccessPoint(Case):
    PROBES = [("/generate_204", 204, ""), ("/hotspot-detect.html", 200, "Success"), ("/ncsi.txt", 200, "Microsoft NCSI"),
              ("/connecttest.txt", 200, "Microsoft Connect Test"), ("/success.txt", 200, "success"),
              ("/kindle-wifi/wifistub.html", 200, "81ce4465-7167-4dcb-835b-dcc9e44c112a"), ("/static/hotspot.txt", 200, "OK"),
              ("/gen_204", 204, ""), ("/library/test/success.html", 200, "Success"), ("/canonical.html", 200, "captive-portal"),
              *[(path, 200, "NetworkManager is online") for path in ("/check_network_status.txt", "/nm", "/nm-check.txt")]]

    def prepare(self, **settings):
        warnings.simplefilter("ignore", ResourceWarning)
        device = WebDevice(listen=["0.0.0.0"], **settings)
        self.addCleanup(device.close)
        device.ready()
        device.run("orvactl", "softap", "request", "test")
        device.come(SOFT_AP, "192.168.7.9").until(lambda: device.ask("GET", "/")[0] == 200)
        return device

    def test_leads_phones_to_the_page_and_lets_them_go(self):
        d, foreign, asks = self.prepare(), {"Host": "probe.example"}, {"Accept": "application/captive+json"}
        page = f"http://192.168.7.1:{d.port}/"
        for path, _, _ in self.PROBES + [("/any/page", 0, "")]:
            self.assertEqual(d.ask("GET", path, None, foreign)[0], 302, path)
            self.assertIn(f"('Location', '{page}')", d.said[-1])
        self.assertEqual(d.ask("POST", "/generate_204", "x", foreign)[0], 421)
        for path, headers in [("/captive", {}), ("/", asks)]:
            self.assertEqual(d.ask("GET", path, None, headers), (200, {"captive": True, "user-portal-url": page}))
            self.assertIn("application/captive+json", d.said[-1])
        d.act("Plug")
        d.until(lambda: d.ask("GET", "/captive") == (200, {"captive": False}))
        for path, status, text in self.PROBES:
            code, body = d.ask("GET", path, None, foreign)
            self.assertEqual((code, text in body), (status, True), path)
        self.assertEqual(d.ask("GET", "/any/page", None, foreign)[0], 421)

    def test_is_the_only_way_in_unless_the_home_network_is_one_too(self):
        for home, ways in [(False, [(SOFT_AP, "192.168.7.9", 200), (CABLE, "192.168.178.8", 403)]),
                           (True, [(CABLE, "192.168.178.8", 200), (CABLE, "192.168.7.9", 403),
                                   (SOFT_AP, "192.168.178.8", 403), (SOFT_AP, ELSEWHERE, 403), (ELSEWHERE, "10.9.9.8", 403)])]:
            d = self.prepare(homeNetwork=home)
            d.act("Plug")
            d.until(lambda: d.orvactl("get", "network/state/connected")["bool"])
            for local, peer, status in ways:
                self.assertEqual(d.come(local, peer).ask("GET", "/")[0], status, f"{home} {local} {peer}")

    def test_is_held_for_who_uses_the_page_through_it_and_lets_nothing_else_be_lost(self):
        d = self.prepare(homeNetwork=True, names=["speaker.local"])
        stream = d.events()
        self.assertEqual(next(stream)[1]["ways"], ["http://speaker.local/"])  # before there is a network to be in
        d.until(lambda: d.request().get("hold"), "the access point is not held")
        self.assertEqual(d.do("join", ssid="Home", key="correct horse"), (200, {}))
        d.wait("state", lambda s: s["ways"] == [f"http://{WIFI}/", "http://speaker.local/"])
        self.assertEqual(d.do("confirm")[0], 409)
        stream.close()
        for action, body, trial in [("address", {"interface": "wired", "dhcp": True}, False), ("join", {"ssid": "<b>Guests"}, True),
                                    ("address", {"interface": "wireless", "dhcp": True}, True), ("join", {"ssid": "Home"}, True)]:
            with self.subTest(action=action, body=body):
                d.until(lambda: d.come(WIFI, "192.168.178.8").ask("GET", "/")[0] == 200)
                self.assertEqual(d.do(action, trial="x" * 33, **body)[0], 400 if trial else 200)
                self.assertEqual(d.do(action, trial=action, **body), (200, {"trial": True} if trial else {}))
                told = d.come("127.0.0.1").wait("state", lambda s: ("trial" in s) == trial).get("trial", {"seconds": 0, "id": action})
                self.assertEqual((100 < told["seconds"] <= 120, told["id"]), (trial, action))
                self.joins(d, body.get("ssid", d.state()["known"][0]["ssid"]))
                self.assertEqual(d.do("confirm")[0], 200 if trial else 409)
                d.wait("state", lambda s: "trial" not in s)
        d.come(WIFI, "192.168.178.8")
        d.do("address", interface="wireless", dhcp=False, ip=STATIC, netmask="255.255.255.0", gateway="", dns=[])
        d.come("127.0.0.1").wait("state", lambda s: STATIC in s["wireless"]["addresses"])
        self.assertEqual(d.do("rollback"), (200, {}))
        d.wait("state", lambda s: s["wirelessAddress"]["dhcp"] and "trial" not in s)
        d.run("orvactl", "profile", "set", "--confirm", "60", "--type", "auto")
        self.assertEqual(d.wait("state", lambda s: "trial" in s)["trial"]["id"], "")  # not the page's


class TheSettings(unittest.TestCase):
    def test_that_do_not_suit_are_refused_by_name(self):
        warnings.simplefilter("ignore", ResourceWarning)
        device = WebDevice()
        self.addCleanup(device.close)
        for text, told in [('{"port": 70000}', "port"), ('{"listen": ["here"]}', "listen"), ("{", "web.json"),
                           ('{"homeNetwork": 1}', "homeNetwork"), ('{"colour": 1}', "colour")]:
            done = device.run(f"{os.environ['ORVA_BUILD']}/bin/orva-web", "--config", device.write("web.json", text))
            self.assertEqual((done.returncode, told in done.stderr), (78, True), done.stderr)


if __name__ == "__main__":
    unittest.main()
