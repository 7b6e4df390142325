# SPDX-License-Identifier: MIT
#
# A browser by remote control: the few WebDriver calls that the tests need, over HTTP to Debian's chromedriver, with
# nothing but Python's standard library.
import base64
import http.client
import json
import os
import re
import shutil
import subprocess
import tempfile

BROWSERS = ("chromium", "chromium-browser", "google-chrome")
FLAGS = (
    "--headless=new --no-first-run --disable-gpu --disable-dev-shm-usage --disable-quic --disable-sync "
    "--disable-background-networking --disable-component-update --hide-scrollbars"
).split()


def installed():
    """The paths of browser and driver; None for what is missing."""
    browser = next((path for path in map(shutil.which, BROWSERS) if path), None)
    return browser, shutil.which("chromedriver")


class Browser:
    """A headless Chromium with a profile of its own, which vanishes with it."""

    def __init__(self, width, height):
        browser, driver = installed()
        self.profile = tempfile.mkdtemp(prefix="zel-browser-")
        self.driver = subprocess.Popen(
            [driver, "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True
        )
        self.browser = None
        try:
            for line in self.driver.stdout:
                found = re.search(r"started successfully on port (\d+)", line)
                if found:
                    break
            self.connection = http.client.HTTPConnection("127.0.0.1", int(found.group(1)), timeout=60)
            flags = FLAGS + [f"--user-data-dir={self.profile}", f"--window-size={width},{height}"]
            if os.geteuid() == 0:
                flags.append("--no-sandbox")  # Chromium's own sandbox refuses to run as root
            options = {
                "goog:chromeOptions": {"binary": browser, "args": flags},
                "goog:loggingPrefs": {"browser": "ALL"},
            }
            self.browser = self._call("POST", "/session", {"capabilities": {"alwaysMatch": options}})["sessionId"]
            size = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False}
            self.cdp("Emulation.setDeviceMetricsOverride", **size)
        except BaseException:
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        try:
            if self.browser:
                self._do("DELETE", "")
        finally:
            self.driver.terminate()
            self.driver.wait()
            self.driver.stdout.close()
            shutil.rmtree(self.profile, ignore_errors=True)

    def _call(self, method, path, body=None):
        text = None if body is None else json.dumps(body)
        self.connection.request(method, path, text, {"Content-Type": "application/json"})
        value = json.loads(self.connection.getresponse().read())["value"]
        if isinstance(value, dict) and "error" in value:
            raise RuntimeError(f"{value['error']}: {value['message']}")
        return value

    def _do(self, method, path, body=None):
        return self._call(method, f"/session/{self.browser}{path}", body)

    def open(self, url):
        self._do("POST", "/url", {"url": url})

    def run(self, script, *arguments):
        """What the body of a function of the page returns."""
        return self._do("POST", "/execute/sync", {"script": script, "args": arguments})

    def cdp(self, command, **parameters):
        return self._do("POST", "/goog/cdp/execute", {"cmd": command, "params": parameters})

    def key(self, key, shift=False):
        down = [{"type": "keyDown", "value": "\ue008"}] if shift else []
        up = [{"type": "keyUp", "value": "\ue008"}] if shift else []
        press = [{"type": "keyDown", "value": key}, {"type": "keyUp", "value": key}]
        self._do("POST", "/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": down + press + up}]})

    def point(self, x, y, click=False):
        moves = [{"type": "pointerMove", "x": round(x), "y": round(y)}]
        if click:
            moves += [{"type": "pointerDown", "button": 0}, {"type": "pointerUp", "button": 0}]
        self._do("POST", "/actions", {"actions": [{"type": "pointer", "id": "mouse", "actions": moves}]})

    def messages(self):
        """What the console has said since the last call."""
        return [entry["message"] for entry in self._do("POST", "/se/log", {"type": "browser"})]

    def theme(self, name):
        self.cdp("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": name}])

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self._do("GET", "/screenshot")))
