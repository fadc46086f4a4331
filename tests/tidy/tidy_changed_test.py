#!/usr/bin/env python3
"""What "./run test" hands to clang-tidy, with a stand-in for clang-tidy."""
import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "cmake"))
import tidy_changed  # noqa: E402

# Notes what it is asked for; a file with FAULT in it, or in what it includes, has findings.
STAND_IN = """#!/usr/bin/env python3
import re, sys
from pathlib import Path
root = Path(__file__).resolve().parents[1]
bad = False
for pattern in sys.argv[2:]:
    for path in sorted(root.rglob("*.cpp")):
        if re.search(pattern, str(path)):
            with open(root / "build/asked", "a") as asked:
                asked.write(str(path.relative_to(root)) + "\\n")
            text = path.read_text()
            for header in re.findall('include "(.*)"', text):
                text += (root / "src" / header).read_text()
            bad = bad or "FAULT" in text
sys.exit(bad)
"""


class TidyChangedTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve()
        self.write("cmake/clang-tidy.sh", STAND_IN)
        (self.root / "cmake/clang-tidy.sh").chmod(0o755)
        self.write(".clang-tidy", "Checks: none\n")
        self.write(".gitignore", "build/\n")
        self.write("src/common/Only.h", "int only;\n")
        self.write("src/common/Lock.h", "int lock;\n")
        self.write("src/common/Lock.cpp", '#include "common/Lock.h"\n')
        self.write("src/trace/Trace.cpp", '#include "common/Lock.h"\n#include "common/Only.h"\n')
        names = ["src/common/Lock.cpp", "src/trace/Trace.cpp"]
        self.write("build/mingw32/compile_commands.json", json.dumps(
            [{"directory": str(self.root), "file": str(self.root / name)} for name in names]))
        self.git("init", "-q", "-b", "main")
        self.commit()
        self.write("README", "a second commit")
        self.commit()

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def add(self, name, text):
        self.write(name, (self.root / name).read_text() + text)

    def git(self, *arguments):
        subprocess.run(["git", "-C", str(self.root), "-c", "user.name=x", "-c", "user.email=x@x",
                        *arguments], check=True, stdout=subprocess.DEVNULL)

    def commit(self):
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "x")

    def run_it(self, clock=None):
        """The exit code and what clang-tidy was asked to look at."""
        asked = self.root / "build/asked"
        asked.unlink(missing_ok=True)
        arguments = ["x", self.root, self.root / "build/mingw32", self.root / "build/state.json"]
        times = {"return_value": 0} if clock is None else {"side_effect": clock}
        with mock.patch("sys.argv", arguments), mock.patch("sys.stdout"), \
                mock.patch.object(tidy_changed.in_batches, "__defaults__",
                                  (mock.Mock(**times),)):
            result = tidy_changed.main()
        return result, asked.read_text().split() if asked.exists() else []

    def test_nothing_is_looked_at_where_nothing_has_changed(self):
        self.assertEqual((0, []), self.run_it())

    def test_without_a_state_the_last_commit_counts_on_main(self):
        self.add("src/trace/Trace.cpp", "// new\n")
        self.commit()
        self.assertEqual((0, ["src/trace/Trace.cpp"]), self.run_it())

    def test_without_a_state_all_commits_of_a_branch_count(self):
        self.git("checkout", "-q", "-b", "branch")
        for name in ["src/common/Lock.cpp", "src/trace/Trace.cpp"]:
            self.add(name, "// new\n")
            self.commit()
        self.assertEqual((0, ["src/common/Lock.cpp", "src/trace/Trace.cpp"]), self.run_it())

    def test_what_is_not_committed_counts_and_new_files_do(self):
        self.add("src/common/Lock.cpp", "// new\n")
        self.assertEqual((0, ["src/common/Lock.cpp"]), self.run_it())
        self.git("rm", "-q", "--cached", "src/trace/Trace.cpp")
        self.assertEqual((0, ["src/trace/Trace.cpp"]), self.run_it())

    def test_a_header_is_seen_through_its_own_source_or_one_that_includes_it(self):
        self.add("src/common/Lock.h", "// new\n")
        self.assertEqual((0, ["src/common/Lock.cpp"]), self.run_it())
        self.add("src/common/Only.h", "// new\n")
        self.assertEqual((0, ["src/trace/Trace.cpp"]), self.run_it())

    def test_what_was_clean_is_not_looked_at_again_until_it_changes(self):
        self.add("src/common/Lock.cpp", "// new\n")
        self.run_it()
        self.assertEqual((0, []), self.run_it())
        self.add("src/common/Lock.cpp", "// newer\n")
        self.assertEqual((0, ["src/common/Lock.cpp"]), self.run_it())

    def test_several_commits_since_the_last_clean_run_all_count(self):
        self.run_it()
        for name in ["src/common/Lock.cpp", "src/trace/Trace.cpp"]:
            self.add(name, "// new\n")
            self.commit()
        self.assertEqual((0, ["src/common/Lock.cpp", "src/trace/Trace.cpp"]), self.run_it())

    def test_findings_fail_until_they_are_gone_also_when_they_are_committed(self):
        self.add("src/common/Lock.h", "// FAULT\n")
        for _ in range(2):
            self.assertEqual((1, ["src/common/Lock.cpp"]), self.run_it())
            self.git("commit", "-q", "-a", "-m", "x", "--allow-empty")
        self.write("src/common/Lock.h", "int mended;\n")
        self.assertEqual((0, ["src/common/Lock.cpp"]), self.run_it())

    def test_what_there_was_no_time_for_comes_next_time(self):
        for name in ["src/common/Lock.cpp", "src/trace/Trace.cpp"]:
            self.add(name, "// new\n")
        with mock.patch.object(tidy_changed, "BATCH", 1):
            self.assertEqual((0, ["src/common/Lock.cpp"]), self.run_it(clock=[0, 0, 121]))
        self.assertEqual((0, ["src/trace/Trace.cpp"]), self.run_it())

    def test_a_first_commit_has_nothing_to_compare_with(self):
        self.git("checkout", "-q", "--orphan", "new")
        self.git("branch", "-q", "-D", "main")
        self.commit()
        self.assertEqual((0, []), self.run_it())


if __name__ == "__main__":
    unittest.main()
