#!/usr/bin/env python3
"""A station builder's first hour: the package is unzipped into a folder whose name is no plain one,
CMake finds it there, and hosts that were built with it read a value.

usage: consumer_test.py PACKAGE.zip
"""
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import unzipped  # noqa: E402
from unzipped import NOTES, SOURCE, TOOLS  # noqa: E402

FOLDER = "Prüfstand 7 (West)"
HERE = Path(__file__).resolve().parent


def windows_path(path):
    """Wine shows the whole file system as drive Z."""
    return "Z:" + str(path).replace("/", "\\")


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, errors="backslashreplace",
                            check=False, **options)  # paths are printed in the ANSI code page
    return result.returncode, result.stdout


class Consumer(unittest.TestCase):
    package = Path()

    @classmethod
    def setUpClass(cls):
        cls.folder = unzipped.unzip(cls.package, f"{FOLDER}/QorControl")
        for settings in (cls.folder / "bin").glob("*.ini"):
            text = re.sub(r"(?m)^TcpPort=.*$", f"TcpPort={free_port()}", settings.read_text())
            settings.write_text(text)
        # As if the paths of the build were gone: the hosts' project is elsewhere, too.
        cls.project = cls.folder.parent / "station"
        shutil.copytree(HERE / "consumer", cls.project)
        shutil.copy(SOURCE / "tools/example/minimal_host.cpp", cls.project / "cpp_host.cpp")

    def configure(self, project, build):
        return run("cmake", "-S", project, "-B", build, "-G", "Ninja",
                   "-DCMAKE_SYSTEM_NAME=Windows", f"-DCMAKE_PREFIX_PATH={self.folder}",
                   f"-DCMAKE_C_COMPILER={TOOLS}gcc-posix", f"-DCMAKE_CXX_COMPILER={TOOLS}g++-posix")

    def build(self, project, build, *target):
        status, told = self.configure(project, build)
        self.assertEqual(0, status, told)
        status, told = run("cmake", "--build", build, *target)
        self.assertEqual(0, status, told)

    def start_simulator(self, settings):
        simulator = subprocess.Popen(
            [SOURCE / "cmake/wine-run.sh", self.folder / "bin/qor-simulator.exe", settings],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(simulator.wait)
        self.addCleanup(simulator.kill)

    def run_host(self, program, *arguments, closing):
        return run(SOURCE / "cmake/wine-test.sh", "--closing", closing, program, *arguments)

    def test_cmake_finds_the_package_and_hosts_of_both_dlls_read_a_value(self):
        settings = windows_path(self.folder / "bin/simulator.ini")
        for host, dlls in (("c_host", {"QorControlC.dll"}),
                           ("cpp_host", {"QorControlFacade.dll", *unzipped.RUN_TIMES})):
            with self.subTest(host):
                build = self.project / f"build-{host}"
                self.build(self.project, build, "--target", host)
                self.assertEqual(dlls, {path.name for path in build.glob("*.dll")})
                self.start_simulator(settings)  # a host shuts it down in the end
                status, told = self.run_host(build / f"{host}.exe", settings,
                                             closing=r"^engine speed [1-9][0-9]+ 1/min")
                self.assertEqual(0, status, told)

    def test_the_project_of_the_notes_builds(self):
        project = self.folder.parent / "of the notes"
        project.mkdir()
        block = re.search(r"```cmake\n(.*?)```", NOTES.read_text(encoding="utf-8"), re.DOTALL)[1]
        (project / "CMakeLists.txt").write_text(block)
        shutil.copy(self.project / "c_host.c", project / "station.c")
        self.build(project, project / "build")
        self.assertTrue((project / "build/QorControlC.dll").is_file())

    def test_the_dlls_come_through_libraries_of_the_hosts_too(self):
        project = self.folder.parent / "layers"
        shutil.copytree(HERE / "layers", project)
        build = project / "build"
        self.build(project, build)
        for host, dlls in (("by_interface", {"QorControlC.dll"}), ("by_static", {"QorControlC.dll"}),
                           ("by_shared", {"QorControlC.dll"}),
                           ("by_both", {"QorControlC.dll", "QorControlFacade.dll", *unzipped.RUN_TIMES})):
            with self.subTest(host):
                self.assertTrue((build / host / f"{host}.exe").is_file())
                self.assertEqual(dlls, {path.name for path in (build / host).glob("*.dll")})

    def test_a_host_that_is_linked_to_neither_library_is_told(self):
        project = self.folder.parent / "neither"
        shutil.copytree(HERE / "layers", project)
        with (project / "CMakeLists.txt").open("a") as lists:
            lists.write("add_executable(neither host.c)\nqor_control_copy_dlls(neither)\n")
        status, told = self.configure(project, project / "build")
        self.assertNotEqual(0, status)
        self.assertIn("neither is linked to neither QorControl::C nor", told)

    def test_a_64_bit_project_does_not_find_it(self):
        status, told = run("cmake", "-S", self.project, "-B", self.project / "build-64", "-G",
                           "Ninja", f"-DCMAKE_PREFIX_PATH={self.folder}")
        self.assertNotEqual(0, status)
        self.assertIn("32-bit", told)

    def test_the_programs_of_the_package_work_where_they_lie(self):
        status, told = self.run_host(
            self.folder / "bin/qorctl.exe", "get",
            windows_path(self.folder / "bin/qor-settings.ini"), "EngineSpeed",
            closing=r"^EngineSpeed: [1-9]")
        self.assertEqual(0, status, told)

    def test_qorctl_starts_with_the_dlls_that_the_notes_name_and_without_none_of_them(self):
        dlls = [Path(word.replace("\\", "/")).name for word in unzipped.command_of_the_notes("dir")
                if word.endswith(".dll")]
        self.assertEqual({"QorControlFacade.dll", *unzipped.RUN_TIMES}, set(dlls))
        for missing in [None, *dlls]:
            with self.subTest(missing), tempfile.TemporaryDirectory() as folder:
                for name in ["qorctl.exe", *(dll for dll in dlls if dll != missing)]:
                    shutil.copy(self.folder / "bin" / name, folder)
                status, told = run(SOURCE / "cmake/wine-run.sh", Path(folder) / "qorctl.exe", "--help",
                                   stdin=subprocess.DEVNULL)
                self.assertEqual(missing is None, status == 0, told)
                self.assertEqual(missing is None, "doctor" in told, told)


if __name__ == "__main__":
    Consumer.package = unzipped.package_path()
    unittest.main()
