"""The named mutants: faults that are made on purpose, each with the test that must see it.

A file of the folder `catalogue` has those of one folder of src/, in TOML:

    [[mutant]]
    name = "agent: a launch may take 1 s"      # FOLDER: the fault
    file = "src/agent/QorProtocolAgent.cpp"
    before = 'launchMs = 10000'                # occurs exactly once in that file
    after = 'launchMs = 1000'
    test = "agent_test AgentStart.LastsTenSeconds"   # [PRESET:]PROGRAM FILTER[:FILTER...]
    dies = "hang"    # or "crash": that the test's program may end so is how the fault shows itself

`dies` is left out where the test must fail in order. A preset other than mingw32 is named in front of the program, as in "native64:protocol_test".
"""
import re
import tomllib
from pathlib import Path
from typing import Dict, Iterator, List, NamedTuple, Tuple

CATALOGUE = Path("tests/mutants/catalogue")
FIELDS = {"name", "file", "before", "after", "test"}
DEATHS = {"crash", "hang"}
PRESETS = {"mingw32", "native64", "native32", "race64"}
TEST = re.compile(r"(?:(\w+):)?(\w+) (\S+)")
TEST_IN_SOURCE = re.compile(r"^(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.MULTILINE)
PARAMETERISED = re.compile(r"\bTEST_P\(\s*(\w+),\s*(\w+)\s*\)")


class Malformed(Exception):
    """A file of the catalogue that cannot be understood."""


class Mutant(NamedTuple):
    name: str
    file: str
    before: str
    after: str
    preset: str
    program: str
    filters: str  # as --gtest_filter wants them
    dies: str = ""  # one of DEATHS, or by its test alone

    def key(self) -> Tuple[str, str]:
        return self.preset, self.program


def made_of(path: Path, entry: Dict[str, str]) -> Mutant:
    if set(entry) - {"dies"} != FIELDS:
        raise Malformed(f"{path}: {entry.get('name', 'a mutant')}: the fields are {sorted(FIELDS)}")
    parts = TEST.fullmatch(entry["test"])
    if parts is None or (parts[1] or "mingw32") not in PRESETS:
        raise Malformed(f"{path}: {entry['name']}: no test: {entry['test']}")
    if entry.get("dies", "crash") not in DEATHS:
        raise Malformed(f"{path}: {entry['name']}: no way to die: {entry['dies']}")
    if entry["before"] == entry["after"] or not entry["before"]:
        raise Malformed(f"{path}: {entry['name']}: it changes nothing")
    return Mutant(entry["name"], entry["file"], entry["before"], entry["after"], parts[1] or "mingw32",
                  parts[2], parts[3], entry.get("dies", ""))


def mutants_of(root: Path) -> List[Mutant]:
    mutants: List[Mutant] = []
    for path in sorted((root / CATALOGUE).glob("*.toml")):
        try:
            content = tomllib.loads(path.read_text(encoding="utf-8"))
        except tomllib.TOMLDecodeError as error:
            raise Malformed(f"{path}: {error}") from error
        mutants += [made_of(path, entry) for entry in content.get("mutant", [])]
    names = [mutant.name for mutant in mutants]
    for name in names:
        if names.count(name) > 1:
            raise Malformed(f"two mutants have the name {name}")
    return mutants


def occurrences(root: Path, mutant: Mutant) -> int:
    path = root / mutant.file
    return path.read_text(encoding="utf-8").count(mutant.before) if path.is_file() else 0


def tests_of(root: Path) -> set:
    """Suite and name of each test of the tree."""
    paths = [*(root / "tests").rglob("*.cpp"), *(root / "tests").rglob("*.h")]
    return {found for path in paths for found in TEST_IN_SOURCE.findall(path.read_text(encoding="utf-8"))}


def with_parameters(root: Path) -> set:
    return {found for path in (root / "tests").rglob("*.cpp")
            for found in PARAMETERISED.findall(path.read_text(encoding="utf-8"))}


def single_tests(filters: str) -> Iterator[Tuple[str, str]]:
    """Suite and name of each, without what GoogleTest adds to those that have parameters."""
    for test in filters.split(":"):
        suite, _, name = test.partition(".")
        parts = [part for part in suite.split("/") if part != "*" and not part.isdigit()]
        yield parts[-1] if parts else suite, name.split("/")[0]


def lists_of(root: Path) -> str:
    paths = sorted((root / "tests").rglob("CMakeLists.txt"))
    return "\n".join(path.read_text(encoding="utf-8") for path in paths)


def has_program(lists: str, program: str) -> bool:
    if re.search(rf"\bNAME\s+{program}\b", lists):
        return True
    system = re.fullmatch(r"system_(c_)?(\w+)_test", program)
    return system is not None and re.search(
        rf"\badd_{'c' if system[1] else 'system'}_test\({system[2]}\s", lists) is not None


def complaints(root: Path, mutants: List[Mutant]) -> Iterator[str]:
    """What no longer fits the sources, a line each."""
    tests, parameterised, lists = tests_of(root), with_parameters(root), lists_of(root)
    for mutant in mutants:
        count = occurrences(root, mutant)
        if count != 1:
            yield f"{mutant.name}: its text occurs {count} times in {mutant.file}"
        if not has_program(lists, mutant.program):
            yield f"{mutant.name}: there is no test program {mutant.program}"
        for test in single_tests(mutant.filters):
            if test not in tests:
                yield f"{mutant.name}: there is no test {'.'.join(test)}"
        for test in mutant.filters.split(":"):
            if tuple(test.split(".")) in parameterised:
                yield f"{mutant.name}: {test} has parameters: write */{test}/*"
