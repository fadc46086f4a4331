"""The package as a station builder has it: unzipped, in a folder of its own."""
import os
import re
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
NOTES = SOURCE / "docs/packaging.md"
OURS = ["QorControlC.dll", "QorControlFacade.dll", "qor-simulator.exe", "qorctl.exe"]
RUN_TIMES = ["libgcc_s_dw2-1.dll", "libstdc++-6.dll", "libwinpthread-1.dll"]
TOOLS = "i686-w64-mingw32-"
_folders = []


def tool(name, *arguments):
    command = [TOOLS + name, *map(str, arguments)]
    return subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True,
                          env={**os.environ, "LC_ALL": "C"}).stdout


def unzip(path, inner="package"):
    """Into a temporary folder that lives as long as the test."""
    folder = tempfile.TemporaryDirectory(prefix="qor-package-")
    _folders.append(folder)
    target = Path(folder.name).resolve() / inner
    with zipfile.ZipFile(path) as archive:
        archive.extractall(target)
    return target


def package_path():
    """The package is the first argument of each of these tests, which unittest must not see."""
    return Path(sys.argv.pop(1))


def line_of_the_notes(program):
    """The one command line there that begins with it."""
    text = NOTES.read_text(encoding="utf-8")
    return re.search(rf"^    ({re.escape(program)} .*)$", text, re.MULTILINE)[1]


def command_of_the_notes(program):
    """Its words."""
    return line_of_the_notes(program).split()


def version():
    return re.search(r'QOR_VERSION_TEXT "(.*)"',
                     (SOURCE / "src/qorcontrol/Version.h").read_text())[1]


def imports(program):
    """{DLL in lower case: functions} of a DLL or program."""
    found, names = {}, None
    for line in tool("objdump", "-p", program).splitlines():
        if "DLL Name: " in line:
            names = found.setdefault(line.split(": ")[1].lower(), set())
        elif names is not None and (entry := re.fullmatch(r"\t[0-9a-f]+\t +\d+  (\S+)", line)):
            names.add(entry[1])
        elif line.startswith("The Export Tables") or "[Ordinal/Name Pointer]" in line:
            break
    return found


def exports(program):
    table = tool("objdump", "-p", program).partition("[Ordinal/Name Pointer] Table")[2]
    return set(re.findall(r"^\t\[ *\d+\] (\S+)$", table.partition("\n\n")[0], re.MULTILINE))


def listed_exports(definition):
    text = (SOURCE / definition).read_text().partition("EXPORTS")[2]
    return {line.split()[0] for line in text.splitlines() if line.strip() and ";" not in line}


def export_address(program, function):
    """Where the file would like it to be loaded."""
    told = tool("objdump", "-p", program)
    base = int(re.search(r"^ImageBase\t+([0-9a-f]+)", told, re.MULTILINE)[1], 16)
    ordinal = int(re.search(rf"\[ *(\d+)\] {re.escape(function)}$", told, re.MULTILINE)[1])
    addresses = re.findall(r"\[ *(\d+)\] \+base\[ *\d+\] ([0-9a-f]+) Export RVA", told)
    return base + {int(number): int(rva, 16) for number, rva in addresses}[ordinal]
