"""What tries the mutants tells who is seen and who is not, and leaves neither a change nor a process."""
import contextlib
import io
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import mutate
import workshop

# A program in the place of a test program, which prints as GoogleTest does. The source is a Python
# module, so that it is built by looking whether it can be read.
SOURCE = """import time
def sum_of(a, b):
    return a + b
def pause():
    pass
"""
PROGRAM = """import sys
sys.path.insert(0, "src")
import sums
def report(name, passed):
    print(f"[       OK ] {name} (3 ms)" if passed else f"[  FAILED  ] {name} (3 ms)", flush=True)
    return passed
with open("build/program.pid", "w") as file:
    import os
    file.write(str(os.getpid()))
tests = {"Sum.AddsUp": lambda: sums.sum_of(2, 3) == 5, "Sum.Pauses": lambda: sums.pause() is None,
         "Sum.IsRed": lambda: False, "Sum.SeesNothing": lambda: True}
wanted = sys.argv[1].partition("=")[2].split(":")
sys.exit(0 if all([report(name, test()) for name, test in tests.items() if name in wanted]) else 1)
"""


class PythonWorkshop(workshop.Workshop):
    def build(self, preset, program):
        return workshop.run([sys.executable, "-B", "-c", "compile(open('src/sums.py').read(), 's', 'exec')"],
                            self.copy)

    def test(self, preset, program, filters, limit_s=None):
        return workshop.run([sys.executable, "-B", "tests/program.py", f"--gtest_filter={filters}"],
                            self.copy, limit_s)


def entry(name, before, after, test, dies=""):
    return (f"[[mutant]]\nname = '{name}'\nfile = 'src/sums.py'\nbefore = '{before}'\nafter = '{after}'\n"
            f"test = 'sum_test {test}'\n" + (f"dies = '{dies}'\n" if dies else ""))


class Mutating(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.root = Path(holder.name) / "tree"
        self.copy = Path(holder.name) / "copy"
        self.catalogue = self.root / "tests/mutants/catalogue/sum.toml"
        self.catalogue.parent.mkdir(parents=True)
        (self.root / "src").mkdir()
        self.source = self.root / "src/sums.py"
        self.source.write_text(SOURCE, encoding="utf-8")
        (self.root / "tests/program.py").write_text(PROGRAM, encoding="utf-8")
        subprocess.run(["git", "init", "-q", str(self.root)], check=True)
        limit = mutate.MIN_LIMIT_S
        self.addCleanup(lambda: setattr(mutate, "MIN_LIMIT_S", limit))

    def mutate(self, *entries, pattern=""):
        self.catalogue.write_text("\n".join(entries), encoding="utf-8")
        output = io.StringIO()
        with contextlib.redirect_stdout(output), contextlib.redirect_stderr(output):
            code = mutate.main([str(self.root), str(self.copy), pattern], PythonWorkshop)
        self.assertEqual(SOURCE, self.source.read_text(encoding="utf-8"))
        return code, output.getvalue()

    def tells(self, code, text, *entries):
        told = self.mutate(*entries)
        self.assertEqual(code, told[0], told[1])
        self.assertIn(text, told[1])
        return told[1]

    def test_one_that_is_seen_is_killed_by_its_test(self):
        told = self.tells(0, "killed: subtracts (Sum.AddsUp; ", entry("subtracts", "a + b", "a - b", "Sum.AddsUp"))
        self.assertTrue(told.endswith("== 1 killed\n"), told)
        self.assertEqual(SOURCE, (self.copy / "src/sums.py").read_text(encoding="utf-8"))

    def test_one_that_nobody_sees_has_survived(self):
        self.tells(1, "SURVIVED: subtracts (Sum.SeesNothing passes; ",
                   entry("subtracts", "a + b", "a - b", "Sum.SeesNothing"))

    def test_one_whose_text_is_gone_no_longer_applies(self):
        self.tells(1, "no longer applies: divides (", entry("divides", "a / b", "a * b", "Sum.AddsUp"))
        self.tells(1, "no longer applies: twice (", entry("twice", "def ", "def x", "Sum.AddsUp"))

    def test_one_that_does_not_build_is_told(self):
        self.tells(1, "does not build: half (", entry("half", "a + b", "a +", "Sum.AddsUp"))

    def test_a_test_that_is_red_in_any_case_proves_nothing(self):
        self.tells(1, "test is red without it: subtracts (", entry("subtracts", "a + b", "a - b", "Sum.IsRed"))
        self.tells(1, "test is red without it: subtracts (", entry("subtracts", "a + b", "a - b", "Sum.IsNone"))

    def test_a_crash_counts_only_if_it_is_how_the_fault_shows_itself(self):
        crash = ["leaves", "    pass", "    import os; os._exit(3)", "Sum.Pauses"]
        self.tells(0, "killed by a crash: leaves (it did not come to its end; ", entry(*crash, "crash"))
        told = self.tells(1, "killed by a crash, which the catalogue does not say: leaves (", entry(*crash))
        self.assertTrue(told.endswith("== 1 killed by a crash\n"), told)
        self.tells(1, "killed by a crash, which the catalogue does not say: leaves (", entry(*crash, "hang"))

    def test_one_that_hangs_is_ended_and_counts_only_if_it_is_how_the_fault_shows_itself(self):
        mutate.MIN_LIMIT_S = 0.3
        hang = ["hangs", "pass", "time.sleep(600)", "Sum.Pauses"]
        self.tells(0, "killed by a hang: hangs (no end within ", entry(*hang, "hang"))
        self.assertFalse(is_running(self.copy))
        self.tells(1, "killed by a hang, which the catalogue does not say: hangs (", entry(*hang))

    def test_one_that_may_die_may_also_be_seen_by_its_test(self):
        self.tells(0, "killed: subtracts (Sum.AddsUp; ", entry("subtracts", "a + b", "a - b", "Sum.AddsUp", "crash"))

    def test_each_is_alone_in_the_tree(self):
        told = self.tells(1, "1 killed, 1 SURVIVED", entry("subtracts", "a + b", "a - b", "Sum.AddsUp"),
                          entry("pauses", "pass", "time.sleep(0)", "Sum.AddsUp"))
        self.assertIn("SURVIVED: pauses (Sum.AddsUp passes; ", told)

    def test_the_filter_chooses_by_name(self):
        entries = [entry("subtracts", "a + b", "a - b", "Sum.AddsUp"),
                   entry("pauses", "pass", "time.sleep(0)", "Sum.AddsUp")]
        self.assertEqual(0, self.mutate(*entries, pattern="^sub")[0])
        self.assertEqual(2, self.mutate(*entries, pattern="nobody")[0])
        self.assertEqual(2, self.mutate(*entries, pattern="(")[0])

    def test_what_an_interrupted_run_has_left_is_mended(self):
        (self.copy / "src").mkdir(parents=True)
        (self.copy / "src/sums.py").write_text(SOURCE.replace("+", "*"), encoding="utf-8")
        (self.copy / "src/gone.py").write_text("", encoding="utf-8")
        self.tells(0, "1 killed", entry("subtracts", "a + b", "a - b", "Sum.AddsUp"))
        self.assertEqual(SOURCE, (self.copy / "src/sums.py").read_text(encoding="utf-8"))
        self.assertFalse((self.copy / "src/gone.py").exists())

    def test_what_is_the_same_is_not_written_again(self):
        self.mutate(entry("subtracts", "a + b", "a - b", "Sum.AddsUp"))
        before = (self.copy / "tests/program.py").stat().st_mtime_ns
        self.mutate(entry("subtracts", "a + b", "a - b", "Sum.AddsUp"))
        self.assertEqual(before, (self.copy / "tests/program.py").stat().st_mtime_ns)

    def test_ctrl_c_leaves_nothing_behind(self):
        for number in signal.SIGINT, signal.SIGTERM:
            self.catalogue.write_text(entry("hangs", "pass", "time.sleep(600)", "Sum.Pauses"), encoding="utf-8")
            script = ("import sys; sys.path.insert(0, sys.argv[1]); import mutate_test as m;"
                      "sys.exit(m.mutate.guarded(sys.argv[2:], m.PythonWorkshop))")
            process = subprocess.Popen([sys.executable, "-B", "-c", script, str(Path(__file__).parent),
                                        str(self.root), str(self.copy)], stdout=subprocess.DEVNULL)
            self.assertTrue(within(20, lambda: is_mutated(self.copy) and is_running(self.copy)))
            process.send_signal(number)
            self.assertEqual(130, process.wait(20))
            self.assertFalse(is_running(self.copy))
            (self.copy / "src/sums.py").unlink()


def is_mutated(copy):
    source = copy / "src/sums.py"
    return source.is_file() and "600" in source.read_text(encoding="utf-8")


def is_running(copy):
    """Whether the program that has noted itself last is there."""
    noted = copy / "build/program.pid"
    if not noted.is_file() or not noted.read_text():
        return False
    try:
        os.kill(int(noted.read_text()), 0)
        return True
    except ProcessLookupError:
        return False


def within(seconds, condition):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if condition():
            return True
        time.sleep(0.02)
    return condition()


if __name__ == "__main__":
    unittest.main()
