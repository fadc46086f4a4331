""""qorctl doctor --host" tells of real hosts what each of them needs beside it.

usage: doctor_test.py PROGRAM-FOLDER NODE-FOLDER PACKAGE-FOLDER CSHARP-FOLDER
"""
import json
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from programs import Station, run_windows, windows_path

C_DLL = "QorControlC.dll"
CLASS_DLLS = ["QorControlFacade.dll", "libstdc++-6.dll", "libgcc_s_dw2-1.dll", "libwinpthread-1.dll"]
OK, WARNING, PROBLEM = "ok", "warning", "problem"
program_folder, node_folder, package_folder, csharp_folder = [Path(".")] * 4


class Doctor(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="qor-doctor-")
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)
        self.station = Station(program_folder, "tcp")
        self.addCleanup(self.station.close)

    def of_host(self, program, *dlls):
        """{what was looked at of the host: finding}, and whether it would work; with these DLLs beside it."""
        folder = Path(tempfile.mkdtemp(dir=self.folder))
        host = shutil.copy(program, folder)
        for dll in dlls:
            shutil.copy(package_folder / "bin" / dll, folder)
        ended = run_windows(program_folder / "qorctl.exe", "doctor", windows_path(self.station.settings), "--json",
                            "--host", windows_path(host), closing=r'"settings":|^}')
        report = json.loads(ended.output)
        self.assertEqual(0 if report["ok"] else 3, ended.exit_code)
        found = {one["id"][len("host."):]: one for one in report["findings"] if one["id"].startswith("host.")}
        for one in found.values():
            self.assertEqual(one["status"] == OK, one["remedy"] == "", one)
        return {name: one["status"] for name, one in found.items()}, report["ok"]

    def test_a_c_host_needs_the_one_dll_whoever_linked_it(self):
        for program in (program_folder / "hosts_tour_c.exe", package_folder / "bin/hosts_tour_msvc.exe"):
            with self.subTest(program.name):
                self.assertEqual(({"program": OK, C_DLL: PROBLEM}, False), self.of_host(program))
                self.assertEqual(({"program": OK, C_DLL: OK}, True), self.of_host(program, C_DLL))

    def test_a_host_of_the_class_needs_its_dlls(self):
        program = program_folder / "hosts_tour_cpp.exe"
        self.assertEqual(({"program": OK, **dict.fromkeys(CLASS_DLLS, OK)}, True), self.of_host(program, *CLASS_DLLS))
        missing = CLASS_DLLS[1]
        self.assertEqual(({"program": OK, **dict.fromkeys(CLASS_DLLS, OK), missing: PROBLEM}, False),
                         self.of_host(program, *(dll for dll in CLASS_DLLS if dll != missing)))

    def test_an_interpreter_and_a_net_program_find_the_dll_when_they_run(self):
        for program in (node_folder / "node.exe", csharp_folder / "Tour.exe"):
            with self.subTest(program.name):
                self.assertEqual(({"program": OK, C_DLL: WARNING}, True), self.of_host(program))
                self.assertEqual(({"program": OK, C_DLL: OK}, True), self.of_host(program, C_DLL))

    def test_a_net_program_for_any_processor_is_found(self):
        source, program = self.folder / "Any.cs", self.folder / "Any.exe"
        source.write_text("static class Any { static void Main() { } }\n")
        subprocess.run(["mcs", "-platform:anycpu", f"-out:{program}", str(source)], check=True)
        # This Wine has 32 bits: here it works.
        self.assertEqual(({"program": WARNING, C_DLL: OK}, True), self.of_host(program, C_DLL))


if __name__ == "__main__":
    program_folder, node_folder, package_folder, csharp_folder = map(Path, sys.argv[1:5])
    del sys.argv[1:]
    unittest.main()
