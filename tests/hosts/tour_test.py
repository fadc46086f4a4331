"""The tours through the real library and the simulated QOR: each language sees the same.

usage: tour_test.py tcp|window PROGRAM-FOLDER NODE-FOLDER

The tour in Python runs, too, if QOR_WINDOWS_PYTHON is the path of a python.exe of 32 bits. That in C#
cannot run here; standin_test.py runs both in another way.
"""
import os
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import header
import programs
import tour
from programs import Station, run_node, run_windows, windows_path

AT_ONCE = 4
STEPS, CONNECT_MS = 5, 500
GOOD = {"bootstrap": {"durationMs": CONNECT_MS, "steps": STEPS}}
BAD = {"bootstrap": {"durationMs": 100, "steps": 2, "result": 5}}
EXAMPLES = header.ROOT / "examples"
LIMITS = {"EngineSpeed": (0, 8000), "OilPressure": (0, 10)}
STREAM_MS = 1000
transport, program_folder, node_folder = "tcp", Path("."), Path(".")


def in_c(station):
    return run_windows(program_folder / "hosts_tour_c.exe", windows_path(station.settings))


def in_c_with_microsofts_interface(station):
    return run_windows(program_folder / "hosts_tour_msvc.exe", windows_path(station.settings))


def in_cpp(station):
    return run_windows(program_folder / "hosts_tour_cpp.exe", windows_path(station.settings))


def in_node(station):
    return run_node(node_folder / "tour.mjs", station.folder, windows_path(station.settings),
                    windows_path(program_folder / "QorControlC.dll"))


def in_python(station):
    return run_windows(os.environ["QOR_WINDOWS_PYTHON"], "-B", windows_path(EXAMPLES / "tour.py"),
                       windows_path(station.settings), windows_path(program_folder / "QorControlC.dll"))


HOSTS = {"C": in_c, "C, Microsoft's interface": in_c_with_microsofts_interface, "C++": in_cpp, "Node.js": in_node}
if "QOR_WINDOWS_PYTHON" in os.environ:
    HOSTS["Python"] = in_python
# The class has neither figures of the progress nor names of causes, nor does it count losses.
ON_THE_CLASS = {"C++"}


def without_names_of_causes(lines):
    return [line.rsplit(" ", 1)[0] if line.startswith("  cause: ") else line for line in lines]


def run_host(host, script):
    station = Station(program_folder, transport, script)
    try:
        ended = HOSTS[host](station)
        return ended, tour.parse(ended.output), [(r["id"], r["payload"]) for r in station.requests()]
    finally:
        station.close()


class Tours(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        programs.let_node_run()
        with ThreadPoolExecutor(AT_ONCE) as pool:
            good = {host: pool.submit(run_host, host, GOOD) for host in HOSTS}
            bad = {host: pool.submit(run_host, host, BAD) for host in HOSTS}
        cls.good = {host: result.result() for host, result in good.items()}
        cls.bad = {host: result.result() for host, result in bad.items()}

    def each(self, runs):
        for host, (ended, seen, requests) in runs.items():
            with self.subTest(host):
                yield host, ended, seen, requests

    def test_each_sees_the_same_lines(self):
        for host, ended, seen, _ in self.each(self.good):
            self.assertEqual(0, ended.exit_code, ended.output + ended.errors)
            wanted = tour.whole(tour.codes_of_the_model())
            self.assertEqual(without_names_of_causes(wanted) if host in ON_THE_CLASS else wanted, seen.lines)

    def test_each_is_told_the_same_about_a_failure(self):
        texts = self.good["C"][1].texts
        self.assertEqual(4, len(texts))
        for _, _, seen, _ in self.each(self.good):
            self.assertEqual(texts, seen.texts)
        for text in texts:
            self.assertRegex(text, r"^\S.{9,}\.$")

    def test_each_sees_qors_own_figures_while_it_connects(self):
        figures = [100 * step // STEPS for step in range(1, STEPS + 1)]
        for host, _, seen, _ in self.each(self.good):
            if host not in ON_THE_CLASS:  # a busy machine may skip some; the last comes with the end
                self.assertEqual([figure for figure in figures if figure in seen.progress], seen.progress)
                self.assertGreater(len(seen.progress), 1)

    def test_each_sees_values_of_each_name_flow_in_order_and_none_is_lost(self):
        for _, _, seen, _ in self.each(self.good):
            for name, (low, high) in LIMITS.items():
                values = [value for value in seen.values if value.name == name]
                self.assertGreater(len(values), 1, name)
                self.assertTrue(all(low < value.value < high for value in values))
                times = [value.afterMs for value in values]
                self.assertEqual(sorted(times), times)
                self.assertTrue(all(-100 <= time <= 2 * STREAM_MS for time in times), times)
            self.assertEqual({0}, {value.missed for value in seen.values})

    def test_each_asks_qor_the_same(self):
        wanted = self.good["C"][2]
        self.assertGreater(len(wanted), 9)
        for host, _, _, requests in self.each(self.good):
            if host not in ON_THE_CLASS:
                self.assertEqual(wanted, requests)

    def test_a_connect_that_fails_ends_each_with_its_cause_and_a_code(self):
        for host, ended, seen, _ in self.each(self.bad):
            self.assertEqual(1, ended.exit_code, ended.output + ended.errors)
            name = "" if host in ON_THE_CLASS else " QOR_CONNECT_REPORTED"
            self.assertEqual(["ping: ok", "connect: failed", f"  cause: 11{name}", "  sentence", "  check",
                              "close: ok"], seen.lines[2:])


if __name__ == "__main__":
    transport, *folders = sys.argv[1:4]
    program_folder, node_folder = map(Path, folders)
    del sys.argv[1:]
    unittest.main()
