# SPDX-License-Identifier: Apache-2.0
"""The page in a real browser, without a head, against the played world: what people do, by keyboard too."""
import http.server, os, pathlib, subprocess, threading, time, unittest, warnings

from privatebus import BUILD
from webdevice import SOFT_AP, STATIC, WIFI, WebDevice, cut, free_port, own_network

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = None
DRIVER = "/usr/bin/chromedriver"
SHOTS = os.environ.get("ORVA_SCREENSHOTS")  # a folder that takes pictures for the docs
PHONE, DESKTOP = (360, 640), (1200, 900)
LIMIT = 30
AXE = BUILD / "axe/package/axe.min.js"
HOSTILE = """<iframe name=f></iframe><form id=i method=post target=f enctype=text/plain action={0}/api/airplane><input name='{{"on":true,"a":"'
value='"}}'></form><script>var got = [], left = 5;
function end(what) {{ return function () {{ if (what) got.push(what); if (!--left) document.title = 'got ' + got.join(); }}; }}
fetch('{0}/api/airplane', {{method: 'POST', mode: 'no-cors', body: '{{"on":true}}'}}).then(end(), end());
fetch('{0}/api/airplane', {{method: 'POST', headers: {{'Content-Type': 'application/json'}}, body: '{{"on":true}}'}}).then(end('post'), end());
fetch('{0}/api/token').then(end('token'), end());
var events = new EventSource('{0}/api/events'); events.onopen = end('events'); events.onerror = end();
i.submit(); f.onload = null; setTimeout(end(), 1000);</script>"""


def fetch_axe():
    """The checker of accessibility, by npm, once; it is not part of the tree."""
    if not AXE.exists():
        AXE.parent.parent.mkdir(exist_ok=True)
        subprocess.run("npm pack --silent axe-core@4.14.1 && tar xzf axe-core-*.tgz", shell=True, cwd=AXE.parent.parent,
                       capture_output=True, timeout=60, check=False)
    return AXE.exists()


HAS_AXE = bool(webdriver) and fetch_axe()
IN_OWN_NETWORK = own_network()


@unittest.skipUnless(webdriver and os.path.exists(DRIVER), "python3-selenium and chromium-driver are not here")
class Case(unittest.TestCase):
    settings = {}

    def setUp(self):
        warnings.simplefilter("ignore", ResourceWarning)
        self.device = WebDevice(**self.settings)
        self.addCleanup(self.device.close)
        self.device.ready()
        self.browser = self.open_browser("en", PHONE)

    def open_browser(self, language, size, url=""):
        options = webdriver.ChromeOptions()
        for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--lang=" + language,
                     "--force-prefers-reduced-motion", f"--host-resolver-rules=MAP speaker.local {WIFI}, MAP evil.example 127.0.0.1"):
            options.add_argument(word)
        options.add_experimental_option("prefs", {"intl.accept_languages": language})
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        browser = webdriver.Chrome(service=Service(DRIVER), options=options)
        self.addCleanup(browser.quit)
        browser.set_window_size(*size)
        browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                {"width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": size == PHONE})
        browser.get(url or f"http://127.0.0.1:{self.device.port}/")
        return browser

    def tearDown(self):
        faults = [line["message"] for line in self.browser.get_log("browser")
                  if line["level"] == "SEVERE" and not any(word in line["message"] for word in ("/api/", "ERR_", "frame-ancestors", "421"))]
        self.assertEqual(faults, [])

    def until(self, condition, otherwise):
        end = time.monotonic() + LIMIT
        while not condition():
            if time.monotonic() > end:
                self.fail(f"{otherwise}: {self.text('body')}")
            time.sleep(0.05)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.browser.execute_script("var e = document.querySelector(arguments[0]); return e ? e.innerText.trim() : ''", selector)

    def says(self, selector, *words):
        self.until(lambda: all(word in self.text(selector) for word in words), f"no {words} in {selector}")

    def row(self, ssid):
        self.until(lambda: ssid in self.text("#networks"), "no " + ssid)
        return next(row for row in self.browser.find_elements(By.CSS_SELECTOR, "#networks button") if ssid in row.text)

    def scan(self):
        self.until(lambda: self.find("#scan").is_displayed(), "no page")
        self.find("#scan").click()
        self.row("Home")

    def join(self, ssid, key):
        self.browser.execute_script("arguments[0].click()", self.row(ssid))
        self.find("#key").send_keys(key)
        self.find("#join .main").click()

    def unfold(self, part):
        self.browser.execute_script("arguments[0].closest('details').open = true", self.find(part))

    def shoot(self, name):
        if SHOTS:
            pathlib.Path(SHOTS).mkdir(parents=True, exist_ok=True)
            self.browser.save_screenshot(f"{SHOTS}/{name}.png")

    def unfold_address(self):
        self.unfold("#address")
        self.browser.execute_script("arguments[0].value = 'wireless'; arguments[0].onchange()", self.find("#interface"))


class ThePage(Case):
    def test_sets_the_device_up_after_a_wrong_key(self):
        self.scan()
        self.shoot("networks")
        self.join("Home", "mistaken key")
        self.says("#progress", "refused the key")
        self.shoot("wrong-key")
        self.browser.refresh()
        self.says("#progress", "refused the key")  # which the device has told
        self.join("Home", "correct horse")
        self.says("#progress", "connected to “Home”")
        self.says("#headline", "Connected to “Home”")
        self.shoot("connected")
        self.assertEqual(self.find("#key").get_attribute("value"), "")
        self.assertNotIn("correct horse", self.browser.page_source)
        self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "#networks b"), [], "a name became markup")
        self.unfold("#known")
        forget = self.find("#known button")
        forget.click()
        forget.click()
        self.until(lambda: "Home" not in self.find("#known").get_attribute("textContent"), "still known")

    def tab_to(self, what):
        for _ in range(40):
            self.browser.switch_to.active_element.send_keys(Keys.TAB)
            focus = self.browser.switch_to.active_element
            if what in (focus.get_attribute("id"), focus.text.split("\n")[0]):
                return focus
        raise AssertionError("the keyboard does not come to " + what)

    def test_is_used_by_the_keyboard_alone(self):
        self.until(lambda: self.find("#scan").is_displayed(), "no page")
        self.tab_to("scan").send_keys(Keys.ENTER)
        self.row("Home")
        self.until(lambda: self.find("#scan").is_enabled(), "the scan has no end")
        self.tab_to("Home").send_keys(Keys.ENTER)
        self.until(lambda: self.find("#join").is_displayed(), "no form")
        key = self.browser.switch_to.active_element
        key.send_keys("correct horse")
        self.tab_to("show-key").send_keys(Keys.SPACE)
        self.assertEqual(key.get_attribute("type"), "text")
        self.browser.switch_to.active_element.send_keys(Keys.ENTER)
        self.says("#progress", "connected to “Home”")
        self.assertEqual(self.browser.switch_to.active_element.get_attribute("id"), "progress")
        self.assertEqual(self.browser.execute_script(
            "return [].filter.call(document.querySelectorAll('button, input, select'), function (e) {"
            " return !(e.textContent.trim() || e.getAttribute('aria-label') || (e.labels && e.labels.length)); }).length"), 0)

    def test_works_by_a_slow_link(self):
        self.browser.execute_cdp_cmd("Network.enable", {})
        self.browser.execute_cdp_cmd("Network.emulateNetworkConditions", {"offline": False, "latency": 600, "downloadThroughput": 12000,
                                                                          "uploadThroughput": 4000})
        began = time.monotonic()
        self.browser.refresh()
        self.scan()
        self.join("Home", "correct horse")
        self.says("#progress", "connected to “Home”")
        self.assertGreater(time.monotonic() - began, 4, "the link is not slow")

    def test_gives_nothing_to_a_hostile_page(self):
        url, port = f"http://127.0.0.1:{self.device.port}", free_port()

        class Hostile(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.send_response(200)
                self.end_headers()
                self.wfile.write(HOSTILE.format(url).encode())

            log_message = lambda *_: None

        server = http.server.HTTPServer(("127.0.0.1", port), Hostile)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        self.browser.switch_to.new_window("tab")
        self.browser.get(f"http://localhost:{port}/")
        self.until(lambda: "got" in self.browser.title, "the hostile page has no end")
        self.assertEqual(self.browser.title, "got")
        self.assertFalse(self.device.state()["airplane"])
        self.browser.get(f"http://evil.example:{self.device.port}/")  # whose name was made to lead here
        self.assertEqual(self.text("body"), "Another device has that name.")

    def open_softap(self, passphrase):
        self.unfold("#softap")
        self.find("#softap-name").send_keys("Setup")
        self.find("#softap-passphrase").send_keys(passphrase)
        self.find("#softap button").click()

    def test_gives_the_access_point_a_pass_phrase(self):
        self.until(lambda: self.find("#scan").is_displayed(), "no page")
        self.open_softap("short")
        self.says("#softap-error", "8 to 63")
        self.open_softap("-canary")
        self.says("#softap-state", "It asks for a pass phrase")
        self.assertEqual(self.find("#softap-passphrase").get_attribute("value"), "")
        self.assertNotIn("short-canary", self.browser.page_source)

    @unittest.skipUnless(HAS_AXE, "axe-core was not fetched: npm, or its registry, is not there")
    def test_is_accessible(self):
        self.scan()
        self.join("Home", "mistaken key")
        self.says("#progress", "refused the key")
        self.browser.execute_script(AXE.read_text(encoding="utf-8"))
        views = {"networks": "", "join": "document.querySelector('#networks button').click()", "hidden": "document.getElementById('hidden').click()",
                 "all": "document.querySelectorAll('details').forEach(function (d) { d.open = true; })",
                 "lost": "document.getElementById('lost').hidden = false",
                 "code": "document.getElementById('page').hidden = true, document.getElementById('code-form').hidden = false"}
        for view, script in views.items():
            for scheme in ("light", "dark"):
                for size in (PHONE, DESKTOP):
                    self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
                    self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
                        "width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": size == PHONE})
                    faults = self.browser.execute_async_script(script + """; var done = arguments[arguments.length - 1];
                        axe.run().then(function (found) { done(found.violations.map(function (v) {
                            return v.id + ': ' + v.nodes.map(function (n) { return n.target.join(' '); }); })); });""")
                    self.assertEqual(faults, [], f"{view} {scheme} {size}")

    def test_joins_by_wps_and_flies(self):
        self.until(lambda: self.find("#scan").is_displayed(), "no page")
        self.unfold("#wps-button")
        self.find("#wps-button").click()
        self.says("#progress", "press the WPS button")
        self.device.act("PressWps", "02:a0:00:00:00:01")
        self.says("#progress", "connected to “Home”")
        self.unfold("#airplane")
        self.find("#airplane").click()
        self.says("#headline", "Airplane mode is on")
        self.find("#airplane").click()
        self.until(lambda: "Airplane" not in self.text("#headline"), "still in flight")

    def test_tells_that_the_device_is_away_and_comes_back(self):
        self.scan()
        self.device.host.kill()
        self.says("#headline", "starting")
        self.device.start_host()
        self.until(lambda: "starting" not in self.text("#headline"), "the host is not back")
        self.device.web.kill()
        self.says("#lost", "does not answer")
        self.device.start_web()
        self.until(lambda: not self.find("#lost").is_displayed(), "the page is not back")
        self.scan()  # by the new token
        self.until(lambda: self.find("#scan").is_enabled(), "the scan has no end")
        self.assertEqual(self.text("#progress"), "")

    def test_fits_and_speaks_german_and_serves_two(self):
        other = self.open_browser("de", DESKTOP)
        self.browser, phone = other, self.browser
        self.scan()
        self.says("h1", "Netzwerk")
        self.shoot("desktop-german")
        self.browser.execute_script("document.querySelectorAll('details').forEach(function (d) { d.open = true; })")
        self.shoot("desktop-all")
        self.browser = phone
        self.row("Home")  # what the other asked for is shown to both
        self.join("Home", "correct horse")
        self.browser = other
        self.says("#headline", "Verbunden mit „Home“")
        self.browser = phone
        self.browser.execute_script("document.querySelectorAll('details').forEach(function (d) { d.open = true; })")
        for width, way in [(320, "ltr"), (320, "rtl"), (PHONE[0], "ltr"), (768, "ltr")]:
            self.browser.execute_script("document.documentElement.dir = arguments[0]", way)
            self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                         {"width": width, "height": 640, "deviceScaleFactor": 1, "mobile": True})
            self.assertLessEqual(self.browser.execute_script("return document.documentElement.scrollWidth"), width)


@unittest.skipUnless(IN_OWN_NETWORK, "network namespaces are root's")
class TheMove(Case):
    settings = {"listen": ["0.0.0.0"], "port": 80, "homeNetwork": True, "names": ["speaker.local"]}

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

        self.unfold_address()
        self.until(lambda: self.find("#dhcp").is_selected(), "no address")
        self.find("#dhcp").click()
        for field, text in [("#ip", STATIC), ("#netmask", "255.255.255.0")]:
            self.find(field).send_keys(text)
        self.find("#address > button").click()
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


if __name__ == "__main__":
    unittest.main()
