#!/usr/bin/env python3
"""The DLLs and programs of the package: what makes a fault in them hard to use.

usage: hardening_test.py PACKAGE.zip RUNNER PROBE
"""
import re
import subprocess
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import unzipped  # noqa: E402
from unzipped import OURS, RUN_TIMES, tool  # noqa: E402

LAYOUT, NO_EXECUTION = 0x0040, 0x0100  # of the optional header: DYNAMIC_BASE, NX_COMPAT
RELOCATIONS_STRIPPED = 0x0001  # of the file's header
WRITABLE, EXECUTABLE = 0x80000000, 0x20000000  # of a section

# Names of DLLs in the files that are no imports: nothing else may be looked for by its bare name, for the
# system looks beside the program, in the current folder and along PATH. The compiler's start-up code asks
# for its run-time library only if it is loaded already; Windows has kernel32 and msvcrt loaded in each process.
NAMED = {"kernel32.dll", "libgcc_s_dw2-1.dll", "msvcrt.dll"}
# And what the program tells of (an example of a security DLL, which QOR loads), or looks at without loading it.
TOLD = {"qorctl.exe": {"qorcontrolc.dll", "qorcontrolfacade.dll", "seedkey.dll"}}


class Image:
    """The headers of a file as the loader reads them."""

    def __init__(self, path):
        content = path.read_bytes()
        head = int.from_bytes(content[0x3C:0x40], "little")
        number = lambda at, size: int.from_bytes(content[at:at + size], "little")
        self.flags = number(head + 4 + 18, 2)
        optional = head + 24
        self.characteristics = number(optional + 70, 2)
        self.relocation_bytes = number(optional + 96 + 5 * 8 + 4, 4)
        first = optional + number(head + 4 + 16, 2)
        self.sections = {}
        for at in range(first, first + 40 * number(head + 4 + 2, 2), 40):
            self.sections[content[at:at + 8].rstrip(b"\0").decode()] = number(at + 36, 4)


class Hardening(unittest.TestCase):
    package, runner, probe = Path(), "", ""

    @classmethod
    def setUpClass(cls):
        cls.folder = unzipped.unzip(cls.package) / "bin"
        symbols = cls.package.with_name(cls.package.stem + "-symbols.zip")
        cls.symbols = unzipped.unzip(symbols) / "symbols"

    def test_each_file_is_loaded_where_the_system_likes_and_runs_no_data(self):
        for name in OURS + RUN_TIMES:
            image = Image(self.folder / name)
            self.assertEqual(LAYOUT | NO_EXECUTION, image.characteristics & (LAYOUT | NO_EXECUTION), name)
            self.assertEqual(0, image.flags & RELOCATIONS_STRIPPED, name)
            self.assertGreater(image.relocation_bytes, 1000, name)

    def test_no_section_is_both_written_and_run(self):
        for name in OURS + RUN_TIMES:
            sections = Image(self.folder / name).sections
            self.assertTrue(sections[".text"] & EXECUTABLE, name)
            both = [each for each, flags in sections.items() if flags & WRITABLE and flags & EXECUTABLE]
            self.assertEqual([], both, name)

    def test_functions_with_buffers_of_ours_look_after_their_stack(self):
        for name in OURS:
            listing = subprocess.run(f"{unzipped.TOOLS}nm {self.symbols / name}.debug", shell=True,
                                     stdout=subprocess.PIPE, check=True, text=True).stdout
            self.assertRegex(listing, r"(?m) D ___stack_chk_guard$", name)
            failing = re.search(r"(?m)^([0-9a-f]+) T ___stack_chk_fail$", listing)[1].lstrip("0")
            calls = re.findall(rf"\tcall   0x{failing}$", tool("objdump", "-d", "--no-show-raw-insn",
                                                               self.folder / name), re.MULTILINE)
            self.assertGreater(len(calls), 20, name)

    def test_nothing_is_loaded_by_its_bare_name(self):
        for name in OURS:
            path = self.folder / name
            allowed = set(unzipped.imports(path)) | NAMED | TOLD.get(name, set()) | {name.lower()}
            texts = re.findall(rb"[\w.+-]+\.dll\b", path.read_bytes(), re.IGNORECASE)
            self.assertLessEqual({text.decode().lower() for text in texts}, allowed, name)
        loads = re.compile(r"\bLoadLibrary|\bGetProcAddress|\bdlopen|\bLoadPackagedLibrary")
        for folder in "src", "simulator", "tools", "cmake":
            for path in (unzipped.SOURCE / folder).rglob("*"):
                if path.suffix in (".c", ".cpp", ".h"):
                    self.assertIsNone(loads.search(path.read_text(encoding="utf-8")), path)

    def run_probe(self, *arguments):
        return subprocess.run([self.runner, self.probe, *arguments], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=120,
                              check=False)

    def test_who_writes_behind_a_buffer_is_ended_at_once(self):
        for fault in "stack", "copy":
            ended = self.run_probe(fault)
            self.assertNotEqual(0, ended.returncode, fault)
            self.assertEqual("it begins", ended.stdout.strip(), fault)
            self.assertIn("ended with C0000409", self.run_probe("report", fault).stdout, fault)
        self.assertIn("it goes on", self.run_probe("none").stdout)


if __name__ == "__main__":
    Hardening.package = unzipped.package_path()
    Hardening.runner, Hardening.probe = sys.argv.pop(1), sys.argv.pop(1)
    unittest.main()
