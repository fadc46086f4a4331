"""A server of one's own: a process that is spoken to over its standard input and output.

It ends when its input does, which the system sees to when Python dies: no server is left behind.
"""
from __future__ import annotations

import json
import os
import subprocess
import threading
from collections import deque
from typing import IO, Any, Deque, Dict, Iterator, List, Mapping, Optional, Sequence

from .errors import Closed, NoServer, QorError, ServerEnded
from .link import Awaited, Link, OnEnd, OnEvent, Pending, copy_of, request_of

END_PATIENCE_S = 30.0  # a server that ends gives actuators back and lets QOR end
KILL_PATIENCE_S = 5.0
KEPT_LINES = 1000


class StdioLink(Link):
    """Starts the process and owns it."""

    def __init__(self, command: Sequence[str], on_event: OnEvent, on_end: OnEnd) -> None:
        super().__init__(on_event, on_end)
        self._write_lock = threading.Lock()
        self._waiting: Dict[int, Awaited] = {}  # guarded by _lock
        self._last_number = 0                   # guarded by _lock
        self._closing = False
        self._told: Deque[str] = deque(maxlen=KEPT_LINES)
        self._told_changed = threading.Condition()
        self._process = start(command)
        self._readers = [self._run(self._read_messages), self._run(self._read_errors)]
        self._watch = self._run(self._await_end)

    def request(self, method: str, params: Mapping[str, Any]) -> Pending:
        with self._lock:
            self._check()
            self._last_number += 1
            number = self._last_number
            awaited = self._waiting[number] = Awaited(method, lambda: self._forget(number))
        try:
            self._write(request_of(method, params, number))
        except OSError:
            self._end(self._why_ended())
        return awaited

    def close(self) -> None:
        with self._lock:
            self._closing = True
        self._close_input()
        try:
            self._process.wait(END_PATIENCE_S)
        except subprocess.TimeoutExpired:
            self._kill()
        if threading.current_thread() is not self._watch:
            self._watch.join(KILL_PATIENCE_S)
        self._end(Closed("The server was closed by this program."))

    @property
    def pid(self) -> int:
        """Of the process."""
        return self._process.pid

    @property
    def exit_code(self) -> Optional[int]:
        """Of the process; None while it runs."""
        return self._process.poll()

    @property
    def told(self) -> List[str]:
        """The last lines of its standard error."""
        with self._told_changed:
            return list(self._told)

    def await_line(self, beginning: str, timeout: float) -> Optional[str]:
        """A line of its standard error with that beginning, as soon as there is one; None: none came."""
        def found() -> List[str]:
            return [line for line in self._told if line.startswith(beginning)]
        with self._told_changed:
            self._told_changed.wait_for(lambda: found() or self._ended, timeout)
            return found()[0] if found() else None

    # --- what goes out ---

    def _write(self, message: Mapping[str, Any]) -> None:
        line = json.dumps(message, separators=(",", ":"), allow_nan=False).encode("ascii") + b"\n"
        with self._write_lock:
            pipe = self._process.stdin
            assert pipe is not None
            if pipe.closed:
                raise OSError("closed")
            rest = memoryview(line)
            while rest:  # a pipe may take a part
                rest = rest[pipe.write(rest):]

    def _close_input(self) -> None:
        """Not while a line is under way; but a server that reads no more must not hold the end up."""
        has_lock = self._write_lock.acquire(timeout=KILL_PATIENCE_S)
        try:
            if not has_lock:
                self._process.kill()
            elif self._process.stdin:
                self._process.stdin.close()
        except OSError:
            pass  # it has ended before
        finally:
            if has_lock:
                self._write_lock.release()

    def _kill(self) -> None:
        self._process.kill()
        try:
            self._process.wait(KILL_PATIENCE_S)
        except subprocess.TimeoutExpired:
            pass  # the system holds it

    # --- what comes in ---

    def _run(self, work: Any) -> threading.Thread:
        thread = threading.Thread(target=work, name=f"qorcontrol {work.__name__}", daemon=True)
        thread.start()
        return thread

    def _read_messages(self) -> None:
        for line in lines_of(self._process.stdout):
            if line.strip():
                self._take(line)

    def _take(self, line: bytes) -> None:
        try:
            message = json.loads(line)
        except ValueError:
            return self._note(line.decode("utf-8", "replace"))  # no server speaks so
        if not isinstance(message, dict):
            return None
        if "method" in message:
            params = message.get("params")
            return self._on_event(str(message["method"]), params if isinstance(params, dict) else {})
        with self._lock:
            awaited = self._waiting.pop(message["id"], None) if isinstance(message.get("id"), int) else None
        if awaited:
            awaited.respond(message)
        return None

    def _read_errors(self) -> None:
        for line in lines_of(self._process.stderr):
            self._note(line.decode("utf-8", "replace").rstrip())

    def _note(self, line: str) -> None:
        with self._told_changed:
            self._told.append(line)
            self._told_changed.notify_all()

    def _await_end(self) -> None:
        """The end of the process counts and not that of its output, which children may have inherited."""
        self._process.wait()
        for reader in self._readers:
            reader.join(0.5)
        for pipe in (self._process.stdout, self._process.stderr):
            if pipe and not any(reader.is_alive() for reader in self._readers):
                pipe.close()
        self._end(self._why_ended())
        with self._told_changed:
            self._told_changed.notify_all()

    def _why_ended(self) -> QorError:
        if self._closing:
            return Closed("The server was closed by this program.")
        code = self._process.poll()
        how = "cannot be written to" if code is None else f"ended with exit code {code}"
        return ServerEnded(f"The server {how}.", check=last_words(self.told))

    def _forget(self, number: int) -> None:
        with self._lock:
            self._waiting.pop(number, None)

    def _fail_waiting(self, why: QorError) -> None:
        with self._lock:
            waiting = list(self._waiting.values())
            self._waiting.clear()
        for each in waiting:
            each.fail(copy_of(why, each.method))


def start(command: Sequence[str]) -> "subprocess.Popen[bytes]":
    """Apart from the console of this program, so that Ctrl-C is this program's affair alone."""
    options: Dict[str, Any] = {"start_new_session": True}
    if os.name == "nt":
        options = {"creationflags": getattr(subprocess, "CREATE_NO_WINDOW", 0)}
    try:
        return subprocess.Popen(list(command), bufsize=0, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, **options)
    except OSError as error:
        raise NoServer(f"Cannot start {command[0]}: {error.strerror or error}.",
                       check="Give the path of qorctl.exe as program, or in the variable QORCTL.") from error


def lines_of(pipe: Optional[IO[bytes]]) -> Iterator[bytes]:
    """Without their ends; of a raw pipe, whose own lines would cost a call per byte."""
    assert pipe is not None
    parts: List[bytes] = []
    while True:
        try:
            block = os.read(pipe.fileno(), 1 << 16)
        except (OSError, ValueError):
            block = b""
        if not block:
            break
        *whole, rest = block.split(b"\n")
        if whole:
            yield b"".join(parts) + whole[0]
            yield from whole[1:]
            parts = []
        parts.append(rest)
    if any(parts):
        yield b"".join(parts)


def last_words(told: Sequence[str]) -> str:
    """What a server has said last, as far as it says why."""
    lines = [line.strip() for line in told if line.strip()]
    begin = next((place for place, line in enumerate(lines) if line.startswith("FAILED")), max(0, len(lines) - 3))
    return " ".join(lines[begin:begin + 6])
