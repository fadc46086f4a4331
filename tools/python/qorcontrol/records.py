"""What calls take and return: plain records with names.

The server may tell more than a record here has fields for; that is left out, so that a newer server
does no harm.
"""
from __future__ import annotations

import math
from dataclasses import dataclass, field
from typing import Any, Dict, List, Mapping, NamedTuple, Optional, Sequence, Tuple, Union

NUMBERS = {"NaN": math.nan, "Infinity": math.inf, "-Infinity": -math.inf}


def number(told: Union[float, int, str]) -> float:
    """JSON has no numbers for three of them, so these are texts."""
    return NUMBERS[told] if isinstance(told, str) else float(told)


def told_number(value: float) -> Union[float, str]:
    """The other way round."""
    value = float(value)
    if math.isfinite(value):
        return value
    return "NaN" if math.isnan(value) else "Infinity" if value > 0 else "-Infinity"


def numbers(told: Sequence[Union[float, int, str]]) -> List[float]:
    """A list of them."""
    return [number(each) for each in told]


def told_numbers(values: Sequence[float]) -> List[Union[float, str]]:
    """The other way round."""
    return [told_number(each) for each in values]


class State(NamedTuple):
    """What is known without asking QOR."""

    is_ecu_online: bool  #: whether QOR reported an ECU within the last 2 s
    is_connecting: bool  #: whether a connect waits
    ram_segment: str     #: name of the working page, for `set_ecu_segment`
    rom_segment: str     #: name of the reference page
    version: str         #: of the library
    segment: str = ""    #: the memory page that was chosen last; empty: not known


class ParamDescription(NamedTuple):
    """What QOR tells about a parameter."""

    name: str
    meaning: str
    unit: str            #: or empty
    group: str           #: where it belongs
    three_arrays: bool   #: a curve or map, with its axes


class ParamName(NamedTuple):
    """A parameter that the server has heard of. What QOR was not asked for yet is empty."""

    name: str
    described: bool
    meaning: str
    unit: str
    group: str
    three_arrays: bool


class ParamData(NamedTuple):
    """The values of a parameter, and for a curve or map its two further arrays."""

    values: List[float]
    second: List[float]
    third: List[float]


class ParamText(NamedTuple):
    """A parameter whose values are character codes."""

    text: str
    data: bytes  #: the same as QOR has sent it


class Dtc(NamedTuple):
    """One diagnostic trouble code."""

    code: int
    status: int
    texts: Tuple[str, ...]  #: QOR's four


class KwpAnswer(NamedTuple):
    """What the ECU answered to a KWP request."""

    data: bytes
    failed: bool  #: the ECU reports the exchange as failed


class CanItem(NamedTuple):
    """A CAN identifier and its value."""

    can_id: int
    value: int


class Sample(NamedTuple):
    """One streamed value."""

    name: str
    value: float
    time_ms: float  #: when it arrived, on the server's clock, which only ever grows
    missed: int     #: values of this name that this stream has lost so far


class Progress(NamedTuple):
    """How far a connect is."""

    figure: int       #: QOR's own last one; -1: none yet
    steps: int        #: how many QOR has told
    elapsed_ms: float


@dataclass(frozen=True)
class ConnectSettings:
    """How to reach the ECU. What is None is as QOR itself would have it."""

    protocol: Optional[int] = None
    protocol_option: Optional[int] = None
    option_flag: Optional[bool] = None
    k_line_baud_rate: Optional[int] = None
    can_baud_rate: Optional[int] = None
    refresh_period_ms: Optional[int] = None  #: a value is reused for half of it
    can_request_id: Optional[int] = None
    can_response_id: Optional[int] = None
    address_byte1: Optional[int] = None
    address_byte2: Optional[int] = None
    address_word: Optional[int] = None
    extra_flag: Optional[bool] = None
    security_dll: Optional[str] = None       #: security-access library of the ECU, a path for the server
    final_flag: Optional[bool] = None


class MethodFigures(NamedTuple):
    """The requests of one method."""

    requests: int
    failures: int
    last_ms: float
    mean_ms: float


class Failure(NamedTuple):
    """A failure that the server remembers."""

    time_ms: float  #: how long ago
    method: str
    name: str       #: of the cause
    sentence: str
    check: str


class Control(NamedTuple):
    """An actuator under direct control."""

    name: str
    own: bool  #: by this client


@dataclass(frozen=True)
class ServerStatus:
    """What goes on in the server, of all clients together."""

    settings: str = ""
    transport: str = ""
    trace: str = ""
    version: str = ""
    uptime_ms: float = 0
    read_only: bool = False
    clients: int = 0
    streams: int = 0
    waiting: int = 0
    requests: int = 0
    failures: int = 0
    requests_by_method: Mapping[str, MethodFigures] = field(default_factory=dict)
    failures_by_cause: Mapping[str, int] = field(default_factory=dict)
    last_failures: Tuple[Failure, ...] = ()  #: newest first
    ping_ms: Optional[float] = None          #: what the last ping took
    controls: Tuple[Control, ...] = ()


def camel(name: str) -> str:
    """is_ecu_online is isEcuOnline in the server's messages."""
    first, *rest = name.split("_")
    return first + "".join(word[:1].upper() + word[1:] for word in rest)


def fields_of(told: Mapping[str, Any], names: Sequence[str]) -> Dict[str, Any]:
    """Those of a message's fields that have one of these names in Python."""
    return {name: told[camel(name)] for name in names if camel(name) in told}


def dtc_of(told: Mapping[str, Any]) -> Dtc:
    """From the server's words."""
    return Dtc(int(told["code"]), int(told["status"]), tuple(told["texts"]))


def param_name_of(told: Mapping[str, Any]) -> ParamName:
    """From the server's words."""
    return ParamName(told["name"], bool(told.get("described", False)), told.get("meaning", ""),
                     told.get("unit", ""), told.get("group", ""), bool(told.get("threeArrays", False)))


def settings_as_told(settings: ConnectSettings) -> Dict[str, Any]:
    """What is not None, in the server's words."""
    return {camel(name): value for name, value in vars(settings).items() if value is not None}


def status_of(told: Mapping[str, Any]) -> ServerStatus:
    """From the server's words."""
    plain = fields_of(told, [name for name in ServerStatus.__dataclass_fields__
                             if name not in ("requests_by_method", "last_failures", "controls")])
    methods = {name: MethodFigures(int(each.get("requests", 0)), int(each.get("failures", 0)),
                                   float(each.get("lastMs") or 0), float(each.get("meanMs") or 0))
               for name, each in told.get("requestsByMethod", {}).items()}
    failures = tuple(Failure(**{name: each.get(camel(name), "") for name in Failure._fields})
                     for each in told.get("lastFailures", ()))
    controls = tuple(Control(each["name"], bool(each.get("own", False))) for each in told.get("controls", ()))
    return ServerStatus(requests_by_method=methods, last_failures=failures, controls=controls, **plain)
