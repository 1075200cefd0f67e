# SPDX-License-Identifier: Apache-2.0
"""What people do on the page, by keyboard too; what it looks like; and that it is accessible."""
import hashlib, subprocess, time, unittest

from browser import DESKTOP, PHONE, By, Case, Keys, webdriver
from privatebus import BUILD

AXE = BUILD / "axe/package/axe.min.js"
AXE_SHA256 = "29348999450cdf2849a8e70b7912fc2da85a849da39c0d0d5394f51d4a9ed95c"


def fetch_axe():
    """The checker of accessibility, by npm, once; it is not part of the tree."""
    if not AXE.exists():
        AXE.parent.parent.mkdir(exist_ok=True)
        subprocess.run("npm pack --silent axe-core@4.14.1 && tar xzf axe-core-*.tgz", shell=True, cwd=AXE.parent.parent,
                       capture_output=True, timeout=60, check=False)
    return AXE.exists() and hashlib.sha256(AXE.read_bytes()).hexdigest() == AXE_SHA256


HAS_AXE = bool(webdriver) and fetch_axe()


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
        self.says("#progress", "“Home” is forgotten")

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

    def test_joins_a_network_that_hides_and_leaves_alone_what_it_cannot_join(self):
        self.scan()
        self.assertNotIn("Attic", self.text("#networks"))
        self.says("#networks", "Office", "wants an account")
        self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, "#networks button")), 3)
        self.find("#hidden").click()
        self.find("#ssid").send_keys("Attic")
        self.find("#key").send_keys("correct horse")
        self.find("#join .main").click()
        self.says("#progress", "connected to “Attic”")

    def test_joins_by_wps_and_flies(self):
        self.until(lambda: self.find("#scan").is_displayed(), "no page")
        self.unfold("#wps-button")
        self.find("#wps-button").click()
        self.says("#progress", "press the WPS button")
        self.device.act("PressWps", "02:a0:00:00:00:01")
        self.says("#progress", "connected to “Home”")
        self.find("#wps-pin").click()
        self.until(lambda: self.text("#progress .pin"), "no PIN")
        self.device.act("EnterWpsPin", "02:a0:00:00:00:01", self.text("#progress .pin"))
        self.says("#progress", "connected to “Home”")
        self.unfold("#airplane")
        self.find("#airplane").click()
        self.says("#headline", "Airplane mode is on")
        self.says("#progress", "The radios are off")
        self.find("#airplane").click()
        self.until(lambda: "Airplane" not in self.text("#headline"), "still in flight")
        self.says("#progress", "The radios are on again")

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


if __name__ == "__main__":
    unittest.main()
