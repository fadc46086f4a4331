"""What docs/many-stations.md shows: files, and command lines."""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/system/terminal"))
GUIDE = ROOT / "docs/many-stations.md"
BLOCK = re.compile(r"^```\w*\n(.*?)^```\n", re.MULTILINE | re.DOTALL)


def blocks():
    return BLOCK.findall(GUIDE.read_text(encoding="utf-8"))


def file(name):
    """The block that begins with the file's name."""
    return only([block for block in blocks() if re.match(f"# {re.escape(name)}(:.*)?\n", block)], name)


def prose():
    """The lines outside of blocks."""
    return BLOCK.sub("", GUIDE.read_text(encoding="utf-8")).splitlines()


def command(beginning):
    """The indented line that begins so."""
    return only([line.strip() for line in prose() if line.startswith("    " + beginning)], beginning)


def queries():
    """By the comment above them, the queries for Prometheus, one per line."""
    found, title = {}, ""
    for line in only([block for block in blocks() if block.startswith("# Stations")], "queries").splitlines():
        if line.startswith("# "):
            title = line[2:]
        elif line:
            found.setdefault(title, []).append(line)
    return found


def exchanged(text, old, new):
    """The text with another word in it; it must be there, or the guide has changed."""
    if old not in text:
        raise AssertionError(f"{GUIDE.name}: no '{old}' in: {text}")
    return text.replace(old, new)


def only(found, what):
    if len(found) != 1:
        raise AssertionError(f"{GUIDE.name}: {len(found)} of '{what}'")
    return found[0]
