# SPDX-License-Identifier: MIT
#
# A headless Chromium, driven by Debian's python3-selenium and chromium-driver.
import os
import shutil

from selenium.webdriver import ActionChains, Chrome, ChromeOptions
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.keys import Keys

FLAGS = ("--headless=new", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars")


def installed():
    """The paths of browser and driver; None for what is missing."""
    return shutil.which("chromium"), shutil.which("chromedriver")


class Browser(Chrome):
    def __init__(self, width, height):
        browser, driver = installed()
        options = ChromeOptions()
        options.binary_location = browser
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        options.ignore_local_proxy_environment_variables()
        for flag in FLAGS:
            options.add_argument(flag)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")  # Chromium's own sandbox refuses to run as root
        super().__init__(service=Service(driver), options=options)
        self.size(width, height)

    def size(self, width, height):
        size = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False}
        self.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", size)

    def run(self, script, *arguments):
        """What the body of a function of the page returns."""
        return self.execute_script(script, *arguments)

    def key(self, key, shift=False):
        actions = ActionChains(self, duration=0)
        if shift:
            actions.key_down(Keys.SHIFT)
        actions.send_keys(key)
        if shift:
            actions.key_up(Keys.SHIFT)
        actions.perform()

    def point(self, x, y, click=False):
        actions = ActionChains(self, duration=0)
        actions.w3c_actions.pointer_action.move_to_location(round(x), round(y))
        if click:
            actions.click()
        actions.perform()

    def messages(self):
        """What the console has said since the last call."""
        return [entry["message"] for entry in self.get_log("browser")]

    def theme(self, name):
        scheme = {"name": "prefers-color-scheme", "value": name}
        self.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [scheme]})
