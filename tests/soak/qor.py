"""A station's QOR: the simulator as a process of its own, that is started, hung and killed."""
import collections
import json
import signal
import subprocess

import faults
import wine
from model import model

READY_S = 60
SCRIPTED = "script: "


class Qor:
    def __init__(self, programs, folder, tcp, threads, port):
        self.program, self.folder, self.tcp, self.port = programs / "qor-simulator.exe", folder, tcp, port
        self.title = f"QorSoak-{folder.parent.name}-{folder.name}"
        self.caption = "Soak of " + self.title
        self.settings, self.log = folder / "qor.ini", folder / "qor.log"
        (folder / "model.json").write_text(json.dumps(model(threads)))
        self.process = None
        self.is_stopped = False
        self.faults = collections.Counter()  # by kind, from the logs

    def settings_for(self, port, executable=""):
        """Of the library."""
        return (f"[CommonSettings]\nQORexecutable={executable}\nUseTcp={'true' if self.tcp else 'false'}\n"
                f"ServerIp=127.0.0.1\nTcpPort={port}\n"
                f"ServerPipeName={self.title}-qor\nClientPipeName={self.title}-host\n")

    def prepare(self, script, style, window_answer, path=None, executable=""):
        (self.folder / "script.json").write_text(json.dumps(script))
        place = wine.windows_path(self.folder)
        (path or self.settings).write_text(
            self.settings_for(self.port, executable) +
            f"[Simulator]\nModel={place}\\model.json\nScript={place}\\script.json\nAnswerStyle={style}\n"
            f"WindowAnswer={window_answer}\nWindowSendMs=100\nConnectMs=30\nExitWithoutClientMs=120000\n"
            f"Log={place}\\qor.log\nExportPrefix={place}\\export-\n")

    def start(self):
        """Until it can be reached."""
        self.collect_log()
        self.process = wine.start(self.program, wine.windows_path(self.settings), stdin=subprocess.DEVNULL,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if not wine.wait_until(self._is_ready, READY_S):
            raise RuntimeError("QOR does not start: " + self._log_text())

    def _is_ready(self):
        has_ended = self.process.poll() is not None
        text = self._log_text()  # behind that: a script may have ended it before anybody looked
        if "listening on" in text or "for the client's window" in text:
            return True
        if has_ended:
            raise RuntimeError(f"QOR has ended with {self.process.returncode}: {text}")
        return False

    def _log_text(self):
        return self.log.read_text(errors="replace") if self.log.exists() else ""

    def collect_log(self):
        for line in self._log_text().splitlines():
            if SCRIPTED in line:
                self.faults[line.split(SCRIPTED, 1)[1]] += 1
        self.log.unlink(missing_ok=True)

    def lives(self):
        return self.process is not None and self.process.poll() is None

    def view(self):
        return f"QOR {'lives' if self.lives() else 'has gone'}, its log ends {self._log_text()[-1000:]!r}"

    def hang(self):
        self.is_stopped = True
        wine.send(self.process, signal.SIGSTOP)

    def go_on(self):
        self.is_stopped = False
        wine.send(self.process, signal.SIGCONT)

    def kill(self):
        """True if it was still there."""
        lived = self.lives()
        if self.process is not None:
            wine.kill(self.process)
        return lived
