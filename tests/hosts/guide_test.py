"""The examples of the guide for C and of the quick start do what they say.

usage: guide_test.py tcp|window PROGRAM-FOLDER NODE-FOLDER
"""
import sys
import unittest
from pathlib import Path

import programs
from programs import Station, run_node, run_windows, windows_path

SCRIPT = {"bootstrap": {"durationMs": 300, "steps": 3}}
BOX = {"caption": "Ignition", "text": "Is it on?", "type": 4}
SEEN = r"^EngineSpeed = \d{3}\n$"
transport, program_folder, node_folder = "tcp", Path("."), Path(".")


class Guide(unittest.TestCase):
    def station(self, script=None):
        station = Station(program_folder, transport, {**SCRIPT, **(script or {})})
        self.addCleanup(station.close)
        return station

    def test_the_pieces_of_the_guide_for_c_work(self):
        station = self.station({"at": [{"since": "connect", "afterMs": 500, "messageBox": BOX}]})
        ended = run_windows(program_folder / "hosts_guide_c.exe", windows_path(station.settings),
                            closing="^close: QOR_OK")
        self.assertEqual(0, ended.exit_code, ended.output + ended.errors)
        for line in ("QOR asks: Ignition: Is it on?", "66 after ", "EC0417-000293", "Engine speed"):
            self.assertIn("\n" + line, ended.output)
        self.assertIn("CONNECT-type(1): [", ended.errors)  # the log
        self.assertIn("the user chose 6", (station.folder / "qor.log").read_text())

    def test_the_first_value_comes_in_c(self):
        ended = run_windows(program_folder / "hosts_first_c.exe", windows_path(self.station().settings),
                            closing="^EngineSpeed = ")
        self.assertEqual(0, ended.exit_code, ended.errors)
        self.assertRegex(ended.output, SEEN)

    def test_the_first_value_comes_in_node(self):
        programs.let_node_run()
        station = self.station()
        ended = run_node(node_folder / "first.mjs", station.folder, windows_path(station.settings),
                         windows_path(program_folder / "QorControlC.dll"))
        self.assertEqual(0, ended.exit_code, ended.output + ended.errors)
        self.assertRegex(ended.output, SEEN)

    def test_the_first_program_tells_why_there_is_no_value(self):
        station = self.station({"rules": [{"match": {"name": "EngineSpeed"}, "action": {"answer": "wrongName"}}]})
        ended = run_windows(program_folder / "hosts_first_c.exe", windows_path(station.settings),
                            closing="^QOR_")
        self.assertNotEqual(0, ended.exit_code)
        self.assertRegex(ended.output, r"^QOR_[A-Z_]+: \S.*\.\n$")


if __name__ == "__main__":
    transport, *folders = sys.argv[1:4]
    program_folder, node_folder = map(Path, folders)
    del sys.argv[1:]
    unittest.main()
