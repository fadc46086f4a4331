"""Every operation of the package through the real server and the simulated QOR: with a server of one's own, and with
one that was joined.

usage: operations_test.py tcp|window PROGRAM-FOLDER
"""
import inspect
import json
import re
import sys
import threading
import time
import unittest

import package  # noqa: F401
import stations
from stations import Station, until, windows_path

from qorcontrol import (BadArgument, BoxEvent, Cancelled, ConnectReported, ConnectSettings, ControlEvent,
                        ControlLost, LogEvent, MethodFigures, Qor, RefusedByQor, RefusedByServer, StateEvent,
                        Taken, UnknownName, operations)

SLOW = {"bootstrap": {"durationMs": 1500, "steps": 5}}
QUICK = {"bootstrap": {"durationMs": 200, "steps": 4}}
FAILING = {"bootstrap": {"durationMs": 100, "steps": 2, "result": -2}}
BOX = {"caption": "Ignition", "text": "Is it on?", "type": 4}
YES = 6
model = json.loads(stations.MODEL.read_text(encoding="utf-8"))
transport, program_folder = "tcp", "."


def parameter(name):
    return next(each for each in model["parameters"] if each["name"] == name)


class Joined:
    """One server with a client of each kind; the tests are those of the subclasses' `qor`."""

    @classmethod
    def setUpClass(cls):
        cls.station = Station(program_folder, transport, QUICK)
        cls.addClassCleanup(cls.station.close)
        names = cls.station.folder / "names.txt"
        names.write_text("EngineSpeed\nIgnitionMap\nNotThere\n")
        cls.owner = stations.start(cls.station, names=names, listen="127.0.0.1:0")
        cls.addClassCleanup(cls.owner.close)
        cls.guest = Qor.attach(cls.owner.url)
        cls.addClassCleanup(cls.guest.close)
        cls.owner.connect()


class Either:
    def test_state_path_and_ping(self):
        state = self.qor.get_state()
        self.assertTrue(state.is_ecu_online)
        self.assertEqual(("WorkingPage", "ReferencePage"), (state.ram_segment, state.rom_segment))
        self.assertTrue(self.qor.get_qor_executable_path().endswith("qor-simulator.exe"))
        self.qor.ping_qor()

    def test_connect_tells_qor_s_figures_and_the_settings_arrive(self):
        seen = []
        self.qor.connect(ConnectSettings(can_baud_rate=0x12345678, refresh_period_ms=100), progress=seen.append)
        figures = [told.figure for told in seen if told.figure >= 0]
        self.assertEqual(sorted(figures), figures)
        self.assertGreater(figures[-1], 0)
        self.assertTrue(any("78563412" in request["payload"] for request in self.station.requests()
                            if request["id"] == stations.CONNECT))

    def test_a_parameter_is_described(self):
        told = self.qor.get_param_description("IgnitionMap")
        wanted = parameter("IgnitionMap")
        self.assertEqual(("IgnitionMap", wanted["description"], wanted["unit"], wanted["group"], True), told)

    def test_numbers_are_read_and_written(self):
        self.qor.write("IdleSpeedTarget", 912.5)
        self.assertEqual([[912.5]], self.qor.get_param_data_at_once(["IdleSpeedTarget"]))
        self.assertEqual(912.5, self.qor.read("IdleSpeedTarget"))

    def test_a_map_is_read_and_written_with_its_axes(self):
        data = self.qor.get_param_data("BoostMap")
        wanted = parameter("BoostMap")
        self.assertEqual(30, len(data.values + data.second + data.third) - len(wanted["x"]) - len(wanted["y"]))
        changed = data._replace(third=[each + 1 for each in data.third])
        self.qor.set_param_data("BoostMap", *changed)
        time.sleep(0.3)  # past the cache
        self.assertEqual(changed, self.qor.get_param_data("BoostMap"))

    def test_texts_are_read_and_written(self):
        self.assertEqual(("EC0417-000293", b"EC0417-000293"), self.qor.get_param_data_as_string("EcuSerialNumber"))
        self.qor.set_dynamic_data("CalibrationId", "CAL-7")
        time.sleep(0.3)
        self.assertEqual("CAL-7", self.qor.get_param_data_as_string("CalibrationId").text)

    def test_several_are_read_at_once(self):
        speed, trim = self.qor.get_param_data_at_once(["EngineSpeed", "CylinderTrim"])
        self.assertTrue(0 < speed[0] < 8000)
        self.assertEqual(parameter("CylinderTrim")["values"], trim)

    def test_an_unknown_name_and_a_value_outside_the_limits_are_exceptions_of_their_causes(self):
        with self.assertRaises(UnknownName) as caught:
            self.qor.read("NoSuchName")
        self.assertEqual(("unknownName", "getParamData"), (caught.exception.cause, caught.exception.method))
        self.assertRegex(caught.exception.check, r"^\S.{9,}\.$")
        self.assertGreaterEqual(caught.exception.elapsed_ms, 0)
        with self.assertRaises(RefusedByQor):
            self.qor.write("IdleSpeedTarget", 99999)
        with self.assertRaises(BadArgument):
            self.qor.read("EngineSpeed", timeout_ms=-1)

    def test_names_are_those_of_the_list_and_those_that_were_used(self):
        self.qor.read("KnockRetard")
        self.qor.get_param_description("EngineSpeed")
        names = {each.name: each for each in self.qor.get_param_names()}
        self.assertLessEqual({"EngineSpeed", "IgnitionMap", "KnockRetard"}, set(names))
        self.assertEqual((True, "Engine speed", "1/min"), (names["EngineSpeed"].described,
                         names["EngineSpeed"].meaning, names["EngineSpeed"].unit))

    def test_the_page_is_switched_and_the_reference_page_is_not_written(self):
        state = self.qor.get_state()
        self.qor.set_ecu_segment(state.rom_segment)
        try:
            with self.assertRaises(RefusedByQor):
                self.qor.write("MaxEngineSpeed", 6000)
        finally:
            self.qor.set_ecu_segment(state.ram_segment)

    def test_an_actuator_is_driven_and_given_back(self):
        before = len(stations.controls(self.station))
        with self.qor.direct_control("ThrottleActuator", lease_ms=1000) as throttle:
            throttle.set(30)
            self.assertEqual(30, throttle.get())
            throttle.set_text("12.5")
            time.sleep(1.5)  # longer than the lease
            self.assertEqual(12.5, throttle.get())
            self.assertIsNone(throttle.lost)
            self.assertIn(("ThrottleActuator", True), self.qor.get_server_status().controls)
        self.assertEqual([stations.START, stations.WRITE, stations.STOP], stations.controls(self.station)[before:])
        self.assertEqual([[0]], self.qor.get_param_data_at_once(["ThrottleActuator"]))

    def test_an_actuator_whose_lease_is_over_is_given_back_by_the_server(self):
        events = self.qor.events(ControlEvent, timeout=stations.PATIENCE_S)
        self.qor.start_direct_ctrl("PurgeValve", lease_ms=300)
        own = (event for event in events if event.name == "PurgeValve")
        self.assertEqual([(True, True), (False, True)], [next(own)[1:], next(own)[1:]])
        with self.assertRaises(RefusedByQor):
            self.qor.write("PurgeValve", 3)

    def test_an_actuator_is_lost_when_the_other_one_connects_the_ecu_anew(self):
        with self.qor.direct_control("EgrValve") as valve:
            valve.set(5)
            self.other.connect()
            self.assertTrue(until(lambda: valve.lost))
            with self.assertRaises(ControlLost):
                valve.set(6)

    def test_an_actuator_that_the_other_one_holds_is_taken(self):
        with self.other.direct_control("IdleValve"):
            with self.assertRaises(Taken):
                self.qor.start_direct_ctrl("IdleValve")

    def test_kwp_and_can(self):
        self.assertEqual((b"\x5a\x90TESTVEHICLE000042", False), self.qor.send_kwp_command(0x1A, b"\x90"))
        self.assertTrue(self.qor.send_kwp_command(0x27, b"\x02").failed)
        self.qor.connect_can_bus(250000)
        self.qor.send_can_bus_msg(0x200, 0, b"\x2a\x01")
        self.assertEqual([(0x201, -40), (0x999, -1)], self.qor.get_can_bus_data([0x201, 0x999]))

    def test_values_stream_in_order_with_nothing_missed(self):
        seen = {"EngineSpeed": [], "OilPressure": []}
        with self.qor.stream(list(seen), timeout=stations.PATIENCE_S) as stream:
            for sample in stream:
                seen[sample.name].append(sample)
                if all(len(samples) >= 4 for samples in seen.values()):
                    break
        for samples in seen.values():
            times = [sample.time_ms for sample in samples]
            self.assertEqual(sorted(times), times)
        self.assertEqual(0, stream.missed)
        self.assertTrue(all(0 < sample.value < 8000 for sample in seen["EngineSpeed"]))

    def test_a_stream_of_what_does_not_exist_is_not_begun(self):
        with self.assertRaises(UnknownName):
            self.qor.stream(["EngineSpeed", "NoSuchName"])

    def test_trouble_codes_are_read_streamed_and_cleared(self):
        with self.qor.dtc_stream(period_ms=100, timeout=stations.PATIENCE_S) as stream:
            first = next(stream)
            self.assertEqual(first, self.qor.get_dtc_by_status())
            self.assertTrue(all(len(code.texts) == 4 for code in first))
            self.qor.clear_dtc()
            if first:  # the other kind of client has been here before
                self.assertEqual([], next(stream))
            self.assertEqual([], self.qor.get_dtc_by_status())

    def test_the_trace_is_followed(self):
        with self.qor.trace_stream(timeout=stations.PATIENCE_S) as trace:
            self.qor.get_param_data_at_once(["KnockThreshold"])
            for line in trace:
                if "KnockThreshold" in line:
                    break
        self.assertEqual(0, trace.missed)

    def test_the_log_tells_of_a_failure(self):
        with self.qor.events(LogEvent, timeout=stations.PATIENCE_S) as events:
            with self.assertRaises(UnknownName):
                self.other.read("NoSuchNameEither")
            told = next(event for event in events if "NoSuchNameEither" in event.line)
        self.assertEqual("error", told.level)
        self.assertTrue(told.line.startswith("FAILED GET-param(NoSuchNameEither)"), told.line)

    def test_a_model_is_opened(self):
        self.qor.open_model(windows_path(self.station.folder / "a.model"), extra={"key": "value"})
        self.qor.connect()

    def test_the_status_counts(self):
        before = self.qor.get_server_status()
        self.qor.ping_qor()
        with self.assertRaises(UnknownName):
            self.qor.read("NoSuchName")
        after = self.qor.get_server_status()
        self.assertEqual(windows_path(self.station.settings), after.settings)
        self.assertGreater(after.requests, before.requests + 1)
        self.assertGreater(after.failures, before.failures)
        self.assertGreater(after.failures_by_cause["unknownName"], 0)
        self.assertIsInstance(after.requests_by_method["pingQor"], MethodFigures)
        self.assertEqual(("getParamData", "unknownName"), (after.last_failures[0].method, after.last_failures[0].name))
        self.assertGreater(after.uptime_ms, 0)
        self.assertEqual(2, after.clients)

    def test_threads_that_read_at_once_each_get_their_own_parameter(self):
        names = ["IdleSpeedGainP", "IdleSpeedGainI", "InjectorFlow", "KnockThreshold", "FanOnTemperature",
                 "FanOffTemperature", "CylinderCount", "LambdaGainP"]
        wrong = []

        def read(name):
            for _ in range(5):
                if self.qor.read(name, timeout_ms=5000) != parameter(name)["value"]:
                    wrong.append(name)
        threads = [threading.Thread(target=read, args=(name,)) for name in names]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual([], wrong)

    def test_every_method_of_the_server_is_one_of_the_package_with_its_parameters_and_defaults(self):
        self.assertEqual([], list(differences(self.qor.discover()["methods"])))


class Own(Joined, Either, unittest.TestCase):
    def setUp(self):
        self.qor, self.other = self.owner, self.guest


class Guest(Joined, Either, unittest.TestCase):
    def setUp(self):
        self.qor, self.other = self.guest, self.owner

    def test_a_guest_does_not_end_the_server(self):
        with self.assertRaises(RefusedByServer):
            self.guest.shutdown_server()


class Special(unittest.TestCase):
    """What needs a QOR that behaves in a way of its own."""

    def start(self, script, **more):
        station = Station(program_folder, transport, script)
        self.addCleanup(station.close)
        qor = stations.start(station, **more)
        self.addCleanup(qor.close)
        return qor

    def test_another_thread_cancels_a_connect(self):
        qor, came = self.start(SLOW), []

        def connect():
            try:
                qor.connect(progress=lambda _: began.set())
            except Cancelled as error:
                came.append(error.cause)
        began, thread = threading.Event(), threading.Thread(target=connect)
        thread.start()
        self.assertTrue(began.wait(stations.PATIENCE_S))
        qor.cancel_connect()
        thread.join(stations.PATIENCE_S)
        self.assertEqual(["cancelled"], came)

    def test_a_connect_that_qor_reports_as_failed(self):
        with self.assertRaises(ConnectReported):
            self.start(FAILING).connect()

    def test_a_message_box_is_told_and_answered(self):
        qor = self.start({**QUICK, "at": [{"since": "connect", "afterMs": 1000, "messageBox": BOX}]},
                         boxes_to_clients=True)
        events = qor.events(BoxEvent, timeout=stations.PATIENCE_S)
        qor.connect()
        box = next(events)
        self.assertEqual((*BOX.values(), True), (box.caption, box.text, box.type, box.is_open))
        qor.answer_box(box.number, YES)
        closed = next(events)
        self.assertEqual((box.number, False, YES), (closed.number, closed.is_open, closed.choice))

    def test_the_ecu_goes_and_comes_and_the_stream_goes_on(self):
        qor = self.start({**QUICK, "at": [{"since": "connect", "afterMs": 800, "online": False},
                                          {"since": "connect", "afterMs": 4000, "online": True}]})
        qor.connect()
        events = qor.events(StateEvent, timeout=stations.PATIENCE_S)
        with qor.stream(["EngineSpeed"], timeout=stations.PATIENCE_S) as stream:
            next(stream)
            for event in events:
                if not event.is_ecu_online and not event.is_connecting:
                    break
            stream.read()
            self.assertTrue(until(lambda: qor.get_state().is_ecu_online))
            self.assertGreater(next(stream).value, 0)


def differences(methods):
    """Between the server's description and the package."""
    own = {**vars(operations.Operations), **vars(Qor)}
    streams = {"startParamRead": "stream", "startDtcRead": "dtc_stream", "startTraceRead": "trace_stream"}
    skipped = {"stopParamRead", "stopDtcRead", "stopTraceRead"}  # streams do these
    for method in methods:
        name = method["name"]
        if name in skipped:
            continue
        snake = streams.get(name) or re.sub(r"[A-Z]", lambda match: "_" + match[0].lower(), name.split(".")[-1])
        function = own.get(snake)
        if function is None:
            yield f"no method {snake}"
            continue
        yield from parameters_differ(snake, function, method["params"])


def parameters_differ(name, function, params):
    there = inspect.signature(function).parameters
    for param in params:
        snake = re.sub(r"[A-Z]", lambda match: "_" + match[0].lower(), param["name"])
        given = there.get(snake)
        if given is None:
            yield f"{name}: no parameter {snake}"
            continue
        is_required = given.default is inspect.Parameter.empty
        if is_required != param["required"]:
            yield f"{name}: {snake} is {'not ' if not param['required'] else ''}required by the server"
        standard = param["schema"].get("default")
        own = list(given.default) if isinstance(given.default, tuple) else given.default
        own = own.hex() if isinstance(own, bytes) else own
        if not is_required and own is not None and own != standard:
            yield f"{name}: {snake} is {standard} in the server, here {own}"


if __name__ == "__main__":
    transport, program_folder = sys.argv[1:3]
    del sys.argv[1:3]
    stations.warm_wine()
    unittest.main()
