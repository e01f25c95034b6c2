"""A studio and a real browser for the tests, by the WebDriver protocol alone."""
import base64
import json
import os
import shutil
import signal
import subprocess
import tempfile
import time
import urllib.error
import urllib.request


class Studio:
    """kvx studio over an input, in a folder of its own."""

    def __init__(self, kvx, source="demo", cwd=None, env=None):
        self.cwd = cwd
        self.process = subprocess.Popen([kvx, "studio", source], cwd=cwd, stdout=subprocess.PIPE, text=True,
                                        env={**os.environ, **(env or {})})
        self.address = self.process.stdout.readline().strip()
        self.port = int(self.address.split(":")[2].split("/")[0])

    def stop(self):
        """Ends it as Ctrl-C does; its exit status."""
        if self.process.poll() is not None:
            return self.process.returncode
        self.process.send_signal(signal.SIGINT)
        self.process.stdout.close()
        return self.process.wait(20)

    def request(self, name, body=None, headers=None, address=None):
        """Status and bytes of an answer."""
        data = None if body is None else body if isinstance(body, bytes) else json.dumps(body).encode()
        request = urllib.request.Request((address or self.address) + name, data,
                                         {"Content-Type": "application/json", **(headers or {})})
        try:
            with urllib.request.urlopen(request, timeout=60) as answer:
                return answer.status, answer.read()
        except urllib.error.HTTPError as error:
            return error.code, error.read()


class Browser:
    """Headless Chromium."""

    def __init__(self, width=1600, height=900, dark=False):
        self.base = self.driver = None
        for _ in range(5):  # the port that it picks may be taken in the other address family
            self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True,
                                           start_new_session=True)
            ready = next((line for line in self.driver.stdout if "successfully on port " in line), None)
            if ready:
                self.base = f"http://127.0.0.1:{ready.split('on port ')[1].split('.')[0].strip()}"
                break
            self.driver.wait()
        self.folder = tempfile.mkdtemp()
        arguments = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                     "--disable-background-networking", "--disable-component-update", "--disable-sync",
                     f"--user-data-dir={self.folder}/profile", f"--window-size={width},{height}"]
        if dark:
            arguments.append("--force-dark-mode")
        options = {"binary": shutil.which("chromium"), "args": arguments,
                   "prefs": {"download.default_directory": self.folder}}
        session = self.call("POST", "/session", {"capabilities": {"alwaysMatch": {
            "browserName": "chrome", "goog:loggingPrefs": {"browser": "ALL"}, "goog:chromeOptions": options}}})
        self.session = f"/session/{session['sessionId']}"

    def call(self, method, path, body=None):
        data = None if method == "GET" else json.dumps(body or {}).encode()
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        with urllib.request.urlopen(request, timeout=120) as answer:
            return json.load(answer)["value"]

    def close(self):
        try:
            self.call("DELETE", self.session)
        finally:
            self.driver.stdout.close()
            os.killpg(self.driver.pid, signal.SIGKILL)
            self.driver.wait()
            shutil.rmtree(self.folder, ignore_errors=True)

    def open(self, address):
        self.call("POST", self.session + "/url", {"url": address})

    def devtools(self, command, parameters):
        return self.call("POST", self.session + "/goog/cdp/execute", {"cmd": command, "params": parameters})

    def resize(self, width, height, scale=1):
        self.devtools("Emulation.setDeviceMetricsOverride",
                      {"width": width, "height": height, "deviceScaleFactor": scale, "mobile": False})

    def color_scheme(self, name):
        self.devtools("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": name}]})

    def run(self, script, *arguments):
        """The value of `script`, which may await."""
        wrapped = ("const done = arguments[arguments.length - 1]; (async () => {" + script +
                   "})().then(done, error => done('' + error));")
        return self.call("POST", self.session + "/execute/async", {"script": wrapped, "args": list(arguments)})

    def wait(self, condition, seconds=20):
        """Until the expression is true; its value."""
        end = time.time() + seconds
        while True:
            value = self.run("return " + condition)
            if value and value is not True and str(value).startswith(("TypeError", "ReferenceError")):
                value = None
            if value:
                return value
            if time.time() > end:
                raise AssertionError(f"never true: {condition}")
            time.sleep(0.05)

    def find(self, selector):
        found = self.call("POST", self.session + "/element", {"using": "css selector", "value": selector})
        return next(iter(found.values()))

    def click(self, selector):
        self.call("POST", f"{self.session}/element/{self.find(selector)}/click")

    def type(self, selector, text):
        self.call("POST", f"{self.session}/element/{self.find(selector)}/value", {"text": text})

    def keys(self, *keys):
        """Presses keys together, wherever the focus is."""
        steps = [{"type": "keyDown", "value": key} for key in keys] + \
                [{"type": "keyUp", "value": key} for key in reversed(keys)]
        self.call("POST", self.session + "/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": steps}]})

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.call("GET", self.session + "/screenshot")))

    def errors(self):
        """What the console complained of since the last call."""
        log = self.call("POST", self.session + "/se/log", {"type": "browser"})
        return [entry["message"] for entry in log
                if entry["level"] in ("SEVERE", "WARNING") and "readback" not in entry["message"]]
