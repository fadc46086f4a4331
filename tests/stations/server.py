"""A station with "qorctl serve" as the guide starts it, seen from outside: over HTTP."""
import http.client
import json
import re
import socket
import threading

import guide
from native import PATIENCE_S, Folder, end, wait_until
from station import Station, windows_path

TOKEN = "a-token-that-nobody-guesses-0123"
LISTENING = re.compile(r"listening on http://127\.0\.0\.1:(\d+)/")
LINE = re.compile(r"^(\w+)(?:\{(.*)\})? (\S+)$")
LABEL = re.compile(r'(\w+)="([^"]*)"')


class RpcError(Exception):
    def __init__(self, error):
        super().__init__(error["message"])
        self.code, self.data = error["code"], error.get("data", {})


class Server:
    def __init__(self, programs, transport="tcp", script=None, options=""):
        self.station = Station(programs, transport, script)
        self.folder = Folder(programs)
        self.folder.write("qor-settings.ini", self.station.settings.read_text())
        self.folder.write("token", TOKEN + "\n")
        trace = windows_path(self.folder.path / "trace.log")
        self.folder.let_qorctl_be(f"--allow-shutdown --trace '{trace}' {options}", self.folder.path / "output")
        command = guide.exchanged(guide.command("qorctl serve"), "0.0.0.0:8470", "127.0.0.1:0")
        self.process = self.folder.begin(command, "server.log")
        self.port = None

    def told(self):
        return self.folder.read("output.errors") + self.folder.read("server.log")

    def await_start(self):
        """May be called again."""
        def listening():
            if self.process.poll() is not None:
                raise AssertionError("the server has ended: " + self.told())
            return LISTENING.search(self.told())
        self.port = int(wait_until(listening, "a server that listens")[1])
        return self

    @property
    def address(self):
        return f"127.0.0.1:{self.port}"

    def connection(self):
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)

    def get(self, path, token=TOKEN):
        connection = self.connection()
        connection.request("GET", path, headers={"Authorization": "Bearer " + token})
        answer = connection.getresponse()
        body = answer.read().decode()
        connection.close()
        return answer.status, body

    def post(self, message, client=None):
        connection = self.connection()
        more = {"X-Qor-Client": client} if client else {}
        connection.request("POST", "/rpc", json.dumps(message),
                           {"Content-Type": "application/json", "Authorization": "Bearer " + TOKEN, **more})
        answer = connection.getresponse().read().decode()
        connection.close()
        return json.loads(answer)

    def call(self, method, client=None, **params):
        answer = self.post({"jsonrpc": "2.0", "id": 1, "method": method, "params": params}, client)
        if "error" in answer:
            raise RpcError(answer["error"])
        return answer["result"]

    def figures(self):
        status, text = self.get("/metrics")
        if status != 200:
            raise AssertionError(f"{status}: {text}")
        return Figures(text)

    def tell_to_stop(self):
        """In order: the server ends, and with it its QOR."""
        self.call("shutdownServer")

    def stop(self):
        self.tell_to_stop()
        return self.process.wait(PATIENCE_S)

    def close(self):
        end(self.process)
        self.folder.close()
        self.station.close()


class Figures:
    """The lines of /metrics, by name and labels."""

    def __init__(self, text):
        self.text, self._values = text, {}
        for line in text.splitlines():
            if not line.startswith("#"):
                name, labels, value = LINE.match(line).groups()
                self._values[name, frozenset(LABEL.findall(labels or ""))] = float(value)

    def __call__(self, name, **labels):
        return self._values[name, frozenset(labels.items())]

    def has(self, name, **labels):
        return (name, frozenset(labels.items())) in self._values

    def buckets(self, method):
        """Upper bounds and counts."""
        found = [(dict(labels), value) for (name, labels), value in self._values.items()
                 if name == "qor_request_duration_seconds_bucket" and ("method", method) in labels]
        return sorted((float(labels["le"]), value) for labels, value in found)


class Events:
    """What a client is told that stays; ends with `close`."""

    def __init__(self, server):
        self._connection = server.connection()
        self._connection.request("GET", "/events", headers={"Authorization": "Bearer " + TOKEN})
        self._answer = self._connection.getresponse()
        self.told = []
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        self.client = wait_until(lambda: self.of("hello"), "hello")[0]["client"]

    def _read(self):
        name = None
        try:
            for line in self._answer:
                word, _, rest = line.decode().rstrip("\r\n").partition(": ")
                if word == "event":
                    name = rest
                elif word == "data":
                    self.told.append((name, json.loads(rest)))
        except (OSError, ValueError, http.client.HTTPException):
            pass  # closed, by this side or the other

    def of(self, name):
        return [params for event, params in list(self.told) if event == name]

    def close(self):
        if self._connection.sock:
            self._connection.sock.shutdown(socket.SHUT_RDWR)
        self._reader.join(10)
        self._connection.close()
