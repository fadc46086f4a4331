"""Runs "qorctl watch" on a terminal, looks at the screen while it runs, and presses Ctrl-C.

usage: watch_test.py PROGRAM-FOLDER
"""
import sys
import unittest

from station import Station
from terminal import CTRL_C, Terminal

programs = ""


class WatchOnATerminal(unittest.TestCase):
    transport = "tcp"

    def setUp(self):
        script = {"at": [{"since": "connect", "afterMs": 2000, "stall": "OilPressure"}]}
        self.station = Station(programs, self.transport, script)
        self.addCleanup(self.station.close)
        self.terminal = Terminal(self.station, "watch", "EngineSpeed", "OilPressure")
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
        shown = self.terminal.text()
        self.assertIn("ok shut down", shown)
        self.assertIn("5 of 5 steps ok", shown)
        self.assertEqual(1, shown.count("\nEngineSpeed "))
        self.assertIn("ending with code 0", (self.station.folder / "qor.log").read_text())


class WatchOverWindowMessages(WatchOnATerminal):
    transport = "window"


if __name__ == "__main__":
    programs = sys.argv.pop()
    unittest.main()
