"""qorctl in a real terminal, made natively: Wine's console writes to it and reads its keys."""
import fcntl
import os
import pty
import select
import signal
import struct
import termios
import time
from pathlib import Path

from screen import COLUMNS, ROWS, Screen

WINE_RUN = Path(__file__).resolve().parents[3] / "cmake/wine-run.sh"
PATIENCE_S = 60
CTRL_C = b"\x03"


class Terminal:
    def __init__(self, station, command, *arguments):
        self.screen = Screen()
        self._output = b""
        words = [str(WINE_RUN), str(station.programs / "qorctl.exe"), command,
                 str(station.settings), "--trace", str(station.folder / "qorctl.log"), *arguments]
        self._pid, self._master = pty.fork()
        if self._pid == 0:
            os.environ["TERM"] = "xterm"
            os.execv(words[0], words)
        fcntl.ioctl(self._master, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, COLUMNS, 0, 0))

    def press(self, keys):
        os.write(self._master, keys)

    def text(self):
        """The lines of the screen, blanks as one."""
        return "\n".join(self.screen.text())

    def read(self, seconds):
        """Takes what comes; false at the end."""
        ready, _, _ = select.select([self._master], [], [], seconds)
        try:
            data = os.read(self._master, 1 << 16) if ready else None
        except OSError:  # nobody writes any more
            return False
        if data:
            self._output += data
            self.screen.take(data)
        return data != b""

    def read_until(self, condition):
        deadline = time.monotonic() + PATIENCE_S
        while not condition():
            if time.monotonic() > deadline or not self.read(0.1):
                raise AssertionError("never on the screen; it shows:\n" + self.text())

    def await_text(self, words):
        self.read_until(lambda: words in self.text())

    def exit_code(self):
        """Waits for the end, which is none if qorctl or QOR has crashed: Wine says so right here."""
        deadline = time.monotonic() + PATIENCE_S
        while self.read(0.1):
            if time.monotonic() > deadline:
                raise AssertionError("it does not end; the screen shows:\n" + self.text())
        if b"wine: Unhandled " in self._output:
            raise AssertionError("a crash; the screen shows:\n" + self.text())
        return os.waitstatus_to_exitcode(os.waitpid(self._pid, 0)[1])

    def close(self):
        try:
            os.kill(self._pid, signal.SIGKILL)
            os.waitpid(self._pid, 0)
        except (ProcessLookupError, ChildProcessError):
            pass
        os.close(self._master)
