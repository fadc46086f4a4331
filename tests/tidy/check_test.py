#!/usr/bin/env python3
"""Each check of check.py finds its planted fault, and nothing in a tidy tree."""
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import check  # noqa: E402

REPOSITORY = Path(__file__).resolve().parents[2]


class TreeTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve()
        shutil.copy(REPOSITORY / ".clang-format", self.root)
        self.write("src/common/Lock.h", "#pragma once\n")
        self.write("src/trace/Trace.h", '#pragma once\n#include "common/Lock.h"\n')
        self.write("simulator/wire/Reader.h", "#pragma once\n")
        self.write("simulator/main.cpp", '#include "wire/Reader.h"\n')

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text if isinstance(text, bytes) else text.encode())

    def findings(self):
        return [f"{f.path}:{f.line}: {f.text}" for f in check.check_tree(self.root)]

    def assert_finding(self, start, part):
        findings = self.findings()
        self.assertTrue(any(f.startswith(start) and part in f for f in findings), findings)
        self.assertEqual(1, len(findings), findings)

    def test_a_tidy_tree_has_no_findings(self):
        self.assertEqual([], self.findings())

    def test_an_include_against_the_order_is_found(self):
        self.write("src/common/Lock.h", '#pragma once\n#include "trace/Trace.h"\n')
        self.assert_finding("src/common/Lock.h:2:", "common/ must not include trace/")

    def test_an_include_from_an_unknown_folder_of_src_is_found(self):
        self.write("src/novel/New.h", '#include "common/Lock.h"\n')
        self.assert_finding("src/novel/New.h:1:", "novel/ must not include common/")

    def test_an_include_that_is_not_relative_to_src_is_found(self):
        self.write("src/trace/Sink.h", '#include "Trace.h"\n')
        self.assert_finding("src/trace/Sink.h:1:", "relative to src/")

    def test_an_include_that_climbs_out_is_found(self):
        self.write("src/trace/Sink.h", '#include "../src/common/Lock.h"\n')
        self.assert_finding("src/trace/Sink.h:1:", "relative to src/")

    def test_a_simulator_file_that_includes_the_library_is_found(self):
        self.write("simulator/main.cpp", '#include "common/Lock.h"\n')
        self.assert_finding("simulator/main.cpp:1:", "no file of the simulator")
        self.write("simulator/main.cpp", '#include "../src/common/Lock.h"\n')
        self.assert_finding("simulator/main.cpp:1:", "no file of the simulator")

    def test_a_simulator_test_that_includes_the_library_is_found(self):
        self.write("tests/unit/simulator/ReaderTest.cpp", '#include "common/Lock.h"\n')
        self.assert_finding("tests/unit/simulator/ReaderTest.cpp:1:", "no file of the simulator")

    def test_a_simulator_build_that_reaches_into_the_library_is_found(self):
        self.write("simulator/CMakeLists.txt", "include_directories(${CMAKE_SOURCE_DIR}/src)\n")
        self.assert_finding("simulator/CMakeLists.txt:1:", "nothing of src/")

    def test_a_carriage_return_is_found(self):
        self.write("README.md", "a\r\n")
        self.assert_finding("README.md:1:", "carriage return")

    def test_a_tab_in_the_indentation_is_found_but_not_in_a_makefile(self):
        self.write("Makefile", "all:\n\ttrue\n")
        self.write("script.py", "if True:\n\tpass\n")
        self.assert_finding("script.py:2:", "tab")

    def test_a_missing_last_line_end_is_found(self):
        self.write("README.md", "a\nb")
        self.assert_finding("README.md:2:", "no line end")

    def test_a_line_that_is_too_long_is_found(self):
        self.write("src/common/Lock.cpp", "// " + "x" * 107 + "\n")
        self.assertEqual([], self.findings())
        self.write("src/common/Lock.cpp", "// " + "x" * 108 + "\n")
        self.assert_finding("src/common/Lock.cpp:1:", "111 columns")

    def test_a_text_that_is_not_utf8_is_found_and_a_binary_file_is_not(self):
        self.write("picture.png", b"\x89PNG\0\xff")
        self.write("README.md", b"\xe4\n")
        self.assert_finding("README.md:1:", "not UTF-8")

    def test_each_banned_word_is_found(self):
        samples = ["see the s" + "pec", "the S" + "pecification", "as s" + "pecified",
                   "see P" + "art 3.1", "Issue" + " #2", "in /" + "tmp/x", '"/' + "work/x",
                   "pypi" + ".org"]
        for sample in samples:
            with self.subTest(sample):
                self.write("README.md", f"fine\n{sample}\n")
                self.assert_finding("README.md:2:", "does not belong here")

    def test_words_that_only_look_alike_are_no_findings(self):
        self.write("README.md", "special, inspector, a part of 3, network/, $x/" + "tmp/run, build/" +
                   "work/x\n")
        self.assertEqual([], self.findings())

    @unittest.skipUnless(shutil.which("clang-format"), "clang-format is not installed")
    def test_an_unformatted_file_is_found(self):
        self.write("src/common/Lock.cpp", "int  x;\nint  y;\n")
        self.assert_finding("src/common/Lock.cpp:1:", "not formatted")

    @unittest.skipUnless(shutil.which("clang-format"), "clang-format is not installed")
    def test_a_broken_format_configuration_is_found(self):
        self.write(".clang-format", "NoSuchKey: 1\n")
        self.assertNotEqual([], self.findings())


if __name__ == "__main__":
    unittest.main()
