"""A real `qorctl serve` under Wine with a simulated QOR of its own."""
import json
import os
import re
import signal
import subprocess
import sys
import threading
import time
import urllib.request
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/system/terminal"))
from station import Station, free_port, windows_path  # noqa: E402,F401  pylint: disable=wrong-import-position

START_S = 120  # QOR itself has 15 s of them; a loaded machine is slow
END_S = 30
LISTENING = re.compile(r"listening on (http://127\.0\.0\.1:(\d+)/)")


class CallFailed(Exception):
    def __init__(self, error):
        super().__init__(error["message"])
        self.error = error


class Served:
    """A server with a station of its own; `options` go to the program as they are."""

    def __init__(self, programs, transport, *options, token=None, **station):
        self.station = Station(programs, transport, **station)
        self._options = ["--trace", windows_path(self.station.folder / "host.log"), *options]
        self._token = token
        if token is not None:
            file = self.station.folder / "token.txt"
            file.write_text(token)
            self._options += ["--token-file", windows_path(file)]
        self._settings = windows_path(self.station.settings)
        self.port = 0
        try:
            self.start()
        except BaseException:
            self.station.close()
            raise

    def start(self):
        """On the same port as before, if there was one."""
        self.told = []
        self._process = subprocess.Popen(
            [str(ROOT / "cmake/wine-run.sh"), str(self.station.programs / "qorctl.exe"), "serve",
             self._settings, "--listen", f"127.0.0.1:{self.port}",
             "--allow-shutdown", *self._options],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
            start_new_session=True)
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        deadline = time.monotonic() + START_S
        while not any(map(LISTENING.search, self.told)):
            if time.monotonic() > deadline or self._process.poll() is not None:
                self.stop()
                raise RuntimeError("the server does not listen: " + "".join(self.told))
            time.sleep(0.05)
        found = next(filter(None, map(LISTENING.search, self.told)))
        self.url, self.port = found[1], int(found[2])

    def _read(self):
        for line in self._process.stderr:
            self.told.append(line.decode(errors="replace"))

    def call(self, method, **params):
        """As another client than the page."""
        head = {"Content-Type": "application/json"}
        if self._token is not None:
            head["Authorization"] = f"Bearer {self._token}"
        body = json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params}).encode()
        asked = urllib.request.Request(self.url + "rpc", body, head)
        with urllib.request.urlopen(asked, timeout=END_S) as response:
            answer = json.load(response)
        if "error" in answer:
            raise CallFailed(answer["error"])
        return answer["result"]

    def value(self, name):
        return self.call("getParamData", name=name, timeoutMs=1000)["values"]

    def stop(self):
        """Ends in order; by force if it does not."""
        try:
            self.call("shutdownServer")
            self._process.wait(END_S)
        except (OSError, CallFailed, AttributeError, subprocess.TimeoutExpired):
            pass
        self.kill()

    def kill(self):
        try:
            os.killpg(self._process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self._process.wait()
        self._reader.join(END_S)
        self._process.stderr.close()

    def close(self):
        self.stop()
        self.station.close()
