#!/usr/bin/env python3
"""What is in the package: the files, their sums, the pages' links, and no folder of this machine.

usage: contents_test.py PACKAGE.zip
"""
import html.parser
import os
import re
import subprocess
import sys
import unittest
import zipfile
from pathlib import Path

sys.dont_write_bytecode = True
import unzipped  # noqa: E402
from unzipped import OURS, RUN_TIMES, SOURCE  # noqa: E402

MAX_BYTES = 5_000_000
FILES = {
    "": {"MANIFEST", "README.txt"},
    "bin": {*OURS, *RUN_TIMES, "engine.json", "qor-settings.ini",
            "simulator.ini"},
    "lib": {"QorControlC.lib", "libQorControlC.dll.a", "libQorControlFacade.dll.a"},
    "include": {"QorControl.h", "QorControlFacade.h"},
    "include/qorcontrol": {path.name for path in (SOURCE / "src/qorcontrol").glob("*.h")},
    "python": {f"qorcontrol-{unzipped.version()}-py3-none-any.whl"},
    "cmake": {"QorControlConfig.cmake", "QorControlConfigVersion.cmake"},
    "licences": {"CLI11.txt", "GPL-3.txt", "README.txt", "fmt.txt", "gcc-runtime.txt", "mbedtls.txt",
                 "mingw-w64.txt", "nlohmann-json.txt", "uPlot.txt", "cpp-httplib.txt"},
}
SETTINGS = ["bin/qor-settings.ini", "bin/simulator.ini"]
LANGUAGES = {".c", ".cpp", ".cs", ".py", ".mjs"}
# What each text must say to be the licence of its part.
LICENCES = {
    "CLI11.txt": "University of Cincinnati", "GPL-3.txt": "Version 3, 29 June 2007",
    "fmt.txt": "Victor Zverovich", "gcc-runtime.txt": "GCC RUNTIME LIBRARY EXCEPTION",
    "mbedtls.txt": "Apache License", "mingw-w64.txt": "mingw-w64-libraries/winpthreads/*",
    "nlohmann-json.txt": "Niels Lohmann", "uPlot.txt": "Leon Sorokin",
    "cpp-httplib.txt": "yhirose",
}
# Folders of whoever builds it, and of this build. (Licences name files of the system they came from.)
HOME = re.compile(rb"/(home|root|tmp|var|mnt|srv|work|Users)/[\w.-]|[A-Z]:\\Users\\\w")
SYSTEM = re.compile(rb"/usr/(lib|share|include|src|i686-w64-mingw32)/")


class Links(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.links, self.places, self.titles = [], set(), 0
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("href", "src"):
                self.links.append(value)
            elif name == "id":
                self.places.add(value)
        self.titles += tag == "title"


class Contents(unittest.TestCase):
    package = Path()

    @classmethod
    def setUpClass(cls):
        cls.folder = unzipped.unzip(cls.package)

    def names(self, folder):
        return {path.name for path in (self.folder / folder).iterdir() if path.is_file()}

    def test_each_folder_holds_what_it_must_and_nothing_else(self):
        for folder, names in FILES.items():
            self.assertEqual(names, self.names(folder), folder)
        self.assertEqual({*(name for name in FILES if name and "/" not in name), "docs", "examples"},
                         {path.name for path in self.folder.iterdir() if path.is_dir()})

    def test_there_is_an_example_in_each_language(self):
        found = {Path(name).suffix for name in self.names("examples")}
        self.assertLessEqual(LANGUAGES, found)

    def test_it_is_small(self):
        self.assertLess(self.package.stat().st_size, MAX_BYTES)

    def test_its_entries_are_sorted_have_one_time_and_names_of_plain_letters(self):
        with zipfile.ZipFile(self.package) as archive:
            entries = archive.infolist()
        names = [entry.filename for entry in entries]
        self.assertEqual(sorted(names), names)
        self.assertEqual(1, len({entry.date_time for entry in entries}))
        self.assertEqual([], [name for name in names if not re.fullmatch(r"[\w./+-]+", name, re.ASCII)])

    def test_the_second_zip_adds_symbols_to_the_folder_of_the_first_and_changes_nothing(self):
        symbols = self.package.with_name(self.package.stem + "-symbols.zip")
        tops = []
        for path in (self.package, symbols):
            with zipfile.ZipFile(path) as archive:
                tops.append({name.split("/")[0] for name in archive.namelist()})
        self.assertEqual({"symbols"}, tops[1])
        self.assertLessEqual({"bin", "lib", "include", "cmake", "README.txt"}, tops[0] - tops[1])
        self.assertEqual(f"QorControl-{unzipped.version()}-win32", self.package.stem)

    def check(self, folder, program):
        """With the line of the notes that begins with it: the exit code and what it prints."""
        checked = subprocess.run(["bash", "-c", unzipped.line_of_the_notes(program)], cwd=folder,
                                 env={**os.environ, "LC_ALL": "C"}, stdout=subprocess.PIPE,
                                 stderr=subprocess.STDOUT, text=True, check=False)
        return checked.returncode, checked.stdout

    def edited(self, *settings):
        """A package with another port in these."""
        folder = unzipped.unzip(self.package)
        for name in settings:
            path = folder / name
            text, count = re.subn(r"(?m)^TcpPort=.*$", "TcpPort=4711", path.read_text())
            self.assertEqual(1, count, name)
            path.write_text(text)
        return folder

    def test_the_manifest_has_the_sum_of_every_file_but_itself(self):
        lines = (self.folder / "MANIFEST").read_text().splitlines()
        listed = [re.fullmatch(r"[0-9a-f]{64}  (\S+)", line)[1] for line in lines]
        there = {path.relative_to(self.folder).as_posix()
                 for path in self.folder.rglob("*") if path.is_file()}
        self.assertEqual(sorted(there - {"MANIFEST"}), sorted(listed))
        for program in ("sha256sum", "grep"):
            self.assertEqual((0, ""), self.check(self.folder, program))

    def test_another_port_in_the_settings_is_found_by_the_first_check_and_not_by_the_second(self):
        folder = self.edited(*SETTINGS)
        self.assertEqual((0, ""), self.check(folder, "grep"))
        status, told = self.check(folder, "sha256sum")
        self.assertEqual(1, status)
        self.assertEqual(SETTINGS, re.findall(r"(?m)^(\S+): FAILED$", told))

    def test_each_other_file_that_differs_is_found_by_both_checks(self):
        for name in ("bin/QorControlC.dll", "bin/engine.json", "README.txt"):
            folder = self.edited(*SETTINGS)
            with (folder / name).open("ab") as file:
                file.write(b"x")
            for program, found in (("sha256sum", sorted([*SETTINGS, name])), ("grep", [name])):
                with self.subTest(name, program=program):
                    status, told = self.check(folder, program)
                    self.assertEqual(1, status)
                    self.assertEqual(found, sorted(re.findall(r"(?m)^(\S+): FAILED$", told)))

    def test_a_file_that_is_missing_is_found(self):
        folder = self.edited(*SETTINGS)
        (folder / "bin/QorControlC.dll").unlink()
        status, told = self.check(folder, "grep")
        self.assertEqual(1, status)
        self.assertIn("bin/QorControlC.dll: FAILED open or read", told)

    def test_each_page_opens_and_each_link_of_it_leads_somewhere(self):
        pages = {path: Links(path.read_text(encoding="utf-8"))
                 for path in (self.folder / "docs").glob("*.html")}
        dead = []
        for path, page in pages.items():
            self.assertEqual(1, page.titles, path)
            for link in page.links:
                address, _, place = link.partition("#")
                target = (path.parent / address).resolve() if address else path
                if "://" in link:
                    continue
                if not target.is_file() or not target.is_relative_to(self.folder) or \
                        place and place not in pages[target].places:
                    dead.append(f"{path.name}: {link}")
        self.assertEqual([], dead)
        self.assertGreater(sum(len(page.links) for page in pages.values()), 50)

    def test_the_index_leads_to_every_page(self):
        index = Links((self.folder / "docs/index.html").read_text(encoding="utf-8"))
        self.assertEqual({path.name for path in (self.folder / "docs").glob("*.html")},
                         {link for link in index.links if link.endswith(".html")})

    def test_the_documents_of_the_tree_are_pages(self):
        stems = {path.stem for path in (SOURCE / "docs").glob("*.md")}
        self.assertLessEqual(stems, {path.stem for path in (self.folder / "docs").glob("*.html")})

    def test_no_file_names_a_folder_of_this_machine(self):
        places = {str(SOURCE).encode(), os.path.expanduser("~").encode() + b"/"}
        found = []
        for path in self.folder.rglob("*"):
            if not path.is_file() or path.name in RUN_TIMES:  # Debian's are as they are
                continue
            content = path.read_bytes()
            name = path.relative_to(self.folder).as_posix()
            found += [f"{name}: {place}" for place in places if place in content]
            if name.startswith(("bin/", "lib/", "cmake/")):
                found += [f"{name}: {match[0]}" for pattern in (HOME, SYSTEM)
                          for match in pattern.finditer(content)]
        self.assertEqual([], found)

    def test_the_licence_of_each_part_is_its_own(self):
        for name, words in LICENCES.items():
            self.assertIn(words, (self.folder / "licences" / name).read_text(encoding="utf-8"), name)
        told = (self.folder / "licences/README.txt").read_text()
        self.assertEqual(FILES["licences"] - {"README.txt"},
                         set(re.findall(r"text: +(\S+)", told)))


if __name__ == "__main__":
    Contents.package = unzipped.package_path()
    unittest.main()
