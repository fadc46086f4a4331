"""The tours in Python and C# on a library that can be loaded here, in place of the one for Windows.
It proves what the tours declare and how they use it: what arrives wrongly is refused there.

usage: standin_test.py FOLDER    (with Tour.exe and First.exe, the examples in C#)
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import header
import programs
import tour

EXAMPLES = header.ROOT / "examples"
LIBRARY = "libQorControlC.dll.so"  # C# finds it beside the program by the name QorControlC.dll
SETTINGS = "settings \u00fc.ini"
CODES = [(0x0113, 96, ["P0113", "Intake air temperature sensor: \u00f6", "", "Air"]),
         (0xC100, 161, ["U0100", "Lost communication", "present", "Network"])]
TEXTS = ["A sentence of some length: \u00e4.", "Something to check."] * 2
FIRST = header.ROOT / "tools/example/first/first.py"
# The module refuses a Python of 64 bits, which cannot load the real library.
IN_PYTHON = """import ctypes, runpy, sys
sys.path.insert(0, sys.argv.pop(1))
sys.argv.pop(0)
import qorcontrol_ctypes
qorcontrol_ctypes.load = lambda path: qorcontrol_ctypes.declare(ctypes.CDLL(path))
runpy.run_path(sys.argv[0], run_name="__main__")
"""
folder = Path(".")


def rest_of_the_header(table):
    """Functions that no tour calls, but that Python looks for."""
    lines = ['#include "QorControl.h"']
    for function in table.functions:
        parameters = ", ".join(f"{member.type} {member.name}" for member in function.parameters)
        parameters = parameters.replace("const char**", "const char* const*")
        lines.append(f"{function.result} __attribute__((weak)) {function.name}({parameters or 'void'})"
                     " { return 0; }")
    return "\n".join(lines) + "\n"


class OnAStandIn(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)

    def build(self, change=lambda text: text):
        """With a header that may have been changed."""
        (self.folder / "QorControl.h").write_text(change(header.HEADER.read_text(encoding="utf-8")))
        (self.folder / "rest.c").write_text(rest_of_the_header(header.read()))
        sources = [str(Path(__file__).with_name("standin.c")), str(self.folder / "rest.c")]
        subprocess.run(["gcc", "-std=c99", "-Wall", "-Wextra", "-Werror", "-Wno-unused-parameter", "-shared", "-fPIC", "-I", str(self.folder),
                        "-I", str(header.ROOT / "src"), *sources, "-o", str(self.folder / LIBRARY)], check=True)

    def in_python(self, script=EXAMPLES / "tour.py", settings=SETTINGS):
        return programs.run([sys.executable, "-B", "-c", IN_PYTHON, str(EXAMPLES), str(script), settings,
                             str(self.folder / LIBRARY)])

    def in_csharp(self, program="Tour.exe", settings=SETTINGS):
        shutil.copy(folder / program, self.folder)
        return programs.run(["mono", str(self.folder / program), settings])

    def test_both_see_all_that_the_library_tells(self):
        self.build()
        for ended in (self.in_python(), self.in_csharp()):
            self.assertEqual((0, ""), (ended.exit_code, ended.errors))
            seen = tour.parse(ended.output)
            self.assertEqual(tour.whole(CODES), seen.lines)
            self.assertEqual(TEXTS, seen.texts)
            self.assertEqual([25, 50, 75, 100], seen.progress)
            self.assertEqual({("EngineSpeed", 852.5, 0), ("OilPressure", 2.5, 1)},
                             {(value.name, value.value, value.missed) for value in seen.values})
            self.assertEqual([100, 200, 400], sorted({value.afterMs for value in seen.values})[:3])

    def test_the_first_value_comes_in_both(self):
        self.build()
        for ended in (self.in_python(FIRST), self.in_csharp("First.exe")):
            self.assertEqual((0, "EngineSpeed = 851\n", ""), (ended.exit_code, ended.output, ended.errors))

    def test_the_first_programs_tell_why_there_is_no_value(self):
        self.build(lambda text: text.replace("#define QOR_CONNECT_DEFAULT 1 ", "#define QOR_CONNECT_DEFAULT 2 "))
        python, csharp = self.in_python(FIRST), self.in_csharp("First.exe")
        self.assertIn("QorError: QOR_BAD_ARGUMENT: A sentence of some length", python.errors)
        self.assertEqual(f"QOR_BAD_ARGUMENT: {TEXTS[0]}\n", csharp.output)
        self.assertNotIn(0, (python.exit_code, csharp.exit_code))

    def test_neither_gets_on_with_another_library(self):
        for old, new in (("    int running;", "    int more; int running;"),
                         ("    double value;\n    double timeMs;", "    double timeMs;\n    double value;"),
                         ("#define QOR_REFUSED 7 ", "#define QOR_REFUSED 9 ")):
            def change(text, old=old, new=new):
                self.assertEqual(1, len(re.findall(re.escape(old), text)))
                return text.replace(old, new)
            self.build(change)
            for ended in (self.in_python(), self.in_csharp()):
                self.assertFalse(ended.exit_code == 0 and tour.parse(ended.output).lines == tour.whole(CODES)
                                 and {value.value for value in tour.parse(ended.output).values} == {852.5, 2.5}, old)

    def test_settings_that_the_library_does_not_take_end_both_with_a_code(self):
        self.build(lambda text: text.replace("#define QOR_OK 0 ", "#define QOR_OK 1 "))
        for ended in (self.in_python(), self.in_csharp()):
            self.assertEqual(1, ended.exit_code)
            self.assertIn("open: failed\n", ended.output)


if __name__ == "__main__":
    folder = Path(sys.argv.pop(1))
    os.environ.setdefault("LC_ALL", "C.UTF-8")
    unittest.main()
