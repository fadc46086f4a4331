#!/usr/bin/env python3
"""What is called slower: true slow-downs, and none where the runs differ by chance alone."""
import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import synthetic
from synthetic import FLOOR, HOST, figure, number, rounds, run

import compare  # noqa: E402
import figures  # noqa: E402

FIGURES = 30


def bounded(seed, times=1.0, pace=1.0, **more):
    """A run of FIGURES figures on a machine of any pace; the first takes longer by `times`."""
    entries = [figure(FLOOR, rounds(seed, 300 * pace))]
    for i in range(FIGURES):
        bound = 1000 * pace * (1 + 0.001 * seed)
        entries.append(figure(f"request {i}", rounds(1000 * seed + i, 900 * pace * (times if i == 0 else 1), **more),
                              bound))
    return run(entries)


def unbounded(seed, us, floor_us=300.0, host=HOST, bound=0.0):
    return run([figure(FLOOR, rounds(seed, floor_us)), figure("write", rounds(seed + 500, us), bound)], host)


class Comparison(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = Path(home.name)

    def tell(self, old, new):
        """The exit code, what was printed, and what was complained of."""
        paths = [str(synthetic.file(self.home, name, content)) for name, content in (("old", old), ("new", new))]
        return self.main(*paths)

    def main(self, *arguments):
        printed, said = io.StringIO(), io.StringIO()
        with mock.patch.object(sys, "argv", ["compare.py", *arguments]), contextlib.redirect_stdout(printed), \
                contextlib.redirect_stderr(said):
            return compare.main(), printed.getvalue(), said.getvalue()

    def test_a_slow_down_of_a_fifth_is_found_and_nothing_else(self):
        code, printed, said = self.tell(bounded(1), bounded(2, times=1.2))
        self.assertEqual(1, code)
        self.assertRegex(said, r"^run: slower beyond the noise: request 0 \(1\.\d\d times, p [0-9.e-]+\)\n$")
        self.assertEqual(1, printed.count("SLOWER"))
        self.assertNotIn("faster", printed)

    def test_what_got_faster_is_told_and_is_no_failure(self):
        code, printed, said = self.tell(bounded(3), bounded(4, times=1 / 1.25))
        self.assertEqual((0, ""), (code, said))
        self.assertRegex(printed, r"faster beyond the noise: request 0 \(0\.\d\d times, p [0-9.e-]+\)\n")

    def test_runs_of_one_distribution_are_never_told_apart(self):
        # Rounds so far apart that chance alone often takes medians beyond the margin.
        for seed in range(10, 60, 2):
            with self.subTest(seed=seed):
                code, printed, said = self.tell(bounded(seed, spread=1.5), bounded(seed + 1, spread=1.5))
                self.assertEqual((0, ""), (code, said))
                self.assertNotIn("faster beyond", printed)

    def test_a_difference_within_the_margin_is_none_however_sure(self):
        self.assertEqual(0, self.tell(bounded(5, spread=0.001), bounded(6, times=1.08, spread=0.001))[0])

    def test_a_machine_of_half_the_speed_is_no_slow_down(self):
        code, _, said = self.tell(bounded(7), bounded(8, pace=2))
        self.assertEqual((0, ""), (code, said))

    def test_a_slow_down_shows_on_a_machine_of_twice_the_speed(self):
        self.assertEqual(1, self.tell(bounded(7), bounded(8, times=1.25, pace=0.5))[0])

    def test_microseconds_are_judged_on_one_steady_machine(self):
        self.assertEqual(1, self.tell(unbounded(1, 100), unbounded(2, 140))[0])

    def test_a_bound_that_is_a_fixed_number_makes_no_ratio(self):
        _, printed, _ = self.tell(unbounded(1, 100, bound=50.0), unbounded(2, 140, bound=50.0))
        self.assertRegex(printed, r"write .* us .* SLOWER")

    def refused(self, old, new, reason):
        self.assertEqual((2, "", f"run: {reason}\n"), self.tell(old, new))

    def test_microseconds_of_another_or_a_restless_machine_are_not_judged(self):
        nothing = "the two runs have no figure in common that can be judged"
        self.refused(unbounded(1, 100), unbounded(2, 200, host={**HOST, "processor": "quick"}), nothing)
        self.refused(unbounded(1, 100, host={}), unbounded(2, 200, host={}), nothing)
        self.refused(unbounded(1, 100), unbounded(2, 200, floor_us=450), nothing)

    def test_what_a_floor_changed_by_widens_the_margin_of_microseconds(self):
        self.assertEqual(1, self.tell(unbounded(1, 100), unbounded(2, 122))[0])
        self.assertEqual(0, self.tell(unbounded(1, 100), unbounded(2, 122, floor_us=345))[0])

    def test_floors_and_libraries_of_others_are_told_and_not_judged(self):
        for name, more in ((FLOOR + " and back", {}), ("theirs", {"peer": True})):
            old = run([figure("ours", rounds(1, 90), 100), figure(name, rounds(2, 10), 20, **more)])
            new = run([figure("ours", rounds(3, 90), 101), figure(name, rounds(4, 99), 21, **more)])
            code, printed, said = self.tell(old, new)
            self.assertEqual((0, ""), (code, said))
            self.assertRegex(printed, rf"{name} .* not judged\n")

    def test_figures_of_one_run_alone_are_named(self):
        old, new = bounded(1), bounded(2)
        old["figures"] += [figure(f"gone {i}", [1]) for i in range(5)]
        new["figures"] += [figure("come", [1]), number("rate", 7)]
        _, printed, _ = self.tell(old, new)
        self.assertIn("only in the old run: gone 0; gone 1; gone 2 and 2 more\n", printed)
        self.assertIn("only in the new run: come\n", printed)

    def test_too_few_rounds_are_refused_and_not_called_equal(self):
        self.refused(bounded(1, count=6), bounded(2, times=2, count=6),
                     "the two runs have too few rounds to tell anything of 30 figures; 10 in each are enough")
        self.assertEqual(1, self.tell(bounded(1, count=10), bounded(2, times=2, count=10))[0])

    def test_an_older_file_without_rounds_is_refused_before_a_run(self):
        old = synthetic.file(self.home, "bare.json", [
            {key: value for key, value in figure("a", [5]).items() if key not in ("partP50Us", "quantilesUs")}])
        reason = f"run: {old}: tells no rounds (an older bench wrote it), so nothing can be compared\n"
        self.assertEqual((2, "", reason), self.main("--check", str(old)))
        self.assertEqual((0, "", ""), self.main("--check", str(synthetic.file(self.home, "new", bounded(1)))))

    def test_a_damaged_file_is_told_in_one_line(self):
        damaged = synthetic.file(self.home, "damaged.json", "{")
        good = synthetic.file(self.home, "good.json", bounded(1))
        for pair in ((damaged, good), (good, damaged)):
            code, printed, said = self.main(*map(str, pair))
            self.assertEqual((2, ""), (code, printed))
            self.assertRegex(said, r"^run: .*damaged\.json: no JSON \(line 1: [^\n]*\)\n$")

    def test_p_values_are_corrected_for_their_number_and_keep_their_order(self):
        self.assertEqual([0.03, 0.06, 0.06, 1.0],
                         [round(each, 9) for each in compare.holm([0.0075, 0.03, 0.02, 1.0])])


if __name__ == "__main__":
    unittest.main()
