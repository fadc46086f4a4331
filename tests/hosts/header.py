"""QorControl.h as one table, for all that is compared with it.

It reads the header whole: what it does not understand is an error, so nothing of the header can be
missing from the table unnoticed.
"""
import re
from pathlib import Path
from typing import Dict, List, NamedTuple

ROOT = Path(__file__).resolve().parents[2]
HEADER = ROOT / "src/cinterface/QorControl.h"

BASES = ["unsigned int", "unsigned char", "int", "char", "double", "void"]
SIZES = {"unsigned int": 4, "int": 4, "double": 8, "char": 1, "unsigned char": 1}
# What the preprocessor sees besides constants: which compiler it is, and the linkage.
FRAME = re.compile(r"""^\#(ifndef|ifdef|if|else|endif|include)\b.*$
                     | ^\#define\ (QOR_CONTROL_H|QOR_CALL|QOR_IMPORT)\b.*$
                     | ^extern\ "C"\ \{$ | ^\}$""", re.VERBOSE | re.MULTILINE)


class Type(NamedTuple):
    base: str
    pointers: int = 0
    const: bool = False  # what is pointed to is not written

    def __str__(self):
        return ("const " if self.const else "") + self.base + "*" * self.pointers


class Member(NamedTuple):
    """A field of a structure, or a parameter of a function."""
    name: str
    type: Type


class Function(NamedTuple):
    name: str
    result: Type
    parameters: List[Member]

    def __str__(self):
        return f"{self.result} {self.name}({', '.join(str(p.type) for p in self.parameters)})"


class Table(NamedTuple):
    constants: Dict[str, int]
    handles: List[str]
    structures: Dict[str, List[Member]]
    callbacks: List[Function]
    functions: List[Function]


class NotUnderstood(Exception):
    pass


def parse_member(text: str, known: List[str]) -> Member:
    """A declaration with a name: `const char* const* names`."""
    words = re.fullmatch(r"(?P<type>.*?[\s*])(?P<name>\w+)", text.strip(), re.DOTALL)
    if not words:
        raise NotUnderstood(text)
    return Member(words["name"], parse_type(words["type"], known))


def parse_type(text: str, known: List[str]) -> Type:
    bare = " ".join(re.sub(r"\bconst\b", " ", text).replace("*", " ").split())
    if bare.startswith("struct "):
        bare = bare[len("struct "):]
    if bare not in BASES and bare not in known:
        raise NotUnderstood(text)
    return Type(bare, text.count("*"), "const" in text.split("*")[0].split())


def parse_parameters(text: str, known: List[str]) -> List[Member]:
    if text.strip() == "void":
        return []
    return [parse_member(piece, known) for piece in text.split(",")]


def parse(text: str) -> Table:
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.DOTALL).replace("\\\n", " ")
    table = Table({}, [], {}, [], [])
    known: List[str] = []

    def constant(match):
        table.constants[match["name"]] = int(match["value"].rstrip("u"), 0)
        return ""

    def handle(match):
        table.handles.append(match["name"])
        known.append(match["name"])
        return ""

    def structure(match):
        known.append(match["name"])
        fields = [field for field in match["fields"].split(";") if field.strip()]
        table.structures[match["name"]] = [parse_member(field, known) for field in fields]
        return ""

    def callback(match):
        known.append(match["name"])
        table.callbacks.append(Function(match["name"], parse_type(match["result"], known),
                                        parse_parameters(match["parameters"], known)))
        return ""

    def function(match):
        table.functions.append(Function(match["name"], parse_type(match["result"], known),
                                        parse_parameters(match["parameters"], known)))
        return ""

    for pattern, take in (
            (r"^#define (?P<name>QOR_\w+)\s+(?P<value>0x[0-9A-Fa-f]+u?|\d+u?)[ \t]*$", constant),
            (r"typedef struct \w+\* (?P<name>\w+);", handle),
            (r"typedef struct (?P<name>\w+) \{(?P<fields>[^}]*)\} (?P=name);", structure),
            (r"typedef (?P<result>\w+)\s*\(QOR_CALL\* (?P<name>\w+)\)\((?P<parameters>[^)]*)\);", callback),
            (r"QOR_IMPORT (?P<result>[\w\s*]+?) QOR_CALL (?P<name>\w+)\((?P<parameters>[^)]*)\);", function)):
        text = re.sub(pattern, take, text, flags=re.MULTILINE)
    rest = FRAME.sub("", re.sub(r"[ \t]+$", "", text, flags=re.MULTILINE)).strip()
    if rest:
        raise NotUnderstood(rest)
    return table


def read() -> Table:
    return parse(HEADER.read_text(encoding="utf-8"))


def layout(fields: List[Member], pointer_size: int = 4) -> Dict[str, int]:
    """Where each field lies, by default on 32-bit Windows, and under "" the size of it all."""
    offsets, end, widest = {}, 0, 1
    for field in fields:
        size = pointer_size if field.type.pointers else SIZES[field.type.base]
        widest = max(widest, size)
        offsets[field.name] = end = -(-end // size) * size
        end += size
    offsets[""] = -(-end // widest) * widest
    return offsets
