#!/usr/bin/env python3
"""Packing the same build a second time, at another time and elsewhere, gives the same bytes; what is
wrong is told in one line.

usage: remake_test.py PACKAGE.zip make.py ARGUMENT...    (all but --work and --out)
"""
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import unzipped  # noqa: E402


class Remake(unittest.TestCase):
    package = Path()
    command = []

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="qor package ")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def make(self, **others):
        command = [*self.command, "--work", self.folder / "work", "--out", self.folder / "out"]
        for name, value in others.items():
            command += [f"--{name}", value]
        return subprocess.run(list(map(str, command)), stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False)

    def copy_source(self):
        """What is packed of it."""
        left_out = {".git", "build", "out", "tests", "bench"}
        return shutil.copytree(unzipped.SOURCE, self.folder / "source",
                               ignore=lambda folder, names: left_out.intersection(names))

    def test_the_same_build_gives_the_same_bytes(self):
        made = self.make()
        self.assertEqual((0, ""), (made.returncode, made.stdout))
        names = [self.package.name, self.package.stem + "-symbols.zip"]
        self.assertEqual(sorted(names), sorted(path.name for path in (self.folder / "out").iterdir()))
        for name in names:
            self.assertEqual(self.package.with_name(name).read_bytes(),
                             (self.folder / "out" / name).read_bytes(), name)

    def test_another_date_is_in_it(self):
        (self.folder / "date").write_text("1000000000\n")
        self.assertEqual(0, self.make(date=self.folder / "date").returncode)
        self.assertNotEqual(self.package.read_bytes(),
                            (self.folder / "out" / self.package.name).read_bytes())
        head = unzipped.tool("objdump", "-p", self.folder / "work/files/bin/QorControlC.dll")
        self.assertRegex(head, r"Time/Date\s+.*Sep +9 .* 2001")

    def test_one_line_tells_what_is_wrong(self):
        source = self.copy_source()
        with (source / "README.md").open("a") as readme:
            readme.write("\n![gone](docs/images/gone.png)\n")
        made = self.make(source=source)
        self.assertEqual(1, made.returncode)
        self.assertEqual("package: README.md: the picture docs/images/gone.png is not in the package\n",
                         made.stdout)

    def test_a_package_that_is_too_large_fails(self):
        source = self.copy_source()
        noise = subprocess.run(["head", "-c", "5000000", "/dev/urandom"], stdout=subprocess.PIPE,
                               check=True).stdout
        (source / "docs/images/noise.png").write_bytes(noise)
        made = self.make(source=source)
        self.assertEqual(1, made.returncode)
        self.assertRegex(made.stdout, r"^package: \S+\.zip has \d+ bytes, at most 5000000\n$")


if __name__ == "__main__":
    Remake.package = unzipped.package_path()
    Remake.command = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
