"""A Windows program that crashes, or leaves in the middle of its work, has not succeeded.

usage: runner_test.py FOLDER-OF-THE-RUNNERS PROBE
"""
import subprocess
import sys
import tempfile
import unittest

runners = probe = ""
PLAIN, CHECKED = "wine-run.sh", "wine-test.sh"


class Run:
    def __init__(self, runner, *arguments):
        # Files and not pipes: a pipe ends only with everybody who got hold of it.
        with tempfile.TemporaryFile("w+") as output, tempfile.TemporaryFile("w+") as errors:
            self.code = subprocess.run([f"{runners}/{runner}", *arguments], timeout=120,
                                       stdin=subprocess.DEVNULL, stdout=output, stderr=errors).returncode
            output.seek(0)
            errors.seek(0)
            self.output, self.errors = output.read(), errors.read()

    def __str__(self):
        return f"exit code {self.code}\n{self.output}\n{self.errors}"


def run_test(runner, name, *more):
    return Run(runner, probe, f"--gtest_filter=Probe.{name}", *more)


class TheRunner(unittest.TestCase):
    def succeeds(self, *run):
        ended = run_test(CHECKED, *run)
        self.assertEqual(0, ended.code, ended)

    def fails(self, run, *reasons):
        self.assertNotEqual(0, run.code, run)
        for reason in reasons:
            self.assertIn(reason, run.errors)
        return run

    def test_a_test_that_passes_is_told_from_one_that_fails(self):
        self.succeeds("Passes*")
        self.succeeds("Passes*", "--gtest_repeat=3")
        self.fails(run_test(CHECKED, "Passes:Probe.Fails"), "exit code 1")

    def test_a_crash_has_an_exit_code_even_when_a_thread_has_ended_before(self):
        for name in "CrashesWhenAThreadHasEnded", "CrashesInAnotherThread", "CrashesBehindItsSummary":
            self.fails(run_test(PLAIN, name))

    def test_a_crash_is_a_failure_and_says_where(self):
        for name in "CrashesWhenAThreadHasEnded", "CrashesInAnotherThread":
            self.fails(run_test(CHECKED, name), "wine: Unhandled page fault on write access to 00000000 at",
                       "it crashed", "closing words")

    def test_a_crash_behind_the_summary_is_a_failure(self):
        run = self.fails(run_test(CHECKED, "CrashesBehindItsSummary"), "it crashed")
        self.assertIn("[  PASSED  ] 1 test.", run.output)

    def test_a_crash_of_a_process_deep_below_is_a_failure(self):
        run = self.fails(run_test(CHECKED, "HasAGrandchildThatCrashes"), "it crashed")
        self.assertIn("[  PASSED  ] 1 test.", run.output)

    def test_a_crash_of_a_process_that_outlives_the_program_is_a_failure(self):
        self.fails(run_test(CHECKED, "HasAChildThatCrashesBehindIt"), "it crashed")

    def test_who_leaves_in_the_middle_has_not_passed(self):
        for name in "LeavesInTheMiddle", "IsEndedFromOutside":
            self.assertEqual(0, run_test(PLAIN, name).code)
            self.fails(run_test(CHECKED, name), "closing words")
        self.fails(run_test(CHECKED, "LeavesTheSecondTime", "--gtest_repeat=2"), "closing words")

    def test_no_test_at_all_is_a_failure(self):
        self.fails(run_test(CHECKED, "NoSuchTest"), "closing words")

    def test_a_process_left_behind_is_a_failure(self):
        self.fails(run_test(CHECKED, "LeavesAProcessBehind"), "left processes behind")

    def test_other_programs_have_closing_words_of_their_own(self):
        self.assertEqual(0, Run(CHECKED, "--closing", "^all done$", "cmd", "/c", "echo all done").code)
        self.assertEqual(0, Run(CHECKED, "--closing", "^all done$", "cmd", "/c", "echo all done>&2").code)
        self.fails(Run(CHECKED, "--closing", "^all done$", "cmd", "/c", "echo not all done"), "closing words")


if __name__ == "__main__":
    probe = sys.argv.pop()
    runners = sys.argv.pop()
    unittest.main()
