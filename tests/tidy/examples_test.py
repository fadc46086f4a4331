#!/usr/bin/env python3
"""The comparison of documents with their examples finds each planted fault, in one line."""
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True

SCRIPT = Path(__file__).resolve().parents[2] / "tools/example/CheckExamples.cmake"
# What CMake would take apart if it got the chance.
TRICKY = 'std::printf("%d;${x}\\n\\t@y@", a[0]);  // [not a mark]; "\\\\"\n'


class ExamplesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)

    def compare(self, blocks, tail="", **sources):
        document = self.root / "guide.md"
        shown = "".join(f"\n```cpp\n{block}```\n" for block in blocks)
        document.write_text(f"# Guide\n{shown}\n{tail}")
        paths = []
        for name, text in sources.items():
            paths.append(self.root / f"{name}.cpp")
            paths[-1].write_text(text)
        command = ["cmake", f"-DDOCUMENT={document}", "-DSOURCES=" + ";".join(map(str, paths)),
                   "-P", str(SCRIPT)]
        result = subprocess.run(command, stderr=subprocess.PIPE, text=True, check=False)
        message = re.sub(r"^.*\(message\):\n +", "", result.stderr.strip(), flags=re.DOTALL)
        self.assertEqual(result.returncode != 0, message != "")
        return message

    def test_marked_examples_that_are_shown_as_they_are_pass(self):
        source = f"int x;\n// [one]\n{TRICKY}// [/one]\n\n// [two of b]\nint b;\n// [/two of b]\n"
        self.assertEqual("", self.compare(["int b;\n", TRICKY], a=source))

    def test_an_example_in_the_first_line_counts(self):
        self.assertEqual("", self.compare(["int a;\n"], a="// [one]\nint a;\n// [/one]\n"))

    def test_a_source_without_marks_is_an_example_as_a_whole(self):
        self.assertEqual("", self.compare([TRICKY, "int b;\n"], a=TRICKY, b="int b;\n"))

    def test_a_block_that_differs_is_named_by_its_first_line(self):
        self.assertEqual('guide.md: no source has this example as it is shown: "int a;  // A ..."',
                         self.compare(["int a;  // A\nint b;\n"], a="int a;  // A\nint c;\n"))

    def test_an_example_that_is_not_shown_is_named(self):
        source = "// [one]\nint a;\n// [/one]\n// [two]\nint b;\n// [/two]\n"
        self.assertEqual("guide.md: does not show the example a.cpp [two]",
                         self.compare(["int a;\n"], a=source))

    def test_an_example_without_an_end_is_named(self):
        self.assertEqual('a.cpp: the example "one" has no line "// [/one]"',
                         self.compare(["int a;\n"], a="// [one]\nint a;\n// [/two]\n"))

    def test_a_block_without_an_end_is_found(self):
        self.assertEqual("guide.md: its last C++ block has no end",
                         self.compare(["int a;\n"], tail="```cpp\nint a;\n", a="int a;\n"))


if __name__ == "__main__":
    unittest.main()
