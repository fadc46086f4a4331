"""How the real server begins and ends: in order, killed, left alone, refused.

usage: life_test.py tcp|window PROGRAM-FOLDER
"""
import os
import signal
import subprocess
import sys
import threading
import time
import unittest
from pathlib import Path

import package
import stations
from stations import Station, until

from qorcontrol import Closed, LibraryError, NoServer, Qor, QorError, ReadOnly, ServerEnded, errors

QUICK = {"bootstrap": {"durationMs": 100, "steps": 2}}
# A program that begins and is killed while it holds an actuator.
HOST = """
import sys, time
sys.dont_write_bytecode = True
sys.path[:0] = [{folder!r}]
from qorcontrol import Qor
qor = Qor({settings!r}, program={program!r}, trace={trace!r})
qor.connect()
control = qor.direct_control("ThrottleActuator", lease_ms=60000)
control.set(40)
print(qor.pid, flush=True)
{then}
"""
transport, program_folder = "tcp", "."


def is_there(pid):
    """Whether a process runs (and is not one that only waits to be noticed)."""
    try:
        with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as file:
            return file.read().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


class Life(unittest.TestCase):
    def setUp(self):
        self.station = Station(program_folder, transport, QUICK)
        self.addCleanup(self.station.close)
        self.addCleanup(self.nothing_is_left)

    def nothing_is_left(self):
        left = until(lambda: not stations.uses_settings(self.station))
        for pid in stations.uses_settings(self.station):
            os.kill(pid, signal.SIGKILL)
        self.assertTrue(left, "a process was left behind")

    def start(self, **more):
        qor = stations.start(self.station, **more)
        self.addCleanup(qor.close)
        return qor

    def test_the_end_of_with_ends_server_and_qor_in_order(self):
        with self.start() as qor:
            qor.connect()
            pid = qor.pid
        self.assertEqual(0, qor._link.exit_code)
        self.assertFalse(is_there(pid))
        self.assertTrue(any("QOR has ended" in line for line in qor.server_output), qor.server_output)
        with self.assertRaises(Closed):
            qor.ping_qor()

    def test_an_actuator_is_given_back_before_the_end(self):
        with self.start() as qor:
            qor.connect()
            qor.start_direct_ctrl("ThrottleActuator")
            qor.write("ThrottleActuator", 7)
        self.assertEqual([stations.START, stations.WRITE, stations.STOP], stations.controls(self.station))

    def test_a_killed_server_fails_every_waiting_call_at_once(self):
        qor = self.start()
        qor.connect()
        came, begun = [], threading.Barrier(5)

        def call(work):
            begun.wait()
            try:
                while True:
                    work()
            except QorError as error:
                came.append((type(error), time.monotonic()))
        stream = qor.stream(["EngineSpeed"])
        threads = [threading.Thread(target=call, args=(work,)) for work in
                   (qor.ping_qor, lambda: qor.read("EngineSpeed"), lambda: next(stream), qor.get_dtc_by_status)]
        for thread in threads:
            thread.start()
        begun.wait()
        time.sleep(0.3)
        killed = time.monotonic()
        os.kill(qor.pid, signal.SIGKILL)
        for thread in threads:
            thread.join(10)
        self.assertEqual([ServerEnded] * 4, [kind for kind, _ in came])
        self.assertLess(max(when for _, when in came) - killed, 2)
        self.end_qor()

    def end_qor(self):
        """The one whose server was killed waits for another."""
        for pid in stations.uses_settings(self.station):
            os.kill(pid, signal.SIGKILL)

    def run_host(self, then):
        text = HOST.format(folder=str(package.FOLDER), settings=str(self.station.settings),
                           program=stations.program_of(program_folder), then=then,
                           trace=str(self.station.folder / "trace.log"))
        host = subprocess.Popen([sys.executable, "-c", text], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
        self.addCleanup(host.stdout.close)
        self.addCleanup(host.wait)
        return host, int(host.stdout.readline())

    def test_a_killed_program_leaves_no_server_and_no_actuator_behind(self):
        host, pid = self.run_host("time.sleep(60)")
        self.assertTrue(is_there(pid))
        host.kill()
        host.wait()
        self.assertTrue(until(lambda: not is_there(pid)), "the server still runs")
        self.assertEqual(stations.STOP, stations.controls(self.station)[-1])

    def test_a_program_that_just_ends_ends_its_server_in_order(self):
        host, pid = self.run_host("")
        self.assertEqual(0, host.wait(stations.PATIENCE_S))
        self.assertFalse(is_there(pid))
        self.assertEqual(stations.STOP, stations.controls(self.station)[-1])

    def test_ctrl_c_is_this_program_s_affair(self):
        host, pid = self.run_host("""
try:
    while True:
        qor.ping_qor()
except KeyboardInterrupt:
    control.set(3)
    control.stop()
    print("given back", flush=True)
""")
        time.sleep(0.5)
        os.kill(host.pid, signal.SIGINT)
        self.assertEqual(b"given back\n", host.stdout.readline())
        self.assertEqual(0, host.wait(stations.PATIENCE_S))
        self.assertFalse(is_there(pid))

    def test_one_that_only_looks_refuses_what_changes(self):
        qor = self.start(read_only=True)
        for change in (qor.connect, lambda: qor.write("IdleSpeedTarget", 900), qor.clear_dtc,
                       lambda: qor.direct_control("ThrottleActuator")):
            with self.assertRaises(ReadOnly):
                change()
        self.assertGreaterEqual(qor.read("IdleSpeedTarget"), 0)
        self.assertTrue(qor.get_server_status().read_only)

    def test_settings_that_are_none_are_told_within_seconds(self):
        begin = time.monotonic()
        with self.assertRaises(NoServer) as caught:
            Qor(self.station.folder / "none.ini", program=stations.program_of(program_folder))
        self.assertIn("none.ini", str(caught.exception))
        self.assertLess(time.monotonic() - begin, 15)

    def test_a_qor_that_another_one_uses_is_not_taken_away(self):
        qor = self.start()
        with self.assertRaises(NoServer) as caught:
            stations.start(self.station)
        self.assertRegex(str(caught.exception), r"exit code 5\b")
        qor.ping_qor()

    def test_a_killed_qor_is_told_as_the_cause_and_the_server_goes_on(self):
        qor = self.start()
        qor.connect()
        for pid in stations.uses_settings(self.station):
            if b"-external_operating" in Path(f"/proc/{pid}/cmdline").read_bytes():
                os.kill(pid, signal.SIGKILL)

        def cause():
            try:
                qor.ping_qor(300)
            except LibraryError as error:
                return error
            return None
        error = until(cause)
        self.assertIsInstance(error, (errors.QorSilent, errors.NoConnection, errors.AgentBusy))
        self.assertTrue(error.check)
        self.assertRegex(qor.get_state().version, r"^\d+\.\d+")

    def test_the_owner_ends_the_server_by_its_method_too(self):
        qor = self.start()
        qor.shutdown_server()
        self.assertTrue(until(lambda: qor.ended is not None))
        with self.assertRaises(ServerEnded):
            qor.ping_qor()


if __name__ == "__main__":
    transport, program_folder = sys.argv[1:3]
    del sys.argv[1:3]
    stations.warm_wine()
    unittest.main()
