#!/usr/bin/env python3
"""Takes the pictures of the panel that docs/panel.md shows, of a real server with the simulated QOR.

usage: panel_pictures.py PROGRAM-FOLDER PICTURE-FOLDER
"""
import os
import re
import shutil
import sys
import time
from pathlib import Path

from panel import Panel
from served import ROOT, CallFailed, Served, free_port

WIDTH, HEIGHT = 1280, 940


class Demonstration:
    """The programs and the settings of the demonstration in a folder as a station would have it."""
    FOLDER = "station"

    def __init__(self, programs):
        prefix = Path(os.environ.get("WINEPREFIX", ROOT / "build/wine-prefix"))
        self.programs = self.folder = prefix / "drive_c" / self.FOLDER
        self.folder.mkdir(exist_ok=True)
        for pattern in ("qorctl.exe", "qor-simulator.exe", "*.dll", "engine.json", "qor-settings.ini"):
            for file in programs.glob(pattern):
                shutil.copy(file, self.folder)
        self.settings = self.folder / "qor-settings.ini"
        self.settings.write_text(re.sub("TcpPort=.*", f"TcpPort={free_port()}", self.settings.read_text()))

    def close(self):
        shutil.rmtree(self.folder)


class ServedDemonstration(Served):
    def __init__(self, programs):
        self.station = Demonstration(programs)
        self._settings = f"C:\\{Demonstration.FOLDER}\\qor-settings.ini"
        self._options, self._token, self.port = [], None, 0
        self.start()


def show_overview(page):
    for method, params in (("getParamData", {"name": "EngineSped", "timeoutMs": 1000}),
                           ("setParamData", {"name": "FuelCutSpeed", "values": [99999], "timeoutMs": 1000})):
        try:
            page.served.call(method, **params)
        except CallFailed:
            pass  # a picture without failures would not show them
    page.click("#pages [data-page=WorkingPage]")
    page.says("#failures", "QOR refused the request.")
    page.wait("!document.querySelector('#name-count').textContent.includes('asking')")


def show_map(page):
    page.view("parameters")
    page.type("#search", "map")
    page.browser.strike("Enter")
    page.wait("document.querySelectorAll('#detail canvas').length")
    page.type(".cell[data-array=values][data-index='14']", "1420")
    page.browser.point_at(WIDTH - 30, HEIGHT - 10)


def show_drive(page):
    page.view("watch")
    for name in ("EngineSpeed", "EngineLoad", "ThrottlePosition"):
        page.watch(name)
    page.type("#drive-name", "ThrottleActuator")
    page.browser.strike("Enter")
    page.type(".actuator input", "30")
    time.sleep(6)
    button = page.place(".hold")
    page.browser.press(button)
    time.sleep(4)
    page.browser.move_on((button[0] + 90, button[1]))
    time.sleep(4)


def main():
    programs, folder = Path(sys.argv[1]).resolve(), Path(sys.argv[2])
    served = ServedDemonstration(programs)
    try:
        served.call("connect")
        for name, show, scheme in (("overview", show_overview, "light"), ("map", show_map, "light"),
                                   ("drive", show_drive, "dark")):
            page = Panel(served, width=WIDTH, scheme=scheme)
            page.browser.resize(WIDTH, HEIGHT)
            try:
                page.says("#vital-qor", "answers")
                show(page)
                page.browser.settle()
                page.browser.picture(folder / f"panel-{name}.png")
            finally:
                page.close()
    finally:
        served.close()


if __name__ == "__main__":
    main()
