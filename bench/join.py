#!/usr/bin/env python3
"""Makes one file of figures of what was measured under Wine and natively, and says when, of what and where.

usage: join.py OUT [MEASURED] [--peer FILE]     prints what round trips cost over the raw thing
"""
import datetime
import json
import os
import platform
import subprocess
import sys
from pathlib import Path
from typing import Any, Dict, List

import figures

# Round trips and the raw thing that each is made of: the same bytes over a blocking connection. Under Wine and
# natively these cost different times, so only their ratios stand beside each other.
FLOORS = {
    "pingQor, TCP": "floor: blocking 32-byte TCP round trip",
    "ZeroMQ, 32-byte request and reply": "floor: 32-byte TCP round trip, native",
}


def said_by(*command: str) -> str:
    """The first line that a program prints; empty where it is missing or fails."""
    try:
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
    except (OSError, subprocess.CalledProcessError):
        return ""
    return done.stdout.decode(errors="replace").partition("\n")[0].strip()


def commit_of(root: Path) -> str:
    git = ["git", "-C", str(root), "-c", f"safe.directory={root}"]
    commit = said_by(*git, "rev-parse", "--short=10", "HEAD")
    is_changed = commit and said_by(*git, "status", "--porcelain", "--untracked-files=no")
    return commit + (" and changes" if is_changed else "")


def processor() -> str:
    for line in Path("/proc/cpuinfo").read_text(encoding="utf-8", errors="replace").splitlines():
        if line.startswith("model name"):
            return line.partition(":")[2].strip()
    return platform.machine()


def host() -> Dict[str, Any]:
    return {"name": platform.node(), "processor": processor(), "cores": len(os.sched_getaffinity(0)),
            "kernel": platform.release(), "wine": said_by("wine", "--version")}


def entries_of(path: Path, is_peer: bool) -> List[Dict[str, Any]]:
    figures.read(path)  # says what is wrong with it
    entries = figures.content_of(path)["figures"]
    for entry in entries:
        if is_peer:
            entry["peer"] = True
        if entry["name"] in FLOORS:
            entry["floor"] = FLOORS[entry["name"]]
    return entries


def over_floors(run: figures.Run) -> List[str]:
    rows = [(figure, run.figures[figure.floor].p50, run.over_floor(figure))
            for figure in run.figures.values() if figure.floor in run.figures]
    if not rows:
        return []
    head = f"{'round trip, beside the raw one of its run':<44}{'p50':>10}{'raw p50':>10}{'ratio':>8}"
    return [head] + [f"{figure.name:<44}{figure.p50:>10.2f}{floor:>10.2f}{ratio:>8.2f}"
                     for figure, floor, ratio in rows]


def joined(paths: Dict[Path, bool]) -> Dict[str, Any]:
    """Of files and whether they are of a peer."""
    entries = [entry for path, is_peer in paths.items() for entry in entries_of(path, is_peer)]
    now = datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC")
    content = {"when": now, "commit": commit_of(Path(__file__).resolve().parents[1]), "host": host(),
               "rounds": figures.content_of(next(iter(paths))).get("rounds"), "figures": entries}
    run = figures.run_of(Path(), content)
    for entry in entries:
        figure = run.figures.get(entry["name"])
        if figure and run.over_floor(figure):
            entry["p50OverFloor"] = run.over_floor(figure)
    return content


def main() -> int:
    out, *names = sys.argv[1:]
    try:
        content = joined({Path(name): before == "--peer" for before, name in zip(["", *names], names)
                          if name != "--peer"})
        Path(out).write_text(json.dumps(content, indent=1) + "\n", encoding="utf-8")
        print("\n".join(over_floors(figures.run_of(Path(out), content))))
    except figures.Unusable as error:
        print(f"run: {error}", file=sys.stderr)
        return 2
    except OSError as error:
        print(f"run: {error.filename}: {error.strerror}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main())
