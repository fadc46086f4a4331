"""The commands of the pages do what they say, run as they stand there.

usage: commands_test.py PACKAGE.zip NODE-FOLDER WINE-PREFIX    (the prefix is this test's own)
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import commands
import programs
from registry import Registry

package, node_folder = Path("."), Path(".")


def stop_wine():
    """The one of this test's prefix."""
    environment = {name: value for name, value in os.environ.items() if name != "TMPDIR"}
    for option in ("-k", "-w"):
        subprocess.run(["wineserver", option], env=environment, check=False,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class Commands(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.addClassCleanup(stop_wine)
        programs.let_node_run()
        cls.registry = Registry()
        cls.addClassCleanup(cls.registry.close)

    def desk(self):
        folder = tempfile.TemporaryDirectory(prefix="qor-commands-")
        self.addCleanup(folder.cleanup)
        self.addCleanup(self.end_qor)
        return commands.Desk(package, Path(folder.name), node_folder, self.registry.address)

    @staticmethod
    def end_qor():
        """Whatever the page has started."""
        subprocess.run([str(programs.WINE_RUN), "taskkill", "/f", "/im", "qor-simulator.exe"], check=False,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def run_one(self, desk, line):
        ended = desk.run(line)
        self.assertEqual(0, ended.exit_code, f"{line}\n{ended.output}")
        self.assertRegex(ended.output, "(?m)" + commands.expected(line), line)

    def run_page(self, page):
        text, desk = commands.text_of(page), self.desk()
        desk.add_programs_of(text)
        lines = [line for line in commands.commands_in(text) if not commands.why_not(line)]
        self.assertGreater(len(lines), 2)
        ways = {line.split(" ")[0]: line for line in lines}
        for line in lines:
            with self.subTest(line):
                if line.startswith(commands.WANTS_NEW_QOR):
                    self.run_one(desk, ways["taskkill"])
                    self.run_one(desk, ways["start"])
                self.run_one(desk, line)
                if line == ways.get("taskkill"):  # the lines behind it need one
                    self.run_one(desk, ways["start"])

    def test_those_of_the_read_me(self):
        self.run_page("cmake/package/README.txt")

    def test_those_of_the_quick_start(self):
        self.run_page("docs/quick-start.md")

    def test_those_of_the_examples(self):
        self.run_page("examples/README.md")

    def test_those_of_the_packaging_notes(self):
        self.run_page("docs/packaging.md")

    def test_a_command_that_fails_and_one_that_prints_something_else_are_found(self):
        desk = self.desk()
        self.assertNotEqual(0, desk.run(r"bin\qorctl get bin\none.ini EngineSpeed").exit_code)
        self.assertNotEqual(0, desk.run("gcc -I includes first.c -o bin\\first.exe").exit_code)
        self.assertNotEqual(0, desk.run("npm install --cpu=ia32 koffi@3.3.3").exit_code)
        self.assertNotRegex(desk.run(r"dir /b bin\QorControlFacade.dll bin\none.dll").output,
                            "(?m)" + commands.expected("dir /b "))


class Lines(unittest.TestCase):
    def test_each_is_run_or_has_a_reason(self):
        for page in commands.PAGES:
            for line in commands.commands_in(commands.text_of(page)):
                with self.subTest(line):
                    self.assertTrue(commands.why_not(line) or commands.expected(line) is not None)

    def test_each_reason_is_needed(self):
        lines = [line for page in commands.PAGES for line in commands.commands_in(commands.text_of(page))]
        for beginning in [*commands.NOT_RUN, *commands.PRINTS]:
            self.assertTrue(any(line.startswith(beginning) for line in lines), beginning)

    def test_a_new_kind_of_line_needs_a_word(self):
        self.assertEqual(["tool --do", "npm x"], commands.commands_in(
            "a\n\n    tool --do\n    bin\\    a table\n\n```c\n    int a;\n```\n    npm x\n"))
        with self.assertRaises(commands.Unknown):
            commands.expected("tool --do")


if __name__ == "__main__":
    package, node_folder, prefix = (Path(word).resolve() for word in sys.argv[1:4])
    del sys.argv[1:]
    os.environ["WINEPREFIX"] = str(prefix)
    unittest.main()
