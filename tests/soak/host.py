"""The host under load, as a process of its own that takes orders; silence of it is a finding."""
import json
import queue
import subprocess
import threading
import time

import wine

ANSWER_S, BEAT_S = 180, 120


class HostLost(Exception):
    """It hangs, or has gone."""


class Stopped(Exception):
    """The time is over."""


class ServerLost(Exception):
    """Wine's server has gone, and with it the host and its QOR."""


class Host:
    def __init__(self, programs, settings, caption, seed, threads, grace_ms, tell, ends, trace=None):
        """`tell`: of each breach; `ends`: set when nobody waits any more."""
        arguments = [wine.windows_path(settings), caption, str(seed), str(threads), str(grace_ms)]
        if trace:
            arguments.append(wine.windows_path(trace))
        self.server = wine.Server.pid()
        self.errors = open(settings.parent / "host-errors.txt", "ab")
        self.process = wine.start(programs / "soak-host.exe", *arguments, stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE, stderr=self.errors, text=True, bufsize=1)
        self._tell, self._ends, self._answers, self._last = tell, ends, queue.Queue(), time.monotonic()
        self.counts = {}
        self._thread = threading.Thread(target=self._listen, daemon=True)
        self._thread.start()

    def _listen(self):
        for line in self.process.stdout:
            self._last = time.monotonic()
            kind, _, text = line.strip().partition(" ")
            if kind == "beat":
                self.counts = json.loads(text)
            elif kind == "=":
                self._answers.put(text)
            elif kind == "breach":
                self._tell(text)
        self._answers.put(None)

    def order(self, text):
        self.begin(text)
        return self.answer(text)

    def begin(self, text):
        try:
            self.process.stdin.write(text + "\n")
            self.process.stdin.flush()
        except OSError:
            raise HostLost(f"the host has gone (order '{text}')") from None

    def answer(self, text):
        deadline, calls = time.monotonic() + ANSWER_S, None
        while True:
            try:
                answer = self._answers.get(timeout=0.2)
            except queue.Empty:
                if self._ends.is_set():
                    raise Stopped from None
                self.watch()
                if calls != self.counts.get("calls"):  # as long as calls end it only is slow
                    deadline, calls = time.monotonic() + ANSWER_S, self.counts.get("calls")
                if time.monotonic() > deadline:
                    raise HostLost(f"the host hangs at '{text}': for {ANSWER_S} s no call has ended") from None
                continue
            if answer is None:
                raise HostLost(f"the host has ended with {self.process.wait()} at '{text}'")
            return answer

    def watch(self):
        if not wine.lives(self.server):
            raise ServerLost
        if time.monotonic() - self._last > BEAT_S:
            raise HostLost(f"no sign of life of the host for {BEAT_S} s")

    def now_us(self):
        return int(self.order("clock"))

    def census(self):
        return json.loads(self.order("census"))

    def end(self):
        """In order; how long the library's shutdown took."""
        self.counts = json.loads(self.order("counts"))
        answer = self.order("end")
        code = self.process.wait(timeout=ANSWER_S)
        if code not in (0, 1):
            raise HostLost(f"the host has ended with {code}")
        self._close()
        return answer

    def kill(self):
        wine.kill(self.process)
        self._close()

    def _close(self):
        self._thread.join(timeout=10)
        # A QOR that the host has started, or Wine's desktop, may hold the other end still: what reads would not let
        # go of it.
        read = [] if self._thread.is_alive() else [self.process.stdout]
        for stream in [self.process.stdin, self.errors, *read]:
            try:
                stream.close()
            except OSError:
                pass
