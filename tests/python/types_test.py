"""The package and what uses it are right by their types: mypy, as strict as it can be, as for Python 3.8."""
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

import package

# What a user's program may do with the types, and what mypy must find wrong.
RIGHT = """
from qorcontrol import Qor, Sample
from typing import List

def work(qor: Qor) -> float:
    samples: List[Sample] = qor.stream(["a"]).read()
    for sample in qor.stream(["a"]):
        print(sample.name.upper(), sample.value + 1)
    with qor.direct_control("a") as held:
        held.set(1)
    return qor.read("a") + qor.get_param_data("b").values[0]
"""
WRONG = """
from qorcontrol import Qor

def work(qor: Qor) -> str:
    qor.connect(type="Sideways")
    return qor.read("a")
"""


class Types(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cache = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.cache.cleanup)

    def check(self, *arguments, folder=package.FOLDER):
        program = shutil.which("mypy")
        self.assertIsNotNone(program, "there is no mypy: cmake/install-packages.sh test")
        ended = subprocess.run([program, "--cache-dir", self.cache.name, *arguments], cwd=folder,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        return ended.returncode, ended.stdout

    def check_user(self, text):
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "user.py").write_text(text)
            (Path(folder) / "qorcontrol").symlink_to(package.FOLDER / "qorcontrol")
            return self.check("--strict", "user.py", folder=folder)

    def test_the_package_itself(self):
        status, told = self.check()
        self.assertEqual(0, status, told)

    def test_programs_that_use_it(self):
        status, told = self.check_user(RIGHT)
        self.assertEqual(0, status, told)
        status, told = self.check_user(WRONG)
        self.assertEqual(1, status)
        self.assertIn("Sideways", told)
        self.assertIn("Found 2 errors", told)


if __name__ == "__main__":
    unittest.main()
