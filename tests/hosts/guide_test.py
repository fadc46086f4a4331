"""The examples of the guide for C and of the quick start do what they say.

usage: guide_test.py tcp|window PROGRAM-FOLDER NODE-FOLDER
"""
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import programs
from programs import Station, run_node, run_windows, windows_path

SCRIPT = {"bootstrap": {"durationMs": 450, "steps": 3}}
BOX = {"caption": "Ignition", "text": "Is it on?", "type": 4}
REFUSAL = {"match": {"id": 7}, "action": {"answer": "refuse"}}
SEEN = r"^EngineSpeed = \d{3}\n$"
transport, program_folder, node_folder = "tcp", Path("."), Path(".")


def guide_in_c(station):
    return run_windows(program_folder / "hosts_guide_c.exe", windows_path(station.settings),
                       closing="^close: QOR_OK")


def first_in_c(station):
    return run_windows(program_folder / "hosts_first_c.exe", windows_path(station.settings),
                       closing="^(EngineSpeed|QOR_)")


def first_in_node(station):
    return run_node(node_folder / "first.mjs", station.folder, windows_path(station.settings),
                    windows_path(program_folder / "QorControlC.dll"))


def run_host(host, more):
    """How it ended, and the log of QOR."""
    station = Station(program_folder, transport, {**SCRIPT, **more})
    try:
        return host(station), (station.folder / "qor.log").read_text()
    finally:
        station.close()


class Guide(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        programs.let_node_run()
        with ThreadPoolExecutor(programs.AT_ONCE) as pool:
            runs = {name: pool.submit(run_host, *run) for name, run in {
                "guide": (guide_in_c, {"at": [{"since": "connect", "afterMs": 1500, "messageBox": BOX}]}),
                "c": (first_in_c, {}), "node": (first_in_node, {}),
                "failure": (first_in_c, {"rules": [REFUSAL]}),
                "failure in node": (first_in_node, {"rules": [REFUSAL]})}.items()}
        cls.runs = {name: run.result() for name, run in runs.items()}

    def test_the_pieces_of_the_guide_for_c_work(self):
        ended, log = self.runs["guide"]
        self.assertEqual(0, ended.exit_code, ended.output + ended.errors)
        for line in ("QOR asks: Ignition: Is it on?", "66 after ", "EC0417-000293", "Engine speed"):
            self.assertIn("\n" + line, ended.output)
        self.assertIn("CONNECT-type(1): [", ended.errors)  # the log
        self.assertIn("the user chose 6", log)

    def test_the_first_value_comes_in_c_and_in_node(self):
        for host in ("c", "node"):
            ended, _ = self.runs[host]
            self.assertEqual(0, ended.exit_code, ended.output + ended.errors)
            self.assertRegex(ended.output, SEEN)

    def test_the_first_programs_tell_why_there_is_no_value(self):
        for run in ("failure", "failure in node"):
            ended, _ = self.runs[run]
            self.assertNotEqual(0, ended.exit_code)
            sentence, *check = ended.output.splitlines()
            self.assertEqual("QOR_REFUSED: QOR refused the request.", sentence)
        self.assertRegex(check[0], r"^  See in QOR whether the ECU is online .*\.$")


if __name__ == "__main__":
    transport, *folders = sys.argv[1:4]
    program_folder, node_folder = map(Path, folders)
    del sys.argv[1:]
    unittest.main()
