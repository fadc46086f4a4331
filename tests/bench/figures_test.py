#!/usr/bin/env python3
"""Files of figures: what is read of new ones, of old ones, and what is said of damaged ones."""
import tempfile
import unittest
from pathlib import Path

import synthetic
from synthetic import figure, number, run

import figures  # noqa: E402

OLD_ENTRY = {"name": "ping", "count": 800, "minUs": 1.0, "p50Us": 2.0, "p95Us": 3.0, "p99Us": 4.0,
             "p50BoundUs": 8.0, "p99BoundUs": 0.0}


class Files(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = Path(home.name)

    def read(self, content):
        return figures.read(synthetic.file(self.home, "some.json", content))

    def refused(self, content):
        with self.assertRaises(figures.Unusable) as caught:
            self.read(content)
        self.assertNotIn("\n", str(caught.exception))
        self.assertIn(str(self.home / "some.json"), str(caught.exception))
        return str(caught.exception).partition("some.json: ")[2]

    def test_a_bare_list_of_an_older_bench_is_read_without_rounds(self):
        read = self.read([OLD_ENTRY, {"name": "memory", "unit": "KiB", "amount": 5.0, "mostBound": 0.0}])
        self.assertEqual(("", [], []), (read.commit, read.figures["ping"].parts, read.figures["ping"].quantiles))
        self.assertEqual(0.25, read.ratio(read.figures["ping"]))
        self.assertEqual([figures.Number("memory", "KiB", 5.0, 0.0)], read.numbers)

    def test_rounds_quantiles_host_and_numbers_are_read(self):
        read = self.read(run([figure("ping", [4, 5, 9], 10), number("reads", 800)]))
        self.assertEqual([4, 5, 9], read.figures["ping"].parts)
        self.assertEqual((0.5, 5), read.figures["ping"].quantiles[1])
        self.assertEqual("slow", read.host["processor"])
        self.assertEqual([figures.Number("reads", "per second", 800, 700)], read.numbers)

    def test_without_a_bound_the_ratio_is_that_to_the_floor(self):
        read = self.read(run([figure("raw", [2]), figure("theirs", [7], floor="raw"), figure("alone", [7]),
                              figure("held", [7], 14, floor="raw")]))
        ratios = {name: read.ratio(each) for name, each in read.figures.items()}
        self.assertEqual({"raw": None, "theirs": 3.5, "alone": None, "held": 0.5}, ratios)

    def test_what_is_no_file_of_figures_is_refused_with_the_reason(self):
        for content, reason in (
                ("{\"figures\": [", "no JSON (line 1: Expecting value)"), ("", "no JSON"), ("7", "holds no figures"),
                ({"when": "today"}, "holds no figures"), ([], "holds no figures"),
                ([7], "holds a figure without a name"), ([{"name": 7}], "holds a figure without a name"),
                ([OLD_ENTRY, OLD_ENTRY], "holds 'ping' twice"),
                (run([OLD_ENTRY], host=[]), "host is no object"),
                (run([OLD_ENTRY], commit=7), "commit is no text")):
            with self.subTest(content=content):
                self.assertIn(reason, self.refused(content))

    def test_a_damaged_figure_is_refused_and_named(self):
        for key, value, reason in (
                ("p50Us", "fast", "'ping' has no number p50Us"), ("p50Us", None, "'ping' has no number p50Us"),
                ("p50Us", True, "'ping' has no number p50Us"), ("p50Us", float("nan"), "'ping' has no number p50Us"),
                ("p50Us", -1, "'ping' has no number p50Us"), ("p50Us", 0, "'ping' took no time at all"),
                ("count", None, "'ping' has no number count"),
                ("partP50Us", [1, "x"], "'ping' has something else than numbers in partP50Us"),
                ("partP50Us", 7, "'ping' has something else than numbers in partP50Us"),
                ("quantilesUs", [[1]], "'ping' has something else than pairs of numbers in quantilesUs"),
                ("quantilesUs", [7], "'ping' has something else than pairs of numbers in quantilesUs"),
                ("floor", 7, "floor is no text")):
            with self.subTest(key=key, value=value):
                self.assertEqual(reason, self.refused(run([{**OLD_ENTRY, key: value}])))

    def test_a_file_that_cannot_be_read_is_refused(self):
        with self.assertRaisesRegex(figures.Unusable, "missing.json: No such file or directory"):
            figures.read(self.home / "missing.json")
        with self.assertRaisesRegex(figures.Unusable, "Is a directory"):
            figures.read(self.home)
        (self.home / "binary.json").write_bytes(b"\xff\xfe{")
        with self.assertRaisesRegex(figures.Unusable, "binary.json: no text"):
            figures.read(self.home / "binary.json")


if __name__ == "__main__":
    unittest.main()
