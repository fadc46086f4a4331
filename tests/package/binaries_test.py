#!/usr/bin/env python3
"""The DLLs and programs of the package: what they import and export, their versions, their symbols.

usage: binaries_test.py PACKAGE.zip
"""
import re
import struct
import subprocess
import sys
import unittest
import zlib
from pathlib import Path

sys.dont_write_bytecode = True
import unzipped  # noqa: E402
from unzipped import NOTES, OURS, RUN_TIMES, SOURCE, tool  # noqa: E402

# What every Windows has had since long before 7.
OF_WINDOWS = {"advapi32.dll", "iphlpapi.dll", "kernel32.dll", "msvcrt.dll", "user32.dll",
              "version.dll", "ws2_32.dll"}
HEADERS = ["winsock2.h", "ws2tcpip.h", "windows.h", "iphlpapi.h", "tlhelp32.h"]
XP, SEVEN = "0x0501", "0x0601"
UNSTRIPPED = re.compile(r"\.(z?debug_|stab)")


def declared(functions, windows):
    """Whether the headers declare them for programs that run from this Windows on."""
    source = "".join(f"#include <{name}>\n" for name in HEADERS)
    source += "void* volatile p;\nvoid f(void) {\n"
    source += "".join(f"p = (void*)&{name};\n" for name in sorted(functions)) + "}\n"
    result = subprocess.run(
        [unzipped.TOOLS + "gcc-posix", f"-D_WIN32_WINNT={windows}", f"-DWINVER={windows}",
         "-fsyntax-only", "-xc", "-"],
        input=source, stderr=subprocess.PIPE, text=True, check=False)
    return functions - set(re.findall(r"error: .(\w+). undeclared", result.stderr))


def young_functions(imports):
    """{(function, DLL)} of all the files' imports that Windows XP has not, as far as is known."""
    lines = Path(__file__).with_name("functions_of_xp.txt").read_text().splitlines()
    known = {tuple(reversed(line.split())) for line in lines if not line.startswith("#")}
    return {(function, dll) for needed in imports.values() for dll, functions in needed.items()
            if dll in OF_WINDOWS for function in functions} - known


def table(first_column):
    """The rows of the notes' table that begins with this column."""
    rows, inside = [], False
    for line in NOTES.read_text(encoding="utf-8").splitlines():
        if line.startswith(f"| {first_column} |"):
            inside = True
        elif not line.startswith("|"):
            inside = False
        elif inside and not line.startswith("|---"):
            rows.append([re.findall(r"`([^`]+)`", cell) or cell.strip()
                         for cell in line.strip("|").split("|")])
    return rows


def version_resource(program):
    """(numbers of the file, texts) as Windows reads them."""
    content = program.read_bytes()
    start = content.index("VS_VERSION_INFO".encode("utf-16le"))
    fixed = content.index(struct.pack("<I", 0xFEEF04BD), start)
    high, low = struct.unpack_from("<II", content, fixed + 8)
    text = content[start:start + 4096].decode("utf-16le", errors="replace")
    texts = dict(re.findall(r"(\w+)\0+([^\0\1]+)\0", text))
    return (high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF), texts


class Binaries(unittest.TestCase):
    package = Path()

    @classmethod
    def setUpClass(cls):
        cls.folder = unzipped.unzip(cls.package)
        symbols = cls.package.with_name(cls.package.stem + "-symbols.zip")
        cls.symbols = unzipped.unzip(symbols) / "symbols"
        cls.imports = {name: unzipped.imports(cls.folder / "bin" / name)
                       for name in OURS + RUN_TIMES}

    def test_the_dlls_that_each_one_needs_are_those_of_the_notes(self):
        ours = {name.lower() for name in OURS + RUN_TIMES}
        told = {}
        for name, of_windows, packed, _ in table("file | DLLs of Windows"):
            told[name[0]] = (set(of_windows), set(map(str.lower, packed)) if packed != "-" else set())
        found = {name: (set(needed) - ours, set(needed) & ours)
                 for name, needed in self.imports.items()}
        self.assertEqual(found, told, "the table of the packaging notes is another")

    def test_what_is_not_in_the_package_every_windows_has(self):
        ours = {name.lower() for name in OURS + RUN_TIMES}
        for name, needed in self.imports.items():
            self.assertLessEqual(set(needed) - ours, OF_WINDOWS, name)

    def test_the_c_dll_needs_nothing_but_windows(self):
        self.assertLessEqual(set(self.imports["QorControlC.dll"]), OF_WINDOWS)

    def test_functions_younger_than_xp_are_those_of_the_notes(self):
        found = young_functions(self.imports)
        told = {(function[0], dll[0]): since for function, dll, since in table("function")}
        self.assertEqual(found, set(told), "they belong into functions_of_xp.txt or into that table")
        self.assertLessEqual(set(told.values()), {"Vista", "7"})

    def test_the_headers_have_no_other_opinion(self):
        """They know of most functions, though not of all and not of the C library, since when."""
        imported = {function for needed in self.imports.values() for dll, functions in needed.items()
                    if dll in OF_WINDOWS - {"msvcrt.dll"} for function in functions}
        self.assertEqual(imported, declared(imported, SEVEN))
        young = {function[0] for function, dll, _ in table("function") if dll != ["msvcrt.dll"]}
        self.assertLessEqual(imported - declared(imported, XP), young)

    def test_the_oldest_windows_of_each_file_is_that_of_the_notes(self):
        since = {(function[0], dll[0]): since for function, dll, since in table("function")}
        order = ["XP", "Vista", "7"]
        for name, _, packed, told in table("file | DLLs of Windows"):
            files = [name[0], *(packed if packed != "-" else [])]
            needed = {(function, dll) for file in files
                      for dll, functions in self.imports[file].items() for function in functions}
            oldest = ["XP"] + [since[function] for function in needed & set(since)]
            self.assertEqual(max(oldest, key=order.index), told, name)

    def test_the_c_dll_exports_what_its_list_and_its_header_say(self):
        listed = unzipped.listed_exports("src/cinterface/QorControlC.def")
        header = (self.folder / "include/QorControl.h").read_text(encoding="utf-8")
        header = re.sub(r"/\*.*?\*/", "", header, flags=re.DOTALL)
        declarations = set(re.findall(r"QOR_CALL\s+(Qor\w+)\s*\(", header))
        self.assertEqual(declarations, listed)
        self.assertEqual(listed, unzipped.exports(self.folder / "bin/QorControlC.dll"))

    def test_the_facade_exports_what_its_list_says(self):
        self.assertEqual(unzipped.listed_exports("src/facade/QorControlFacade.def"),
                         unzipped.exports(self.folder / "bin/QorControlFacade.dll"))

    def test_the_import_libraries_name_all_that_is_exported(self):
        for library, dll in (("libQorControlC.dll.a", "QorControlC.dll"),
                             ("QorControlC.lib", "QorControlC.dll"),
                             ("libQorControlFacade.dll.a", "QorControlFacade.dll")):
            path = self.folder / "lib" / library
            names = tool("nm", path) if library.endswith(".a") else \
                subprocess.run(["llvm-nm", path], stdout=subprocess.PIPE, check=True, text=True).stdout
            found = set(re.findall(r" I __imp__(\S+)$| T __imp__(\S+)$| D __imp__(\S+)$", names,
                                   re.MULTILINE))
            self.assertEqual(unzipped.exports(self.folder / "bin" / dll),
                             {"".join(groups) for groups in found}, library)

    def test_the_details_of_each_file_tell_the_one_version(self):
        version = unzipped.version()
        header = (self.folder / "include/qorcontrol/Version.h").read_text()
        numbers = tuple(int(re.search(rf"QOR_VERSION_{part} (\d+)", header)[1])
                        for part in ("MAJOR", "MINOR", "PATCH"))
        self.assertEqual(version, ".".join(map(str, numbers)))
        for name in OURS:
            told, texts = version_resource(self.folder / "bin" / name)
            self.assertEqual((*numbers, 0), told, name)
            self.assertEqual((version, version, name), (
                texts["FileVersion"], texts["ProductVersion"], texts["OriginalFilename"]))
            self.assertGreater(len(texts["FileDescription"]), 10, name)

    def test_symbols_are_not_in_the_programs_but_belong_to_them(self):
        self.assertEqual({f"{name}.debug" for name in OURS},
                         {path.name for path in self.symbols.iterdir()})
        for name in OURS:
            program = self.folder / "bin" / name
            sections = tool("objdump", "-h", program)
            self.assertIsNone(UNSTRIPPED.search(sections), name)
            self.assertIn("no symbols", tool("objdump", "-t", program), name)
            symbols = self.symbols / f"{name}.debug"
            link = symbols.name.encode() + b"\0" * (4 - len(symbols.name) % 4)
            link += struct.pack("<I", zlib.crc32(symbols.read_bytes()))
            self.assertIn(link, program.read_bytes(), name)

    def test_symbols_tell_the_source_of_an_address(self):
        for dll, function, file in (
                ("QorControlFacade.dll", "_ZN16QorControlFacade8shutdownEv", "src/facade/"),
                ("QorControlC.dll", "QorVersion", "src/cinterface/")):
            address = unzipped.export_address(self.folder / "bin" / dll, function)
            *command, symbols, _ = unzipped.command_of_the_notes(unzipped.TOOLS + "addr2line")
            command += [Path(symbols).with_name(f"{dll}.debug"), hex(address)]
            told = subprocess.run(command, cwd=self.symbols.parent, stdout=subprocess.PIPE,
                                  check=True, text=True).stdout
            self.assertRegex(told, rf"\n/qor-control/{file}\w+\.cpp:\d+")


if __name__ == "__main__":
    Binaries.package = unzipped.package_path()
    unittest.main()
