"""Programs of this machine and of Wine, as processes that can be ended for certain."""
import os
import re
import signal
import subprocess
import threading
import time
from pathlib import Path

RUNNER = Path(__file__).resolve().parents[2] / "cmake/wine-run.sh"
STARTS_S = 300


def windows_path(path):
    """Wine shows the whole file system as drive Z."""
    return "Z:" + str(path).replace("/", "\\")


def start(program, *arguments, **streams):
    """Under the runner's settings; the process is that of the Windows program itself."""
    return subprocess.Popen([str(RUNNER), str(program), *arguments], start_new_session=True, **streams)


def send(process, number):
    try:
        os.kill(process.pid, number)
    except ProcessLookupError:
        pass


def kill(process):
    if process.poll() is None:
        send(process, signal.SIGCONT)
        send(process, signal.SIGKILL)
    process.wait()


def naming(path):
    """The processes whose command line names the file or folder: those that a host has started, too."""
    pattern = re.compile(re.escape(windows_path(path).encode()))
    for entry in Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and int(entry.name) != os.getpid() and \
                    pattern.search((entry / "cmdline").read_bytes()):
                yield int(entry.name)
        except OSError:
            continue  # gone meanwhile


def kill_all_of(path):
    ended = list(naming(path))
    for pid in ended:
        try:
            os.kill(pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
    return len(ended)


def wait_until(condition, patience_s, pause_s=0.004):
    deadline = time.monotonic() + patience_s
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(pause_s)
    return True


class Server:
    """Wine's server, which serves all programs of the prefix. It is known to crash, and takes them with it."""
    _lock, _pid = threading.Lock(), None

    @classmethod
    def pid(cls):
        """Started, with the prefix, unless it runs; so no program of the soak has to."""
        with cls._lock:
            if not lives(cls._pid):
                subprocess.run([str(RUNNER)], check=True, timeout=STARTS_S)
                cls._pid = cls._find()
            return cls._pid

    @staticmethod
    def _find():
        prefix = os.environ.get("WINEPREFIX", str(RUNNER.parents[1] / "build/wine-prefix"))
        for entry in Path("/proc").iterdir():
            try:
                if entry.name.isdigit() and (entry / "comm").read_text().startswith("wineserver") and \
                        f"WINEPREFIX={prefix}".encode() in (entry / "environ").read_bytes().split(b"\0"):
                    return int(entry.name)
            except OSError:
                continue  # gone meanwhile
        raise RuntimeError(f"no Wine server of {prefix}")


def lives(pid):
    return pid is not None and Path(f"/proc/{pid}").exists()
