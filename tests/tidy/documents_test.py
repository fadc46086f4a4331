#!/usr/bin/env python3
"""Each check of documents.py finds its planted fault, and nothing in a tidy tree."""
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import documents  # noqa: E402

TESTS = """TEST(Queue, LosesAll) {}
TEST_F(Queue, WaitsOnce) {}
TEST_P(Times,
       AreDoubled) {}
"""
PAGE = """# Binding

| what | who | pinned by |
|---|---|---|
| overflow | hosts | `Queue.LosesAll`, `Queue.WaitsOnce` in `unit/common/QueueTest.cpp` |
| times | hosts | `Times.*` in `unit/common/QueueTest.cpp` |

It fails (`Times.AreDoubled`
in `unit/common/QueueTest.cpp`).

| text of a failure | below `src/` in |
|---|---|
| `It failed, %s.` | `client/` |

| below `src/` in | constants |
|---|---|
| `common/` | `slots` = 10, `special` = 0xFFFFFFFE |
| `client/` | `idOnline` = -10 |
"""


class DocumentsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve()
        self.write("tests/unit/common/QueueTest.cpp", TESTS)
        self.write("src/common/Queue.h", "constexpr unsigned int slots = 10;\n"
                                         "static constexpr unsigned int special = 0xFFFFFFFEu;\n")
        self.write("src/client/State.cpp", "constexpr std::int32_t idOnline = -10;\n"
                                            'trace("It failed, %s.\\n");\n')
        self.write("docs/binding.md", PAGE)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def change(self, old, new):
        self.assertIn(old, PAGE)
        self.write("docs/binding.md", PAGE.replace(old, new))

    def findings(self):
        return [f"{f.path}:{f.line}: {f.text}" for f in documents.check_documents(self.root)]

    def assert_finding(self, wanted):
        self.assertEqual([wanted], self.findings())

    def test_a_tidy_tree_has_no_findings(self):
        self.assertEqual([], self.findings())

    def test_a_test_that_is_not_there_is_found(self):
        self.change("Queue.WaitsOnce", "Queue.WaitsTwice")
        self.assert_finding("docs/binding.md:5: no test Queue.WaitsTwice in "
                            "tests/unit/common/QueueTest.cpp")

    def test_a_test_whose_name_only_begins_alike_is_found(self):
        self.change("Queue.LosesAll", "Queue.Loses")
        self.assert_finding("docs/binding.md:5: no test Queue.Loses in "
                            "tests/unit/common/QueueTest.cpp")

    def test_a_suite_that_is_not_there_is_found(self):
        self.change("Times.*", "Time.*")
        self.assert_finding("docs/binding.md:6: no test Time.* in tests/unit/common/QueueTest.cpp")

    def test_a_test_in_a_sentence_counts_too(self):
        self.change("Times.AreDoubled", "Times.AreHalved")
        self.assert_finding("docs/binding.md:9: no test Times.AreHalved in "
                            "tests/unit/common/QueueTest.cpp")

    def test_a_test_file_that_is_not_there_is_found(self):
        self.change("`Times.*` in `unit/common/QueueTest.cpp`", "`Times.*` in `unit/QueueTest.cpp`")
        self.assertIn("docs/binding.md:6: no file tests/unit/QueueTest.cpp", self.findings())

    def test_a_row_without_a_test_is_found(self):
        self.change("`Times.*` in `unit/common/QueueTest.cpp`", "nobody")
        self.assert_finding("docs/binding.md:6: no test pins this")

    def test_a_test_without_a_file_is_found(self):
        self.change("`Times.AreDoubled`\nin `unit/common/QueueTest.cpp`", "`Times.AreDoubled`\nhere")
        self.assert_finding("docs/binding.md:10: Times.AreDoubled: in which file?")

    def test_a_text_that_the_sources_do_not_have_is_found(self):
        self.change("It failed, %s.", "It has failed, %s.")
        self.assert_finding("docs/binding.md:13: client/ has no text 'It has failed, %s.'")

    def test_a_text_of_another_folder_is_found(self):
        self.change("| `client/` |\n\n", "| `common/` |\n\n")
        self.assert_finding("docs/binding.md:13: common/ has no text 'It failed, %s.'")

    def test_a_number_that_the_sources_do_not_have_is_found(self):
        self.change("`slots` = 10", "`slots` = 11")
        self.assert_finding("docs/binding.md:17: common/ has no slots = 11")
        self.change("= 0xFFFFFFFE", "= 0xFFFFFFFF")
        self.assert_finding("docs/binding.md:17: common/ has no special = 0xFFFFFFFF")

    def test_a_number_of_another_folder_is_found(self):
        self.change("`idOnline` = -10", "`slots` = 10")
        self.assert_finding("docs/binding.md:18: client/ has no slots = 10")

    def test_files_and_folders_may_be_named_by_any_tail_and_without_extension(self):
        self.write("docs/tour.md", "`Queue.h` `common/Queue.h` `src/common/Queue` `common/` `src/`\n"
                                   "`build/mingw32` `host.log` `start, stop`\n"
                                   "[queue](../src/common/Queue.h), [far](https://example.com/x)\n")
        self.assertEqual([], self.findings())

    def test_a_file_that_is_not_there_is_found(self):
        for name in ["Stack.h", "common/Stack.h", "common/Stack", "novel/"]:
            with self.subTest(name):
                self.write("docs/tour.md", f"fine\n`{name}`\n")
                self.assert_finding(f"docs/tour.md:2: no file or folder {name}")

    def test_a_link_that_leads_nowhere_is_found(self):
        self.write("README.md", "[queue](src/common/Stack.h)\n")
        self.assert_finding("README.md:1: no file src/common/Stack.h")

    def test_code_is_not_read_as_a_document(self):
        self.write("docs/tour.md", "```\n`Stack.h`\n```\n    `Stack.h`\n")
        self.assertEqual([], self.findings())


if __name__ == "__main__":
    unittest.main()
