#!/usr/bin/env python3
"""Runs "qorctl watch" on a terminal, looks at the screen while it runs, and presses Ctrl-C.

usage: terminal_watch_test.py WINE-RUN PROGRAM-FOLDER
"""
import fcntl
import os
import pty
import re
import select
import signal
import socket
import struct
import sys
import tempfile
import termios
import time
import unittest
from pathlib import Path

ROWS, COLUMNS = 24, 100
PATIENCE_S = 60
CTRL_C = b"\x03"
programs = {}

SEQUENCE = re.compile(rb"\x1b\[(\??)([0-9;]*)([A-Za-z])|([\r\n\b])|([^\x1b\r\n\b]+)")


class Screen:
    """What a terminal shows: as much of one as the console of Wine asks for."""

    def __init__(self):
        self.lines = [[" "] * COLUMNS for _ in range(ROWS)]
        self.row = self.column = 0
        self.scrolled = 0
        self._rest = b""

    def take(self, data):
        data = self._rest + data
        at = 0
        while at < len(data):
            match = SEQUENCE.match(data, at)
            if not match:  # the end of a sequence is still to come
                break
            private, numbers, final, control, text = match.groups()
            if text:
                self._write(text.decode(errors="replace"))
            elif control:
                self._control(control)
            elif not private:
                self._sequence([int(n) if n else 1 for n in numbers.split(b";")], final)
            at = match.end()
        self._rest = data[at:]

    def _write(self, text):
        for character in text:
            self.column = min(self.column, COLUMNS - 1)
            self.lines[self.row][self.column] = character
            self.column += 1

    def _control(self, control):
        if control == b"\r":
            self.column = 0
        elif control == b"\b":
            self.column = max(self.column - 1, 0)
        elif self.row + 1 < ROWS:
            self.row += 1
        else:
            self.lines = self.lines[1:] + [[" "] * COLUMNS]
            self.scrolled += 1

    def _sequence(self, numbers, final):
        count = numbers[0]
        if final == b"A":
            self.row = max(self.row - count, 0)
        elif final == b"B":
            self.row = min(self.row + count, ROWS - 1)
        elif final == b"C":
            self.column += count
        elif final == b"D":
            self.column = max(self.column - count, 0)
        elif final == b"H":
            self.row, self.column = count - 1, (numbers[1] if len(numbers) > 1 else 1) - 1
        elif final == b"K":
            self.lines[self.row][self.column:] = [" "] * (COLUMNS - self.column)
        elif final == b"J":
            self.lines = [[" "] * COLUMNS for _ in range(ROWS)]
        elif final != b"m":
            raise ValueError(f"an unknown sequence: {numbers} {final}")

    def text(self):
        return [" ".join("".join(line).split()) for line in self.lines]

    def row_of(self, word):
        return next((line.split() for line in self.text() if line.startswith(word)), None)


class Terminal:
    def __init__(self, command):
        self.screen = Screen()
        self._pid, self._master = pty.fork()
        if self._pid == 0:
            os.environ["TERM"] = "xterm"
            os.execv(command[0], command)
        fcntl.ioctl(self._master, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, COLUMNS, 0, 0))

    def press(self, keys):
        os.write(self._master, keys)

    def read(self, seconds):
        """Takes what comes; false at the end."""
        ready, _, _ = select.select([self._master], [], [], seconds)
        try:
            data = os.read(self._master, 1 << 16) if ready else None
        except OSError:  # nobody writes any more
            return False
        if data:
            self.screen.take(data)
        return data != b""

    def read_until(self, condition):
        deadline = time.monotonic() + PATIENCE_S
        while not condition():
            if time.monotonic() > deadline or not self.read(0.1):
                raise AssertionError("never on the screen; it shows:\n" + "\n".join(self.screen.text()))

    def exit_code(self):
        while self.read(PATIENCE_S):
            pass
        return os.waitstatus_to_exitcode(os.waitpid(self._pid, 0)[1])

    def close(self):
        try:
            os.kill(self._pid, signal.SIGKILL)
            os.waitpid(self._pid, 0)
        except (ProcessLookupError, ChildProcessError):
            pass
        os.close(self._master)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def windows(path):
    return "Z:" + str(path).replace("/", "\\")


class WatchOnATerminal(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="qor-terminal-")
        self.addCleanup(folder.cleanup)
        folder = Path(folder.name)
        (folder / "script.json").write_text(
            '{"at":[{"since":"connect","afterMs":2000,"stall":"OilPressure"}]}')
        (folder / "settings.ini").write_text(
            "[CommonSettings]\n"
            f"QORexecutable={windows(programs['folder'] / 'qor-simulator.exe')}\n"
            f"UseTcp=true\nServerIp=127.0.0.1\nTcpPort={free_port()}\n"
            "[Simulator]\nScript=script.json\nLog=qor.log\nExitWithoutClientMs=30000\n")
        self.log = folder / "qor.log"
        self.terminal = Terminal([programs["wine"], str(programs["folder"] / "qorctl.exe"), "watch",
                                  str(folder / "settings.ini"), "--trace",
                                  str(folder / "trace.log"), "EngineSpeed", "OilPressure"])
        self.addCleanup(self.terminal.close)
        self.screen = self.terminal.screen

    def value_of(self, name):
        row = self.screen.row_of(name)
        return row[1] if row and len(row) > 5 else None

    def test_the_table_is_redrawn_in_place_and_ctrl_c_ends_in_order(self):
        values = set()

        def note_values():
            values.add(self.value_of("EngineSpeed"))
            return len(values - {None, "-"}) >= 5

        self.terminal.read_until(note_values)
        self.terminal.read_until(lambda: self.value_of("OilPressure") == "-")
        self.assertEqual(1, sum(line.startswith("EngineSpeed") for line in self.screen.text()))
        self.assertEqual(1, sum(line.startswith("parameter value unit") for line in self.screen.text()))
        self.assertEqual(0, self.screen.scrolled)
        self.assertNotEqual("-", self.value_of("EngineSpeed"))

        self.terminal.press(CTRL_C)
        self.assertEqual(0, self.terminal.exit_code())
        shown = "\n".join(self.screen.text())
        self.assertIn("ok shut down", shown)
        self.assertIn("5 of 5 steps ok", shown)
        self.assertEqual(1, shown.count("\nEngineSpeed "))
        self.assertIn("ending with code 0", self.log.read_text())


if __name__ == "__main__":
    programs["folder"] = Path(sys.argv.pop()).resolve()
    programs["wine"] = sys.argv.pop()
    unittest.main(verbosity=2)
