"""The real server under Wine, with a simulated QOR of its own."""
import subprocess
import time
from pathlib import Path

import package
from station import Station, free_port, windows_path  # noqa: F401

from qorcontrol import Qor

WINE_RUN = package.ROOT / "cmake/wine-run.sh"
MODEL = package.ROOT / "simulator/models/engine.json"
PATIENCE_S = 30  # on a busy machine
CONNECT, KWP = 2, 15  # ids of records
CONTROL = 7
START, STOP, WRITE = 2, 3, 4  # what a record about an actuator asks for


def program_of(folder):
    return [str(WINE_RUN), str(Path(folder) / "qorctl.exe")]


def warm_wine():
    """Its services must not hold the pipes of a test's server."""
    subprocess.run([str(WINE_RUN)], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, check=True)


def start(station, **more):
    """A server of one's own. The trace lies in the station's folder, where no other test writes."""
    return Qor(station.settings, program=program_of(station.programs), trace=station.folder / "trace.log", **more)


def until(condition, patience_s=PATIENCE_S):
    """What the condition says, as soon as it says something; its last word when the time is over."""
    end = time.monotonic() + patience_s
    while not (said := condition()) and time.monotonic() < end:
        time.sleep(0.02)
    return said


def uses_settings(station):
    """The processes that were started with the station's settings file."""
    found = []
    for process in Path("/proc").glob("[0-9]*"):
        try:
            words = (process / "cmdline").read_bytes()
        except OSError:
            continue
        if station.folder.name.encode() in words:
            found.append(int(process.name))
    return found


def controls(station):
    """What QOR was asked about actuators, in order: START, STOP and WRITE."""
    asked = [int.from_bytes(bytes.fromhex(request["payload"])[4:8], "little")
             for request in station.requests() if request["id"] == CONTROL]
    return [operation for operation in asked if operation in (START, STOP, WRITE)]
