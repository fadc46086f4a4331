"""What the server tells by itself, as records; `Qor.events` brings them."""
from __future__ import annotations

from typing import Any, Mapping, NamedTuple, Optional, Union

from .records import fields_of


class StateEvent(NamedTuple):
    """The ECU came or went, a connect began or ended, or a memory page was chosen. The first one tells how it is."""

    is_ecu_online: bool
    is_connecting: bool
    segment: str = ""  #: the memory page that was chosen last; empty: not known


class ProgressEvent(NamedTuple):
    """Any client's connect goes on."""

    figure: int
    steps: int
    elapsed_ms: float


class LogEvent(NamedTuple):
    """A line of the host's log, as "FAILED on get: ..."."""

    level: str  #: "info" or "error"
    line: str


class ControlEvent(NamedTuple):
    """An actuator was taken under direct control, or given back."""

    name: str
    held: bool
    own: bool  #: by this client


class BoxEvent(NamedTuple):
    """A message box of QOR's opened or was closed. While one is open QOR answers nothing.

    `Qor.answer_box(box.number, choice)` presses a button of it.
    """

    number: int
    caption: str
    text: str
    type: int      #: which buttons and picture, as for Windows's MessageBox
    is_open: bool
    choice: int    #: of a closed one: which button, as Windows numbers them


class EndEvent(NamedTuple):
    """The server ends; the last event."""


Event = Union[StateEvent, ProgressEvent, LogEvent, ControlEvent, BoxEvent, EndEvent]

KINDS = {"state": StateEvent, "connectProgress": ProgressEvent, "log": LogEvent, "control": ControlEvent,
         "box": BoxEvent, "serverEnds": EndEvent}
DEFAULTS = {"choice": 0, "own": False, "level": "info"}


def event_of(name: str, told: Mapping[str, Any]) -> Optional[Event]:
    """None for what this package does not know, or cannot read."""
    kind = KINDS.get(name)
    if kind is None:
        return None
    names = kind._fields  # type: ignore[attr-defined]
    try:
        return kind(**{**{key: DEFAULTS[key] for key in names if key in DEFAULTS},  # type: ignore[no-any-return]
                       **fields_of(told, names)})
    except TypeError:
        return None
