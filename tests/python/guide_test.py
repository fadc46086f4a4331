"""The blocks of docs/python.md do what the page says, in their order, with the real server; and the page is complete.

usage: guide_test.py tcp|window PROGRAM-FOLDER
"""
import builtins
import contextlib
import io
import os
import re
import shlex
import sys
import unittest

import package
import stations
from stations import Station

import qorcontrol
from qorcontrol import Qor, errors

PAGE = package.ROOT / "docs/python.md"
BLOCK = re.compile(r"^```python\n(.*?)^```\n(?:```text\n(.*?)^```\n)?", re.MULTILINE | re.DOTALL)
QUICK = {"bootstrap": {"durationMs": 300, "steps": 3}}
transport, program_folder = "tcp", "."


def pattern_of(shown):
    """What a block may print: other digits in numbers with a point, other times, anything in place of "..."."""
    escaped = re.escape(shown)
    escaped = escaped.replace(re.escape("..."), r"[\s\S]*?")
    escaped = re.sub(r"\d+\\\.\d(?!\d|\\\.)", r"[-\\d.]+", escaped)
    escaped = re.sub(r"\d+(?=\\ ms)", r"[\\d.]+", escaped)
    return re.sub(r"(?<=EngineSpeed\\ =\\ )\d+", r"\\d+", escaped)


class Guide(unittest.TestCase):
    def setUp(self):
        self.station = Station(program_folder, transport, QUICK)
        self.addCleanup(self.station.close)
        self.station.settings.rename(self.station.folder / "qor-settings.ini")
        (self.station.folder / "names.lst").write_text("EngineSpeed\n")
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.station.folder)
        os.environ["QORCTL"] = shlex.join(stations.program_of(os.path.join(program_folder)))

    def run_block(self, text, names):
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile(text, str(PAGE), "exec"), names)  # pylint: disable=exec-used
        return printed.getvalue()

    def test_the_blocks_do_what_they_say(self):
        names, blocks = {"__builtins__": builtins, "__name__": "guide"}, BLOCK.findall(PAGE.read_text(encoding="utf-8"))
        self.assertGreater(len(blocks), 12)
        try:
            for text, shown in blocks:
                printed = self.run_block(text, names)
                self.assertRegex(printed, rf"\A{pattern_of(shown)}\Z", text)
        finally:
            if "qor" in names:
                names["qor"].close()


class Page(unittest.TestCase):
    def setUp(self):
        self.prose = re.sub(r"^```.*?^```$", "", PAGE.read_text(encoding="utf-8"), flags=re.MULTILINE | re.DOTALL)

    def test_it_tells_of_all_that_is_public(self):
        told = set(re.findall(r"\w+", " ".join(re.findall(r"`[^`]+`", self.prose))))
        wanted = {name for name in dir(Qor) if not name.startswith("_")}
        wanted |= {name for name, each in vars(errors).items() if isinstance(each, type) and issubclass(each, Warning)
                   or isinstance(each, type) and issubclass(each, errors.QorError)}
        wanted |= set(qorcontrol.__all__) - {"ConnectType", "__version__", "Feed", "Events", "Event", "Stream",
                                             "DtcStream", "TraceStream", "DirectControl"}
        self.assertEqual(set(), wanted - told)

    def test_each_call_in_the_table_is_one(self):
        for name, arguments in re.findall(r"`(?:Qor\.)?([a-z_]+)\(([\w, ]*)\)`", self.prose):
            functions = [getattr(each, name) for each in (Qor, qorcontrol.DirectControl, qorcontrol.Feed)
                         if hasattr(each, name)]
            wanted = set(re.findall(r"\w+", arguments))
            self.assertTrue(any(wanted <= set(each.__code__.co_varnames) for each in functions), name)


if __name__ == "__main__":
    transport, program_folder = sys.argv[1], os.path.abspath(sys.argv[2])
    del sys.argv[1:3]
    stations.warm_wine()
    unittest.main()
