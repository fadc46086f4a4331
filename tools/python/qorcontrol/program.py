"""Where the server's program is, and how it is called."""
from __future__ import annotations

import os
import re
import shlex
import shutil
from pathlib import Path
from typing import List, Optional, Sequence, Union

from .errors import NoServer

PROGRAM = "qorctl.exe"
VARIABLE = "QORCTL"
Paths = Union[str, "os.PathLike[str]"]
Program = Union[Paths, Sequence[Paths]]


def command_of(program: Optional[Program]) -> List[str]:
    """The words that start qorctl: those given, those of the variable QORCTL, or qorctl.exe where it is found.

    It is looked for above this package, so that a wheel or folder in the package's own folder finds `bin`,
    and in PATH. Where Windows programs need a helper the words begin with that: ["wine", "/path/qorctl.exe"].
    """
    if program is not None:
        words = [program] if isinstance(program, (str, os.PathLike)) else list(program)
        return [os.fspath(word) for word in words]
    told = os.environ.get(VARIABLE)
    if told:
        return [told] if os.path.isfile(told) else shlex.split(told, posix=os.name != "nt")
    found = beside() or shutil.which("qorctl") or shutil.which(PROGRAM)
    if not found:
        raise NoServer("qorctl.exe was not found.",
                       check=f"Give its path as program, or in the variable {VARIABLE}, or add its folder to PATH.")
    needs_help = os.name != "nt" and found.endswith(".exe")
    return ["wine", found] if needs_help else [found]


def beside() -> Optional[str]:
    """In `bin` beside a folder above this file."""
    for folder in list(Path(__file__).absolute().parents)[1:5]:
        candidate = folder / "bin" / PROGRAM
        if candidate.is_file():
            return str(candidate)
    return None


def path_for(path: Paths) -> str:
    """A path as the server understands it: whole, and in Windows's words, as Wine shows the file system."""
    text = os.fspath(path)
    if os.name == "nt":
        return os.path.abspath(text)
    if re.match(r"[A-Za-z]:[\\/]", text):
        return text
    return "Z:" + os.path.abspath(text).replace("/", "\\")
