"""The tours in Python and C# on a library that can be loaded here, in place of the one for Windows.
It proves what the tours declare and how they use it: what arrives wrongly is refused there.

usage: standin_test.py FOLDER    (with Tour.exe, the example in C#)
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
# The module refuses a Python of 64 bits, which cannot load the real library.
PYTHON_TOUR = """import ctypes, sys
sys.path.insert(0, sys.argv[1])
import qorcontrol_ctypes, tour
qorcontrol_ctypes.load = lambda path: qorcontrol_ctypes.declare(ctypes.CDLL(path))
sys.exit(tour.main(sys.argv[2], sys.argv[3]))
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

    def in_python(self):
        return programs.run([sys.executable, "-B", "-c", PYTHON_TOUR, str(EXAMPLES), SETTINGS,
                             str(self.folder / LIBRARY)])

    def in_csharp(self):
        shutil.copy(folder / "Tour.exe", self.folder)
        return programs.run(["mono", str(self.folder / "Tour.exe"), SETTINGS])

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
