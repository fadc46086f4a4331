#!/usr/bin/env python3
"""Holds what the documents name against the tree: files, tests, numbers. Prints one line per finding;
exit code 1 if there is any.

usage: documents.py [ROOT]
"""
import re
import sys
from pathlib import Path
from typing import Dict, Iterator, List, Optional, Tuple

sys.dont_write_bytecode = True
from check import Finding, list_files, read_text, report  # noqa: E402

BINDING = Path("docs/binding.md")
GENERATED = {"build", "out"}  # folders that no checkout has

QUOTED = re.compile(r"`([^`]+)`")
LINK = re.compile(r"\]\(([^)#\s]+)[^)]*\)")
SOURCE_NAME = re.compile(r"[\w./-]*\w\.(h|cpp|py|md|cmake|txt|sh)")
FOLDER_PATH = re.compile(r"(\w[\w-]*/)+[\w-]*")
TEST_NAME = re.compile(r"[A-Z]\w*\.([A-Z]\w*|\*)")
TEST_FILE = re.compile(r"[\w./]+(Test\.cpp|_test\.py)")
CONSTANT = re.compile(r"`(\w+)` = ([-\w]+)")


def documents(paths: List[Path]) -> List[Path]:
    return [p for p in paths if p.suffix == ".md" and
            (p.parent == Path("docs") or p in (Path("README.md"), Path("CONTRIBUTING.md"), Path("examples/README.md")))]


def prose_lines(text: str) -> Iterator[Tuple[int, str]]:
    """The lines outside of blocks of code, with their numbers."""
    inside = False
    for number, line in enumerate(text.split("\n"), start=1):
        if line.startswith("```"):
            inside = not inside
        elif not inside and not line.startswith("    "):
            yield number, line


class Tree:
    """The files under version control, to be asked for by any tail of their path."""

    def __init__(self, paths: List[Path]):
        self.tails = set()
        for path in paths:
            for start in range(len(path.parts)):
                tail = path.parts[start:]
                self.tails.add("/".join(tail))
                self.tails.add("/".join(tail).rsplit(".", 1)[0])
                for end in range(1, len(tail)):
                    self.tails.add("/".join(tail[:end]))

    def has(self, name: str) -> bool:
        return name.rstrip("/") in self.tails


def check_paths(root: Path, path: Path, text: str, tree: Tree) -> Iterator[Finding]:
    """Links lead somewhere; what looks like a file or folder of the tree is one."""
    for number, line in prose_lines(text):
        for target in LINK.findall(line):
            if "://" not in target and not (root / path.parent / target).exists():
                yield Finding(path, number, f"no file {target}")
        for name in QUOTED.findall(line):
            looks_like_one = SOURCE_NAME.fullmatch(name) or FOLDER_PATH.fullmatch(name)
            if looks_like_one and name.split("/")[0] not in GENERATED and not tree.has(name):
                yield Finding(path, number, f"no file or folder {name}")


def has_test(text: str, name: str, file: str) -> bool:
    suite, test = name.split(".")
    if file.endswith(".py"):
        return re.search(rf"class {suite}\b", text) is not None and \
            (test == "*" or re.search(rf"def {test}\b", text) is not None)
    test = r"\w+" if test == "*" else test
    return re.search(rf"\bTEST(_F|_P)?\(\s*{suite}\s*,\s*{test}\s*\)", text) is not None


def check_pins(root: Path, text: str) -> Iterator[Finding]:
    """Every test of the binding page exists in its file, and every row of a table names one."""
    wants_pin = False
    waiting: List[str] = []
    for number, line in prose_lines(text):
        is_row = line.startswith("|")
        if is_row and line.rstrip().endswith("| pinned by |"):
            wants_pin = True
            continue
        wants_pin = wants_pin and is_row
        pins = 0
        for name in QUOTED.findall(line):
            if TEST_NAME.fullmatch(name):
                waiting.append(name)
            elif TEST_FILE.fullmatch(name):
                file = root / "tests" / name
                content = read_text(file) if file.is_file() else None
                if content is None:
                    yield Finding(BINDING, number, f"no file tests/{name}")
                for test in waiting:
                    pins += 1
                    if content is not None and not has_test(content, test, name):
                        yield Finding(BINDING, number, f"no test {test} in tests/{name}")
                waiting = []
        if wants_pin and not pins and not line.startswith("|---"):
            yield Finding(BINDING, number, "no test pins this")
        if (is_row or not line.strip()) and waiting:
            yield Finding(BINDING, number, f"{', '.join(waiting)}: in which file?")
            waiting = []


def constants_below(root: Path, folder: str, paths: List[Path]) -> Dict[str, List[Optional[int]]]:
    found: Dict[str, List[Optional[int]]] = {}
    for path in paths:
        if Path("src") / folder in path.parents and path.suffix in (".h", ".cpp"):
            text = read_text(root / path) or ""
            for name, value in re.findall(r"\bconstexpr [\w:* ]+ (\w+) = ([-\w]+);", text):
                found.setdefault(name, []).append(number_of(value))
    return found


def check_texts(root: Path, text: str, paths: List[Path]) -> Iterator[Finding]:
    """The texts that the page asks for below src/ stand there, whole and in one piece."""
    inside = False
    for number, line in prose_lines(text):
        if line.startswith("| text ") and line.endswith("| below `src/` in |"):
            inside = True
            continue
        inside = inside and line.startswith("|")
        if inside and not line.startswith("|---"):
            wanted, folder = QUOTED.findall(line)
            sources = [p for p in paths if Path("src") / folder in p.parents]
            if not any(wanted in (read_text(root / p) or "") for p in sources):
                yield Finding(BINDING, number, f"{folder} has no text '{wanted}'")


def number_of(text: str) -> Optional[int]:
    try:
        return int(text.rstrip("uUlL"), 0)
    except ValueError:
        return None


def check_numbers(root: Path, text: str, paths: List[Path]) -> Iterator[Finding]:
    """The constants of the page have these values in some file of their folder."""
    inside = False
    for number, line in prose_lines(text):
        if line.startswith("| below `src/` in |"):
            inside = True
            continue
        inside = inside and line.startswith("|")
        if not inside or line.startswith("|---"):
            continue
        folder = QUOTED.findall(line)[0]
        found = constants_below(root, folder, paths)
        for name, value in CONSTANT.findall(line):
            if number_of(value) not in found.get(name, []):
                yield Finding(BINDING, number, f"{folder} has no {name} = {value}")


def check_documents(root: Path) -> Iterator[Finding]:
    paths = list_files(root)
    tree = Tree(paths)
    for path in documents(paths):
        yield from check_paths(root, path, read_text(root / path) or "", tree)
    if BINDING in paths:
        text = read_text(root / BINDING) or ""
        yield from check_pins(root, text)
        yield from check_numbers(root, text, paths)
        yield from check_texts(root, text, paths)


if __name__ == "__main__":
    sys.exit(report(check_documents))
