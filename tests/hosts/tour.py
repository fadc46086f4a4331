"""What a tour prints: the same lines in each language, but for what was measured."""
import json
import re
from typing import List, NamedTuple, Tuple

import header

MODEL = header.ROOT / "simulator/models/engine.json"
VERSION = re.search(r'QOR_VERSION_TEXT "(.*)"',
                    (header.ROOT / "src/qorcontrol/Version.h").read_text(encoding="utf-8"))[1]
PROGRESS = re.compile(r"progress: (-?\d+)")
VALUE = re.compile(r"value: (\w+) = (\d+\.\d\d) after (-?\d+) ms(, missed (\d+))?")
SPEED = re.compile(r"read: EngineSpeed = (\d+\.\d\d)")
# In order; of what is measured, and of texts, only the beginnings.
LINES = f"""library: {VERSION}
open: ok
ping: ok
connect: ok
read: EngineSpeed
write: ok
read back: IdleSpeedTarget = 900.00
refused: IdleSpeedTarget = 99999
  cause: 7 QOR_REFUSED
  sentence
  check
refused: NoSuchName
  cause: 8 QOR_UNKNOWN_NAME
  sentence
  check
stream: ok
stream end: ok
trouble codes""".split("\n")
END = ["clear: ok", "trouble codes: 0", "close: ok"]


class Value(NamedTuple):
    name: str
    value: float
    afterMs: int
    missed: int


class Tour(NamedTuple):
    lines: List[str]        # without those below
    progress: List[int]
    values: List[Value]
    texts: List[str]        # the sentences, and what to check


def codes_of_the_model() -> List[Tuple[int, int, List[str]]]:
    model = json.loads(MODEL.read_text(encoding="utf-8"))
    return [(int(code["code"], 0), code["status"], code["texts"]) for code in model["troubleCodes"]]


def lines_of_codes(codes) -> List[str]:
    return [f"trouble codes: {len(codes)}"] + \
           [f"  0x{code:04X} status {status}, {', '.join(texts)}" for code, status, texts in codes]


def whole(codes) -> List[str]:
    return LINES[:-1] + lines_of_codes(codes) + END


def parse(text: str) -> Tour:
    tour = Tour([], [], [], [])
    for line in text.splitlines():
        if match := PROGRESS.fullmatch(line):
            tour.progress.append(int(match[1]))
        elif match := VALUE.fullmatch(line):
            tour.values.append(Value(match[1], float(match[2]), int(match[3]), int(match[5] or 0)))
        elif SPEED.fullmatch(line):
            tour.lines.append("read: EngineSpeed")
        elif match := re.match(r"(  sentence|  check): (.+)", line):
            tour.lines.append(match[1])
            tour.texts.append(match[2])
        else:
            tour.lines.append(line)
    return tour
