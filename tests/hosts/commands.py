"""The commands that the pages show, and how each is run: in a folder with the unzipped package, on Wine's
command prompt or, what builds or installs, on this machine. What cannot be run here has its reason."""
import os
import re
import shutil
import subprocess
import time
import zipfile
from pathlib import Path
from typing import List, NamedTuple, Optional

import header
import programs
from programs import WINE_RUN, windows_path

PAGES = ["cmake/package/README.txt", "docs/quick-start.md", "examples/README.md", "docs/packaging.md",
         "docs/c-guide.md"]
TOOLS = "i686-w64-mingw32-"
PATIENCE_S = 120
# Of the blocks of the quick start: the files that its commands name.
FILES = {"c": "first.c", "cpp": "first.cpp", "js": "first.mjs"}
BINARY = "@koromix/koffi-win32-ia32"
OUTPUT = "What it prints"  # the section of a page that has lines which are no commands

# By the beginnings of lines: why they are not run here.
NOT_RUN = {
    "cl ": "there is no Microsoft compiler",
    "set csc=": "there is no .NET for 32-bit Windows",
    "%csc% ": "there is no .NET for 32-bit Windows",
    r"bin\First.exe ": "there is no .NET for 32-bit Windows",
    r"bin\Tour ": "there is no .NET for 32-bit Windows",
    "py ": "there is no Python for 32-bit Windows",
    "gc ": "there is no PowerShell",
    r"bin\qorctl doctor SETTINGS ": "a pattern; tests/system runs it with a host",
    "sha256sum ": "run by tests/package/contents_test.py",
    "grep ": "run by tests/package/contents_test.py",
    TOOLS + "addr2line ": "run by tests/package/binaries_test.py",
}
# What each of the others must print; it must end with 0, too.
PRINTS = {
    "start ": r"", "taskkill ": r"", "gcc ": r"", "g++ ": r"", "npm install ": r"added \d+ package",
    r"bin\qorctl demo ": r"^(\d+) of \1 steps ok",
    r"bin\qorctl get ": r"^EngineSpeed: [1-9]",
    r"bin\qorctl doctor ": r"^A host would work with these settings",
    r"bin\first.exe ": r"^(EngineSpeed = \d{3}$|engine speed \d{3} 1/min$)",
    r"bin\tour ": r"^close: ok$",
    "node first.mjs ": r"^EngineSpeed = \d{3}$",
    r"node examples\tour.mjs ": r"^close: ok$",
    # In any order: Wine sorts them.
    "dir /b ": r"\A(((QorControlFacade|libstdc\+\+-6|libgcc_s_dw2-1|libwinpthread-1)\.dll)\n(?!.*\2)){4}\Z",
}
# They change what the simulated QOR remembers, so a new one is started before each, as the page says.
WANTS_NEW_QOR = ("bin\\tour ", "node examples\\tour.mjs ")


class Unknown(Exception):
    """Nobody has said how such a line is run, or why it is not."""


class Ended(NamedTuple):
    exit_code: int
    output: str


def text_of(page):
    return (header.ROOT / page).read_text(encoding="utf-8")


def commands_in(text: str) -> List[str]:
    """The lines that are set off by four blanks, without blocks of programs and tables."""
    text = re.sub(r"^```.*?^```$", "", text, flags=re.MULTILINE | re.DOTALL)
    text = re.sub(rf"^## {OUTPUT}\n.*?(?=^## |\Z)", "", text, flags=re.MULTILINE | re.DOTALL)
    lines = re.findall(r"^    (\S.*)$", text, re.MULTILINE)
    return [line for line in lines if not re.match(r"\S+ {2,}", line)]


def of_table(line: str, table) -> Optional[str]:
    keys = [key for key in table if line.startswith(key)]
    return table[max(keys, key=len)] if keys else None


def why_not(line: str) -> Optional[str]:
    return of_table(line, NOT_RUN)


def expected(line: str) -> str:
    found = of_table(line, PRINTS)
    if found is None:
        raise Unknown(line)
    return found


class Desk:
    """The package in a folder, and a Wine of its own: other tests have simulated QORs, too."""

    def __init__(self, package: Path, folder: Path, node: Path, registry: str):
        self.registry, self.node, self.work = registry, node, folder
        self.folder = folder / package.stem
        with zipfile.ZipFile(package) as archive:
            archive.extractall(self.folder)
        self.port, self.lines = programs.free_port(), 0
        for settings in (self.folder / "bin").glob("*.ini"):
            text, count = re.subn(r"(?m)^TcpPort=.*$", f"TcpPort={self.port}", settings.read_text())
            assert count == 1, settings
            settings.write_text(text)

    def add_programs_of(self, text: str):
        """Each block under its name, where one is named; the first of a language is meant."""
        for language, block in re.findall(r"^```(\w+)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL):
            path = self.folder / FILES.get(language, "")
            if language in FILES and not path.exists():
                path.write_text(block, encoding="utf-8")

    def run(self, line: str) -> Ended:
        if line.startswith(("gcc ", "g++ ")):
            program, rest = line.split(" ", 1)
            return self.here(f"{TOOLS}{program}-posix {rest}".replace("\\", "/"))
        if line.startswith("npm "):
            ended = self.here(line, npm_config_registry=self.registry, npm_config_os="win32",
                              npm_config_ignore_scripts="true", npm_config_cache=str(self.work / "npm"))
            self.help_old_npm()
            return ended
        ended = self.at_the_prompt(line)
        if line.startswith("start "):
            self.await_qor()
        return ended

    def here(self, line: str, **environment) -> Ended:
        ended = subprocess.run(["bash", "-c", line], cwd=self.folder, env={**os.environ, **environment},
                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               timeout=PATIENCE_S, check=False)
        return Ended(ended.returncode, programs.plain(ended.stdout))

    def help_old_npm(self):
        """Before version 10 it takes koffi's binary for the machine that it runs on, whatever it is told."""
        if int(self.here("npm --version").output.rsplit("\n", 2)[-2].split(".")[0]) >= 10:
            return
        binary = Path("node_modules") / BINARY
        for modules in self.folder.glob("**/node_modules"):
            shutil.copytree(self.node / binary, modules.parent / binary, dirs_exist_ok=True)

    def at_the_prompt(self, line: str) -> Ended:
        """The line as it stands, in a file for Wine's cmd. Its output goes through another file: Node.js
        cannot write into pipes there, and what is started keeps the file of its line."""
        self.lines += 1
        batch, out, outer = (self.work / f"{self.lines}-{name}" for name in ("line.bat", "out", "outer.bat"))
        batch.write_text(f"@echo off\r\n{line}\r\nexit %errorlevel%\r\n", encoding="ascii")
        outer.write_text(f"@cmd /c {windows_path(batch)} >{windows_path(out)} 2>&1 <nul\r\n", encoding="ascii")
        ended = subprocess.run([str(WINE_RUN), "cmd", "/c", windows_path(outer)], cwd=self.folder,
                               env={**os.environ, "WINEPATH": windows_path(self.node)},
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, timeout=PATIENCE_S, check=False)
        return Ended(ended.returncode, programs.plain(out.read_bytes()))

    def await_qor(self):
        end = time.monotonic() + PATIENCE_S
        listening = re.compile(rf" [0-9A-F]+:{self.port:04X} [0-9A-F]+:0000 0A ")
        while not listening.search(Path("/proc/net/tcp").read_text(encoding="ascii")):
            if time.monotonic() > end:
                raise TimeoutError("the simulated QOR does not listen")
            time.sleep(0.05)
