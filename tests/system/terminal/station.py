"""A settings file with a simulated QOR of its own."""
import json
import os
import socket
import tempfile
from pathlib import Path


def windows_path(path):
    """Wine shows the whole file system as drive Z."""
    return "Z:" + str(path).replace("/", "\\")


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Station:
    """A settings file and all that is unique on the machine, in a temporary folder."""

    def __init__(self, programs, transport, script=None, simulator=None, model=None):
        """`simulator`: further lines of its section; `model`: what a model file says, else its usual one."""
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
        lines["Simulator"].update(simulator or {})
        for key, content in {"Script": script, "Model": model}.items():
            if content is not None:
                file = self.folder / f"{key.lower()}.json"
                file.write_text(json.dumps(content))
                lines["Simulator"][key] = windows_path(file)
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
