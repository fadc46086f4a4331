#!/usr/bin/env python3
"""Whatever docs/many-stations.md shows in boxes is used by a test beside this file."""
import re
import unittest
from pathlib import Path

import guide

USES = re.compile(r'\b(file|command|query)\("([^"]+)"\)')


def used(kind):
    texts = [path.read_text(encoding="utf-8") for path in Path(__file__).parent.glob("*.py")]
    found = {beginning for text in texts for a_kind, beginning in USES.findall(text) if a_kind == kind}
    loops = re.findall(r'for name in \(([^)]*\.yml[^)]*)\)', "".join(texts))
    return found | set(re.findall(r'"([^"]+)"', "".join(loops))) if kind == "file" else found


def unused(shown, kind):
    return [each for each in shown if not any(each.startswith(beginning) for beginning in used(kind))]


class Guide(unittest.TestCase):
    def test_shows_only_files_that_are_used(self):
        names = [block.split("\n", 1)[0].removeprefix("# ") for block in guide.blocks()
                 if not block.startswith("# Stations")]
        self.assertGreater(len(names), 4)
        self.assertEqual([], unused(names, "file"))

    def test_shows_only_commands_that_are_used(self):
        commands = [line.strip() for line in guide.prose() if line.startswith("    ")]
        self.assertGreater(len(commands), 6)
        self.assertEqual([], unused(commands, "command"))

    def test_shows_only_queries_that_are_used(self):
        self.assertGreater(len(guide.queries()), 5)
        self.assertEqual([], unused(guide.queries(), "query"))


if __name__ == "__main__":
    unittest.main()
