"""`Qor`: one QOR, through a server of one's own or one that others use too."""
from __future__ import annotations

import atexit
import threading
import weakref
from collections import deque
from types import TracebackType
from typing import Any, Callable, Deque, Dict, Iterable, List, Mapping, Optional, Sequence, Set, Tuple, Type, TypeVar

from . import errors, records
from .control import DirectControl, renewal_of
from .errors import NoServer, QorError
from .events import ControlEvent, ProgressEvent, StateEvent, event_of
from .feeds import DtcStream, Events, Feed, Stream, TraceStream
from .http_link import HttpLink
from .keeper import Keeper
from .link import Link, OnEnd, OnEvent, Pending, copy_of
from .operations import Operations
from .program import Paths, Program, command_of, path_for
from .records import Progress, Sample
from .stdio import StdioLink, last_words

Q = TypeVar("Q", bound="Qor")
AnyFeed = Feed[Any]
S = TypeVar("S", bound=AnyFeed)
LISTENING = "qorctl serve: listening on "
DEFAULT_ROOM = 10000  # items that wait here for a slow reader
EARLY_ROOM = 1000     # messages of a stream whose number is not known here yet


class Qor(Operations):
    """Starts a server for QOR's settings file and owns it; `Qor.attach` joins one that runs.

        with Qor("qor-settings.ini") as qor:
            qor.connect()
            print(qor.read("EngineSpeed"))

    Any number of threads may call any method at once. The server ends with `close`, at the end of `with`, and
    when this program ends in whatever way; it then gives actuators back and shuts QOR down.
    """

    _address: Optional[str]

    def __init__(self, settings: Paths, *, program: Optional[Program] = None, transport: Optional[str] = None,
                 trace: Optional[Paths] = None, names: Optional[Paths] = None, read_only: bool = False,
                 tcp_no_delay: bool = False, boxes_to_clients: bool = False, listen: Optional[str] = None,
                 token_file: Optional[Paths] = None, options: Sequence[str] = (),
                 start_timeout: float = 60.0) -> None:
        """Returns when QOR answers, or raises `NoServer` with the reason.

        settings       QOR's settings file
        program        qorctl.exe, or the words that start it; see `program.command_of` for the default
        transport      "tcp" or "window", whatever the settings choose
        trace          a file for the library's trace, ending in .log
        names          a file with names of parameters, one per line, for `get_param_names`
        tcp_no_delay   send at once over TCP: for a QOR that acknowledges before it sends its data
        read_only      refuse all that changes QOR or the ECU
        boxes_to_clients  QOR's message boxes are not shown but told as `BoxEvent`, for `answer_box`
        listen         "ADDRESS:PORT" where others may join over HTTP; ":0" chooses a port. See `url`
        token_file     a file whose text those others must tell; needed where ADDRESS is not this computer's own
        options        further options of `qorctl serve`
        start_timeout  seconds that QOR may need to start; a message box of QOR's counts, too
        """
        words = [*command_of(program), "serve", path_for(settings), "--stdio"]
        for option, value in (("--transport", transport), ("--listen", listen)):
            words += [option, value] if value is not None else []
        for option, path in (("--trace", trace), ("--names", names), ("--token-file", token_file)):
            words += [option, path_for(path)] if path is not None else []
        words += ["--tcp-no-delay"] if tcp_no_delay else []
        words += ["--read-only"] if read_only else []
        words += ["--boxes-to-clients"] if boxes_to_clients else []
        words += options
        self._begin(lambda on_event, on_end: StdioLink(words, on_event, on_end))
        try:
            self._await_start(start_timeout)
            if listen is not None:
                self._address = self._await_url(start_timeout)
        except BaseException:
            self.close()
            raise

    @classmethod
    def attach(cls: Type[Q], url: str, token: Optional[str] = None, *, timeout: float = 10.0) -> Q:
        """Joins a server that listens at this address, as "http://127.0.0.1:8080/".

        `close` leaves it: streams end, a running connect is cancelled, actuators are given back; the server
        goes on. `timeout`: seconds that it has to answer at first.
        """
        self = cls.__new__(cls)
        self._begin(lambda on_event, on_end: HttpLink(url, token, timeout, on_event, on_end))
        self._address = url if "://" in url else f"http://{url}/"
        return self

    def _begin(self, link: Callable[[OnEvent, OnEnd], Link]) -> None:
        self._lock = threading.Lock()
        self._feeds: "weakref.WeakValueDictionary[int, AnyFeed]" = weakref.WeakValueDictionary()
        self._early: Dict[int, Early] = {}
        self._starting = 0
        self._abandoned: Set[int] = set()
        self._listeners: "weakref.WeakSet[Events[Any]]" = weakref.WeakSet()
        self._controls: "weakref.WeakSet[DirectControl]" = weakref.WeakSet()
        self._state: Optional[StateEvent] = None
        self._ended: Optional[QorError] = None
        self._address = None
        self._keeper = Keeper()
        self._link = link(self._on_event, self._on_end)
        atexit.register(self.close)

    # --- Life ---

    def close(self) -> None:
        """Ends an own server in order and waits for that; leaves one that was joined. Any number of times."""
        atexit.unregister(self.close)
        self._keeper.end()
        self._link.close()

    @property
    def ended(self) -> Optional[QorError]:
        """Why calls fail for good (`ServerEnded`, `Closed`); None while there is a server."""
        return self._ended

    @property
    def url(self) -> Optional[str]:
        """Where others may join; None if the server does not listen."""
        return self._address

    @property
    def pid(self) -> Optional[int]:
        """The process of an own server; None of one that was joined."""
        return self._link.pid if isinstance(self._link, StdioLink) else None

    @property
    def server_output(self) -> List[str]:
        """The last lines that an own server wrote to its standard error: what it did, step by step."""
        return self._link.told if isinstance(self._link, StdioLink) else []

    def __enter__(self: Q) -> Q:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def _await_start(self, timeout: float) -> None:
        """The first answer comes when QOR is there."""
        pending = self.send("getState")
        if not pending.wait(timeout):
            raise NoServer(f"QOR did not start within {timeout} s.", check=last_words(self.server_output))
        try:
            pending.result()
        except errors.ServerEnded as error:
            raise NoServer(error.sentence, check=error.check) from None

    def _await_url(self, timeout: float) -> Optional[str]:
        assert isinstance(self._link, StdioLink)
        line = self._link.await_line(LISTENING, timeout)
        if line is None:
            raise NoServer("The server does not listen.", check=last_words(self.server_output))
        return line[len(LISTENING):].strip()

    # --- Streams ---

    def stream(self, names: Sequence[str], *, slots: int = 1000, timeout: Optional[float] = None,
               room: int = DEFAULT_ROOM) -> Stream:
        """Values of these parameters as QOR sends them; see `Stream`.

        slots    so many values wait in the server
        room     so many samples wait in this program
        timeout  seconds without any value after which iterating raises `StreamSilent`
        """
        return self._start("startParamRead", {"names": list(names), "slots": slots},
                           lambda stop: Stream(names, room, timeout, stop), "stopParamRead")

    def dtc_stream(self, timeout_ms: int = 1000, period_ms: int = 1000, *, timeout: Optional[float] = None,
                   room: int = 100) -> DtcStream:
        """Trouble codes, read every `period_ms`; see `DtcStream`."""
        return self._start("startDtcRead", {"timeoutMs": timeout_ms, "periodMs": period_ms},
                           lambda stop: DtcStream(room, timeout, stop), "stopDtcRead")

    def trace_stream(self, tail_bytes: int = 65536, *, timeout: Optional[float] = None,
                     room: int = 100000) -> TraceStream:
        """Lines of the library's trace, beginning so many bytes before its present end."""
        return self._start("startTraceRead", {"tailBytes": tail_bytes},
                           lambda stop: TraceStream(room, timeout, stop), "stopTraceRead")

    def _start(self, method: str, params: Mapping[str, Any], make: Callable[[Callable[[], None]], S],
               stop_method: str) -> S:
        with self._lock:
            self._starting += 1
        number = -1
        try:
            number = int(self.call(method, **params)["stream"])
        finally:
            with self._lock:
                self._starting -= 1
                early = self._early.pop(number, None)
                if not self._starting:
                    self._early.clear()
                if number >= 0:
                    feed = make(lambda: self._stop(stop_method, number))
                    self._feeds[number] = feed
                    if early:
                        early.deliver_to(feed)
        if self._ended:
            feed._fail(copy_of(self._ended))
        return feed

    def _stop(self, method: str, number: int) -> None:
        """Fails only for reasons that somebody must hear of."""
        with self._lock:
            self._feeds.pop(number, None)
        try:
            self.call(method, stream=number)
        except (errors.ServerEnded, errors.Closed, errors.BadArgument):
            pass  # it has ended without

    # --- Events ---

    def events(self, *kinds: Type[Any], timeout: Optional[float] = None, room: int = DEFAULT_ROOM) -> "Events[Any]":
        """What the server tells by itself: all, or only of these classes of `events`; see `Events`.

        A `StateEvent` with the present state comes first.
        """
        listener: Events[Any] = Events(kinds, room, timeout)
        with self._lock:
            self._listeners.add(listener)
            state, ended = self._state, self._ended
        if state and listener._wants(StateEvent):
            listener._put([state])
        if ended:
            listener._fail(copy_of(ended))
        return listener

    def on(self, kind: Type[Any], callback: Callable[[Any], None]) -> "Events[Any]":
        """Calls back for each event of that class, in a thread of its own, until `close` of what this returns."""
        listener = self.events(kind)

        def run() -> None:
            try:
                for event in listener:
                    callback(event)
            except (errors.ServerEnded, errors.Closed):
                pass

        threading.Thread(target=run, name=f"qorcontrol {kind.__name__}", daemon=True).start()
        return listener

    def _listen_to_progress(self) -> Callable[[float], List[Progress]]:
        listener = self.events(ProgressEvent)
        overtakes = isinstance(self._link, HttpLink)

        def news(wait_s: float = 0) -> List[Progress]:
            try:
                return [Progress(*each) for each in listener.read(wait_s if overtakes else 0)]
            except QorError:
                return []  # the call itself tells of it
        return news

    # --- Direct control ---

    def direct_control(self, name: str, *, lease_ms: int = 3000, timeout_ms: int = 500) -> DirectControl:
        """Takes an actuator under direct control:

            with qor.direct_control("Fan") as fan:
                fan.set(60)

        The server gives it back `lease_ms` after it has last heard of this program; 0: only at the end of
        `with`, and when this program leaves the server.
        """
        control = DirectControl(self, name, lease_ms, timeout_ms)
        with self._lock:
            self._controls.add(control)
        if lease_ms:
            self._keeper.add(renewal_of(control), control.renewal_s)
        return control

    # --- What the link brings ---

    def send(self, method: str, **params: Any) -> Pending:
        return self._link.request(method, params)

    def _on_event(self, name: str, told: Mapping[str, Any]) -> None:
        """By the thread that reads: it must neither wait nor call the server."""
        if name in DELIVERIES:
            self._on_stream(name, told)
            return
        event = event_of(name, told)
        if event is None:
            return
        with self._lock:
            listeners = list(self._listeners)
            if isinstance(event, StateEvent):
                self._state = event
            controls = list(self._controls) if isinstance(event, ControlEvent) else []
        for listener in listeners:
            if listener._wants(type(event)):
                listener._put([event])
        if isinstance(event, ControlEvent) and not event.held:
            for control in controls:
                if control.name == event.name:
                    control._note_loss(errors.ControlLost("the server gave it back."))

    def _on_stream(self, kind: str, told: Mapping[str, Any]) -> None:
        number = told.get("stream")
        if not isinstance(number, int):
            return
        with self._lock:
            feed = self._feeds.get(number)
            if feed is None and self._starting:
                self._early.setdefault(number, Early()).add(kind, told)
                return
        if feed is not None:
            deliver(feed, kind, told)
        else:
            self._stop_abandoned(kind, number)

    def _stop_abandoned(self, kind: str, number: int) -> None:
        """Nobody holds the stream any more."""
        with self._lock:
            if kind not in STOPS or number in self._abandoned:
                return
            self._abandoned.add(number)
        self._keeper.add(lambda: self._stop(STOPS[kind], number))

    def _on_end(self, why: QorError) -> None:
        with self._lock:
            self._ended = why
            feeds: Iterable[AnyFeed] = [*self._feeds.values(), *self._listeners]
            controls = list(self._controls)
        for feed in feeds:
            feed._fail(copy_of(why))
        for control in controls:
            control._note_loss(why)
        self._keeper.end()


class Early:
    """What a stream was sent before its number was known here: the responses take another way."""

    def __init__(self) -> None:
        self._messages: Deque[Tuple[str, Mapping[str, Any]]] = deque()
        self._lost: Dict[int, int] = {}  # values, by the number of their name

    def add(self, kind: str, told: Mapping[str, Any]) -> None:
        """The oldest go where there are too many."""
        self._messages.append((kind, told))
        if len(self._messages) <= EARLY_ROOM:
            return
        old_kind, old = self._messages.popleft()
        if old_kind == "values":
            for sample in old.get("samples", ()):
                self._lost[sample[0]] = self._lost.get(sample[0], 0) + 1

    def deliver_to(self, feed: AnyFeed) -> None:
        """All of it, in order."""
        if isinstance(feed, Stream):
            feed._forgo(self._lost)
        for kind, told in self._messages:
            deliver(feed, kind, told)


def deliver(feed: AnyFeed, kind: str, told: Mapping[str, Any]) -> None:
    """To the stream that it is for; what is not readable is left out."""
    try:
        DELIVERIES[kind](feed, told)
    except (KeyError, IndexError, TypeError, ValueError, AttributeError):
        pass


def deliver_values(stream: Stream, told: Mapping[str, Any]) -> None:
    """Each sample is the number of its name, the value, the time and how many were missed."""
    names = stream.names
    stream._arrive([Sample(names[place], records.number(value), float(time), int(missed))
                    for place, value, time, missed in told["samples"]])


def deliver_stream_trouble(stream: Stream, told: Mapping[str, Any]) -> None:
    """Why no values come."""
    stream._note(errors.of_cause(told["cause"]))


def deliver_dtcs(stream: DtcStream, told: Mapping[str, Any]) -> None:
    """A list that differs from the last."""
    stream._arrive([records.dtc_of(each) for each in told["dtcs"]])


def deliver_dtc_trouble(stream: DtcStream, told: Mapping[str, Any]) -> None:
    """The codes could not be read several times."""
    stream._note(str(told["sentence"]))


def deliver_trace(stream: TraceStream, told: Mapping[str, Any]) -> None:
    """Lines, and how many bytes were left out so far."""
    stream._arrive([str(each) for each in told["lines"]], int(told["missed"]))


DELIVERIES: Dict[str, Callable[[Any, Mapping[str, Any]], None]] = {
    "values": deliver_values, "streamTrouble": deliver_stream_trouble, "dtcs": deliver_dtcs,
    "dtcTrouble": deliver_dtc_trouble, "trace": deliver_trace}
STOPS = {"values": "stopParamRead", "dtcs": "stopDtcRead", "trace": "stopTraceRead"}
