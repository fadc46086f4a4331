"""The licences of all that is inside the DLLs and programs besides our own code.

The texts are those that came with what was built in: of the Debian packages and of the two that are
fetched. GPL-3 is what the first of them refers to.
"""
from pathlib import Path
from typing import NamedTuple

DEBIAN = Path("/usr/share/doc")
COMMON = Path("/usr/share/common-licenses")
WITH_FACADE = "libstdc++-6.dll, libgcc_s_dw2-1.dll; inside QorControlC.dll and qor-simulator.exe"


class Part(NamedTuple):
    name: str
    inside: str
    licence: str
    text: str  # its file's name in licences/
    path: Path


def parts(folders):
    """folders: where the fetched ones are."""
    return [
        Part("GCC run-time libraries (libstdc++, libgcc)", WITH_FACADE,
             "GPL 3 or later with the GCC Runtime Library Exception 3.1", "gcc-runtime.txt",
             DEBIAN / "gcc-mingw-w64-i686-posix-runtime/copyright"),
        Part("GNU General Public License 3, to which the exception above is one", "nowhere by itself",
             "-", "GPL-3.txt", COMMON / "GPL-3"),
        Part("mingw-w64 run-time and winpthreads",
             "start-up code in every DLL and program; libwinpthread-1.dll; inside QorControlC.dll "
             "and qor-simulator.exe",
             "Zope Public License 2.1, public domain and others; winpthreads: MIT and BSD",
             "mingw-w64.txt", DEBIAN / "mingw-w64-i686-dev/copyright"),
        Part("Mbed TLS 2.28 (its HAVEGE generator)", "QorControlFacade.dll, QorControlC.dll",
             "Apache License 2.0", "mbedtls.txt", folders["mbedtls"] / "LICENSE"),
        Part("JSON for Modern C++", "qorctl.exe, qor-simulator.exe", "MIT", "nlohmann-json.txt",
             DEBIAN / "nlohmann-json3-dev/copyright"),
        Part("fmt", "qorctl.exe", "MIT with an exception for programs", "fmt.txt",
             DEBIAN / "libfmt-dev/copyright"),
        Part("CLI11", "qorctl.exe", "BSD, 3 clauses", "CLI11.txt", DEBIAN / "libcli11-dev/copyright"),
        Part("cpp-httplib", "qorctl.exe", "MIT", "cpp-httplib.txt", folders["httplib"] / "LICENSE"),
        Part("uPlot", "qorctl.exe, and the pages that it writes", "MIT", "uPlot.txt",
             folders["uplot"] / "LICENSE"),
    ]


def write_licences(folders, target):
    target.mkdir()
    lines = ["Parts of others in this package, where they are, and their licences. The texts are those of",
             "the packages that they came in: they also name files that are not in here.", ""]
    for part in parts(folders):
        (target / part.text).write_bytes(part.path.read_bytes())
        lines += [part.name, f"    in:       {part.inside}", f"    licence:  {part.licence}",
                  f"    text:     {part.text}", ""]
    (target / "README.txt").write_bytes("\r\n".join(lines).encode("ascii"))
