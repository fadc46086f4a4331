"""One thread for what must be done beside the caller's work: leases, streams that nobody holds any more."""
from __future__ import annotations

import logging
import threading
import time
from typing import Callable, List, Optional, Tuple

LOG = logging.getLogger("qorcontrol")

Work = Callable[[], Optional[float]]  # the seconds until it is to be done again; None: not again


class Keeper:
    """Does each piece of work when its time has come. The thread begins with the first."""

    def __init__(self) -> None:
        self._changed = threading.Condition()
        self._work: List[Tuple[float, Work]] = []
        self._thread: Optional[threading.Thread] = None
        self._over = False

    def add(self, work: Work, after_s: float = 0) -> None:
        """It must not wait long: it holds up all others."""
        with self._changed:
            if self._over:
                return
            self._work.append((time.monotonic() + after_s, work))
            if self._thread is None:
                self._thread = threading.Thread(target=self._run, name="qorcontrol keeper", daemon=True)
                self._thread.start()
            self._changed.notify_all()

    def end(self) -> None:
        """Nothing more is begun."""
        with self._changed:
            self._over = True
            self._changed.notify_all()

    def _run(self) -> None:
        while True:
            work = self._next()
            if work is None:
                return
            try:
                again = work()
            except Exception:  # whatever it was, the leases of the others go on
                LOG.exception("work that nobody waits for has failed")
                again = None
            if again is not None:
                self.add(work, again)

    def _next(self) -> Optional[Work]:
        with self._changed:
            while not self._over:
                due = min(self._work, key=lambda each: each[0], default=None)
                now = time.monotonic()
                if due and due[0] <= now:
                    self._work.remove(due)
                    return due[1]
                self._changed.wait(due[0] - now if due else None)
            return None
