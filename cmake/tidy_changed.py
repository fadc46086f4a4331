#!/usr/bin/env python3
"""clang-tidy on what has changed, for "./run test": the whole tree takes too long for every run.

usage: tidy_changed.py ROOT BUILD-FOLDER STATE-FILE

Looked at is what differs from the last commit whose changes were all clean here; in a folder that
has none yet from where the branch left main, and on main itself from the commit before. A header
is looked at through one source file that includes it. What was clean and is the same since then is
skipped. It ends after two minutes: what is left then is named and comes next time. "./run tidy"
looks at everything.
"""
import hashlib
import json
import os
import re
import subprocess
import sys
import time
from pathlib import Path

BUDGET_S = 120
BATCH = 6  # files between two looks at the time
FOLDERS = ("src/", "simulator/", "tools/", "bench/")
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


class Git:
    def __init__(self, root):
        self.command = ["git", "-C", str(root), "-c", f"safe.directory={root}"]

    def lines(self, *arguments):
        """None if git has no answer, or is not there."""
        try:
            done = subprocess.run([*self.command, *arguments], stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL, check=False)
        except FileNotFoundError:
            return None
        return done.stdout.decode().splitlines() if done.returncode == 0 else None

    def commit(self, *arguments):
        found = self.lines(*arguments)
        return found[0] if found else None

    def head(self):
        return self.commit("rev-parse", "--verify", "-q", "HEAD")

    def base(self, last_clean):
        """The commit from which on changes count; None if there is none."""
        head = self.head()
        if last_clean and self.lines("merge-base", "--is-ancestor", last_clean, "HEAD") is not None:
            return last_clean
        for main in ["origin/main", "main"]:
            fork = self.commit("merge-base", "HEAD", main)
            if fork and fork != head:
                return fork
        return self.commit("rev-parse", "--verify", "-q", "HEAD~1")

    def changed_since(self, base):
        """Names of files; None if git cannot tell."""
        names = self.lines("diff", "--name-only", "--diff-filter=d", base)
        others = self.lines("ls-files", "--others", "--exclude-standard")
        return None if names is None or others is None else names + others


def digest(root, name):
    content = (root / name).read_bytes() + (root / ".clang-tidy").read_bytes()
    return hashlib.sha256(content).hexdigest()


class Sources:
    """The source files that are compiled, relative to the root, and what they include."""

    def __init__(self, root, build):
        self.root = root
        entries = json.loads((build / "compile_commands.json").read_text())
        paths = {Path(os.path.realpath(Path(e["directory"], e["file"]))) for e in entries}
        self.compiled = sorted(str(p.relative_to(root)) for p in paths if root in p.parents)
        self.compiled = [name for name in self.compiled if name.startswith(FOLDERS)]

    def includes(self, name, header):
        found = INCLUDE.findall((self.root / name).read_text(errors="replace"))
        # As it is written, it ends the path of the header: "trace/Trace.h", "Sampler.h".
        return any(("/" + header).endswith("/" + written) for written in found)

    def users(self, header):
        own = header[:-2] + ".cpp"
        return [own] if own in self.compiled else [
            name for name in self.compiled if self.includes(name, header)]

    def that_show(self, changed):
        """The source files through which the changed ones are seen, each with those."""
        shown = {name: [name] for name in changed if name in self.compiled}
        for header in (name for name in changed if name.endswith(".h")):
            users = self.users(header)
            if users:
                best = next((name for name in users if name in shown), users[0])
                shown.setdefault(best, []).append(header)
        return shown


def load(path):
    try:
        return json.loads(path.read_text())
    except (OSError, ValueError):
        return {}


def look_at(root, build, names):
    patterns = ["^" + re.escape(str(root / name)) + "$" for name in names]
    return subprocess.run([str(root / "cmake/clang-tidy.sh"), str(build), *patterns],
                          check=False).returncode == 0


def in_batches(root, build, names, clock=time.monotonic):
    """What was looked at and clean, what had findings, what there was no time for."""
    end = clock() + BUDGET_S
    clean, bad = [], []
    while names and clock() < end:
        batch, names = names[:BATCH], names[BATCH:]
        (clean if look_at(root, build, batch) else bad).extend(batch)
    return clean, bad, names


def main():
    root, build, state_path = (Path(os.path.realpath(a)) for a in sys.argv[1:4])
    state = load(state_path)
    git = Git(root)
    base = git.base(state.get("commit"))
    if base is None:
        print("clang-tidy: no earlier commit to compare with; \"./run tidy\" looks at everything")
        return 0
    known = state.get("clean", {})
    names = git.changed_since(base)
    if names is None:
        print("clang-tidy: git cannot tell what has changed since " + base)
        return 1
    changed = [n for n in names if n.startswith(FOLDERS)]
    digests = {name: digest(root, name) for name in changed}
    news = [name for name in changed if known.get(name) != digests[name]]
    shown = Sources(root, build).that_show(news)
    clean, bad, left = in_batches(root, build, sorted(shown))
    known.update({name: digests[name] for source in clean for name in shown[source]})
    done = not bad and not left
    state_path.parent.mkdir(parents=True, exist_ok=True)
    state_path.write_text(json.dumps(
        {"commit": git.head() if done else base,
         "clean": {n: d for n, d in known.items() if digests.get(n) == d}}))
    print(f"clang-tidy: {len(clean)} changed files are clean"
          + (f"; findings among {len(bad)}" if bad else "")
          + (f"; no time for {len(left)}, see \"./run tidy\": {' '.join(left)}" if left else ""))
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
