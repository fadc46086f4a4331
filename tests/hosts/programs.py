"""Starts the tours: Windows programs under Wine, others on this machine."""
import subprocess
import sys
from pathlib import Path

import header

sys.path.insert(0, str(header.ROOT / "tests/system/terminal"))
from station import Station, free_port, windows_path  # noqa: E402  pylint: disable=wrong-import-position

WINE_TEST = header.ROOT / "cmake/wine-test.sh"
WINE_RUN = header.ROOT / "cmake/wine-run.sh"
PATIENCE_S = 120
AT_ONCE = 2  # CTest knows of it: see PROCESSORS
# Node.js cannot write into pipes under Wine, so its output goes through files.
THROUGH_FILES = """@echo off
{command} >{out} 2>{errors} <nul
set code=%errorlevel%
type {errors} 1>&2
echo host ended
exit %code%
"""


class Ended:
    def __init__(self, exit_code, output, errors):
        self.exit_code, self.output, self.errors = exit_code, output, errors


def plain(output):
    return output.decode().replace("\r\n", "\n")


def run(command):
    ended = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                           timeout=PATIENCE_S, check=False)
    return Ended(ended.returncode, plain(ended.stdout), plain(ended.stderr))


def run_windows(program, *arguments, closing="^close: ok"):
    return run([str(WINE_TEST), "--closing", closing, str(program), *arguments])


def run_node(script, folder, *arguments):
    """The script lies beside node.exe; the folder is for the output."""
    out, errors, batch = folder / "host.out", folder / "host.err", folder / "host.bat"
    words = [script.with_name("node.exe"), script]
    command = " ".join(f'"{windows_path(word)}"' for word in words)
    command += "".join(f' "{word}"' for word in arguments)
    text = THROUGH_FILES.format(command=command, out=windows_path(out), errors=windows_path(errors))
    batch.write_text(text.replace("\n", "\r\n"))
    ended = run_windows("cmd", "/c", windows_path(batch), closing="^host ended")
    output = plain(out.read_bytes()) if out.exists() else ""
    return Ended(ended.exit_code, output, ended.errors)


def let_node_run():
    """Node.js wants a newer Windows than the one that Wine is for all others."""
    subprocess.run([str(WINE_RUN), "reg", "add", r"HKCU\Software\Wine\AppDefaults\node.exe", "/v", "Version",
                    "/d", "win10", "/f"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, check=True)
