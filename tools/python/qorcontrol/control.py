"""An actuator under direct control, given back in any case."""
from __future__ import annotations

import threading
import time
import weakref
from types import TracebackType
from typing import TYPE_CHECKING, Callable, Optional, Type

from .errors import Closed, ControlLost, QorError, ServerEnded

if TYPE_CHECKING:
    from .qor import Qor

RENEWALS_PER_LEASE = 4


class DirectControl:
    """`Qor.direct_control` makes one; `with` gives the actuator back at its end.

    The lease is renewed beside the program's work. If the program hangs as a whole, is killed or loses its
    server, the server gives the actuator back when the lease is over.
    """

    def __init__(self, qor: "Qor", name: str, lease_ms: int, timeout_ms: int) -> None:
        self.name = name
        self.lease_ms = lease_ms
        self._qor = qor
        self._timeout_ms = timeout_ms
        self._lock = threading.Lock()
        self._lost: Optional[QorError] = None
        self._over = False
        self.renewal_s = lease_ms / 1000 / RENEWALS_PER_LEASE
        qor.start_direct_ctrl(name, timeout_ms, lease_ms)
        self._held_until = time.monotonic() + lease_ms / 1000

    def set(self, value: float, timeout_ms: int = 1000) -> None:
        """Drives the actuator."""
        self._check()
        self._qor.set_param_data(self.name, [value], timeout_ms=timeout_ms)

    def set_text(self, text: str, timeout_ms: int = 1000) -> None:
        """The same in QOR's own notation."""
        self._check()
        self._qor.set_dynamic_data(self.name, text, timeout_ms)

    def get(self, timeout_ms: int = 1000) -> float:
        """Its present value, past the cache."""
        return self._qor.get_param_data_at_once([self.name], timeout_ms)[0][0]

    @property
    def lost(self) -> Optional[QorError]:
        """Why it is not under control any more, before `stop` was called; else None."""
        with self._lock:
            return self._lost

    def stop(self) -> None:
        """Gives it back. Any number of times."""
        with self._lock:
            was_over, self._over = self._over, True
            lost = self._lost
        if was_over or lost:
            return
        try:
            self._qor.stop_direct_ctrl(self.name, self._timeout_ms)
        except (ServerEnded, Closed):
            pass  # the server has given it back, or its lease does

    def __enter__(self) -> "DirectControl":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.stop()

    def _check(self) -> None:
        with self._lock:
            if self._lost:
                raise ControlLost(f"{self.name} is not under direct control any more: {self._lost.sentence}",
                                  check=self._lost.check)
            if self._over:
                raise ControlLost(f"{self.name} was given back by this program.")

    def _note_loss(self, why: QorError) -> None:
        with self._lock:
            if not self._over and not self._lost:
                self._lost = why

    def _renew(self) -> Optional[float]:
        """The seconds until the next time; None: not again."""
        with self._lock:
            if self._over or self._lost:
                return None
        try:
            self._qor.renew_direct_ctrl(self.name, self.lease_ms)
            self._held_until = time.monotonic() + self.lease_ms / 1000
        except QorError as error:
            if time.monotonic() > self._held_until or isinstance(error, (ServerEnded, Closed)):
                self._note_loss(error)
                return None
        return self.renewal_s


def renewal_of(control: DirectControl) -> Callable[[], Optional[float]]:
    """Does not hold what it renews: what nobody holds is given back when its lease is over."""
    held = weakref.ref(control)

    def renew() -> Optional[float]:
        control = held()
        return control._renew() if control else None
    return renew
