#!/usr/bin/env python3
"""The tables of docs/serve.md are what the server says of itself.

usage: serve_page_test.py tcp|window PROGRAM-FOLDER
"""
import json
import re
import subprocess
import sys
import unittest

import package
import stations
from stations import Station

PAGE = package.ROOT / "docs/serve.md"
transport, program_folder = "tcp", "."


def rows(first_column):
    """The cells of the page's table that begins with this column."""
    found, inside = [], False
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        if line.startswith(f"| {first_column} |"):
            inside = True
        elif not line.startswith("|"):
            inside = False
        elif inside and not line.startswith("|---"):
            found.append([re.findall(r"`([^`]+)`", cell) for cell in line.strip("|").split("|")])
    return found


def shown(param):
    """A parameter as the page shows it: with its value if it may be left out."""
    if param["required"]:
        return param["name"]
    standard = param["schema"]["default"]
    return param["name"] + "=" + ("{}" if isinstance(standard, dict) else json.dumps(standard))


class ServePage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        stations.warm_wine()
        cls.station = Station(program_folder, transport)
        command = [*stations.program_of(program_folder), "serve", str(cls.station.settings), "--stdio",
                   "--trace", str(cls.station.folder / "trace.log")]
        asked = json.dumps({"jsonrpc": "2.0", "id": 1, "method": "rpc.discover"}) + "\n"
        # Not a pipe: the desktop's process that a first window starts would keep it open for as long
        # as any program of the prefix has a window.
        with open(cls.station.folder / "errors", "w+b") as errors:
            ended = subprocess.run(command, input=asked, stdout=subprocess.PIPE, stderr=errors, text=True,
                                   timeout=200, check=False)
            errors.seek(0)
            told = errors.read().decode(errors="replace")
        if ended.returncode:
            raise AssertionError(f"the server ended with exit code {ended.returncode}: {told}")
        answers = [line for line in map(json.loads, ended.stdout.splitlines()) if line.get("id") == 1]
        cls.methods = {method["name"]: method for method in answers[0]["result"]["methods"]}

    @classmethod
    def tearDownClass(cls):
        cls.station.close()

    def test_names_each_method_once_and_none_that_there_is_not(self):
        named = [name for row in rows("method") for name in row[0]]
        self.assertEqual(sorted(self.methods), sorted(named))

    def test_tells_the_parameters_in_their_order_and_what_they_are_when_left_out(self):
        for row in rows("method"):
            with self.subTest(method=row[0][0]):
                self.assertEqual([shown(param) for param in self.methods[row[0][0]]["params"]], row[1])

    def test_tells_the_fields_of_the_settings_of_a_connect(self):
        standard = self.methods["connect"]["params"][0]["schema"]["default"]
        self.assertEqual({name: json.dumps(value) for name, value in standard.items()},
                         {name: value for names, (value,) in rows("setting of a connect") for name in names})

    def test_tells_what_the_results_are_made_of(self):
        for row in rows("method"):
            with self.subTest(method=row[0][0]):
                result = self.methods[row[0][0]]["result"]["schema"]
                self.assertEqual(list(result.get("properties", {})) and sorted(result["properties"]), sorted(row[2]))


if __name__ == "__main__":
    transport, program_folder = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])
