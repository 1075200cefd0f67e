# SPDX-License-Identifier: Apache-2.0
"""The page in a real browser, without a head, against the played world: what the cases have in common."""
import os, pathlib, time, unittest, warnings

from webdevice import WIFI, WebDevice

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = By = Keys = None
DRIVER = "/usr/bin/chromedriver"
SHOTS = os.environ.get("ORVA_SCREENSHOTS")  # a folder that takes pictures for the docs
PHONE, DESKTOP = (360, 640), (1200, 900)
LIMIT = 30
NAMES = {"speaker.local": WIFI, "evil.example": "127.0.0.1"}  # what the browser resolves; cases add to it


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
                     "--force-prefers-reduced-motion",
                     "--host-resolver-rules=" + ", ".join(f"MAP {name} {to}" for name, to in NAMES.items())):
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
