#!/usr/bin/env python3
"""Values of a watch arrive through a real MQTT broker: files and command lines are those of the guide.

usage: broker_test.py PROGRAM-FOLDER
"""
import getpass
import json
import sys
import time
import unittest

import guide
from native import PATIENCE_S, Folder, end, listens, wait_until
from server import Server
from station import Station, free_port, windows_path

FOR_S, REFRESH_S = 4, 0.2
LIMITS = {"EngineSpeed": (0, 8000), "OilPressure": (0, 10)}
TOPIC = "qor/station-01/values "
programs = ""


class Broker:
    """Mosquitto as the guide sets it up, but on loopback and for whoever runs the tests."""

    def __init__(self, folder):
        self.folder, self.port = folder, free_port()
        settings = guide.exchanged(guide.file("mosquitto.conf"), "1883 0.0.0.0", f"{self.port} 127.0.0.1")
        folder.write("mosquitto.conf", settings + f"user {getpass.getuser()}\n")
        if folder.begin(guide.command("mosquitto_passwd"), "broker.log").wait() != 0:
            raise AssertionError(folder.read("broker.log"))
        self.start()

    def start(self):
        self.process = self.folder.begin("exec " + guide.command("mosquitto -c"), "broker.log")
        wait_until(lambda: listens(self.port), "a broker at its port: " + self.folder.read("broker.log"))

    def stop(self):
        end(self.process)

    def command(self, beginning):
        line = guide.exchanged(guide.command(beginning), "1883", str(self.port))
        return guide.exchanged(line, "-h broker", "-h 127.0.0.1")


class Received(unittest.TestCase):
    """A broker, and a subscriber that writes down what arrives."""

    def set_up_broker(self, folder):
        self.folder = folder
        self.broker = Broker(folder)
        self.addCleanup(lambda: self.broker.stop())
        subscriber = folder.begin("exec " + self.broker.command("mosquitto_sub"), "received")
        self.addCleanup(end, subscriber)
        wait_until(lambda: " as archive " in folder.read("broker.log"), "a subscriber")

    def sent(self):
        return self.folder.read("sent").replace("\r", "").splitlines()

    def received(self):
        lines = self.folder.read("received").replace("\r", "").splitlines()
        self.assertEqual([], [line for line in lines if not line.startswith(TOPIC)])
        return [line.removeprefix(TOPIC) for line in lines]

    def await_all(self):
        wait_until(lambda: len(set(self.received())) >= len(self.sent()), "all that was sent")


class ValuesOfAWatch(Received):
    def setUp(self):
        self.station = Station(programs, "tcp")
        self.addCleanup(self.station.close)
        folder = Folder(programs)
        self.addCleanup(folder.close)
        folder.write("qor-settings.ini", self.station.settings.read_text())
        trace = windows_path(folder.path / "trace.log")
        folder.let_qorctl_be(f"--for {FOR_S} --trace '{trace}'", folder.path / "sent")
        self.set_up_broker(folder)
        self.watch = folder.begin(self.broker.command("qorctl watch"), "watch.log")
        self.addCleanup(end, self.watch)

    def told(self):
        return self.folder.read("sent.errors") + self.folder.read("watch.log") + self.folder.read("broker.log")

    def await_the_end(self):
        wait_until(lambda: self.watch.poll() is not None, self.told)
        self.assertEqual(0, self.watch.poll(), self.told())
        self.await_all()

    def test_arrive_as_they_were_printed_and_in_order(self):
        self.await_the_end()
        self.assertEqual(self.sent(), self.received())
        *samples, summary = map(json.loads, self.received())
        self.assertTrue(summary["ok"])
        for name, (low, high) in LIMITS.items():
            values = [sample["values"][name] for sample in samples if name in sample["values"]]
            self.assertGreater(len(values), 0.6 * FOR_S / REFRESH_S)
            self.assertGreater(len(set(values)), 5)
            self.assertTrue(all(low < value < high for value in values), values)

    def test_are_not_lost_while_the_broker_is_away(self):
        wait_until(lambda: len(self.received()) > 3, self.told)
        self.broker.stop()
        before = len(self.received())
        time.sleep(1)
        self.assertEqual(before, len(self.received()))
        self.broker.start()
        self.await_the_end()
        self.assertEqual(set(self.sent()), set(self.received()))
        self.assertGreater(len(self.sent()), before + 10)


class ValuesOfAServer(Received):
    def test_arrive_as_the_server_has_given_them(self):
        server = Server(programs)
        self.addCleanup(server.close)
        server.await_start().call("connect", settings={"protocol": 1})
        server.folder.write("values.py", guide.file("values.py"))
        server.folder.let_python_be(server.folder.path / "sent")
        self.set_up_broker(server.folder)
        command = guide.exchanged(self.broker.command("python values.py"), "station-01:8470", server.address)
        pipe = server.folder.begin(command, "pipe.log")
        self.addCleanup(end, pipe)
        wait_until(lambda: len(self.received()) >= 20, "values")
        given = server.figures()("qor_stream_values_total")
        self.assertEqual(0, server.stop(), server.told())
        pipe.wait(PATIENCE_S)
        self.assertIn("ServerEnded", server.folder.read("pipe.log"))
        self.await_all()
        self.assertEqual(self.sent(), self.received())
        self.assertLessEqual(given, len(self.received()))
        samples = [json.loads(line) for line in self.received()]
        self.assertEqual(set(LIMITS), {sample["name"] for sample in samples})
        self.assertEqual({0}, {sample["missed"] for sample in samples})
        for name, (low, high) in LIMITS.items():
            self.assertTrue(all(low < sample["value"] < high for sample in samples if sample["name"] == name))


if __name__ == "__main__":
    programs = sys.argv.pop()
    unittest.main()
