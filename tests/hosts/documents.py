"""What the pages for hosts of other languages show is what the tests run, and is complete."""
import re
from pathlib import Path
from typing import Dict, Iterator, List, NamedTuple

from header import ROOT, Table

GUIDE = "docs/c-guide.md"
PAGES = [GUIDE, "docs/quick-start.md", "examples/README.md"]
# Programs that the tests build and run; of the languages of blocks their suffixes.
SOURCES = {"c": ["examples/tour.c", "tools/example/c/guide.c", "tools/example/first/first.c"],
           "cpp": ["examples/tour.cpp", "tools/example/minimal_host.cpp"],
           "csharp": ["examples/Tour.cs", "examples/QorControl.cs", "tools/example/first/First.cs"],
           "python": ["examples/tour.py", "examples/qorcontrol_ctypes.py", "tools/example/first/first.py"],
           "js": ["examples/tour.mjs", "tools/example/first/first.mjs"]}
# Of these every piece between marks is shown.
MARKED = "tools/example/c/guide.c"
PIECE = re.compile(r"^/\* \[(?P<name>[^/\]][^\]]*)\] \*/\n(?P<text>.*?)^/\* \[/(?P=name)\] \*/\n",
                   re.MULTILINE | re.DOTALL)
BLOCK = re.compile(r"^```(\w*)\n(.*?)^```\n", re.MULTILINE | re.DOTALL)
WORD = re.compile(r"\b(?:Qor[A-Z]\w+|QOR_[A-Z_]+)\b(?!\.\.\.)")
# Names that are not the header's: classes, a module's exception, environment variables, programs.
OTHER_WORDS = {"QorControl", "QorControlC", "QorControlFacade", "QorError", "QOR_CALL", "QOR_VERSION",
               "QOR_WINDOWS_PYTHON"}
IN_A_COMMAND = re.compile(r"\b(?:examples|include|bin|lib)\\([\w.-]+)")
# What the commands use or make besides the examples.
OTHER_FILES = {"qor-simulator", "qorctl", "simulator.ini", "first.exe", "First.exe", "first.py", "tour.exe", "tour", "Tour.exe",
               "Tour", "QorControlC.lib", "QorControlC.dll", "libQorControlC.dll.a", "libQorControlFacade.dll.a"}


class Files(NamedTuple):
    pages: Dict[str, str]
    sources: Dict[str, str]


def read() -> Files:
    def text(path):
        return (ROOT / path).read_text(encoding="utf-8")
    return Files({page: text(page) for page in PAGES},
                 {path: text(path) for paths in SOURCES.values() for path in paths})


def blocks_differ(files: Files) -> Iterator[str]:
    """Each block stands in a program, in whole lines."""
    for page, text in files.pages.items():
        for language, block in BLOCK.findall(text):
            sources = ["\n" + files.sources[path] for path in SOURCES.get(language, [])]
            if not any("\n" + block in source for source in sources):
                first = block.split("\n", 1)[0]
                yield f"{page}: no program has these lines: {first} ..."


def pieces_are_missing(files: Files) -> Iterator[str]:
    shown = [block for _, block in BLOCK.findall(files.pages[GUIDE])]
    for piece in PIECE.finditer(files.sources[MARKED]):
        if piece["text"] not in shown:
            yield f"{GUIDE}: does not show the piece {piece['name']} as it is"


def names_are_wrong(files: Files, table: Table) -> Iterator[str]:
    known = {*table.constants, *table.structures, *table.handles, *OTHER_WORDS,
             *(function.name for function in table.functions + table.callbacks)}
    for page, text in files.pages.items():
        for word in sorted(set(WORD.findall(text)) - known):
            yield f"{page}: the header has no {word}"


def names_are_missing(files: Files, table: Table) -> Iterator[str]:
    said = set(WORD.findall(files.pages[GUIDE]))
    for name in [*table.constants, *(function.name for function in table.functions)]:
        if name not in said:
            yield f"{GUIDE}: does not tell of {name}"
    for name, value in table.constants.items():
        row = re.search(rf"^\| (\d+) \| `{name}`", files.pages[GUIDE], re.MULTILINE)
        if row and int(row[1]) != value:
            yield f"{GUIDE}: {name} is {value}"


def commands_are_wrong(files: Files) -> Iterator[str]:
    known = OTHER_FILES | {Path(path).name for path in files.sources}
    for page, text in files.pages.items():
        for line in text.split("\n"):
            for name in IN_A_COMMAND.findall(line) if line.startswith("    ") else []:
                if name not in known:
                    yield f"{page}: no file {name}"


def findings(files: Files, table: Table) -> List[str]:
    return [*blocks_differ(files), *pieces_are_missing(files), *names_are_wrong(files, table),
            *names_are_missing(files, table), *commands_are_wrong(files)]
