"""The command-line host in a real terminal, with a simulated QOR of its own."""
import fcntl
import json
import os
import pty
import re
import select
import socket
import subprocess
import tempfile
import termios
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]
STEP_SECONDS = 60
ESCAPES = re.compile(r"\x1b(\[[0-9;?]*[A-Za-z]|\][^\x07]*\x07|[=>])")


def windows_path(path):
    """Wine shows the whole file system as drive Z."""
    return "Z:" + str(path).replace("/", "\\")


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Station:
    """A settings file and all that is unique on the machine, in a temporary folder."""

    def __init__(self, programs, transport, script=None):
        self.programs = Path(programs)
        self._folder = tempfile.TemporaryDirectory(prefix="qor-terminal-")
        self.folder = Path(self._folder.name)
        self.records = self.folder / "records.json"
        self.settings = self.folder / "qor.ini"
        title = f"QorTerminalTest-{os.getpid()}-{self.folder.name}"
        lines = {
            "CommonSettings": {
                "QORexecutable": windows_path(self.programs / "qor-simulator.exe"),
                "UseTcp": "true" if transport == "tcp" else "false",
                "ServerIp": "127.0.0.1", "TcpPort": free_port(),
                "ServerPipeName": title + "-qor", "ClientPipeName": title + "-host",
            },
            "Simulator": {
                "ConnectMs": 100, "ExitWithoutClientMs": 30000, "Model": "",
                "RecordLog": windows_path(self.records),
                "Log": windows_path(self.folder / "qor.log"),
            },
        }
        if script is not None:
            (self.folder / "script.json").write_text(json.dumps(script))
            lines["Simulator"]["Script"] = windows_path(self.folder / "script.json")
        self.settings.write_text("".join(
            f"[{section}]\n" + "".join(f"{key}={value}\n" for key, value in entries.items())
            for section, entries in lines.items()))

    def requests(self):
        """The records that QOR has received, but for answers and pings."""
        if not self.records.exists():
            return []
        found = [json.loads(line) for line in self.records.read_text().splitlines() if line]
        return [record for record in found
                if record["dir"] == "in" and not record.get("reply") and record.get("id")]

    def close(self):
        self._folder.cleanup()


class Terminal:
    """qorctl in a terminal of 100 columns and 30 lines."""

    def __init__(self, station, command, *arguments):
        words = [str(ROOT / "cmake/wine-run.sh"), str(station.programs / "qorctl.exe"), command,
                 str(station.settings), "--trace", str(station.folder / "qorctl.log"), *arguments]
        self._master, slave = pty.openpty()
        subprocess.run(["stty", "rows", "30", "cols", "100"], stdin=slave, check=True)
        self._process = subprocess.Popen(
            words, stdin=slave, stdout=slave, stderr=slave, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        os.close(slave)
        self.raw = ""

    @property
    def text(self):
        """What was written, without what moves the cursor: that stands for blanks, too."""
        return ESCAPES.sub("", self.raw).replace("\r", "\n")

    def shows(self, words):
        return "".join(words.split()) in "".join(self.text.split())

    def await_text(self, words):
        end = time.monotonic() + STEP_SECONDS
        while not self.shows(words):
            if time.monotonic() > end or not self._read():
                raise AssertionError(f"'{words}' does not come:\n{self.text}")

    def press_ctrl_c(self):
        os.write(self._master, b"\x03")

    def exit_code(self):
        """Waits for the end."""
        end = time.monotonic() + STEP_SECONDS
        while self._process.poll() is None:
            self._read()
            if time.monotonic() > end:
                raise AssertionError("qorctl does not end:\n" + self.text)
        while self._read():
            pass
        return self._process.returncode

    def close(self):
        if self._process.poll() is None:
            self._process.kill()
            self._process.wait()
        os.close(self._master)

    def _read(self):
        """False once nobody writes any more and all is read."""
        ready, _, _ = select.select([self._master], [], [], 0.1)
        if not ready:
            return self._process.poll() is None
        try:
            data = os.read(self._master, 65536)
        except OSError:
            return False
        self.raw += data.decode("utf-8", "replace")
        return bool(data)
