"""The way to a server: requests out, responses and events in. `stdio` and `http_link` are the two there are."""
from __future__ import annotations

import threading
from typing import Any, Callable, Dict, Mapping, Optional

from . import errors
from .errors import QorError
from .feeds import wait_for

OnEvent = Callable[[str, Mapping[str, Any]], None]
OnEnd = Callable[[QorError], None]


class Pending:
    """A request that waits for its response."""

    def __init__(self, method: str) -> None:
        self.method = method

    def wait(self, timeout: Optional[float] = None) -> bool:
        """Until there is an outcome; False if the time is over before."""
        raise NotImplementedError

    def result(self) -> Dict[str, Any]:
        """The outcome, when there is one: what the server said, or the failure as an exception."""
        raise NotImplementedError

    def abandon(self) -> None:
        """Nobody waits any more."""


class Awaited(Pending):
    """One whose outcome another thread brings."""

    def __init__(self, method: str, forget: Callable[[], None]) -> None:
        super().__init__(method)
        self._forget = forget
        self._changed = threading.Condition()
        self._response: Optional[Mapping[str, Any]] = None
        self._failure: Optional[QorError] = None

    def wait(self, timeout: Optional[float] = None) -> bool:
        with self._changed:
            return wait_for(self._changed, lambda: self._response is not None or self._failure is not None, timeout)

    def result(self) -> Dict[str, Any]:
        if self._failure:
            raise self._failure
        assert self._response is not None
        return result_of(self._response, self.method)

    def abandon(self) -> None:
        self._forget()

    def respond(self, response: Mapping[str, Any]) -> None:
        """By the thread that reads."""
        with self._changed:
            self._response = response
            self._changed.notify_all()

    def fail(self, failure: QorError) -> None:
        """By the thread that notices that there will be no response."""
        with self._changed:
            self._failure = failure
            self._changed.notify_all()


class Link:
    """What both ways have: it ends once, and tells that once."""

    def __init__(self, on_event: OnEvent, on_end: OnEnd) -> None:
        self._on_event = on_event
        self._on_end = on_end
        self._lock = threading.Lock()
        self._ended: Optional[QorError] = None

    def request(self, method: str, params: Mapping[str, Any]) -> Pending:
        """Sends it; fails at once where the link has ended."""
        raise NotImplementedError

    def close(self) -> None:
        """Ends it in order, and waits for that. Any number of times, from any thread."""
        raise NotImplementedError

    def _check(self) -> None:
        if self._ended:
            raise copy_of(self._ended)

    def _end(self, why: QorError) -> None:
        """The first reason counts."""
        with self._lock:
            if self._ended:
                return
            self._ended = why
        self._fail_waiting(why)
        self._on_end(why)

    def _fail_waiting(self, why: QorError) -> None:
        raise NotImplementedError


def copy_of(error: QorError, method: Optional[str] = None) -> QorError:
    """An exception of its own for each thread that gets it: tracebacks grow on them."""
    return type(error)(error.sentence, cause=error.cause, check=error.check, elapsed_ms=error.elapsed_ms,
                       method=method or error.method)


def result_of(response: Mapping[str, Any], method: str) -> Dict[str, Any]:
    """What a JSON-RPC response says, or its error as an exception."""
    error = response.get("error")
    if isinstance(error, dict):
        raise errors.of_response(error, method)
    result = response.get("result")
    if not isinstance(result, dict):
        raise errors.ProtocolError("The server's response has neither a result nor an error.", method=method)
    return result


def request_of(method: str, params: Mapping[str, Any], number: int) -> Dict[str, Any]:
    """A JSON-RPC request."""
    return {"jsonrpc": "2.0", "id": number, "method": method, "params": params}
