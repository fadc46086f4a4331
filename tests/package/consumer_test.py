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
from unzipped import SOURCE, TOOLS  # noqa: E402

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
                            stderr=subprocess.STDOUT, text=True, check=False, **options)
    return result.returncode, result.stdout


class Consumer(unittest.TestCase):
    package = Path()

    @classmethod
    def setUpClass(cls):
        cls.folder = unzipped.unzip(cls.package, f"{FOLDER}/QorControl")
        cls.settings = cls.folder / "bin/qor-settings.ini"
        text = cls.settings.read_text()
        cls.settings.write_text(re.sub(r"(?m)^TcpPort=.*$", f"TcpPort={free_port()}", text))
        # As if the paths of the build were gone: the hosts' project is elsewhere, too.
        cls.project = cls.folder.parent / "station"
        shutil.copytree(HERE / "consumer", cls.project)
        shutil.copy(SOURCE / "tools/example/minimal_host.cpp", cls.project / "cpp_host.cpp")

    def configure(self, build, *options):
        return run("cmake", "-S", self.project, "-B", build, "-G", "Ninja",
                   "-DCMAKE_SYSTEM_NAME=Windows", f"-DCMAKE_PREFIX_PATH={self.folder}", *options)

    def mingw(self):
        return (f"-DCMAKE_C_COMPILER={TOOLS}gcc-posix", f"-DCMAKE_CXX_COMPILER={TOOLS}g++-posix")

    def run_host(self, program, *arguments, closing):
        return run(SOURCE / "cmake/wine-test.sh", "--closing", closing, program, *arguments)

    def test_cmake_finds_the_package_and_both_kinds_of_hosts_read_a_value(self):
        build = self.project / "build"
        status, told = self.configure(build, *self.mingw())
        self.assertEqual(0, status, told)
        status, told = run("cmake", "--build", build)
        self.assertEqual(0, status, told)
        for host in ("c_host", "cpp_host"):
            with self.subTest(host):
                status, told = self.run_host(build / f"{host}.exe", windows_path(self.settings),
                                             closing=r"^engine speed [1-9][0-9]+ 1/min")
                self.assertEqual(0, status, told)

    def test_hosts_of_the_c_interface_get_one_dll_and_hosts_of_the_class_four(self):
        build = self.project / "build-dlls"
        for target, dlls in (("c_host", {"QorControlC.dll"}),
                             ("cpp_host", {"QorControlFacade.dll", *unzipped.RUN_TIMES})):
            shutil.rmtree(build, ignore_errors=True)
            self.assertEqual(0, self.configure(build, *self.mingw())[0])
            status, told = run("cmake", "--build", build, "--target", target)
            self.assertEqual(0, status, told)
            self.assertEqual(dlls, {path.name for path in build.glob("*.dll")})

    def test_a_64_bit_project_does_not_find_it(self):
        status, told = run("cmake", "-S", self.project, "-B", self.project / "build-64", "-G",
                           "Ninja", f"-DCMAKE_PREFIX_PATH={self.folder}")
        self.assertNotEqual(0, status)
        self.assertIn("32-bit", told)

    def test_the_programs_of_the_package_work_where_they_lie(self):
        status, told = self.run_host(
            self.folder / "bin/qorctl.exe", "get", windows_path(self.settings), "EngineSpeed",
            closing=r"^[0-9.]+ *(1/min)?$")
        self.assertEqual(0, status, told)


if __name__ == "__main__":
    Consumer.package = unzipped.package_path()
    unittest.main()
