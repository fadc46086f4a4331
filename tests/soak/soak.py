#!/usr/bin/env python3
"""A soak: real hosts and QORs under Wine, over both transports, with faults from one seed.

usage: soak.py PROGRAM-FOLDER [--short | --hours HOURS] [--seed N] [--stations N] [--folder FOLDER]
"""
import argparse
import random
import signal
import socket
import sys
import tempfile
import threading
import time
import traceback
from pathlib import Path

import wine
from station import Station
from tally import Tally

SHORT_S, TOLD_S, INTERRUPTED = 85, 30, 130
# The short one runs on whatever machine runs the tests.
GRACE_MS, SHORT_GRACE_MS = 250, 1000
# Out of the way of the ports that the system gives to outgoing connections: with one of those a library that looks
# for a QOR that is not there could meet itself.
QOR_PORTS, WIRE_PORTS = range(15000, 19000), range(19000, 23000)
# A soak that did nothing proves nothing.
SHORT_AT_LEAST = {"requests": 5000, "kills": 20, "cuts": 20, "comparisons of what a host holds": 2}


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("programs", type=Path)
    parser.add_argument("--short", action="store_true", help="about two minutes")
    parser.add_argument("--hours", type=float, default=1.0)
    parser.add_argument("--seed", type=int, default=None)
    parser.add_argument("--stations", type=int, default=None, help="half of them over window messages")
    parser.add_argument("--threads", type=int, default=None)
    parser.add_argument("--grace", type=int, default=None, help="ms that may be added to times while the machine has too much other work")
    parser.add_argument("--seconds", type=float, default=None)
    options = parser.parse_args()
    if options.grace is None:
        options.grace = SHORT_GRACE_MS if options.short else GRACE_MS
    if options.threads is None:
        options.threads = 24 if options.short else 64
    return options


def free_port(ports):
    dice = random.SystemRandom()
    while True:
        port = dice.choice(ports)
        with socket.socket() as probe:
            try:
                probe.bind(("127.0.0.1", port))
                return port
            except OSError:
                continue


def run_station(station, until, host_life_s, tally):
    try:
        station.run(until, host_life_s)
    except Exception:  # the soak itself has failed: that must not look like a success
        tally.breach(station.name, station.step, "the soak failed: " + traceback.format_exc())


def watch(threads, tally, ends):
    told = time.monotonic()
    while any(thread.is_alive() for thread in threads):
        time.sleep(0.2)
        if time.monotonic() - told > TOLD_S:
            told = time.monotonic()
            print(tally.progress(), flush=True)


def soak(options, folder, ends):
    seed = options.seed if options.seed is not None else random.SystemRandom().getrandbits(31)
    tally = Tally(seed)
    count = options.stations or (2 if options.short else 4)
    seconds = options.seconds or (SHORT_S if options.short else options.hours * 3600)
    host_life_s = max(20, seconds / 2) if options.short else 600
    print(f"seed {seed}: {count} stations for {seconds:.0f} s", flush=True)
    until, threads = time.monotonic() + seconds, []
    for i in range(count):
        tcp = i % 2 == 0
        name = f"{'tcp' if tcp else 'window'}-{i // 2 + 1}"
        station = Station(name, tcp, options.programs, folder / name, seed, tally, ends, options,
                          free_port(QOR_PORTS), free_port(WIRE_PORTS))
        threads.append(threading.Thread(target=run_station, args=(station, until, host_life_s, tally)))
        threads[-1].start()
    watch(threads, tally, ends)
    if options.short and not ends.is_set():
        for what, least in SHORT_AT_LEAST.items():
            if tally.done(what) < least:
                tally.breach("all", 0, f"too little was done: {tally.done(what)} {what}, not {least}")
    print(tally.table())
    print("interrupted" if ends.is_set() else "whole")
    print("soak: FAILED" if tally.breaches else "soak: ok", flush=True)
    return 1 if tally.breaches else INTERRUPTED if ends.is_set() else 0


def main():
    options = arguments()
    ends = threading.Event()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: ends.set())
    wine.Server.pid()
    with tempfile.TemporaryDirectory(prefix="qor-soak-") as folder:
        return soak(options, Path(folder), ends)


if __name__ == "__main__":
    sys.exit(main())
