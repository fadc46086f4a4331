"""Ctrl-C in a real terminal ends qorctl's work in order. usage: interrupt_test.py PROGRAM-FOLDER"""
import sys
import time
import unittest

from station import Station
from terminal import CTRL_C, Terminal

CONNECT, SHUTDOWN, DIRECT_CONTROL = 2, 4, 7
STOP_CONTROL = "03000000"
programs = ""


class Interrupt(unittest.TestCase):
    transport = "tcp"

    def open(self, script, command, *arguments, lines=None):
        self.station = Station(programs, self.transport, script)
        self.addCleanup(self.station.close)
        if lines is not None:
            (self.station.folder / "lines.txt").write_text(lines)
            arguments += (str(self.station.folder / "lines.txt"),)
        self.terminal = Terminal(self.station, command, *arguments)
        self.addCleanup(self.terminal.close)
        return self.terminal

    def await_request(self, holds):
        end = time.monotonic() + 60
        while not any(holds(record) for record in self.station.requests()):
            self.assertLess(time.monotonic(), end, "the request does not come")
            self.terminal.read(0.05)  # a terminal that nobody reads holds up who writes to it

    def test_a_connect_is_cancelled_and_qor_shut_down(self):
        script = {"bootstrap": {"result": None, "durationMs": 100, "steps": 2}}
        terminal = self.open(script, "connect")
        terminal.await_text("QOR reports progress")
        terminal.press(CTRL_C)
        self.assertEqual(1, terminal.exit_code(), terminal.text())
        self.assertIn("FAILED connect", terminal.text())
        self.assertIn("cause: cancelled: ", terminal.text())
        self.assertIn("ok shut down", terminal.text())
        self.assertEqual([CONNECT, SHUTDOWN], [r["id"] for r in self.station.requests()][-2:])

    def test_what_is_cancelled_shows_no_cause_of_an_earlier_failure(self):
        terminal = self.open(None, "batch", "--keep-going", lines="get Nobody\nsleep 60000\n")
        terminal.await_text("cause: unknownName")
        terminal.press(CTRL_C)
        self.assertEqual(1, terminal.exit_code(), terminal.text())
        cancelled = terminal.text().split("FAILED sleep 60000")[1]
        self.assertIn("cancelled with Ctrl-C", cancelled)
        self.assertNotIn("cause:", cancelled)

    def test_an_actuator_that_is_held_is_given_back(self):
        terminal = self.open(None, "start-control", "CoolingFan", "--hold", "60")
        self.await_request(lambda record: record["id"] == DIRECT_CONTROL)
        terminal.press(CTRL_C)
        self.assertEqual(0, terminal.exit_code(), terminal.text())
        controls = [r for r in self.station.requests() if r["id"] == DIRECT_CONTROL]
        self.assertEqual(2, len(controls))
        self.assertIn(STOP_CONTROL, controls[1]["payload"])

    def stops(self):
        return [r for r in self.station.requests()
                if r["id"] == DIRECT_CONTROL and STOP_CONTROL in r["payload"]]

    def test_a_batch_gives_back_what_it_took(self):
        terminal = self.open(None, "batch",
                             lines="start-control ThrottleActuator\nset ThrottleActuator 40\n"
                                   "sleep 20000\n")
        terminal.await_text("ok set ThrottleActuator 40")
        terminal.press(CTRL_C)
        self.assertEqual(1, terminal.exit_code(), terminal.text())
        self.assertIn("ok give back ThrottleActuator", terminal.text())
        self.assertEqual(1, len(self.stops()))

    def test_the_second_ends_it_at_once_and_tells_what_is_still_held(self):
        # QOR hangs. It has the same terminal, and goes with it.
        script = {"rules": [{"match": {"id": DIRECT_CONTROL, "operation": 3},
                             "action": {"hangMs": 10000}}]}
        terminal = self.open(script, "batch",
                             lines="start-control ThrottleActuator\nsleep 60000\n")
        terminal.await_text("ok start-control ThrottleActuator")
        terminal.press(CTRL_C)
        terminal.await_text("FAILED STOP_DIRECTCTRL")  # and it asks again
        terminal.press(CTRL_C)
        self.assertEqual(4, terminal.exit_code(), terminal.text())
        lines = [line for line in terminal.text().split("\n") if line]
        # The terminal's own "^C" may stand before it.
        self.assertRegex(lines[-1], r"^(\^C)*qorctl: NOT GIVEN BACK, perhaps still under direct control: "
                                    "ThrottleActuator$")
        self.assertNotIn("shut down", terminal.text())

    def test_without_a_time_an_actuator_is_held_until_then(self):
        terminal = self.open(None, "start-control", "CoolingFan")
        terminal.await_text("CoolingFan is held until Ctrl-C")
        time.sleep(1)
        self.assertEqual([], self.stops())
        terminal.press(CTRL_C)
        self.assertEqual(0, terminal.exit_code(), terminal.text())
        self.assertEqual(1, len(self.stops()))


class InterruptOverWindowMessages(Interrupt):
    transport = "window"


if __name__ == "__main__":
    programs = sys.argv.pop()
    unittest.main()
