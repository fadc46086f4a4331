#!/usr/bin/env python3
"""Ten stations as the guide sets them up, scraped by a real Prometheus; its answers are held against what was
done to the stations.

usage: prometheus_test.py PROGRAM-FOLDER
"""
import json
import re
import subprocess
import sys
import unittest
import urllib.parse
import urllib.request
from pathlib import Path

import guide
from native import PATIENCE_S, Folder, end, listens, wait_until
from server import TOKEN, Events, RpcError, Server
from station import free_port

STATIONS = 10
AT_ONCE = 2  # that start: QOR has 10 s for it
WITH_WINDOW_MESSAGES = 3
SILENT = 7  # is ended on the way
UP = 'up{job="qor"}'
programs = ""


def name_of(number):
    return f"station-{number:02}"


def promtool(folder, *arguments):
    checked = subprocess.run(["promtool", *arguments], cwd=folder.path, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, timeout=60, check=False)
    return checked.returncode, checked.stdout.decode()


class Prometheus:
    """With the files and the command line of the guide; only the addresses are others."""

    def __init__(self, folder, servers):
        self.folder, self.port = folder, free_port()
        for name in ("prometheus.yml", "alerts.yml"):
            folder.write(name, guide.file(name))
        folder.write("token", TOKEN + "\n")
        folder.write("stations.yml", stations_file(servers))
        command = guide.exchanged(guide.command("prometheus --"), "9090", str(self.port))
        self.process = folder.begin("exec " + command, "prometheus.log")
        wait_until(lambda: listens(self.port) and self.is_ready(), "a Prometheus: " + folder.read("prometheus.log"))

    def get(self, path, **parameters):
        url = f"http://127.0.0.1:{self.port}{path}?{urllib.parse.urlencode(parameters)}"
        with urllib.request.urlopen(url, timeout=30) as answer:
            return answer.read().decode()

    def is_ready(self):
        try:
            return "Ready" in self.get("/-/ready")
        except OSError:
            return False

    def ask(self, query, label="station"):
        """The values of a query by a label."""
        found = json.loads(self.get("/api/v1/query", query=query))["data"]["result"]
        return {row["metric"].get(label, ""): float(row["value"][1]) for row in found}

    def await_answer(self, wanted, query, label="station"):
        try:
            wait_until(lambda: self.ask(query, label) == wanted, query)
        except AssertionError as error:
            raise AssertionError(f"{error}: wanted {wanted}, got {self.ask(query, label)}") from error


def stations_file(servers):
    """The guide's, with a block for each."""
    text = guide.file("stations.yml")
    block = re.search(r'^- targets: \["station-01:8470"\]\n(?:  .*\n)+', text, re.MULTILINE)[0]
    return "".join(guide.exchanged(guide.exchanged(block, "station-01:8470", server.address),
                                   "station-01", name_of(number))
                   for number, server in enumerate(servers, start=1))


def query(title):
    """The guide's, below that comment."""
    found = [lines for comment, lines in guide.queries().items() if comment.startswith(title)]
    return guide.only(found, title)


class TenStations(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.servers = []
        cls.addClassCleanup(lambda: [server.close() for server in cls.servers])
        for number in range(1, STATIONS + 1):
            cls.servers.append(Server(programs, "window" if number == WITH_WINDOW_MESSAGES else "tcp"))
            for server in cls.servers[:-AT_ONCE] if number < STATIONS else cls.servers:
                server.await_start()
        cls.folder = Folder(programs)
        cls.addClassCleanup(cls.folder.close)
        cls.prometheus = Prometheus(cls.folder, cls.servers)
        cls.addClassCleanup(end, cls.prometheus.process)
        cls.ask, cls.await_answer = cls.prometheus.ask, cls.prometheus.await_answer
        cls.await_answer(cls.of_all(lambda _: 1), UP)

    @classmethod
    def tearDownClass(cls):
        for server in cls.servers:
            server.tell_to_stop()
        codes = [server.process.wait(PATIENCE_S) for server in cls.servers]
        if any(codes):
            raise AssertionError(f"ended with {codes}: " + "".join(server.told() for server in cls.servers))

    @classmethod
    def of_all(cls, value):
        """By station."""
        return {name_of(number): value(server) for number, server in enumerate(cls.servers, start=1)}

    def await_own(self, name, **labels):
        """Prometheus has of each station what the station itself tells."""
        own = self.of_all(lambda server: server.figures()(name, **labels))
        words = ",".join(f'{label}="{value}"' for label, value in labels.items())
        self.await_answer(own, f"{name}{{{words}}}")
        return own

    def test_have_told_their_versions_and_what_was_done_with_them(self):
        for number, server in enumerate(self.servers, start=1):
            for _ in range(2 * number):
                server.call("getParamData", name="EngineSpeed")
            if number % 2:
                self.assertRaises(RpcError, server.call, "getParamData", name="Nobody")
        requests = self.await_own("qor_requests_total", method="getParamData")
        self.assertEqual([], [number for number in range(1, STATIONS + 1) if requests[name_of(number)] < 2 * number])
        self.await_own("qor_failures_total", cause="unknownName")
        self.await_own("qor_request_duration_seconds_sum", method="getParamData")
        version = self.servers[0].call("getState")["version"]
        self.assertEqual({version: STATIONS}, self.ask(*query("Versions"), label="version"))
        self.assertEqual(set(requests), set(self.ask(*query("Requests per second"))))
        self.assertGreater(min(self.ask(*query("Requests per second")).values()), 0)
        self.assertEqual({"unknownName"}, set(self.ask(*query("Causes"), label="cause")))

    def test_tell_how_long_reads_take_and_how_many_values_flow(self):
        server = self.servers[WITH_WINDOW_MESSAGES - 1]
        events = Events(server)
        self.addCleanup(events.close)
        server.call("connect", settings={"protocol": 1})
        server.call("startParamRead", events.client, names=["EngineSpeed", "OilPressure"])
        for _ in range(10):
            server.call("getParamData", name="EngineLoad")
        rate, lost = query("Streamed values")
        station = name_of(WITH_WINDOW_MESSAGES)
        wait_until(lambda: self.ask(rate)[station] > 0, "a rate")
        self.assertEqual({station}, {each for each, value in self.ask(rate).items() if value > 0})
        self.assertEqual(0, self.ask(lost)[station])
        slow, = query("Time within")
        wait_until(lambda: 0 < self.ask(slow).get(station, 0) < 1, "a quantile")

    def test_are_missed_when_they_end_and_found_when_they_are_written_down_anew(self):
        silent = self.servers[SILENT - 1]
        self.assertEqual(0, silent.stop(), silent.told())
        self.await_answer({name_of(SILENT): 0}, *query("Stations that do not answer"))
        wait_until(lambda: ("StationSilent", name_of(SILENT)) in self.alerts(), "an alert")
        silent.close()
        self.servers[SILENT - 1] = Server(programs).await_start()
        self.folder.write("stations.yml", stations_file(self.servers))
        self.await_answer({}, *query("Stations that do not answer"))
        self.await_answer(self.of_all(lambda _: 1), UP)

    def alerts(self):
        """Those that wait for their time to pass, too."""
        found = json.loads(self.prometheus.get("/api/v1/alerts"))["data"]["alerts"]
        return {(alert["labels"]["alertname"], alert["labels"]["station"]) for alert in found}

    def test_are_watched_by_rules_that_work(self):
        def rules():
            groups = json.loads(self.prometheus.get("/api/v1/rules"))["data"]["groups"]
            return {rule["name"]: (rule["health"], rule.get("lastError")) for group in groups
                    for rule in group["rules"]}
        wait_until(lambda: "unknown" not in str(rules()), "an evaluation")
        self.assertEqual({("ok", None)}, set(rules().values()))
        self.assertEqual((0, True), found(promtool(self.folder, "check", "config", "prometheus.yml")))


def found(checked):
    code, text = checked
    return code, "SUCCESS" in text


class AlertRules(unittest.TestCase):
    def setUp(self):
        self.folder = Folder(programs)
        self.addCleanup(self.folder.close)
        self.folder.write("alerts.yml", guide.file("alerts.yml"))

    def test_are_well_formed(self):
        self.assertEqual((0, True), found(promtool(self.folder, "check", "rules", "alerts.yml")))

    def test_fire_when_they_should_and_not_before(self):
        self.folder.write("alerts_test.yml", (Path(__file__).parent / "alerts_test.yml").read_text())
        self.assertEqual((0, True), found(promtool(self.folder, "test", "rules", "alerts_test.yml")))
        tested = set(re.findall(r"alertname: (\w+)", self.folder.read("alerts_test.yml")))
        self.assertEqual(set(re.findall(r"alert: (\w+)", self.folder.read("alerts.yml"))), tested)


if __name__ == "__main__":
    programs = sys.argv.pop()
    unittest.main()
