#!/usr/bin/env python3
"""Lines and branches per folder of src/, as the counters of a build with QOR_COVERAGE have them.

usage: coverage.py ROOT BUILD     leaves BUILD/coverage.json, what gcovr tells of each file
Branches of exceptions alone, and those that cannot be reached, are left out.
"""
import json
import subprocess
import sys
from pathlib import Path
from typing import Dict, List, NamedTuple

INNER = "facade/channel"  # a folder of its own


class Figures(NamedTuple):
    lines: int = 0
    lines_run: int = 0
    branches: int = 0
    branches_run: int = 0

    def with_file(self, entry: Dict) -> "Figures":
        return Figures(self.lines + entry["line_total"], self.lines_run + entry["line_covered"],
                       self.branches + entry["branch_total"],
                       self.branches_run + entry["branch_covered"])


def folder_of(filename: str) -> str:
    parts = Path(filename).parts[1:-1]
    return INNER if "/".join(parts).startswith(INNER) else parts[0] if parts else "."


def folders_of(files: List[Dict]) -> Dict[str, Figures]:
    folders: Dict[str, Figures] = {}
    for entry in files:
        for name in folder_of(entry["filename"]), "src/":
            folders[name] = folders.get(name, Figures()).with_file(entry)
    return folders


def share(part: int, whole: int) -> str:
    return f"{100 * part / whole:5.1f} %" if whole else "      -"


def table(folders: Dict[str, Figures]) -> List[str]:
    rows = [f"{'folder':<16} {'lines':>7} {'run':>8} {'branches':>9} {'run':>8}"]
    for name in sorted(folders, key=lambda each: (each == "src/", each)):
        one = folders[name]
        rows.append(f"{name:<16} {one.lines:>7} {share(one.lines_run, one.lines):>8} "
                    f"{one.branches:>9} {share(one.branches_run, one.branches):>8}")
    return rows


def measured(root: Path, build: Path) -> List[Dict]:
    result = build / "coverage.json"
    # Threads that count at once lose counts; a difference of two may then be below 0, which it warns of.
    subprocess.run(["gcovr", "--gcov-ignore-parse-errors", "--root", str(root), "--filter", str(root / "src") + "/",
                    "--gcov-executable", "i686-w64-mingw32-gcov-posix", "--exclude-throw-branches",
                    "--exclude-unreachable-branches", "--json-summary", str(result), str(build)],
                   check=True, stdout=subprocess.DEVNULL)
    return json.loads(result.read_text(encoding="utf-8"))["files"]


def main() -> int:
    files = measured(Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve())
    print("\n".join(table(folders_of(files))))
    return 0 if files else 1


if __name__ == "__main__":
    sys.exit(main())
