"""Chromium without a window, and what it says of a page."""

import contextlib
import json
import shutil

import pytest

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.options import Options
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.support.ui import WebDriverWait
except ImportError:
    webdriver = None


class Browser:
    def __init__(self, driver):
        self.driver = driver
        self.run = driver.execute_script
        self.devtools = driver.execute_cdp_cmd

    def open(self, path):
        self.driver.get(path.as_uri())

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        (element,) = self.all(selector)
        return element

    def wait_until(self, is_so, seconds=30):
        return WebDriverWait(self.driver, seconds, 0.02).until(lambda _: is_so())

    def complaints(self):
        """All lines of the console since the last call; the policy's refusals are among them."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requested(self):
        """The addresses that were asked for since the last call."""
        events = [json.loads(entry["message"])["message"]
                  for entry in self.driver.get_log("performance")]
        return [event["params"]["request"]["url"] for event in events
                if event["method"] == "Network.requestWillBeSent"]


@contextlib.contextmanager
def opened_browser():
    programs = [shutil.which(name) for name in ("chromium", "chromedriver")]
    if webdriver is None or None in programs:
        pytest.skip("NO PAGE WAS OPENED: needs chromium, chromium-driver and python3-selenium")
    options = Options()
    options.binary_location = programs[0]
    # Without a sandbox it also runs as root, and the page is our own.
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--window-size=1400,1000"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    driver = webdriver.Chrome(service=Service(programs[1]), options=options)
    try:
        yield Browser(driver)
    finally:
        driver.quit()
