"""Programs of this machine that the tests start: each is ended with its test, and only those."""
import os
import socket
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from guide import ROOT

PATIENCE_S = 150  # a busy machine may need ten times its usual


def wait_until(condition, what, patience_s=PATIENCE_S):
    """What the condition gives, once that is something. `what` may be a function: for what is known only then."""
    deadline = time.monotonic() + patience_s
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > deadline:
            raise AssertionError(f"never: {what() if callable(what) else what}")
        time.sleep(0.05)


def listens(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


class Folder:
    """A temporary one, in which the command lines of the guide work: "qorctl" is the one of the tests."""

    def __init__(self, programs):
        self._folder = tempfile.TemporaryDirectory(prefix="qor-stations-")
        self.path = Path(self._folder.name)
        self.programs = Path(programs)

    def write(self, name, text):
        (self.path / name).write_text(text, encoding="utf-8")

    def read(self, name):
        path = self.path / name
        return path.read_text(encoding="utf-8") if path.exists() else ""

    def let_qorctl_be(self, more, output):
        """The guide's "qorctl", with more arguments, whose output is kept, too, and whose end is looked at."""
        self._let_be("qorctl", "set -o pipefail\n"
                     f"'{ROOT}/cmake/wine-test.sh' --closing '^[0-9]+ of [0-9]+ steps ok' "
                     f"'{self.programs}/qorctl.exe' \"$@\" {more} 2>'{output}.errors' | tee '{output}'")

    def let_python_be(self, output):
        """The guide's "python", with the package at hand, whose output is kept, too."""
        self._let_be("python", "set -o pipefail\n"
                     f"PYTHONPATH='{ROOT}/tools/python' '{sys.executable}' -B \"$@\" | tee '{output}'")

    def _let_be(self, name, lines):
        script = self.path / "bin" / name
        script.parent.mkdir(exist_ok=True)
        script.write_text(f"#!/bin/bash\n{lines}\n")
        script.chmod(0o755)

    def begin(self, command, log):
        """Starts a command line as in a shell."""
        path = f"{self.path / 'bin'}:{os.environ['PATH']}"
        with open(self.path / log, "ab") as output:
            return subprocess.Popen(["bash", "-o", "pipefail", "-c", command], cwd=self.path,
                                    env={**os.environ, "PATH": path}, stdin=subprocess.DEVNULL, stdout=output,
                                    stderr=subprocess.STDOUT, start_new_session=True)

    def close(self):
        self._folder.cleanup()


def end(process):
    """In order, or else by force, with all that it has started."""
    if process.poll() is None:
        os.killpg(process.pid, 15)
        try:
            process.wait(15)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, 9)
            process.wait()
    return process.returncode
