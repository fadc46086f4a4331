"""Each named mutant still has its place in the sources, and the test that sees it is still there."""
import tempfile
import textwrap
import unittest
from pathlib import Path

import catalogue

ROOT = Path(__file__).resolve().parents[2]
SOURCE_FOLDERS = {path.name for path in (ROOT / "src").iterdir() if any(path.glob("*.cpp"))}


class TheCatalogue(unittest.TestCase):
    def test_fits_the_sources(self):
        mutants = catalogue.mutants_of(ROOT)
        self.assertEqual([], list(catalogue.complaints(ROOT, mutants)))

    def test_has_mutants_of_every_folder(self):
        folders = {Path(mutant.file).parts[1] for mutant in catalogue.mutants_of(ROOT)}
        self.assertEqual(set(), SOURCE_FOLDERS - folders)


class ACatalogue(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.root = Path(holder.name)
        self.write("src/sum.cpp", "int sum(int a, int b) { return a + b; }\n")
        self.write("tests/SumTest.cpp", "TEST_F(Sum, AddsUp) {}\nTEST_P(Sums, AddUp) {}\n")
        self.write("tests/CMakeLists.txt", "qor_add_test(NAME sum_test)\nadd_system_test(whole 60 A.cpp)\n")

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def complaints(self, test, before="a + b"):
        self.write("tests/mutants/catalogue/sum.toml", textwrap.dedent(f"""
            [[mutant]]
            name = "sum: subtracts"
            file = "src/sum.cpp"
            before = '{before}'
            after = 'a - b'
            test = "{test}"
            """))
        return list(catalogue.complaints(self.root, catalogue.mutants_of(self.root)))

    def test_that_fits_is_not_complained_of(self):
        for test in ("sum_test Sum.AddsUp", "native64:sum_test Sum.AddsUp", "system_whole_test Sum.AddsUp",
                     "sum_test All/Sums.AddUp/0:Sum.AddsUp", "sum_test */Sums.AddUp/*"):
            self.assertEqual([], self.complaints(test), test)

    def test_whose_text_is_gone_or_there_twice_is_told(self):
        self.assertEqual(["sum: subtracts: its text occurs 0 times in src/sum.cpp"],
                         self.complaints("sum_test Sum.AddsUp", before="a * b"))
        self.assertEqual(["sum: subtracts: its text occurs 3 times in src/sum.cpp"],
                         self.complaints("sum_test Sum.AddsUp", before="int "))

    def test_whose_test_or_program_is_gone_is_told(self):
        self.assertEqual(["sum: subtracts: there is no test Sum.Adds"], self.complaints("sum_test Sum.Adds"))
        self.assertEqual(["sum: subtracts: there is no test program sums_test"],
                         self.complaints("sums_test Sum.AddsUp"))
        self.assertEqual(["sum: subtracts: there is no test program system_c_whole_test"],
                         self.complaints("system_c_whole_test Sum.AddsUp"))

    def test_of_which_no_run_has_that_very_name_is_told(self):
        self.assertEqual(["sum: subtracts: Sums.AddUp has parameters: write */Sums.AddUp/*"],
                         self.complaints("sum_test Sums.AddUp"))

    def test_that_cannot_be_understood_is_refused(self):
        for test, before in (("sum_test", "a + b"), ("wine:sum_test Sum.AddsUp", "a + b"),
                             ("sum_test Sum.AddsUp", "a - b"), ("sum_test Sum.AddsUp", "")):
            with self.assertRaises(catalogue.Malformed):
                self.complaints(test, before)
        self.complaints("sum_test Sum.AddsUp")
        first = (self.root / "tests/mutants/catalogue/sum.toml").read_text(encoding="utf-8")
        entry = first.replace("sum: subtracts", "sum: subtracts slowly")
        for text in ("[[mutant]]\nname = 'without the rest'\n", "[[mutant\n", entry + "dies = 'slowly'\n"):
            self.write("tests/mutants/catalogue/other.toml", text)
            with self.assertRaises(catalogue.Malformed):
                catalogue.mutants_of(self.root)

    def test_has_each_name_once(self):
        self.complaints("sum_test Sum.AddsUp")
        first = self.root / "tests/mutants/catalogue/sum.toml"
        self.write("tests/mutants/catalogue/other.toml", first.read_text(encoding="utf-8"))
        with self.assertRaises(catalogue.Malformed):
            catalogue.mutants_of(self.root)


if __name__ == "__main__":
    unittest.main()
