"""Streams and events as iterators: each has a queue of its own, with a bound, that a slow reader loses from.

The thread that reads from the server fills the queue and never waits for who empties it.
"""
from __future__ import annotations

import threading
import time
from collections import deque
from types import TracebackType
from typing import (Callable, Deque, Dict, Generic, Iterable, Iterator, List, Mapping, Optional, Sequence, Tuple,
                    Type, TypeVar)

from .errors import QorError, StreamSilent
from .records import Dtc, Sample

T = TypeVar("T")
F = TypeVar("F", bound="Feed")  # type: ignore[type-arg]
SLICE_S = 0.2  # on Windows nothing but the end of a wait lets Ctrl-C through


def wait_for(changed: threading.Condition, is_done: Callable[[], bool], timeout: Optional[float]) -> bool:
    """Waits, with the condition's lock held, so that Ctrl-C comes through. False: the time is over."""
    end = None if timeout is None else time.monotonic() + timeout
    while not is_done():
        left = SLICE_S if end is None else min(SLICE_S, end - time.monotonic())
        if left <= 0:
            return False
        changed.wait(left)
    return True


class Feed(Generic[T]):
    """Iterate over it, or `read` what is there. It ends when it is closed; any thread may do that.

    When the server ends, the rest can still be read, and then `ServerEnded` is raised.
    """

    def __init__(self, room: int, timeout: Optional[float], stop: Callable[[], None]) -> None:
        self.timeout = timeout  #: seconds that an iteration waits for one item; None: without limit
        self._stop = stop
        self._room = room
        self._items: Deque[T] = deque()
        self._changed = threading.Condition()
        self._failure: Optional[QorError] = None
        self._closed = False

    def read(self, timeout: Optional[float] = 0) -> List[T]:
        """All that has arrived since the last time; waits at most `timeout` seconds for something.

        An empty list: nothing came, or this is closed.
        """
        with self._changed:
            wait_for(self._changed, self._is_done, timeout)
            items = [self._handed_out(item) for item in self._items]
            self._items.clear()
            if not items and self._failure and not self._closed:
                raise self._failure
            return items

    def close(self) -> None:
        """Ends it here and in the server. What was not read is gone."""
        with self._changed:
            was_closed, self._closed = self._closed, True
            had_failed = self._failure is not None
            self._items.clear()
            self._changed.notify_all()
        if not was_closed and not had_failed:
            self._stop()

    @property
    def closed(self) -> bool:
        """Whether `close` was called."""
        return self._closed

    def __iter__(self) -> Iterator[T]:
        return self

    def __next__(self) -> T:
        with self._changed:
            is_in_time = wait_for(self._changed, self._is_done, self.timeout)
            if self._items:
                return self._handed_out(self._items.popleft())
            if self._closed:
                raise StopIteration
            if self._failure:
                raise self._failure
            assert not is_in_time
            raise self._silence()

    def __enter__(self: F) -> F:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def _is_done(self) -> bool:
        return bool(self._items) or self._closed or self._failure is not None

    def _silence(self) -> QorError:
        return StreamSilent(f"Nothing arrived within {self.timeout} s.")

    def _put(self, items: Iterable[T]) -> None:
        """By the thread that reads from the server."""
        with self._changed:
            if self._closed:
                return
            for item in items:
                if len(self._items) >= self._room:
                    self._lose(self._items.popleft())
                self._items.append(item)
            self._changed.notify_all()

    def _lose(self, item: T) -> None:
        """A subclass counts what nobody has read in time."""

    def _handed_out(self, item: T) -> T:
        """As the reader gets it."""
        return item

    def _fail(self, failure: QorError) -> None:
        with self._changed:
            self._failure = failure
            self._changed.notify_all()


class Stream(Feed[Sample]):
    """Values as QOR sends them.

    While a parameter stalls, or the ECU is offline, none come; they go on by themselves.
    """

    def __init__(self, names: Sequence[str], room: int, timeout: Optional[float], stop: Callable[[], None]) -> None:
        super().__init__(room, timeout, stop)
        self.names = list(names)
        self._trouble: Optional[QorError] = None
        self._missed_there: Dict[str, int] = {}
        self._missed_here: Dict[str, int] = {}

    @property
    def missed(self) -> int:
        """How many values of all names were lost because they were not read in time."""
        with self._changed:
            return sum(self._missed_there.values()) + sum(self._missed_here.values())

    @property
    def trouble(self) -> Optional[QorError]:
        """Why no values come, if the server has told since the last one came; else None."""
        with self._changed:
            return self._trouble

    def _silence(self) -> QorError:
        silence = super()._silence()
        if self._trouble:
            silence.sentence += f" {self._trouble.sentence}"
            silence.check = self._trouble.check
        return silence

    def _lose(self, item: Sample) -> None:
        self._missed_here[item.name] = self._missed_here.get(item.name, 0) + 1

    def _handed_out(self, item: Sample) -> Sample:
        """All that was lost here came before it."""
        here = self._missed_here.get(item.name, 0)
        return item._replace(missed=item.missed + here) if here else item

    def _arrive(self, samples: Sequence[Sample]) -> None:
        with self._changed:
            for each in samples:
                self._missed_there[each.name] = each.missed
            if samples:
                self._trouble = None
            self._put(samples)

    def _forgo(self, lost: Mapping[int, int]) -> None:
        """So many values, by the number of their name, never got as far as here."""
        with self._changed:
            for place, count in lost.items():
                self._missed_here[self.names[place]] = count

    def _note(self, trouble: QorError) -> None:
        with self._changed:
            self._trouble = trouble


class DtcStream(Feed[List[Dtc]]):
    """Lists of trouble codes: the first, and each that differs from the one before."""

    def __init__(self, room: int, timeout: Optional[float], stop: Callable[[], None]) -> None:
        super().__init__(room, timeout, stop)
        self._trouble: Optional[str] = None

    @property
    def trouble(self) -> Optional[str]:
        """What the server says if the codes cannot be read for a while, until a list comes again; else None."""
        with self._changed:
            return self._trouble

    def _silence(self) -> QorError:
        silence = super()._silence()
        if self._trouble:
            silence.sentence += f" {self._trouble}"
        return silence

    def _arrive(self, codes: List[Dtc]) -> None:
        with self._changed:
            self._trouble = None
            self._put([codes])

    def _note(self, trouble: str) -> None:
        with self._changed:
            self._trouble = trouble


class TraceStream(Feed[str]):
    """Lines of the library's trace."""

    def __init__(self, room: int, timeout: Optional[float], stop: Callable[[], None]) -> None:
        super().__init__(room, timeout, stop)
        self._missed_there = 0
        self._missed_here = 0

    @property
    def missed(self) -> int:
        """How many bytes of the trace were left out because they were not read in time."""
        with self._changed:
            return self._missed_there + self._missed_here

    def _lose(self, item: str) -> None:
        self._missed_here += len(item.encode()) + 2  # with its line end

    def _arrive(self, lines: Iterable[str], missed: int) -> None:
        with self._changed:
            self._missed_there = missed
            self._put(lines)


class Events(Feed[T]):
    """What the server tells by itself."""

    def __init__(self, kinds: Tuple[Type[T], ...], room: int, timeout: Optional[float]) -> None:
        super().__init__(room, timeout, lambda: None)
        self._kinds = kinds
        self._lost = 0

    def _wants(self, kind: Type[object]) -> bool:
        return not self._kinds or issubclass(kind, self._kinds)

    @property
    def missed(self) -> int:
        """How many events were lost because they were not read in time."""
        with self._changed:
            return self._lost

    def _lose(self, item: T) -> None:
        self._lost += 1
