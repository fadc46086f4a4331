#!/usr/bin/env python3
"""What "./run bench" refuses before it installs, builds or measures anything."""
import subprocess
import unittest

from synthetic import ROOT


class Options(unittest.TestCase):
    def refused(self, *arguments):
        done = subprocess.run([ROOT / "run", "bench", *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              check=False, timeout=60)
        self.assertEqual((2, b""), (done.returncode, done.stdout))
        return done.stderr.decode()

    def test_an_option_without_its_value_is_answered_with_the_usage(self):
        for arguments in (["--against"], ["--json"], ["--only", "codec", "--rounds"], ["--requests"], ["--compare", "old"],
                          ["--compare", "old", "new", "third"], ["--history"], ["--help"],
                          ["--profile", "--only", "codec"], ["--profile", "--against", "old"],
                          ["--profile", "--requests", "7"]):
            with self.subTest(arguments=arguments):
                self.assertRegex(self.refused(*arguments), r"^usage: \./run bench ")

    def test_an_unknown_option_is_named(self):
        self.assertRegex(self.refused("--rounds", "8", "--agianst", "x"),
                         r"^run: the benchmarks have no option '--agianst'\nusage: ")


if __name__ == "__main__":
    unittest.main()
