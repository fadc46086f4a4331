"""Why a call failed: an exception class for each cause.

All are `QorError`, so that one `except` catches whatever this package raises for a reason of QOR's, of the
library's or of the server's. Each says in one sentence what went wrong and what to check.
"""
from __future__ import annotations

from typing import Any, Mapping, Optional, Type


class QorError(Exception):
    """What this package raises, and the base of all below.

    cause       a short name that scripts may branch on, as "qorSilent"; the classes say the same
    sentence    what happened
    check       what to look at; empty where there is nothing to say
    elapsed_ms  how long the library tried, or None
    method      the server's method that failed, or None
    """

    default_cause = "failed"

    def __init__(self, sentence: str, *, cause: Optional[str] = None, check: str = "",
                 elapsed_ms: Optional[float] = None, method: Optional[str] = None) -> None:
        super().__init__(sentence)
        self.sentence = sentence
        self.cause = cause or self.default_cause
        self.check = check
        self.elapsed_ms = elapsed_ms
        self.method = method

    def __str__(self) -> str:
        where = f"{self.method}: " if self.method else ""
        return f"{where}{self.sentence}" + (f" {self.check}" if self.check else "")


# --- The library tried, and says why it did not work ---


class LibraryError(QorError):
    """The library, QOR or the ECU said no, or nothing at all."""


class AgentEnded(LibraryError):
    """The library's agent has ended, or could not start QOR: nothing works any more."""

    default_cause = "agentEnded"


class AgentBusy(LibraryError):
    """The library was at other requests for the whole time."""

    default_cause = "agentBusy"


class PushedOut(LibraryError):
    """Later requests pushed this one out of the library's full queue."""

    default_cause = "pushedOut"


class NoConnection(LibraryError):
    """QOR's window or port was not to be had."""

    default_cause = "noConnection"


class QorSilent(LibraryError):
    """QOR did not take the request in time."""

    default_cause = "qorSilent"


class NoData(LibraryError):
    """QOR took the request, but its data did not come in time."""

    default_cause = "noData"


class Refused(QorError):
    """The request was understood and not allowed; see the two classes below for who refused."""

    default_cause = "refused"


class RefusedByQor(LibraryError, Refused):
    """QOR refused the request: a value outside its limits, an actuator that is not under control ..."""

    default_cause = "refused"


class UnknownName(LibraryError):
    """QOR knows no parameter of that name."""

    default_cause = "unknownName"


class KwpBeforeConnect(LibraryError):
    """KWP needs a connect before it."""

    default_cause = "kwpBeforeConnect"


class Cancelled(LibraryError):
    """Somebody cancelled the connect."""

    default_cause = "cancelled"


class ConnectReported(LibraryError):
    """QOR reported that the connect failed."""

    default_cause = "connectReported"


class EcuOffline(LibraryError):
    """The ECU did not come online in time."""

    default_cause = "ecuOffline"


class ResultTooLarge(LibraryError):
    """The result does not fit into what the library offers for it."""

    default_cause = "resultTooLarge"


class OutOfMemory(LibraryError):
    """Too little memory in the server."""

    default_cause = "outOfMemory"


class RequestTooLarge(LibraryError):
    """The request does not fit into one record."""

    default_cause = "requestTooLarge"


class QorChanged(LibraryError):
    """QOR became another one, or opened another model, meanwhile."""

    default_cause = "qorChanged"


class BadAnswer(LibraryError):
    """What QOR answered is not what was asked for."""

    default_cause = "badAnswer"


class SystemFailure(LibraryError):
    """The system refused something that the library needs."""

    default_cause = "systemFailure"


class NotReady(LibraryError):
    """Nothing there yet: ask again later."""

    default_cause = "notReady"


class WrongOrder(LibraryError):
    """Not now: something else must come first, or must end first."""

    default_cause = "wrongOrder"


# --- The server did not let the request through to the library ---


class BadArgument(QorError, ValueError):
    """An argument that no request can be made of."""

    default_cause = "badArgument"


class Busy(QorError):
    """Too many requests, streams or clients: this one was not begun. Try again later."""

    default_cause = "busy"


class ReadOnly(QorError):
    """The server only looks (`--read-only`), and this would change something."""

    default_cause = "readOnly"


class Taken(QorError):
    """Another client holds the actuator under direct control."""

    default_cause = "taken"


class RefusedByServer(Refused):
    """The server does not do this for this client."""

    default_cause = "refused"


class NoSuchMethod(QorError):
    """The server is of another version and does not know the method."""

    default_cause = "noSuchMethod"


class ProtocolError(QorError):
    """Server and package do not understand each other, or the server failed inside."""

    default_cause = "protocol"


# --- There is no server, or no longer ---


class ServerEnded(QorError):
    """The server ended, was killed, or the connection to it broke. Every waiting call gets this at once."""

    default_cause = "serverEnded"


class NoServer(QorError):
    """No server to begin with: it could not be started or reached."""

    default_cause = "noServer"


# --- Of this package's own ---


class Closed(QorError):
    """This object was closed in this program."""

    default_cause = "closed"


class StreamSilent(QorError):
    """Nothing arrived within the time-out of a stream or of an iterator."""

    default_cause = "streamSilent"


class ControlLost(QorError):
    """An actuator is not under this program's control any more."""

    default_cause = "controlLost"


class MayBelongToEarlier(UserWarning):
    """A warning: the answer may belong to an earlier request whose time was over.

    `warnings.simplefilter("error", MayBelongToEarlier)` makes it an exception of the call.
    """


OF_LIBRARY: Mapping[str, Type[QorError]] = {
    each.default_cause: each for each in (
        AgentEnded, AgentBusy, PushedOut, NoConnection, QorSilent, NoData, RefusedByQor, UnknownName,
        KwpBeforeConnect, Cancelled, ConnectReported, EcuOffline, ResultTooLarge, BadArgument, OutOfMemory,
        RequestTooLarge, QorChanged, BadAnswer, SystemFailure, NotReady, WrongOrder)}
OF_SERVER: Mapping[int, Type[QorError]] = {
    -32601: NoSuchMethod, -32602: BadArgument, -32001: Busy, -32002: ReadOnly, -32003: ServerEnded,
    -32004: Taken, -32005: RefusedByServer}
FAILED = -32000  # the library or QOR said no: the data tell the cause


def of_cause(told: Mapping[str, Any], method: Optional[str] = None) -> QorError:
    """The exception for a cause as the server tells it: name, sentence, check, perhaps elapsedMs."""
    name = str(told.get("name", ""))
    return OF_LIBRARY.get(name, LibraryError)(
        str(told.get("sentence", "")) or "The library told no reason.", cause=name or None,
        check=str(told.get("check", "")), elapsed_ms=told.get("elapsedMs"), method=method)


def of_response(error: Mapping[str, Any], method: Optional[str] = None) -> QorError:
    """The exception for the "error" of a JSON-RPC response."""
    data = error.get("data")
    if error.get("code") == FAILED and isinstance(data, dict):
        return of_cause(data, method)
    kind = OF_SERVER.get(error.get("code", 0), ProtocolError)
    if error.get("code") == FAILED:
        kind = LibraryError
    return kind(str(error.get("message", "")) or "The server told no reason.", method=method)
