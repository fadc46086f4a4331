"""A server that others use too: requests over `POST /rpc`, events over `GET /events`.

The connection for the events is what makes this program a client: the server writes on it every second, and
when it ends, at either side, the client has left.
"""
from __future__ import annotations

import json
import select
import socket
import threading
import time
from http.client import HTTPConnection, HTTPException, HTTPResponse
from typing import Any, Dict, Iterator, List, Mapping, Optional, Set, Tuple, Type
from urllib.parse import urlsplit

from . import errors
from .errors import Closed, NoServer, ProtocolError, QorError, ServerEnded
from .feeds import SLICE_S
from .link import Link, OnEnd, OnEvent, Pending, copy_of, request_of, result_of

SILENCE_S = 10.0    # a server that lives writes every second
CONNECT_S = 10.0
BODY_S = 60.0       # a response that has begun
REUSE_S = 1.0       # a server closes idle connections after some seconds, perhaps while a request is on its way
MOST_IDLE = 8
NOTHING: Tuple[str, Mapping[str, Any]] = ("", {})
OF_STATUS: Dict[int, Type[QorError]] = {
    401: NoServer, 403: NoServer, 413: errors.BadArgument, 429: errors.Busy, 503: errors.Busy}


class HttpLink(Link):
    """One client of a server."""

    def __init__(self, url: str, token: Optional[str], timeout: float, on_event: OnEvent, on_end: OnEnd) -> None:
        super().__init__(on_event, on_end)
        parts = urlsplit(url if "://" in url else "http://" + url)
        if parts.scheme != "http" or not parts.hostname:
            raise NoServer(f"{url} is no address of a server.", check="It looks like http://127.0.0.1:8080/.")
        self._address = (parts.hostname, parts.port or 80)
        self._headers = {"Authorization": f"Bearer {token}"} if token is not None else {}
        self._closing = False
        self._last_number = 0                       # guarded by _lock
        self._idle: List[Tuple[float, HTTPConnection]] = []   # guarded by _lock
        self._busy: Set[HTTPConnection] = set()     # guarded by _lock
        self._events_connection, response = self._open_events(timeout)
        self._socket = self._events_connection.sock
        self._reader = threading.Thread(target=self._read_events, args=(response,), name="qorcontrol events",
                                        daemon=True)
        self._reader.start()

    def request(self, method: str, params: Mapping[str, Any]) -> Pending:
        with self._lock:
            self._check()
            self._last_number += 1
            number = self._last_number
        body = json.dumps(request_of(method, params, number), separators=(",", ":"), allow_nan=False).encode("ascii")
        headers = {**self._headers, "Content-Type": "application/json"}
        connection = self._take_connection()
        try:
            connection.request("POST", "/rpc", body, headers)
        except (OSError, HTTPException) as error:
            return Broken(method, self._why_broken(connection, error, method))
        return Response(self, connection, method)

    def close(self) -> None:
        self._closing = True
        self._end(Closed("The server was left by this program."))
        shut(self._socket)
        if threading.current_thread() is not self._reader:
            self._reader.join(CONNECT_S)

    # --- requests ---

    def _take_connection(self) -> HTTPConnection:
        with self._lock:
            while self._idle:
                since, connection = self._idle.pop()
                if time.monotonic() - since < REUSE_S:
                    self._busy.add(connection)
                    return connection
                connection.close()
            connection = HTTPConnection(*self._address, timeout=BODY_S)
            self._busy.add(connection)
            return connection

    def _give_back(self, connection: HTTPConnection, is_reusable: bool) -> None:
        with self._lock:
            self._busy.discard(connection)
            if is_reusable and not self._ended and len(self._idle) < MOST_IDLE:
                self._idle.append((time.monotonic(), connection))
                return
        connection.close()

    def _why_broken(self, connection: HTTPConnection, error: Exception, method: str) -> QorError:
        self._give_back(connection, False)
        why = self._ended or ServerEnded(f"The connection to the server broke before it answered: {error}.")
        return copy_of(why, method)

    def _fail_waiting(self, why: QorError) -> None:
        """Whoever waits on a socket wakes up."""
        with self._lock:
            busy = list(self._busy)
            idle = [connection for _, connection in self._idle]
            self._idle.clear()
        for connection in busy:
            shut(connection.sock)
        for connection in idle:
            connection.close()

    # --- events ---

    def _open_events(self, timeout: float) -> Tuple[HTTPConnection, HTTPResponse]:
        host, port = self._address
        connection = HTTPConnection(host, port, timeout=timeout)
        try:
            connection.request("GET", "/events", headers={**self._headers, "Accept": "text/event-stream"})
            response = connection.getresponse()
            if response.status != 200:
                raise failure_of(response.status, response.read(), None, NoServer)
            name, hello = next(events_of(response), NOTHING)
            if name != "hello" or not isinstance(hello.get("client"), str):
                raise NoServer(f"What listens at {host}:{port} is no server of this kind.")
        except (OSError, HTTPException, ValueError) as error:
            connection.close()
            raise NoServer(f"No server answers at {host}:{port}: {error}.",
                           check="See whether qorctl serve --listen runs there.") from error
        except BaseException:
            connection.close()
            raise
        self._headers["X-Qor-Client"] = hello["client"]
        connection.sock.settimeout(SILENCE_S)
        return connection, response

    def _read_events(self, response: HTTPResponse) -> None:
        why = "The server ended."
        try:
            for name, told in events_of(response):
                self._on_event(name, told)
        except socket.timeout:
            why = f"The server has said nothing for {SILENCE_S:.0f} s."
        except (OSError, HTTPException, ValueError, AttributeError) as error:
            why = f"The connection to the server broke: {error}."
        self._end(Closed("The server was left by this program.") if self._closing else ServerEnded(why))
        self._events_connection.close()


class Broken(Pending):
    """A request that could not be sent."""

    def __init__(self, method: str, failure: QorError) -> None:
        super().__init__(method)
        self._failure = failure

    def wait(self, timeout: Optional[float] = None) -> bool:
        return True

    def result(self) -> Dict[str, Any]:
        raise self._failure


class Response(Pending):
    """A request on a connection of its own, read by who waits for it."""

    def __init__(self, link: HttpLink, connection: HTTPConnection, method: str) -> None:
        super().__init__(method)
        self._link = link
        self._connection = connection
        self._end_after = link._ended is not None  # it ended while the request was on its way

    def wait(self, timeout: Optional[float] = None) -> bool:
        end = None if timeout is None else time.monotonic() + timeout
        while not self._end_after and self._link._ended is None:
            left = SLICE_S if end is None else min(SLICE_S, end - time.monotonic())
            if is_readable(self._connection.sock, max(0, left)):
                return True
            if left <= 0:
                return False
        return True

    def result(self) -> Dict[str, Any]:
        try:
            response = self._connection.getresponse()
            body = response.read()
        except (OSError, HTTPException, AttributeError) as error:
            raise self._link._why_broken(self._connection, error, self.method) from None
        self._link._give_back(self._connection, not response.will_close)
        if response.status != 200:
            raise failure_of(response.status, body, self.method, ProtocolError)
        try:
            told = json.loads(body)
        except ValueError:
            raise ProtocolError("The server's response is no JSON.", method=self.method) from None
        return result_of(told if isinstance(told, dict) else {}, self.method)

    def abandon(self) -> None:
        self._link._give_back(self._connection, False)


def is_readable(sock: socket.socket, timeout: float) -> bool:
    """Also where it is closed: reading then tells. In slices, so that Ctrl-C comes through everywhere."""
    try:
        if hasattr(select, "poll"):  # no limit on the number of files
            poll = select.poll()
            poll.register(sock, select.POLLIN)
            return bool(poll.poll(timeout * 1000))
        return bool(select.select([sock], [], [], timeout)[0])
    except (OSError, ValueError, TypeError, AttributeError):
        return True


def shut(sock: Optional[socket.socket]) -> None:
    """Wakes who reads of it."""
    try:
        if sock:
            sock.shutdown(socket.SHUT_RDWR)
    except OSError:
        pass


def events_of(response: HTTPResponse) -> Iterator[Tuple[str, Mapping[str, Any]]]:
    """The events of a stream of text/event-stream, until it ends."""
    name, data = "", []  # type: Tuple[str, List[str]]
    while True:
        raw = response.readline()
        if not raw:
            return
        line = raw.decode("utf-8", "replace").rstrip("\r\n")
        if not line:
            if data:
                told = json.loads("\n".join(data))
                yield name, told if isinstance(told, dict) else {}
            name, data = "", []
            continue
        key, _, value = line.partition(":")
        value = value[1:] if value.startswith(" ") else value
        if key == "event":
            name = value
        elif key == "data":
            data.append(value)


def failure_of(status: int, body: bytes, method: Optional[str],
               otherwise: Type[QorError]) -> QorError:
    """For a status that is not 200: the server says why in its body."""
    try:
        told = json.loads(body)
        sentence = str(told["error"])
    except (ValueError, KeyError, TypeError):
        sentence = f"the server answered with status {status}"
    check = "Give the token that the server was started with." if status == 401 else ""
    kind = OF_STATUS.get(status, otherwise)
    return kind(f"{sentence[:1].upper()}{sentence[1:]}.".replace("..", "."), check=check, method=method)
