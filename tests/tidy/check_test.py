#!/usr/bin/env python3
"""Each check of check.py finds its planted fault, and nothing in a tidy tree."""
import shutil
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.dont_write_bytecode = True
import check  # noqa: E402
import functions  # noqa: E402

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

    def function_of(self, lines):
        body = "".join(f"    work({n});\n" for n in range(lines - 2))
        return f"void tooMuch() {{\n{body}}}\n"

    def test_a_function_of_more_lines_than_a_screen_is_found(self):
        self.write("src/common/Lock.cpp", "#include <x>\n\n" + self.function_of(40))
        self.assertEqual([], self.findings())
        self.write("src/common/Lock.cpp", "#include <x>\n\n" + self.function_of(41))
        self.assert_finding("src/common/Lock.cpp:3:", "tooMuch has 41 lines, at most 40")

    def test_functions_are_measured_in_each_folder_of_programs(self):
        for folder in ["simulator", "tools/qorctl", "bench", "tests/unit/agent"]:
            with self.subTest(folder):
                self.write(folder + "/Long.cpp", self.function_of(41))
                self.assert_finding(folder + "/Long.cpp:1:", "tooMuch")
                (self.root / folder / "Long.cpp").unlink()

    def test_a_long_function_with_a_reason_is_allowed_until_it_is_short(self):
        with mock.patch.dict(check.LONG_FUNCTIONS, {("src/common/Lock.cpp", "tooMuch"): "why"}):
            self.write("src/common/Lock.cpp", self.function_of(41))
            self.assertEqual([], self.findings())
            self.write("src/common/Lock.cpp", self.function_of(40))
            self.assert_finding("src/common/Lock.cpp:1:", "tooMuch needs no place")

    def test_braces_that_cannot_be_followed_are_found(self):
        for text in ["void f() {\n", "void f() {\n}\n}\n", "struct A {\n    int b;\n"]:
            with self.subTest(text):
                self.write("src/common/Lock.cpp", text)
                self.assertTrue(any("braces" in f for f in self.findings()), self.findings())


class FunctionsTest(unittest.TestCase):
    def assert_functions(self, expected, text):
        found = [(f.line, f.name, f.lines) for f in functions.functions_in(text)]
        self.assertEqual(expected, found)

    def test_a_function_goes_from_its_first_word_to_its_closing_brace(self):
        self.assert_functions([(2, "one", 4)],
                              "int x;\ntemplate <class T>\nT one(T a,\n      T b) {\n    return a;}\n")

    def test_functions_of_namespaces_and_classes_are_found(self):
        self.assert_functions(
            [(4, "A", 1), (5, "~A", 1), (7, "get", 3), (13, "free", 1)],
            "namespace a {\nclass A : public B {\npublic:\n    A() {}\n    ~A() { end(); }\n"
            "    int y{3};\n    int get() const override {\n        return y;\n    }\n"
            "};\n}  // namespace a\nextern \"C\" {\nvoid free() {}\n}\n")

    def test_an_initializer_is_no_function_and_no_end_of_a_constructors_list(self):
        self.assert_functions(
            [(4, "A::A", 4)],
            "const int a[] = {\n    f(1), 2};\nconst B b{f(1)};\nA::A(int a)\n    : a_{a},\n"
            "      b_(2) {\n}\n")

    def test_what_is_nested_in_a_function_counts_as_its_lines(self):
        self.assert_functions(
            [(1, "f", 7)],
            "void f() {\n    struct L {\n        void g() {\n        }\n    };\n"
            "    if (x) { h([] { return 1; }); }\n}\n")

    def test_a_lambda_of_a_table_is_a_function_of_its_own(self):
        self.assert_functions(
            [(2, "a lambda", 3), (5, "a lambda", 1)],
            "const Row rows[] = {\n    {1, [](int a) {\n         return a;\n     }},\n"
            "    {2, [] { return 2; }},\n};\n")

    def test_a_variable_that_holds_a_lambda_is_measured(self):
        self.assert_functions([(1, "a lambda", 3)], "const auto f = [] {\n    g();\n};\n")

    def test_braces_in_comments_literals_and_directives_do_not_count(self):
        self.assert_functions(
            [(4, "f", 8)],
            "// {\n#define M(a) \\\n    {\nvoid f() {\n    /* { \n */ g(\"{\\\"{\", '{', '\\'');\n"
            "    h(R\"x({\")x\", 1'000'000, \"//\");\n    i(\"a\"  // it's {\n      \"}\");\n"
            "    j('\"');\n}\n")

    def test_a_test_is_named_by_both_its_names(self):
        self.assert_functions([(1, "Queue.HoldsOne", 3)],
                              "TEST_F(Queue,\n       HoldsOne) {\n}\n")

    def test_a_function_is_named_by_the_word_before_its_parameters(self):
        for head, name in [("std::function<void()> A::make(int a)", "A::make"),
                           ("A::A(int b) : b_(b)", "A::A"), ("A& operator=(const A& b)", "operator="),
                           ("bool operator()(int a) const", "operator()"),
                           ("unsigned __stdcall A::run(void* a)", "A::run")]:
            with self.subTest(head):
                self.assert_functions([(1, name, 2)], head + " {\n}\n")


if __name__ == "__main__":
    unittest.main()
