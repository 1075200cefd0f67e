# SPDX-License-Identifier: Apache-2.0
"""The page in a real browser, without a head, against the played world: what people do, by keyboard too."""
import os, pathlib, time, unittest, warnings

from webdevice import WebDevice

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


@unittest.skipUnless(webdriver and os.path.exists(DRIVER), "python3-selenium and chromium-driver are not here")
class ThePage(unittest.TestCase):
    def setUp(self):
        warnings.simplefilter("ignore", ResourceWarning)
        self.device = WebDevice()
        self.addCleanup(self.device.close)
        self.device.ready()
        self.browser = self.open_browser("en", PHONE)

    def open_browser(self, language, size):
        options = webdriver.ChromeOptions()
        for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--lang=" + language,
                     "--force-prefers-reduced-motion"):
            options.add_argument(word)
        options.add_experimental_option("prefs", {"intl.accept_languages": language})
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        browser = webdriver.Chrome(service=Service(DRIVER), options=options)
        self.addCleanup(browser.quit)
        browser.set_window_size(*size)
        browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                {"width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": size == PHONE})
        browser.get(f"http://127.0.0.1:{self.device.port}/")
        return browser

    def tearDown(self):
        faults = [line["message"] for line in self.browser.get_log("browser")
                  if line["level"] == "SEVERE" and "/api/" not in line["message"]]
        self.assertEqual(faults, [])

    def until(self, condition, otherwise):
        end = time.monotonic() + LIMIT
        while not condition():
            self.assertLess(time.monotonic(), end, f"{otherwise}: {self.text('body')}")
            time.sleep(0.05)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.find(selector).text

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

    def test_sets_the_device_up_after_a_wrong_key(self):
        self.scan()
        self.shoot("networks")
        self.join("Home", "mistaken key")
        self.says("#progress", "refused the key")
        self.shoot("wrong-key")
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

    def test_is_used_by_the_keyboard_alone(self):
        self.scan()
        for _ in range(40):
            self.browser.switch_to.active_element.send_keys(Keys.TAB)
            if "Guests" in self.browser.switch_to.active_element.text:
                break
        self.browser.switch_to.active_element.send_keys(Keys.ENTER)
        self.until(lambda: self.find("#join").is_displayed(), "no form")
        self.browser.switch_to.active_element.send_keys(Keys.ENTER)
        self.says("#progress", "connected to “<b>Guests”")
        self.assertEqual(self.browser.execute_script(
            "return [].filter.call(document.querySelectorAll('button, input, select'), function (e) {"
            " return !(e.textContent.trim() || e.getAttribute('aria-label') || (e.labels && e.labels.length)); }).length"), 0)

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
        self.browser.execute_script("document.querySelectorAll('details').forEach(function (d) { d.open = true; })")
        for width in (320, PHONE[0], 768):
            self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                         {"width": width, "height": 640, "deviceScaleFactor": 1, "mobile": True})
            self.assertLessEqual(self.browser.execute_script("return document.documentElement.scrollWidth"), width)


if __name__ == "__main__":
    unittest.main()
