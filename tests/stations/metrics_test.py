#!/usr/bin/env python3
"""The figures of one server are what happened to it, and in the format that Prometheus wants.

usage: metrics_test.py PROGRAM-FOLDER
"""
import math
import subprocess
import sys
import time
import unittest

from native import wait_until
from server import Events, RpcError, Server

SLOW_MS, REFRESH_MS = 300, 100
CLOCK_STEP_S = 0.02
DIRECT_CTRL, READ = 7, 1
SCRIPT = {"rules": [{"match": {"id": DIRECT_CTRL, "operation": READ, "name": "EngineLoad"},
                     "action": {"delayMs": SLOW_MS}},
                    {"match": {"id": DIRECT_CTRL, "operation": READ, "name": "OilPressure"},
                     "action": {"answer": "refuse"}},
                    {"match": {"id": DIRECT_CTRL, "operation": READ, "name": "BatteryVoltage"},
                     "action": {"then": [{"afterMs": 10, "online": False}]}}]}
programs = ""


class FiguresOfAServer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server(programs, script=SCRIPT).await_start()

    @classmethod
    def tearDownClass(cls):
        try:
            code = cls.server.stop()
            if code != 0:
                raise AssertionError(f"ended with {code}: {cls.server.told()}")
        finally:
            cls.server.close()

    def setUp(self):
        self.before = self.server.figures()

    def since(self, name, **labels):
        """By how much it has grown in this test."""
        before = self.before(name, **labels) if self.before.has(name, **labels) else 0
        return self.server.figures()(name, **labels) - before

    def join(self):
        events = Events(self.server)
        self.addCleanup(events.close)
        return events

    def await_figure(self, value, name):
        wait_until(lambda: self.server.figures()(name) == value, f"{name} {value}")

    def fails(self, method, **params):
        with self.assertRaises(RpcError) as failed:
            self.server.call(method, **params)
        return failed.exception

    def test_please_promtool(self):
        self.server.call("getParamData", name="EngineSpeed")
        self.fails("getParamData", name="Nobody")
        checked = subprocess.run(["promtool", "check", "metrics"], input=self.server.figures().text.encode(),
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60, check=False)
        self.assertEqual((0, ""), (checked.returncode, checked.stdout.decode()))

    def test_count_failures_by_cause_and_refusals_by_reason(self):
        for _ in range(3):
            self.server.call("getParamDescription", name="EngineSpeed")
        for _ in range(2):
            self.assertEqual("unknownName", self.fails("getParamDescription", name="Nobody").data["name"])
        self.assertEqual("refused", self.fails("getParamData", name="OilPressure").data["name"])
        self.assertEqual(-32602, self.fails("getParamDescription", nam="EngineSpeed").code)
        self.assertEqual(-32601, self.fails("getParamDescriptio", name="EngineSpeed").code)
        self.assertEqual(-32005, self.fails("startDirectCtrl", name="ThrottleActuator").code)
        self.assertEqual(6, self.since("qor_requests_total", method="getParamDescription"))
        self.assertEqual(1, self.since("qor_requests_total", method="other"))
        self.assertEqual(2, self.since("qor_request_failures_total", method="getParamDescription"))
        self.assertEqual(1, self.since("qor_request_failures_total", method="getParamData"))
        self.assertEqual(2, self.since("qor_failures_total", cause="unknownName"))
        self.assertEqual(1, self.since("qor_failures_total", cause="refused"))
        for reason in ("invalidParams", "methodNotFound", "forbidden"):
            self.assertEqual(1, self.since("qor_request_refusals_total", reason=reason), reason)

    def test_have_durations_that_are_those_of_the_requests(self):
        begin = time.monotonic()
        for _ in range(3):
            self.server.call("getParamDescription", name="EngineSpeed")
        self.server.call("getParamData", name="EngineLoad")
        elapsed = time.monotonic() - begin
        self.assertEqual(3, self.since("qor_request_duration_seconds_count", method="getParamDescription"))
        slow = self.since("qor_request_duration_seconds_sum", method="getParamData")
        self.assertGreater(elapsed, slow)
        self.assertLess(SLOW_MS / 1000 - CLOCK_STEP_S, slow)
        bounds, counts = zip(*self.server.figures().buckets("getParamData"))
        self.assertEqual(math.inf, bounds[-1])
        self.assertEqual(sorted(counts), list(counts))
        self.assertEqual(1, self.in_bucket("getParamData", 0.5) - self.in_bucket("getParamData", 0.2))
        self.assertEqual(1, self.since("qor_request_duration_seconds_count", method="getParamData"))

    def in_bucket(self, method, bound):
        return self.since("qor_request_duration_seconds_bucket", method=method, le=f"{bound:g}")

    def test_count_the_values_that_a_client_got_and_missed(self):
        events = self.join()
        self.connect()
        names = ["EngineSpeed", "VehicleSpeed", "LambdaVoltage", "CoolantTemperature"]
        # Of what comes at once there is room for one, or for all.
        begin = time.monotonic()
        good, tight = (self.server.call("startParamRead", events.client, names=names, slots=slots)["stream"]
                       for slots in (1000, 1))
        alone_s = time.monotonic() - begin
        wait_until(lambda: len(self.samples(events, tight)) >= 5 and len(self.samples(events, good)) >= 20, "values")
        begin = time.monotonic()
        for stream in (tight, good):
            self.server.call("stopParamRead", events.client, stream=stream)
        alone_s += time.monotonic() - begin
        time.sleep(0.3)
        all_of_them, got = len(self.samples(events, good)), len(self.samples(events, tight))
        self.assertEqual(all_of_them + got, self.since("qor_stream_values_total"))
        self.assertEqual({0}, {missed for *_, missed in self.samples(events, good)})
        # One stream lived a little longer than the other: on a busy machine for several batches.
        more = all_of_them - got - self.since("qor_stream_values_missed_total")
        self.assertIn(more, range(len(names) * (2 + int(alone_s * 1000 / REFRESH_MS))))

    @staticmethod
    def samples(events, stream):
        return [sample for values in events.of("values") if values["stream"] == stream
                for sample in values["samples"]]

    def test_show_who_is_there_and_what_is_held(self):
        events = self.join()
        self.await_figure(1, "qor_clients")
        self.server.call("startParamRead", events.client, names=["EngineSpeed"])
        self.server.call("startDirectCtrl", events.client, name="ThrottleActuator")
        for name in ("qor_streams", "qor_held_actuators"):
            self.await_figure(1, name)
        events.close()
        for name in ("qor_clients", "qor_streams", "qor_held_actuators"):
            self.await_figure(0, name)

    def test_tell_that_the_ecu_was_lost_and_is_back(self):
        self.connect()
        self.lose_the_ecu()
        before = self.since("qor_reconnects_total")
        self.connect()
        wait_until(lambda: self.since("qor_reconnects_total") == before + 1, "a reconnect that is counted")

    def lose_the_ecu(self):
        self.server.call("getParamData", name="BatteryVoltage")
        self.await_figure(0, "qor_ecu_online")

    def connect(self):
        self.server.call("connect", settings={"protocol": 1, "refreshPeriodMs": REFRESH_MS})
        self.await_figure(1, "qor_ecu_online")

    def test_are_for_those_with_the_token(self):
        self.assertEqual(401, self.server.get("/metrics", token="something-else-entirely")[0])
        self.assertEqual(1, self.since("qor_http_responses_total", code="401"))
        self.server.call("pingQor")
        ping = self.server.figures()("qor_last_ping_seconds")
        self.assertEqual(ping * 1000, self.server.call("getServerStatus")["pingMs"])


if __name__ == "__main__":
    programs = sys.argv.pop()
    unittest.main()
