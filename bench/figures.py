"""What a file of figures holds, of this bench or of one that wrote a bare list."""
import json
import math
from pathlib import Path
from typing import Any, Dict, List, NamedTuple, Optional, Tuple

NUMBERS = (("perSecond", "leastPerSecond"), ("amount", "mostBound"))


class Unusable(Exception):
    """Why a file cannot be used, as one line."""


class Figure(NamedTuple):
    """Durations, in microseconds."""
    name: str
    samples: int
    least: float
    p50: float
    p95: float
    p99: float
    bound: float  # what p50 is held to; 0: nothing
    parts: List[float]  # the median of each round; empty in old files
    quantiles: List[Tuple[float, float]]  # share of the samples, and below what they lie; empty in old files
    floor: str  # the raw thing that it is made of, a figure of the same run; empty: not told
    is_peer: bool  # of somebody else's library

    @property
    def is_floor(self) -> bool:
        return self.name.startswith("floor: ")


class Number(NamedTuple):
    """One number, without a distribution."""
    name: str
    unit: str
    value: float
    bound: float  # what it is held to; 0: nothing


class Run(NamedTuple):
    path: Path
    when: str
    commit: str
    host: Dict[str, Any]
    figures: Dict[str, Figure]
    numbers: List[Number]

    def over_floor(self, figure: Figure) -> Optional[float]:
        """How many times its floor a figure is."""
        floor = self.figures.get(figure.floor)
        return figure.p50 / floor.p50 if floor else None

    def ratio(self, figure: Figure) -> Optional[float]:
        """To what it is held to, or else to its floor."""
        return figure.p50 / figure.bound if figure.bound else self.over_floor(figure)


def _is_amount(value: Any) -> bool:
    is_number = isinstance(value, (int, float)) and not isinstance(value, bool)
    return is_number and math.isfinite(value) and value >= 0


def _wanted(is_there: Any, text: str) -> None:
    if not is_there:
        raise Unusable(text)


def _amount(entry: Dict[str, Any], key: str) -> float:
    _wanted(_is_amount(entry.get(key)), f"'{entry['name']}' has no number {key}")
    return entry[key]


def _text(entry: Dict[str, Any], key: str) -> str:
    value = entry.get(key, "")
    _wanted(isinstance(value, str), f"{key} is no text")
    return value


def _figure(entry: Dict[str, Any]) -> Figure:
    name = entry["name"]
    parts = entry.get("partP50Us", [])
    _wanted(isinstance(parts, list) and all(_is_amount(each) for each in parts),
            f"'{name}' has something else than numbers in partP50Us")
    quantiles = entry.get("quantilesUs", [])
    _wanted(isinstance(quantiles, list) and all(
        isinstance(each, list) and len(each) == 2 and all(_is_amount(part) for part in each) for each in quantiles),
            f"'{name}' has something else than pairs of numbers in quantilesUs")
    count, least, p50, p95, p99, bound = (
        _amount(entry, key) for key in ("count", "minUs", "p50Us", "p95Us", "p99Us", "p50BoundUs"))
    _wanted(p50 > 0, f"'{name}' took no time at all")
    return Figure(name, int(count), least, p50, p95, p99, bound, parts, [(share, us) for share, us in quantiles],
                  _text(entry, "floor"), entry.get("peer") is True)


def _number(entry: Dict[str, Any], value: str, bound: str) -> Number:
    return Number(entry["name"], _text(entry, "unit") or "per second", _amount(entry, value), _amount(entry, bound))


def _entries(content: Any) -> List[Any]:
    entries = content.get("figures") if isinstance(content, dict) else content
    _wanted(isinstance(entries, list) and entries, "holds no figures")
    return entries


def run_of(path: Path, content: Any) -> Run:
    """Throws Unusable, with what is wrong but not where."""
    about = content if isinstance(content, dict) else {}
    figures: Dict[str, Figure] = {}
    numbers: List[Number] = []
    for entry in _entries(content):
        _wanted(isinstance(entry, dict) and isinstance(entry.get("name"), str), "holds a figure without a name")
        kind = next((keys for keys in NUMBERS if keys[0] in entry), None)
        if kind:
            numbers.append(_number(entry, *kind))
            continue
        figure = _figure(entry)
        _wanted(figure.name not in figures, f"holds '{figure.name}' twice")
        figures[figure.name] = figure
    host = about.get("host", {})
    _wanted(isinstance(host, dict), "host is no object")
    return Run(path, _text(about, "when"), _text(about, "commit"), host, figures, numbers)


def content_of(path: Path) -> Any:
    try:
        return json.loads(path.read_text(encoding="utf-8"))
    except OSError as error:
        raise Unusable(f"{path}: {error.strerror}") from error
    except UnicodeDecodeError as error:
        raise Unusable(f"{path}: no text") from error
    except json.JSONDecodeError as error:
        raise Unusable(f"{path}: no JSON (line {error.lineno}: {error.msg})") from error


def read(path: Path) -> Run:
    content = content_of(path)
    try:
        return run_of(path, content)
    except Unusable as error:
        raise Unusable(f"{path}: {error}") from error
