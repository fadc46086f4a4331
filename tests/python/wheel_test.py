"""The wheel of the package: the same bytes each time, what is in it, installed into a fresh environment and used.

usage: wheel_test.py PACKAGE.zip PROGRAM-FOLDER
"""
import base64
import calendar
import csv
import hashlib
import importlib
import io
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

import package
import stations
from stations import Station

sys.path.insert(0, str(package.FOLDER))
backend = importlib.import_module("wheel_backend")
VERSION = re.search(r'QOR_VERSION_TEXT "(.*)"', (package.ROOT / "src/qorcontrol/Version.h").read_text())[1]
PROGRAM = """
import json, sys, qorcontrol
with qorcontrol.Qor(sys.argv[1]) as qor:
    qor.connect()
    print(json.dumps([qorcontrol.__version__, qorcontrol.__file__, qor.get_state().version, qor.read("CylinderCount")]))
"""
zip_path, program_folder = Path("."), "."


class Wheel(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        holder = tempfile.TemporaryDirectory(prefix="qor wheel ")
        cls.addClassCleanup(holder.cleanup)
        cls.folder = Path(holder.name)
        with zipfile.ZipFile(zip_path) as archive:
            archive.extractall(cls.folder)
        cls.wheel, = (cls.folder / "python").iterdir()
        cls.environment = cls.folder / "venv"
        subprocess.run([sys.executable, "-m", "venv", str(cls.environment)], check=True)
        cls.python = str(cls.environment / "bin/python")

    def new_folder(self):
        holder = tempfile.TemporaryDirectory(prefix="qor-wheel-")
        self.addCleanup(holder.cleanup)
        return Path(holder.name)

    def test_its_name_has_the_version_of_the_library(self):
        self.assertEqual(f"qorcontrol-{VERSION}-py3-none-any.whl", self.wheel.name)

    def test_it_is_in_the_manifest(self):
        digest = hashlib.sha256(self.wheel.read_bytes()).hexdigest()
        self.assertIn(f"{digest}  python/{self.wheel.name}", (self.folder / "MANIFEST").read_text())

    def test_the_same_sources_give_the_same_bytes_and_the_time_is_the_given_one(self):
        with zipfile.ZipFile(self.wheel) as archive:
            times = {entry.date_time for entry in archive.infolist()}
        self.assertEqual(1, len(times))
        before = os.environ.get("SOURCE_DATE_EPOCH")
        self.addCleanup(lambda: os.environ.pop("SOURCE_DATE_EPOCH") if before is None
                        else os.environ.update(SOURCE_DATE_EPOCH=before))
        os.environ["SOURCE_DATE_EPOCH"] = str(calendar.timegm((*times.pop(), 0, 0, 0)))
        folder = self.new_folder()
        made = folder / backend.build_wheel(folder)
        self.assertEqual(self.wheel.read_bytes(), made.read_bytes())
        os.environ["SOURCE_DATE_EPOCH"] = "1000000000"
        backend.build_wheel(folder)
        self.assertNotEqual(self.wheel.read_bytes(), made.read_bytes())

    def test_the_record_has_the_sum_of_each_file(self):
        with zipfile.ZipFile(self.wheel) as archive:
            files = {name: archive.read(name) for name in archive.namelist()}
        name, = (each for each in files if each.endswith(".dist-info/RECORD"))
        rows = {row[0]: row[1:] for row in csv.reader(io.StringIO(files.pop(name).decode()))}
        self.assertEqual(["", ""], rows.pop(name))
        self.assertEqual(set(files), set(rows))
        for each, content in files.items():
            digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).decode().rstrip("=")
            self.assertEqual([f"sha256={digest}", str(len(content))], rows[each], each)

    def test_all_modules_and_the_mark_of_types_are_in_it_and_nothing_else(self):
        with zipfile.ZipFile(self.wheel) as archive:
            inside = {name for name in archive.namelist() if ".dist-info/" not in name}
        there = {f"qorcontrol/{path.name}" for path in (package.FOLDER / "qorcontrol").iterdir()
                 if path.suffix != ".pyc" and path.is_file()}
        self.assertEqual(there, inside)
        self.assertIn("qorcontrol/py.typed", inside)

    def test_installed_without_a_network_it_finds_the_server_and_reads_a_value(self):
        self.pip("install", str(self.wheel))
        told = self.use(self.python, QORCTL=shlex.join(stations.program_of(program_folder)))
        self.assertEqual([VERSION, VERSION, 4], [told[0], told[2], told[3]])
        self.assertTrue(told[1].startswith(str(self.environment)), told[1])

    def test_pip_builds_it_from_the_sources_without_a_network(self):
        folder = self.new_folder()
        self.pip("wheel", "-w", str(folder), str(package.FOLDER))
        self.assertEqual([self.wheel.name], [path.name for path in folder.iterdir()])

    def test_used_out_of_the_unzipped_package_it_finds_qorctl_in_bin(self):
        """A wheel can be imported as it is."""
        program = "import qorcontrol.program as p; print(p.beside())"
        told = subprocess.run([sys.executable, "-c", program], stdout=subprocess.PIPE, text=True, check=True,
                              env={**os.environ, "PYTHONPATH": str(self.wheel)}).stdout
        self.assertEqual(str(self.folder / "bin/qorctl.exe"), told.strip())

    def pip(self, command, *arguments):
        subprocess.run([self.python, "-m", "pip", command, "-q", "--disable-pip-version-check", "--no-index",
                        "--no-deps", *arguments], check=True)

    def use(self, python, **variables):
        station = Station(program_folder, "tcp", {"bootstrap": {"durationMs": 100, "steps": 1}})
        self.addCleanup(station.close)
        ended = subprocess.run([python, "-c", PROGRAM, str(station.settings)], cwd=station.folder, text=True,
                               env={**os.environ, **variables}, stdout=subprocess.PIPE, check=True)
        return json.loads(ended.stdout)


if __name__ == "__main__":
    zip_path, program_folder = Path(sys.argv[1]).resolve(), os.path.abspath(sys.argv[2])
    del sys.argv[1:3]
    stations.warm_wine()
    unittest.main()
