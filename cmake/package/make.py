#!/usr/bin/env python3
"""Makes the package of a build: QorControl-VERSION-win32.zip and QorControl-VERSION-win32-symbols.zip.

usage: make.py --source FOLDER --build FOLDER --work FOLDER --out FOLDER --version X --date FILE
               --mbedtls FOLDER --uplot FOLDER --httplib FOLDER --tools PREFIX

The work folder is made anew and then holds what is packed. The same input gives the same bytes.
"""
import argparse
import hashlib
import os
import shutil
import subprocess
import sys
import zipfile
from datetime import datetime, timezone
from pathlib import Path

sys.dont_write_bytecode = True
import pages  # noqa: E402
from licences import write_licences  # noqa: E402

MAX_BYTES = 5_000_000  # of the zip without symbols
OURS = ["QorControlFacade.dll", "QorControlC.dll", "qorctl.exe", "qor-simulator.exe"]
RUN_TIMES = ["libstdc++-6.dll", "libgcc_s_dw2-1.dll", "libwinpthread-1.dll"]


class Failure(Exception):
    pass


def call(*command, **options):
    command = [str(word) for word in command]
    try:
        result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                check=False, **options)
    except FileNotFoundError:
        raise Failure(f"there is no '{command[0]}': cmake/install-packages.sh package") from None
    if result.returncode != 0:
        raise Failure(f"{Path(command[0]).name} failed: {result.stdout.strip()}")


class Package:
    def __init__(self, arguments):
        self.source = arguments.source
        self.build = arguments.build
        self.out = arguments.out
        self.version = arguments.version
        self.tools = arguments.tools
        self.fetched = {"mbedtls": arguments.mbedtls, "uplot": arguments.uplot,
                        "httplib": arguments.httplib}
        self.date = int(arguments.date.read_text())
        self.name = f"QorControl-{self.version}-win32"
        self.files = arguments.work / "files"
        self.symbols = arguments.work / "symbols"
        shutil.rmtree(arguments.work, ignore_errors=True)
        for folder in (self.files, self.symbols, self.out):
            folder.mkdir(parents=True, exist_ok=True)
        for old in self.out.glob("QorControl-*-win32*.zip"):
            old.unlink()

    def install(self):
        """bin/, lib/, include/ and cmake/ are the install tree."""
        call("cmake", "--install", self.build, "--prefix", self.files)

    def binutils(self, name, *arguments):
        """What it writes carries the package's time instead of the present one."""
        call(self.tools + name, *arguments, env={**os.environ, "SOURCE_DATE_EPOCH": str(self.date)})

    def split_symbols(self):
        """A debugger finds the symbols by the name that stays behind, and checks the file's sum."""
        for name in OURS:
            program = self.files / "bin" / name
            symbols = self.symbols / "symbols" / f"{name}.debug"
            symbols.parent.mkdir(exist_ok=True)
            self.binutils("objcopy", "--only-keep-debug", program, symbols)
            self.binutils("strip", program)
            self.binutils("objcopy", f"--add-gnu-debuglink={symbols}", program)
        for name in RUN_TIMES:
            self.binutils("strip", self.files / "bin" / name)

    def make_microsoft_library(self):
        """The names of the C interface are undecorated, so that its list of exports says it all."""
        exports = self.source / "src" / "cinterface" / "QorControlC.def"
        call("llvm-dlltool", "-m", "i386", "-d", exports, "-l", self.files / "lib" / "QorControlC.lib")

    def copy_examples(self):
        shutil.copytree(self.source / "examples", self.files / "examples",
                        ignore=shutil.ignore_patterns("CMakeLists.txt", "__pycache__"))

    def make_wheel(self):
        """The Python package as pip installs it. Its entries carry the package's time."""
        folder = self.files / "python"
        folder.mkdir()
        call(sys.executable, "-B", self.source / "tools/python/wheel_backend.py", folder,
             env={**os.environ, "SOURCE_DATE_EPOCH": str(self.date)})

    def write_read_me(self):
        """In Windows's line ends, for its simplest editor."""
        template = Path(__file__).with_name("README.txt").read_text(encoding="ascii")
        text = template.replace("@VERSION@", self.version)
        (self.files / "README.txt").write_bytes(text.replace("\n", "\r\n").encode("ascii"))

    def write_manifest(self):
        """As sha256sum writes and reads it."""
        lines = [f"{hashlib.sha256(path.read_bytes()).hexdigest()}  {name}\n"
                 for name, path in files_below(self.files)]
        (self.files / "MANIFEST").write_text("".join(lines), encoding="ascii", newline="\n")

    def pack(self, folder, suffix=""):
        """bin/ and the others are at the top: the folder is that of whoever unzips it."""
        path = self.out / f"{self.name}{suffix}.zip"
        time = datetime.fromtimestamp(self.date, timezone.utc).timetuple()[:6]
        with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
            for name, file in files_below(folder):
                entry = zipfile.ZipInfo(name, time)
                entry.compress_type = zipfile.ZIP_DEFLATED
                entry.external_attr = 0o100644 << 16
                archive.writestr(entry, file.read_bytes())
        return path

    def make(self):
        self.install()
        self.make_microsoft_library()
        self.copy_examples()
        self.make_wheel()
        self.write_read_me()
        pages.write_pages(self.source, self.files)
        self.split_symbols()
        write_licences(self.fetched, self.files / "licences")
        self.write_manifest()
        self.pack(self.symbols, "-symbols")
        path = self.pack(self.files)
        if path.stat().st_size > MAX_BYTES:
            raise Failure(f"{path.name} has {path.stat().st_size} bytes, at most {MAX_BYTES}")


def files_below(folder):
    """(name in the package, path), in the order of the names."""
    return sorted((path.relative_to(folder).as_posix(), path)
                  for path in folder.rglob("*") if path.is_file())


def main():
    parser = argparse.ArgumentParser()
    for name in ("source", "build", "work", "out", "date", "mbedtls", "uplot",
                 "httplib"):
        parser.add_argument(f"--{name}", type=Path, required=True)
    for name in ("version", "tools"):
        parser.add_argument(f"--{name}", required=True)
    try:
        Package(parser.parse_args()).make()
    except (Failure, pages.BadPage, OSError) as error:
        sys.exit(f"package: {error}")


if __name__ == "__main__":
    main()
