"""A copy of the tree, in which mutants are made, built and tried."""
import os
import re
import signal
import subprocess
import time
from pathlib import Path
from typing import Dict, List, NamedTuple, Optional, Set

from catalogue import Mutant

OK = re.compile(r"^\[       OK \] (\S+) \((\d+) ms\)", re.MULTILINE)
FAILED = re.compile(r"^\[  FAILED  \] (\w\S*?\.\S+?),?(?: |$)", re.MULTILINE)
END_GRACE_S = 15  # a Wine program is ended in order, with what it has started


class Ended(NamedTuple):
    code: Optional[int]  # None: it was ended, because its time was over
    output: str


class Passed(NamedTuple):
    seconds: Dict[str, float]  # of each test that passed
    failed: Set[str]
    start_s: float = 0.0  # what the run took besides its tests


def end(process: subprocess.Popen) -> None:
    """With all that it has started, and does not return before. The runner of Wine tests and Ninja end
    their own children when they are asked to. (Their group has services of Wine's in it, too.)"""
    process.terminate()
    try:
        process.wait(END_GRACE_S)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()


def run(command: List[str], folder: Path, limit_s: Optional[float] = None) -> Ended:
    """In a group of its own: Ctrl-C is this program's affair, which then ends the command."""
    with open(folder / "build" / "mutate.log", "w+b") as log:
        with subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=log,
                              stderr=subprocess.STDOUT, start_new_session=True) as process:
            code: Optional[int] = None
            try:
                code = process.wait(limit_s)
            except subprocess.TimeoutExpired:
                pass
            finally:
                if process.poll() is None:
                    end(process)
        log.seek(0)
        return Ended(code, log.read().decode("utf-8", "replace").replace("\r", ""))


class Workshop:
    """The sources of one mutant are mended when the next one is made: that saves half of the builds."""

    def __init__(self, root: Path, copy: Path):
        self.root, self.copy = root, copy
        self.changed: Set[str] = set()

    def listed(self) -> List[str]:
        command = ["git", "-C", str(self.root), "-c", f"safe.directory={self.root}", "ls-files", "-z",
                   "--cached", "--others", "--exclude-standard"]
        names = subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout.decode()
        return [name for name in names.split("\0") if name and (self.root / name).is_file()]

    def fill(self) -> None:
        """Makes the copy the same as the tree. What is the same already keeps its time, so that a
        build does not begin anew; what an interrupted run has left is mended."""
        (self.copy / "build").mkdir(parents=True, exist_ok=True)
        wanted = set(self.listed())
        for name in wanted:
            self.write(name, (self.root / name).read_bytes())
            (self.copy / name).chmod((self.root / name).stat().st_mode)
        for folder, folders, names in os.walk(self.copy):
            if folder == str(self.copy):
                folders.remove("build")
            for name in names:
                path = Path(folder) / name
                if path.relative_to(self.copy).as_posix() not in wanted:
                    path.unlink()

    def write(self, name: str, content: bytes) -> None:
        path = self.copy / name
        if path.is_file() and path.read_bytes() == content:
            return
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)

    def restore(self, but: str = "") -> None:
        for name in self.changed - {but}:
            self.write(name, (self.root / name).read_bytes())
        self.changed &= {but}

    def apply(self, mutant: Mutant) -> bool:
        """False if its text is not there exactly once."""
        path = self.root / mutant.file
        text = path.read_text(encoding="utf-8") if path.is_file() else ""
        if text.count(mutant.before) != 1:
            return False
        self.restore(but=mutant.file)
        self.changed.add(mutant.file)
        self.write(mutant.file, text.replace(mutant.before, mutant.after).encode("utf-8"))
        return True

    def build(self, preset: str, program: str) -> Ended:
        folder = self.copy / "build" / preset
        if not (folder / "build.ninja").is_file():
            ended = run(["cmake", "-S", str(self.copy), "--preset", preset], self.copy)
            if ended.code != 0:
                return ended
        return run(["ninja", "-C", str(folder), "-j2", program], self.copy)

    def test(self, preset: str, program: str, filters: str, limit_s: Optional[float] = None) -> Ended:
        path = self.copy / "build" / preset / "bin" / program
        command = ([str(self.copy / "cmake" / "wine-test.sh"), f"{path}.exe"] if preset == "mingw32"
                   else [str(path)])
        return run([*command, f"--gtest_filter={filters}"], self.copy, limit_s)


def passed_of(output: str, run_s: float = 0.0) -> Passed:
    seconds = {name: int(ms) / 1000 for name, ms in OK.findall(output)}
    return Passed(seconds, set(FAILED.findall(output)), max(0.0, run_s - sum(seconds.values())))


def now() -> float:
    return time.monotonic()
