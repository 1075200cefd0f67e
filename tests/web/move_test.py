# SPDX-License-Identifier: Apache-2.0
"""The page in a browser while its device moves away beneath it, and beside pages of others."""
import http.server, threading, unittest

import browser
from browser import By, Case
from webdevice import SOFT_AP, STATIC, WIFI, cut, own_network

HOSTILE = """<iframe name=f></iframe><form id=i method=post target=f enctype=text/plain action={0}/api/airplane><input name='{{"on":true,"a":"'
value='"}}'></form><script>var got = [], left = 5;
function end(what) {{ return function () {{ if (what) got.push(what); if (!--left) document.title = 'got ' + got.join(); }}; }}
fetch('{0}/api/airplane', {{method: 'POST', mode: 'no-cors', body: '{{"on":true}}'}}).then(end(), end());
fetch('{0}/api/airplane', {{method: 'POST', headers: {{'Content-Type': 'application/json'}}, body: '{{"on":true}}'}}).then(end('post'), end());
fetch('{0}/api/token').then(end('token'), end());
var events = new EventSource('{0}/api/events'); events.onopen = end('events'); events.onerror = end();
i.submit(); f.onload = null; setTimeout(end(), 1000);</script>"""
ICON = '<svg xmlns="http://www.w3.org/2000/svg" width="1" height="1"/>'
IN_OWN_NETWORK = own_network()



def serve(case, text):
    """A server of somebody else's, which answers everything with `text`; its port."""
    class Foreign(http.server.BaseHTTPRequestHandler):
        def do_GET(self):
            self.send_response(200)
            self.send_header("Content-Type", "image/svg+xml" if "icon" in self.path else "text/html")
            self.end_headers()
            self.wfile.write((ICON if "icon" in self.path else text).encode())

        log_message = lambda *_: None

    server = http.server.HTTPServer(("127.0.0.1", 0), Foreign)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    case.addCleanup(server.server_close)
    case.addCleanup(server.shutdown)
    return server.server_port


class AmongOthers(Case):
    def test_gives_nothing_to_a_hostile_page(self):
        port = serve(self, HOSTILE.format(f"http://127.0.0.1:{self.device.port}"))
        self.browser.switch_to.new_window("tab")
        self.browser.get(f"http://localhost:{port}/")
        self.until(lambda: "got" in self.browser.title, "the hostile page has no end")
        self.assertEqual(self.browser.title, "got")
        self.assertFalse(self.device.state()["airplane"])
        self.browser.get(f"http://evil.example:{self.device.port}/")  # whose name was made to lead here
        self.assertEqual(self.text("body"), "Another device has that name.")


@unittest.skipUnless(IN_OWN_NETWORK, "network namespaces are root's")
class TheMove(Case):
    settings = {"listen": ["0.0.0.0"], "port": 80, "homeNetwork": True, "names": ["speaker.local"]}

    def take_address(self, ip):
        self.until(lambda: self.find("#scan").is_displayed(), "no page")
        self.unfold_address()
        self.until(lambda: self.find("#dhcp").is_selected(), "no address")
        self.find("#dhcp").click()
        for field, text in [("#ip", ip), ("#netmask", "255.255.255.0")]:
            self.find(field).send_keys(text)
        self.find("#address > button").click()

    def test_follows_the_device_to_where_it_is(self):
        d = self.device
        d.run("orvactl", "softap", "request", "test")
        d.come(SOFT_AP, "192.168.7.9").until(lambda: d.ask("GET", "/")[0] == 200)
        self.browser.get(f"http://{SOFT_AP}/")
        self.scan()
        self.find("#networks button").click()
        self.addCleanup(cut, SOFT_AP, "del")
        cut(SOFT_AP)  # the access point leaves while the device joins, and takes along what was sent
        self.find("#key").send_keys("correct horse")
        self.find("#join .main").click()
        self.says("#lost", "“Home”", "speaker.local")
        self.shoot("lost")
        d.run("orvactl", "wifi", "connect", "Home", "--key-file", d.write("key", "correct horse"))
        self.until(lambda: self.browser.current_url == "http://speaker.local/", "the page has not found the device")
        self.says("#headline", "Connected to “Home”")

        self.take_address(STATIC)
        self.addCleanup(cut, WIFI, "del")
        cut(WIFI)
        self.until(lambda: self.browser.current_url == f"http://{STATIC}/", "the page has not followed the device")
        self.says("#progress", "Saved")
        d.come("127.0.0.1").wait("state", lambda s: "trial" not in s and s["wirelessAddress"]["ip"] == STATIC)

        self.unfold_address()
        self.until(lambda: self.find("#ip").get_attribute("value") == STATIC, "no address")
        self.find("#ip").clear()
        self.find("#ip").send_keys("192.168.178.77")
        self.find("#address > button").click()
        self.addCleanup(cut, "192.168.178.77", "del")
        cut("192.168.178.77")
        self.says("#trial", "on trial")
        self.shoot("trial")
        d.do("rollback")  # as it comes by itself, in two minutes
        self.says("#progress", "taken the change back")

    def test_tells_nobody_else_what_it_may(self):
        """Where the device was told to go, somebody else is already."""
        browser.NAMES["192.168.178.66"] = f"127.0.0.1:{serve(self, '<script>document.title = location.href</script>')}"
        self.browser = self.open_browser("en", browser.PHONE)
        d = self.device
        d.run("orvactl", "wifi", "connect", "Home", "--key-file", d.write("key", "correct horse"))
        d.wait("state", lambda s: WIFI in s["wireless"]["addresses"])
        d.come(WIFI, "192.168.178.8").until(lambda: d.ask("GET", "/")[0] == 200)
        self.browser.get(f"http://{WIFI}/")
        self.take_address("192.168.178.66")
        self.addCleanup(cut, WIFI, "del")
        cut(WIFI)
        self.until(lambda: "#" in self.browser.title, "the page has not followed the device")
        self.assertRegex(self.browser.title, "^http://192.168.178.66/#[0-9a-f]{16}$")
        trial = d.come("127.0.0.1").state()["trial"]
        self.assertEqual((len(d.token), trial["id"]), (32, self.browser.title[-16:]))

    def test_tells_why_it_failed_when_the_access_point_is_back(self):
        d = self.device
        d.run("orvactl", "softap", "request", "test")
        d.come(SOFT_AP, "192.168.7.9").until(lambda: d.ask("GET", "/")[0] == 200)
        self.browser.get(f"http://{SOFT_AP}/")
        self.scan()
        self.join("Home", "mistaken key")
        cut(SOFT_AP)
        self.says("#lost", "does not answer")
        d.web.kill()
        d.web.wait()
        d.start_web()
        d.come("127.0.0.1").until(d.answers)
        d.wait("state", lambda s: s.get("lastJoin", {}).get("reason") == "keyRefused")
        cut(SOFT_AP, "del")
        self.says("#progress", "refused the key")
        self.join("Home", "correct horse")
        self.says("#progress", "connected to “Home”")


if __name__ == "__main__":
    unittest.main()
