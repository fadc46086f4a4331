#!/usr/bin/env python3
"""House rules that no compiler checks. Prints one line per finding; exit code 1 if there is any.

usage: check.py [ROOT]
"""
import re
import shutil
import subprocess
import sys
from pathlib import Path
from typing import Callable, Iterator, List, NamedTuple, Optional

from functions import functions_in, Unbalanced

CPP_SUFFIXES = {".h", ".cpp"}
MAX_CPP_COLUMNS = 110
MAX_FUNCTION_LINES = 40  # one screen, from the first word to the closing brace
# Longer ones, each with its reason. One that has become shorter must go from here.
LONG_FUNCTIONS = {
    ("tests/unit/agent/AgentHandlersTest.cpp", "rows"): "a table, a row per operation",
}
FUNCTION_FOLDERS = {"src", "simulator", "tools", "bench", "tests"}
# A corpus holds inputs of the fuzzers: any bytes, some of which look like text.
SKIPPED_FOLDERS = {".git", "build", "out", "__pycache__", "corpus"}

# Which folders of src/ a folder may include, apart from itself: one way only.
ALLOWED_INCLUDES = {
    "agent": {"facade/channel", "client", "transport", "protocol", "framework", "trace", "common"},
    "facade": {"facade/channel", "trace", "common"},
    "facade/channel": {"common"},
    "client": {"transport", "protocol", "framework", "trace", "common"},
    "transport": {"protocol", "framework", "trace", "common"},
    "framework": {"common"},
    "protocol": {"common"},
    "trace": {"common"},
    "common": set(),
    "qorcontrol": set(),
    "cinterface": {"facade", "facade/channel", "client", "framework", "trace", "common"},
}
# The exported interface, which these folders may include besides.
PUBLIC_HEADERS = {"facade/QorControlFacade.h"}
KNOW_THE_PUBLIC_HEADERS = {"agent", "facade/channel"}
# What the headers of hosts are made of; all of src/ may use it.
SDK_FOLDER = "qorcontrol"

# Comments give their reason themselves instead of pointing at papers, and nothing depends on the
# folders of one machine. Put together from pieces, for this file is checked as well.
BANNED = [
    re.compile(r"\bs" + r"pec(s|ification|ifications)?\b", re.IGNORECASE),
    re.compile(r"\bas " + r"specified\b", re.IGNORECASE),
    re.compile(r"\bP" + r"arts? \d"),
    re.compile(r"\bissue" + r" #?\d", re.IGNORECASE),
    re.compile(r"(?<![\w.}/-])/(" + r"work|tmp)/"),
    re.compile(r"\b(deb\." + r"debian\.org|pypi\." + r"org|crates\." + r"io)\b", re.IGNORECASE),
]

INCLUDE = re.compile(r'\s*#\s*include\s*"([^"]+)"')


class Finding(NamedTuple):
    path: Path
    line: int
    text: str


class Source(NamedTuple):
    root: Path
    path: Path  # relative to root
    text: str

    def lines(self):
        return enumerate(self.text.split("\n"), start=1)

    def is_cpp(self) -> bool:
        return self.path.suffix in CPP_SUFFIXES

    def includes(self):
        for number, line in self.lines():
            match = INCLUDE.match(line)
            if match:
                yield number, match.group(1)


def check_layout(source: Source) -> Iterator[Finding]:
    """Line ends, tabs, the last line and the width of lines."""
    if source.text and not source.text.endswith("\n"):
        yield Finding(source.path, source.text.count("\n") + 1, "no line end at the end of the file")
    for number, line in source.lines():
        if "\r" in line:
            yield Finding(source.path, number, "carriage return: lines end with LF only")
        indentation = line[: len(line) - len(line.lstrip(" \t"))]
        if "\t" in indentation and source.path.name != "Makefile":
            yield Finding(source.path, number, "tab in the indentation")
        if source.is_cpp() and len(line) > MAX_CPP_COLUMNS:
            yield Finding(source.path, number, f"{len(line)} columns, at most {MAX_CPP_COLUMNS}")


def check_banned_words(source: Source) -> Iterator[Finding]:
    for number, line in source.lines():
        for pattern in BANNED:
            match = pattern.search(line)
            if match:
                yield Finding(source.path, number, f"'{match.group(0)}' does not belong here")


def folder_of(path: str) -> str:
    """The folder of src/ that has rules of its own, of a path relative to src/."""
    inner = "facade/channel"
    return inner if path.startswith(inner + "/") else path.split("/")[0]


def may_include(own: str, included: str) -> bool:
    folder = folder_of(included)
    return (folder == own or folder in ALLOWED_INCLUDES.get(own, set()) or folder == SDK_FOLDER
            or included in PUBLIC_HEADERS and own in KNOW_THE_PUBLIC_HEADERS)


def check_library_includes(source: Source) -> Iterator[Finding]:
    """src/: includes are written relative to src/ and point one way."""
    if source.path.parts[0] != "src" or not source.is_cpp():
        return
    own = folder_of(source.path.relative_to("src").as_posix())
    for number, included in source.includes():
        if not (source.root / "src" / included).is_file() or ".." in included:
            yield Finding(source.path, number, f'"{included}" is no path relative to src/')
        elif not may_include(own, included):
            yield Finding(source.path, number, f"{own}/ must not include {folder_of(included)}/")


def check_simulator_includes(source: Source) -> Iterator[Finding]:
    """The simulator is a second implementation: it and its tests share no file with src/."""
    homes = [Path("simulator"), Path("tests/unit/simulator")]
    home = next((h for h in homes if h in source.path.parents), None)
    if home is None:
        return
    if source.path.name == "CMakeLists.txt":
        for number, line in source.lines():
            if re.search(r"(SOURCE_DIR\}|\.\.)/src\b", line):
                yield Finding(source.path, number, "the simulator uses nothing of src/")
    if not source.is_cpp():
        return
    for number, included in source.includes():
        folders = [source.path.parent] + homes
        found = [(source.root / f / included).resolve() for f in folders]
        inside = [(source.root / h).resolve() for h in homes]
        if not any(p.is_file() and any(h in p.parents for h in inside) for p in found):
            yield Finding(source.path, number, f'"{included}" is no file of the simulator')


def check_function_length(source: Source) -> Iterator[Finding]:
    if source.path.parts[0] not in FUNCTION_FOLDERS or not source.is_cpp():
        return
    unused = {name for path, name in LONG_FUNCTIONS if path == source.path.as_posix()}
    try:
        for function in functions_in(source.text):
            if function.lines <= MAX_FUNCTION_LINES:
                continue
            if function.name in unused:
                unused.remove(function.name)
            else:
                yield Finding(source.path, function.line,
                              f"{function.name} has {function.lines} lines, at most "
                              f"{MAX_FUNCTION_LINES}")
    except Unbalanced as error:
        yield Finding(source.path, error.line, "the braces do not match, or cannot be followed")
        return
    for name in sorted(unused):
        yield Finding(source.path, 1, f"{name} needs no place in LONG_FUNCTIONS any more")


def check_format(root: Path, paths: List[Path]) -> Iterator[Finding]:
    """What "./run format" would change. Skipped where clang-format is not installed."""
    tool = shutil.which("clang-format")
    if not tool or not paths:
        return
    command = [tool, "--dry-run", "-Werror", *[str(root / p) for p in paths]]
    result = subprocess.run(command, stderr=subprocess.PIPE, text=True, check=False)
    reported = set()
    for line in result.stderr.splitlines():
        match = re.match(r"(.*?):(\d+):\d+: error", line)
        if match and match.group(1) not in reported:
            reported.add(match.group(1))
            path = Path(match.group(1)).relative_to(root)
            yield Finding(path, int(match.group(2)), 'not formatted: call "./run format"')
    if result.returncode != 0 and not reported:
        yield Finding(Path(".clang-format"), 1, result.stderr.strip() or "clang-format failed")


FILE_CHECKS = [check_layout, check_banned_words, check_library_includes, check_simulator_includes,
               check_function_length]


def list_files(root: Path) -> List[Path]:
    """What is, or would be, under version control; without it, everything that is not built."""
    if (root / ".git").exists() and shutil.which("git"):
        command = ["git", "-C", str(root), "-c", f"safe.directory={root}", "ls-files", "-z",
                   "--cached", "--others", "--exclude-standard"]
        names = subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout
        paths = {Path(n) for n in names.decode().split("\0") if n}
    else:
        paths = {p.relative_to(root) for p in root.rglob("*")}
    return sorted(p for p in paths
                  if (root / p).is_file() and not SKIPPED_FOLDERS.intersection(p.parts))


def read_text(path: Path) -> Optional[str]:
    """None for binary files. A text that is not UTF-8 raises UnicodeDecodeError."""
    content = path.read_bytes()
    return None if b"\0" in content else content.decode("utf-8")


def check_tree(root: Path) -> Iterator[Finding]:
    cpp_files = []
    for path in list_files(root):
        try:
            text = read_text(root / path)
        except UnicodeDecodeError as error:
            yield Finding(path, 1, f"not UTF-8: {error.reason} at byte {error.start}")
            continue
        if text is None:
            continue
        source = Source(root, path, text)
        if source.is_cpp():
            cpp_files.append(path)
        for check in FILE_CHECKS:
            yield from check(source)
    yield from check_format(root, cpp_files)


def report(check: Callable[[Path], Iterator[Finding]]) -> int:
    """Prints what a check finds in the tree of the command line, by default this one; the exit code."""
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parents[2]).resolve()
    findings = list(check(root))
    for finding in findings:
        print(f"{finding.path}:{finding.line}: {finding.text}")
    print(f"{len(findings)} findings")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(report(check_tree))
