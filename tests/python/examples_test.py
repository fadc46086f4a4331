"""The clients of examples/ in other languages, with the real server: each sees the same, also with a token.

usage: examples_test.py tcp|window PROGRAM-FOLDER serve_client.exe
"""
import os
import re
import subprocess
import sys
import unittest

import package
import stations
from stations import Station

from qorcontrol import Qor

EXAMPLES = package.ROOT / "examples"
QUICK = {"bootstrap": {"durationMs": 600, "steps": 3}}
TOKEN = "a-token-of-the-tests-own"
SENTENCE = "QOR knows no parameter of that name."
transport, program_folder, csharp_client = "tcp", ".", "."


def clients():
    return {"curl": ["sh", str(EXAMPLES / "serve_curl.sh")], "fetch": ["node", str(EXAMPLES / "serve_fetch.mjs")],
            "C#": ["mono", csharp_client]}


class Examples(unittest.TestCase):
    def serve(self, **more):
        station = Station(program_folder, transport, QUICK)
        self.addCleanup(station.close)
        if more.pop("has_token", False):
            (station.folder / "token").write_text(TOKEN)
            more["token_file"] = station.folder / "token"
        qor = stations.start(station, listen="127.0.0.1:0", **more)
        self.addCleanup(qor.close)
        return qor

    def run_client(self, name, *arguments):
        ended = subprocess.run([*clients()[name], *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, text=True, timeout=60, check=False)
        return ended.returncode, ended.stdout, ended.stderr

    def check_output(self, qor, name, output):
        lines = output.splitlines()
        plain = [line for line in lines if not line.startswith(("progress", "value"))]
        self.assertEqual([f"server: {qor.get_state().version}", "connect: ok", "batch: 4 cylinders, speed in 1/min",
                          f"refused: unknownName: {SENTENCE}"],
                         [line.replace("4.0 ", "4 ") for line in plain if not line.startswith(("read", "stream"))])
        self.assertRegex(plain[2], r"^read: EngineSpeed = 8\d\d\.\d+$")
        count = int(re.fullmatch(r"stream: (\d+) values", plain[-1])[1])
        self.assertGreater(count, 6)
        if name == "curl":
            return  # it only counts
        self.assertRegex(output, r"(?m)^progress: \d+$")
        values = [line for line in lines if line.startswith("value")]
        self.assertEqual(count, len(values))
        for line in values:
            self.assertRegex(line, r"^value: (EngineSpeed = 8\d\d|OilPressure = [12])\.\d\d, missed 0$")

    def test_each_sees_the_same_and_leaves(self):
        qor = self.serve()
        for name in clients():
            with self.subTest(name):
                status, output, errors = self.run_client(name, qor.url)
                self.assertEqual((0, ""), (status, errors), output)
                self.check_output(qor, name, output)
                self.assertTrue(stations.until(lambda: qor.get_server_status().clients == 1), "it is still a client")

    def test_each_gets_in_with_the_token_only(self):
        qor = self.serve(has_token=True)
        for name in clients():
            with self.subTest(name):
                status, output, errors = self.run_client(name, qor.url, TOKEN)
                self.assertEqual((0, ""), (status, errors), output)
                self.check_output(qor, name, output)
                status, output, errors = self.run_client(name, qor.url, "another")
                self.assertNotEqual(0, status)
                self.assertNotIn("connect: ok", output)
                self.assertNotEqual("", errors)
        with Qor.attach(qor.url, TOKEN) as guest:
            guest.ping_qor()


if __name__ == "__main__":
    transport, program_folder, csharp_client = sys.argv[1], os.path.abspath(sys.argv[2]), sys.argv[3]
    del sys.argv[1:4]
    stations.warm_wine()
    unittest.main()
