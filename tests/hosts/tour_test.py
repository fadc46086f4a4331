"""The tours through the real library and the simulated QOR: each language sees the same.

usage: tour_test.py tcp|window PROGRAM-FOLDER NODE-FOLDER PACKAGE-FOLDER

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

STEPS, CONNECT_MS = 5, 500
REPORTED = -2  # QOR's word for a connect that failed
GOOD = {"bootstrap": {"durationMs": CONNECT_MS, "steps": STEPS}}
BAD = {"bootstrap": {"durationMs": 100, "steps": 2, "result": REPORTED}}
EXAMPLES = header.ROOT / "examples"
LIMITS = {"EngineSpeed": (0, 8000), "OilPressure": (0, 10)}
STREAM_MS, REFRESH_MS = 1000, 100
CONNECT, ONLINE_QUERY = 2, "02000000"  # the record, and its mode when it only asks
MODE = slice(48, 56)
transport, program_folder, node_folder, package_folder = "tcp", Path("."), Path("."), Path(".")


def in_c(station):
    return run_windows(program_folder / "hosts_tour_c.exe", windows_path(station.settings))


def in_c_with_microsofts_interface(station):
    return run_windows(package_folder / "bin/hosts_tour_msvc.exe", windows_path(station.settings))


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


def requests_of(station):
    """Without the queries whether the ECU is online, which come by the clock."""
    return [(request["id"], request["payload"]) for request in station.requests()
            if request["id"] != CONNECT or request["payload"][MODE] != ONLINE_QUERY]


def run_host(host, script):
    station = Station(program_folder, transport, script)
    try:
        ended = HOSTS[host](station)
        return ended, tour.parse(ended.output), requests_of(station)
    finally:
        station.close()


class Tours(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        programs.let_node_run()
        with ThreadPoolExecutor(programs.AT_ONCE) as pool:
            good = {host: pool.submit(run_host, host, GOOD) for host in HOSTS}
            bad = {host: pool.submit(run_host, host, BAD) for host in HOSTS}
        cls.good = {host: result.result() for host, result in good.items()}
        cls.bad = {host: result.result() for host, result in bad.items()}

    def check_all(self, runs, check, leave_out=()):
        for host, (ended, seen, requests) in runs.items():
            if host not in leave_out:
                with self.subTest(host):
                    check(host, ended, seen, requests)

    def test_each_sees_the_same_lines(self):
        def check(host, ended, seen, _):
            self.assertEqual(0, ended.exit_code, ended.output + ended.errors)
            wanted = tour.whole(tour.codes_of_the_model())
            self.assertEqual(without_names_of_causes(wanted) if host in ON_THE_CLASS else wanted, seen.lines)
        self.check_all(self.good, check)

    def test_each_is_told_the_same_about_a_failure(self):
        texts = self.good["C"][1].texts
        self.assertEqual(4, len(texts))
        for text in texts:
            self.assertRegex(text, r"^\S.{9,}\.$")
        self.check_all(self.good, lambda host, ended, seen, _: self.assertEqual(texts, seen.texts))

    def test_each_sees_qors_own_figures_while_it_connects(self):
        figures = [100 * step // STEPS for step in range(1, STEPS + 1)]

        def check(_host, _ended, seen, _requests):  # a busy machine may skip some
            self.assertEqual([figure for figure in figures if figure in seen.progress], seen.progress)
            self.assertGreater(len(seen.progress), 1)
            self.assertEqual(figures[-1], seen.progress[-1])
        self.check_all(self.good, check, ON_THE_CLASS)

    def test_each_sees_values_of_each_name_flow_in_order_and_none_is_lost(self):
        def check(_host, _ended, seen, _requests):
            for name, (low, high) in LIMITS.items():
                values = [value for value in seen.values if value.name == name]
                self.assertGreater(len(values), 1, name)
                self.assertTrue(all(low < value.value < high for value in values))
                times = [value.afterMs for value in values]
                self.assertEqual(sorted(times), times)
                self.assertTrue(all(-REFRESH_MS <= time <= 2 * STREAM_MS for time in times), times)
            self.assertEqual({0}, {value.missed for value in seen.values})
        self.check_all(self.good, check)

    def test_each_asks_qor_the_same(self):
        wanted = self.good["C"][2]
        self.assertGreater(len(wanted), 9)
        self.check_all(self.good, lambda host, ended, seen, requests: self.assertEqual(wanted, requests),
                       ON_THE_CLASS)

    def test_a_connect_that_fails_ends_each_with_its_cause_and_a_code(self):
        def check(host, ended, seen, _):
            self.assertEqual(1, ended.exit_code, ended.output + ended.errors)
            name = "" if host in ON_THE_CLASS else " QOR_CONNECT_REPORTED"
            self.assertEqual(["ping: ok", "connect: failed", f"  cause: 11{name}", "  sentence", "  check",
                              "close: ok"], seen.lines[2:])
        self.check_all(self.bad, check)


if __name__ == "__main__":
    transport, *folders = sys.argv[1:5]
    program_folder, node_folder, package_folder = map(Path, folders)
    del sys.argv[1:]
    unittest.main()
