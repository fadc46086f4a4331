#!/usr/bin/env python3
"""One file of what was measured under Wine and natively."""
import contextlib
import io
import json
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import synthetic
from synthetic import figure

import figures  # noqa: E402
import join  # noqa: E402

OURS = [figure("floor: blocking 32-byte TCP round trip", [250, 300, 350]), figure("pingQor, TCP", [900, 960, 990], 1100)]
PEER = [figure("floor: 32-byte TCP round trip, native", [10, 11]), figure("ZeroMQ, 32-byte request and reply", [33, 44])]


class Joining(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = Path(home.name)
        self.out = self.home / "out.json"
        self.ours = synthetic.file(self.home, "ours.json", {"rounds": 3, "figures": OURS})
        self.peer = synthetic.file(self.home, "peer.json", {"rounds": 3, "figures": PEER})

    def join(self, *arguments):
        """The exit code, what was printed, and what was complained of."""
        printed, said = io.StringIO(), io.StringIO()
        command = ["join.py", str(self.out), *map(str, arguments)]
        with mock.patch.object(sys, "argv", command), contextlib.redirect_stdout(printed), \
                contextlib.redirect_stderr(said):
            return join.main(), printed.getvalue(), said.getvalue()

    def entries(self):
        return {each["name"]: each for each in json.loads(self.out.read_text(encoding="utf-8"))["figures"]}

    def test_both_ratios_to_the_raw_thing_are_printed_and_kept(self):
        code, printed, _ = self.join(self.ours, "--peer", self.peer)
        self.assertEqual(0, code)
        _, ours, theirs = printed.splitlines()
        self.assertEqual(["pingQor,", "TCP", "960.00", "300.00", "3.20"], ours.split())
        self.assertEqual(["44.00", "11.00", "4.00"], theirs.split()[-3:])
        self.assertEqual(3.2, self.entries()["pingQor, TCP"]["p50OverFloor"])
        self.assertEqual(4, self.entries()["ZeroMQ, 32-byte request and reply"]["p50OverFloor"])

    def test_the_file_says_when_of_what_and_where_and_can_be_read_again(self):
        self.join(self.ours, "--peer", self.peer)
        read = figures.read(self.out)
        self.assertRegex(read.when, r"^\d{4}-\d\d-\d\d \d\d:\d\d UTC$")
        self.assertRegex(read.commit, r"^([0-9a-f]{10}( and changes)?)?$")
        self.assertGreaterEqual(read.host["cores"], 1)
        self.assertEqual({"name", "processor", "cores", "kernel", "wine"}, set(read.host))
        self.assertEqual([False, False, True, True], [each.is_peer for each in read.figures.values()])

    def test_either_may_be_missing(self):
        self.assertEqual(0, self.join(self.ours)[0])
        self.assertEqual([each["name"] for each in OURS], list(self.entries()))
        self.assertEqual(0, self.join("--peer", self.peer)[0])
        self.assertEqual([each["name"] for each in PEER], list(self.entries()))

    def test_a_damaged_file_and_a_place_that_is_none_are_told_in_one_line(self):
        damaged = synthetic.file(self.home, "damaged.json", {"rounds": 3, "figures": [{"name": "a"}]})
        self.assertEqual((2, "", f"run: {damaged}: 'a' has no number count\n"), self.join(damaged))
        self.out = self.home / "missing" / "out.json"
        self.assertEqual((2, "", f"run: {self.out}: No such file or directory\n"), self.join(self.ours))


if __name__ == "__main__":
    unittest.main()
