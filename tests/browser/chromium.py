"""A headless Chromium, driven over a pair of pipes with its own remote-control protocol."""
import base64
import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
import time

ANSWER_S = 60  # a loaded machine is slow, a dead browser closes its pipe at once

ARGUMENTS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--disable-dev-shm-usage", "--disable-extensions", "--hide-scrollbars", "--mute-audio",
    "--force-device-scale-factor=1", "--remote-debugging-pipe",
]


# What the keys that have no character do depends on their numbers.
KEY_CODES = {"Backspace": 8, "Tab": 9, "Enter": 13, "Escape": 27, " ": 32, "End": 35, "Home": 36, "ArrowLeft": 37,
             "ArrowUp": 38, "ArrowRight": 39, "ArrowDown": 40}


class BrowserError(Exception):
    pass


class Chromium:
    """One browser with one page. What the page says and asks for is kept in `events`."""

    def __init__(self):
        program = shutil.which("chromium")
        if not program:
            raise BrowserError("chromium is not installed: cmake/install-packages.sh test")
        self._profile = tempfile.mkdtemp(prefix="qor-chromium-")
        self._buffer = b""
        self._next_id = 0
        self.events = []
        self._session = None
        self._start(program)
        target = self._call("Target.createTarget", {"url": "about:blank"})["targetId"]
        self._session = self._call(
            "Target.attachToTarget", {"targetId": target, "flatten": True})["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def _start(self, program):
        """The browser reads requests from its descriptor 3 and writes answers to 4."""
        to_browser, self._requests = os.pipe()
        self._answers, from_browser = os.pipe()
        arrange = 'exec 3<&"$1" 4>&"$2"; shift 2; exec "$@"'
        command = ["bash", "-c", arrange, "bash", str(to_browser), str(from_browser), program,
                   *ARGUMENTS, f"--user-data-dir={self._profile}"]
        self._process = subprocess.Popen(
            command, pass_fds=(to_browser, from_browser), stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True,
            env={**os.environ, "HOME": self._profile})
        os.close(to_browser)
        os.close(from_browser)

    def close(self):
        try:
            self._session = None
            self._call("Browser.close")
            self._process.wait(ANSWER_S)
        except (BrowserError, OSError, subprocess.TimeoutExpired):
            pass
        try:  # whatever of its processes is left
            os.killpg(self._process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self._process.wait()
        os.close(self._requests)
        os.close(self._answers)
        shutil.rmtree(self._profile, ignore_errors=True)

    def call(self, method, parameters=None):
        """Asks the page something."""
        return self._call(method, parameters)

    def _call(self, method, parameters=None):
        self._next_id += 1
        request = {"id": self._next_id, "method": method, "params": parameters or {}}
        if self._session:
            request["sessionId"] = self._session
        os.write(self._requests, json.dumps(request).encode() + b"\0")
        while True:
            message = self._read(time.monotonic() + ANSWER_S)
            if message.get("id") != self._next_id:
                self.events.append(message)
            elif "error" in message:
                raise BrowserError(f"{method}: {message['error']}")
            else:
                return message["result"]

    def _read(self, deadline):
        while b"\0" not in self._buffer:
            ready, _, _ = select.select([self._answers], [], [], max(0, deadline - time.monotonic()))
            piece = os.read(self._answers, 1 << 16) if ready else b""
            if not piece:
                raise BrowserError("the browser has ended or does not answer")
            self._buffer += piece
        message, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(message)

    def open(self, url):
        """Loads a page and waits until it is loaded."""
        before = len(self.said("Page.loadEventFired"))
        self.call("Page.navigate", {"url": url})
        deadline = time.monotonic() + ANSWER_S
        while len(self.said("Page.loadEventFired")) == before:
            self.events.append(self._read(deadline))

    def said(self, method):
        return [event["params"] for event in self.events if event.get("method") == method]

    def run(self, script):
        """The value of a script expression in the page."""
        answer = self.call("Runtime.evaluate", {"expression": script, "returnByValue": True,
                                                "awaitPromise": True})
        if "exceptionDetails" in answer:
            raise BrowserError(f"{script}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def point_at(self, x, y):
        self.call("Input.dispatchMouseEvent", {"type": "mouseMoved", "x": x, "y": y})

    def _button(self, kind, place, count=1):
        self.call("Input.dispatchMouseEvent", {"type": kind, "x": place[0], "y": place[1],
                                               "button": "left", "buttons": 1, "clickCount": count})

    def press(self, place):
        self.point_at(*place)
        self._button("mousePressed", place)

    def move_on(self, place):
        """With the button still pressed."""
        self._button("mouseMoved", place)

    def let_go(self, place):
        self._button("mouseReleased", place)

    def click(self, place):
        self.press(place)
        self.let_go(place)

    def key(self, kind, name, text=""):
        """`kind`: "keyDown" or "keyUp"; `name`: as a page's script gets it, "ArrowLeft" or "a"."""
        self.call("Input.dispatchKeyEvent", {"type": kind, "key": name, "text": text,
                                             "windowsVirtualKeyCode": KEY_CODES.get(name, 0)})

    def strike(self, name):
        self.key("keyDown", name, {"Enter": "\r", " ": " "}.get(name, name if len(name) == 1 else ""))
        self.key("keyUp", name)

    def write(self, text):
        """Into what has the focus, as if it was typed."""
        self.call("Input.insertText", {"text": text})

    def drag(self, start, end):
        self.press(start)
        self.move_on(end)
        self.let_go(end)

    def double_click(self, place):
        self.point_at(*place)
        for count in (1, 2):
            self._button("mousePressed", place, count)
            self._button("mouseReleased", place, count)

    def resize(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride",
                  {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def use_colours(self, scheme):
        """"light" or "dark", as a person's system would ask for."""
        self.call("Emulation.setEmulatedMedia",
                  {"features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def settle(self):
        """Waits until what has happened is drawn."""
        self.run("new Promise(r => requestAnimationFrame(() => requestAnimationFrame(r)))")

    def picture(self, path):
        data = self.call("Page.captureScreenshot", {"format": "png"})["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))
