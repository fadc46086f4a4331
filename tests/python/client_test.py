"""The package against a server that does what each test wants, over both ways: standard input and output, HTTP."""
import ast
import gc
import json
import math
import os
import sys
import threading
import time
import unittest
import warnings
from pathlib import Path

import package
from behaviour import EARLY, FLOOD, FLOODED, LATE, TROUBLE
from http_server import TOKEN, Server

import qorcontrol
from qorcontrol import (Busy, Cancelled, Closed, ConnectSettings, ControlEvent, ControlLost, LogEvent, NoServer,
                        Progress, Qor, ServerEnded, StateEvent, StreamSilent, errors, http_link, operations, stdio)
from qorcontrol.keeper import Keeper

SOON_S = 30  # on a busy machine
HERE = Path(__file__).parent
STDIO_SERVER = [sys.executable, "-B", str(HERE / "stdio_server.py")]


def failing(**error):
    """A name whose read fails so."""
    return json.dumps({"error": error})


def of_library(number, name, **more):
    return failing(code=-32000, message="in vain", data={"code": number, "name": name, "sentence": "So.",
                                                         "check": "See.", **more})


def begun(count, work):
    """Threads that work; `join_all` gives what came of them."""
    came = [None] * count

    def run(place):
        try:
            came[place] = work(place)
        except Exception as error:  # pylint: disable=broad-except
            came[place] = error
    threads = [threading.Thread(target=run, args=(place,)) for place in range(count)]
    for thread in threads:
        thread.start()

    def join_all():
        for thread in threads:
            thread.join(SOON_S)
            assert not thread.is_alive(), "a call still waits"
        return came
    return join_all


class Either:
    """What holds for both ways; `join` makes the client."""

    def test_a_call_brings_the_server_s_result(self):
        self.assertEqual(("RAM", "9.9.9", True), (lambda s: (s.ram_segment, s.version, s.is_ecu_online))(
            self.qor.get_state()))

    def test_numbers_that_json_lacks_are_numbers(self):
        values = self.qor.get_param_data("four").values
        self.assertEqual(4, values[0])
        self.assertTrue(math.isnan(values[1]))
        self.assertEqual([math.inf, -math.inf], values[2:])

    def test_each_cause_of_the_library_has_its_class_with_all_that_was_told(self):
        self.assertEqual(21, len(errors.OF_LIBRARY))
        for name, kind in errors.OF_LIBRARY.items():
            with self.assertRaises(kind) as caught:
                self.qor.get_param_data(of_library(5, name, elapsedMs=1001))
            self.assertIs(kind, type(caught.exception))
            told = caught.exception
            self.assertEqual((name, "So.", "See.", 1001, "getParamData"),
                             (told.cause, told.sentence, told.check, told.elapsed_ms, told.method))
            self.assertEqual("getParamData: So. See.", str(told))

    def test_a_cause_of_a_newer_library_is_a_library_error(self):
        with self.assertRaises(qorcontrol.LibraryError) as caught:
            self.qor.read(of_library(99, "sunDown"))
        self.assertEqual("sunDown", caught.exception.cause)

    def test_each_code_of_the_server_has_its_class(self):
        kinds = {-32601: errors.NoSuchMethod, -32602: errors.BadArgument, -32603: errors.ProtocolError,
                 -32000: errors.LibraryError, -32001: Busy, -32002: errors.ReadOnly, -32003: ServerEnded,
                 -32004: errors.Taken, -32005: errors.RefusedByServer, -1: errors.ProtocolError}
        for code, kind in kinds.items():
            with self.assertRaises(kind) as caught:
                self.qor.read(failing(code=code, message="not so"))
            self.assertIs(kind, type(caught.exception))
            self.assertEqual("not so", caught.exception.sentence)
        self.assertTrue(issubclass(errors.RefusedByQor, errors.Refused))
        self.assertTrue(issubclass(errors.RefusedByServer, errors.Refused))
        self.assertTrue(issubclass(errors.BadArgument, ValueError))

    def test_a_method_that_the_server_does_not_know_says_so(self):
        with self.assertRaises(qorcontrol.NoSuchMethod):
            self.qor.clear_dtc()

    def test_an_answer_that_may_be_another_s_warns(self):
        told = json.dumps({"result": {"values": [1], "second": [], "third": [], "mayBelongToEarlier": True}})
        with self.assertWarns(qorcontrol.MayBelongToEarlier) as caught:
            self.assertEqual(1, self.qor.get_param_data(told).values[0])
        self.assertIn("getParamData", str(caught.warning))
        with warnings.catch_warnings():
            warnings.simplefilter("error", qorcontrol.MayBelongToEarlier)
            with self.assertRaises(qorcontrol.MayBelongToEarlier):
                self.qor.get_param_data(told)

    def test_threads_that_call_at_once_each_get_their_own_answer(self):
        def work(place):
            name = json.dumps({"result": {"values": [place], "second": [], "third": []},
                               "delayS": 0.05 * (place % 4)})
            return [self.qor.read(name) for _ in range(5)]
        self.assertEqual([[place] * 5 for place in range(20)], begun(20, work)())

    def test_connect_passes_on_what_is_set_and_tells_its_progress_in_this_thread(self):
        seen, threads = [], set()
        self.addCleanup(setattr, operations, "LATE_PROGRESS_S", operations.LATE_PROGRESS_S)
        operations.LATE_PROGRESS_S = 2  # on a busy machine

        def progress(told):
            seen.append(told)
            threads.add(threading.get_ident())
        self.qor.connect(ConnectSettings(can_baud_rate=500000, address_byte1=7), progress=progress)
        self.assertEqual([Progress(0, 1, 0), Progress(10, 2, 1), Progress(20, 3, 2)], seen)
        self.assertEqual({threading.get_ident()}, threads)

    def test_another_thread_cancels_a_connect(self):
        joined = begun(1, lambda _: self.qor.connect(type="Alternative"))
        time.sleep(0.2)
        self.qor.cancel_connect()
        self.assertIsInstance(joined()[0], Cancelled)

    def test_an_exception_in_the_progress_cancels_the_connect(self):
        def progress(_):
            raise KeyboardInterrupt
        begin = time.monotonic()
        with self.assertRaises(KeyboardInterrupt):
            self.qor.connect(type="Alternative", progress=progress)
        self.assertLess(time.monotonic() - begin, SOON_S)
        self.assertEqual([{}], self.asked("cancelConnect"))
        self.qor.get_state()

    def test_values_that_come_before_the_number_of_their_stream_are_not_lost(self):
        with self.qor.stream(["a", "b"], slots=EARLY, timeout=SOON_S) as stream:
            first, second = next(stream), next(stream)
        self.assertEqual(("a", 1.5, 10, 0), first)
        self.assertEqual(("b", 11, 2), (second.name, second.time_ms, second.missed))
        self.assertTrue(math.isnan(second.value))
        self.assertEqual(2, stream.missed)

    def test_a_slow_reader_loses_the_oldest_and_is_told_how_many(self):
        events = self.qor.events(LogEvent, timeout=SOON_S)
        stream = self.qor.stream(["a"], slots=FLOOD, room=100)
        self.assertEqual("flooded", next(events).line)
        samples = stream.read()
        self.assertEqual(list(range(FLOODED - 100, FLOODED)), [sample.value for sample in samples])
        self.assertEqual(FLOODED - 100, samples[-1].missed)
        self.assertEqual(FLOODED - 100, stream.missed)

    def test_a_stream_that_nobody_holds_any_more_is_ended(self):
        events = self.qor.events(LogEvent, timeout=SOON_S)
        stream = self.qor.stream(["a"], slots=LATE)
        next(stream)
        del stream
        gc.collect()
        self.assertEqual("stopped", next(events).line)

    def test_a_stream_without_values_says_so_after_its_time_and_why(self):
        stream = self.qor.stream(["a"], slots=TROUBLE, timeout=0.3)
        with self.assertRaises(StreamSilent) as caught:
            next(stream)
        self.assertEqual(("Nothing arrived within 0.3 s. Gone.", "Look."),
                         (caught.exception.sentence, caught.exception.check))
        self.assertIsInstance(stream.trouble, errors.EcuOffline)
        self.assertEqual([], stream.read(0.05))

    def test_closing_a_stream_ends_who_waits_for_it(self):
        stream = self.qor.stream(["a"])
        joined = begun(3, lambda _: list(stream))
        time.sleep(0.1)
        stream.close()
        stream.close()
        self.assertEqual([[], [], []], joined())
        self.assertTrue(stream.closed)

    def test_the_present_state_is_the_first_event_and_only_the_wanted_kinds_come(self):
        self.qor.get_state()
        self.qor.connect(progress=lambda _: None)
        events = self.qor.events(StateEvent, timeout=SOON_S)
        self.assertEqual(StateEvent(True, False), next(events))
        self.assertEqual([], events.read(0.1))

    def test_a_callback_gets_events_in_a_thread_of_its_own_and_may_call(self):
        seen, came = [], threading.Event()

        def callback(event):
            seen.append((event, self.qor.get_state().version))
            came.set()
        subscription = self.qor.on(LogEvent, callback)
        self.qor.stream(["a"], slots=FLOOD).close()
        self.assertTrue(came.wait(SOON_S))
        self.assertEqual([(LogEvent("info", "flooded"), "9.9.9")], seen)
        subscription.close()

    def test_a_lease_is_renewed_until_the_actuator_is_given_back(self):
        with self.qor.direct_control("Fan", lease_ms=200) as fan:
            fan.set(3)
            time.sleep(0.5)
        renewals = self.asked("renewDirectCtrl")
        self.assertGreaterEqual(len(renewals), 3)
        self.assertEqual({"name": "Fan", "leaseMs": 200}, renewals[0])
        self.assertEqual([{"name": "Fan", "timeoutMs": 500}], self.asked("stopDirectCtrl"))
        time.sleep(0.3)
        self.assertEqual(len(renewals), len(self.asked("renewDirectCtrl")), "renewed after its end")
        with self.assertRaises(ControlLost):
            fan.set(4)

    def test_a_lease_that_cannot_be_renewed_is_lost_and_the_next_value_says_so(self):
        with self.qor.direct_control("Lost", lease_ms=200) as fan:
            time.sleep(0.6)
            with self.assertRaises(ControlLost) as caught:
                fan.set(1)
            self.assertIn("the lease is over", str(caught.exception))
        self.assertEqual([], self.asked("stopDirectCtrl"))

    def test_an_actuator_that_the_server_gives_back_is_lost(self):
        events = self.qor.events(ControlEvent, timeout=SOON_S)
        with self.qor.direct_control("Fan", lease_ms=0) as fan:
            self.qor.write("given back", 1)
            self.assertEqual(ControlEvent("Fan", False, True), next(events))
            with self.assertRaises(ControlLost):
                fan.set(1)

    def test_an_actuator_that_nobody_holds_is_not_renewed(self):
        fan = self.qor.direct_control("Fan", lease_ms=200)
        del fan
        gc.collect()
        time.sleep(0.4)
        self.assertEqual([], self.asked("renewDirectCtrl"))

    def test_the_status_is_read_with_what_is_new_and_what_is_missing(self):
        status = self.qor.get_server_status()
        self.assertEqual(("x.ini", 3, None, 0), (status.settings, status.clients, status.ping_ms, status.requests))
        self.assertEqual(2, status.requests_by_method["getState"].requests)
        self.assertEqual(("refused", 5), (status.last_failures[0].name, status.last_failures[0].time_ms))
        self.assertEqual(("Fan", True), tuple(status.controls[0]))

    def test_a_server_that_is_killed_fails_every_waiting_call_at_once(self):
        stream, events = self.qor.stream(["a"]), self.qor.events(LogEvent)
        ways = [lambda: self.qor.read("silent"), lambda: self.qor.connect(type="Alternative"),
                lambda: list(stream), lambda: list(events), lambda: self.qor.read("silent")]
        joined = begun(len(ways), lambda place: ways[place]())
        time.sleep(0.3)
        begin = time.monotonic()
        self.kill()
        for came in joined():
            self.assertIsInstance(came, ServerEnded)
        self.assertLess(time.monotonic() - begin, 2)
        with self.assertRaises(ServerEnded):
            self.qor.get_state()
        self.assertIsInstance(self.qor.ended, ServerEnded)
        self.qor.close()

    def test_closing_fails_every_waiting_call_and_each_later_one(self):
        joined = begun(2, lambda _: self.qor.read("silent"))
        time.sleep(0.2)
        self.qor.close()
        for came in joined():
            self.assertIsInstance(came, (Closed, ServerEnded))
        with self.assertRaises((Closed)):
            self.qor.get_state()
        self.qor.close()

    def asked(self, method):
        return [params for name, params in self.requests() if name == method]


class Stdio(Either, unittest.TestCase):
    def setUp(self):
        self.qor = self.join("good")
        self.spy_on()

    def join(self, way, **more):
        qor = Qor("x.ini", program=[*STDIO_SERVER, way], **more)
        self.addCleanup(qor.close)
        return qor

    def spy_on(self):
        """What this client sends, as the server is another process."""
        self.sent, link = [], self.qor._link
        write = link._write

        def spy(message):
            self.sent.append((message["method"], message["params"]))
            write(message)
        link._write = spy

    def requests(self):
        return self.sent

    def kill(self):
        os.kill(self.qor.pid, 9)

    def test_a_server_that_dies_of_a_request_says_with_which_code(self):
        with self.assertRaises(ServerEnded) as caught:
            self.qor.read("dies")
        self.assertEqual("The server ended with exit code 7.", caught.exception.sentence)

    def test_one_that_cannot_begin_says_why(self):
        with self.assertRaises(NoServer) as caught:
            self.join("fails")
        self.assertEqual(("The server ended with exit code 1.",
                          "FAILED  start QOR   12 ms  no such file check: the path"),
                         (caught.exception.sentence, caught.exception.check))

    def test_one_that_says_nothing_has_its_time(self):
        begin = time.monotonic()
        with self.assertRaises(NoServer):
            self.join("mute", start_timeout=0.5)
        self.assertLess(time.monotonic() - begin, SOON_S)

    def test_a_program_that_is_not_there_is_named(self):
        with self.assertRaises(NoServer) as caught:
            Qor("x.ini", program=HERE / "none.exe")
        self.assertIn("none.exe", str(caught.exception))

    def test_noise_among_the_messages_does_no_harm(self):
        self.assertEqual(5, self.join("noisy").read("noise"))

    def test_one_that_does_not_end_is_killed_in_the_end(self):
        qor, patience = self.join("stays"), stdio.END_PATIENCE_S
        self.addCleanup(setattr, stdio, "END_PATIENCE_S", patience)
        stdio.END_PATIENCE_S = 0.3
        qor.close()
        self.assertNotEqual(None, qor._link.exit_code)

    def test_where_others_may_join_is_told(self):
        self.assertEqual("http://127.0.0.1:1234/", self.join("good", listen=":0").url)
        self.assertIsNone(self.qor.url)

    def test_the_options_become_words_of_the_command_line(self):
        seen = []
        self.addCleanup(setattr, stdio, "start", stdio.start)

        def start(command):
            seen.append(command)
            raise NoServer("seen")
        stdio.start = start
        with self.assertRaises(NoServer):
            Qor("x.ini", program="q", transport="tcp", trace="C:\\t.log", names="D:/n.txt", read_only=True,
                boxes_to_clients=True, listen=":0", token_file="C:\\t", options=["--timeout", "5"])
        self.assertEqual(["q", "serve", seen[0][2], "--stdio", "--transport", "tcp", "--listen", ":0", "--trace",
                          "C:\\t.log", "--names", "D:/n.txt", "--token-file", "C:\\t", "--read-only",
                          "--boxes-to-clients", "--timeout", "5"], seen[0])
        self.assertRegex(seen[0][2], r"^Z:\\.*\\x\.ini$")

    def test_the_program_is_that_of_the_variable(self):
        self.addCleanup(os.environ.pop, "QORCTL", None)
        os.environ["QORCTL"] = "wine '/a b/qorctl.exe'"
        self.assertEqual(["wine", "/a b/qorctl.exe"], qorcontrol.program.command_of(None))
        os.environ["QORCTL"] = __file__
        self.assertEqual([__file__], qorcontrol.program.command_of(None))


class Http(Either, unittest.TestCase):
    def setUp(self):
        self.server = self.serve()
        self.qor = self.join(self.server)

    def serve(self, **more):
        server = Server(**more)
        self.addCleanup(server.close)
        return server

    def join(self, server, **more):
        qor = Qor.attach(server.url, **more)
        self.addCleanup(qor.close)
        return qor

    def requests(self):
        return self.server.behaviour.requests

    def kill(self):
        self.server.kill()

    def test_leaving_ends_the_events_and_not_the_server(self):
        self.qor.close()
        self.assertTrue(self.server.gone.wait(SOON_S))
        self.assertEqual("9.9.9", self.join(self.server).get_state().version)

    def test_the_token_is_told_with_every_request(self):
        server = self.serve(token=TOKEN)
        self.assertEqual("9.9.9", self.join(server, token=TOKEN).get_state().version)
        with self.assertRaises(NoServer) as caught:
            self.join(server, token="another")
        self.assertEqual("Another token is wanted.", caught.exception.sentence)
        self.assertIn("token", caught.exception.check)

    def test_a_server_with_too_many_clients_is_busy(self):
        self.server.full = True
        with self.assertRaises(Busy):
            self.join(self.server)

    def test_what_is_no_server_of_this_kind_is_told(self):
        self.server.hello = {}
        with self.assertRaises(NoServer):
            self.join(self.server)
        self.server.close()
        for url in (self.server.url, "https://127.0.0.1/", "nonsense://x"):
            with self.assertRaises(NoServer):
                Qor.attach(url)

    def test_a_server_that_falls_silent_has_ended(self):
        self.addCleanup(setattr, http_link, "SILENCE_S", http_link.SILENCE_S)
        http_link.SILENCE_S = 0.5
        qor = self.join(self.server)
        joined = begun(1, lambda _: qor.read("silent"))
        time.sleep(0.2)
        self.server.is_silent = True
        came = joined()[0]
        self.assertIsInstance(came, ServerEnded)
        self.assertIn("said nothing", came.sentence)

    def test_connections_are_used_again_and_not_when_they_are_old(self):
        before = len(self.server.connections)
        for _ in range(20):
            self.qor.get_state()
        self.assertEqual(before + 1, len(self.server.connections))
        self.addCleanup(setattr, http_link, "REUSE_S", http_link.REUSE_S)
        http_link.REUSE_S = 0
        self.qor.get_state()
        self.assertEqual(before + 2, len(self.server.connections))


class Keeping(unittest.TestCase):
    def test_work_that_fails_holds_up_no_other(self):
        kept, done = Keeper(), threading.Event()
        self.addCleanup(kept.end)
        with self.assertLogs("qorcontrol", "ERROR"):
            kept.add(lambda: 1 / 0)
            kept.add(done.set, 0.05)
            self.assertTrue(done.wait(10))


class Sources(unittest.TestCase):
    def test_each_file_is_python_of_3_8(self):
        files = list((package.FOLDER / "qorcontrol").glob("*.py"))
        self.assertGreater(len(files), 10)
        for file in files:
            ast.parse(file.read_text(encoding="utf-8"), feature_version=(3, 8))

    def test_all_that_is_public_says_what_it_is(self):
        bare = []
        for file in (package.FOLDER / "qorcontrol").glob("*.py"):
            for node in ast.walk(ast.parse(file.read_text(encoding="utf-8"))):
                if isinstance(node, (ast.Module, ast.ClassDef, ast.FunctionDef)):
                    name = getattr(node, "name", file.stem)
                    if not name.startswith("_") and not ast.get_docstring(node):
                        bare.append(f"{file.name}: {name}")
        known = {"wait", "result", "abandon", "request", "close", "send", "found", "news", "run", "renew"}
        self.assertEqual([], [each for each in bare if each.split(": ")[1] not in known])

    def test_every_name_that_is_offered_exists(self):
        for name in qorcontrol.__all__:
            self.assertTrue(hasattr(qorcontrol, name), name)
        self.assertEqual(len(qorcontrol.__all__), len(set(qorcontrol.__all__)))


if __name__ == "__main__":
    unittest.main()
