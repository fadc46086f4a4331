#!/usr/bin/env python3
"""Drives the coverage-guided fuzzers, which ./run fuzz has built.

usage: fuzz.py CHECKOUT BUILD-FOLDER fuzz|merge|coverage SECONDS TARGET...

fuzz: SECONDS in all, each target in 64 and in 32 bits side by side: the one with the seed that is always
the same, the other with a new one, or with that of QOR_FUZZ_SEED. New inputs stay in BUILD-FOLDER/fuzz/corpus, findings in
BUILD-FOLDER/fuzz/findings. merge: what of the new inputs reaches something new goes into the tree, and what
of the tree's own reaches nothing of its own goes. coverage: the branches of framing and parsing that the
corpus takes. The exit code is 1 after a finding, and 130 if it was ended from outside.
"""
import json
import os
import pathlib
import re
import secrets
import shutil
import signal
import subprocess
import sys
import time

FIXED_SEED = 20120917
LONGEST_INPUT = 4096  # bytes; longer ones take their time and reach nothing else
MEMORY_MB = 2048
LONGEST_S = 25  # of one execution, on a machine that has other work
PARSING = """src/protocol/ExternalCommand.cpp src/protocol/RecordHead.h src/protocol/RecordStream.cpp
src/protocol/Records.h src/protocol/Wire.cpp src/protocol/Wire.h src/protocol/Commands.h
src/transport/ExternalCommandFactory.cpp src/transport/ExternalOperatingWnd.cpp
src/transport/PendingRequests.cpp src/transport/ReceiveBuffer.h src/transport/ReceivedCommand.cpp
src/transport/SocketCommandReplyer.cpp src/transport/SocketWorker.cpp src/client/ClientCommands.cpp
src/client/Receiving.cpp src/client/ParamTables.cpp src/client/ClientSettings.cpp src/trace/TraceSettings.cpp
src/trace/TraceContext.cpp""".split()

running = []
stopped = []


def stop(number, frame):
    stopped.append(number)
    for process in running:
        process.terminate()


class Fuzzer:
    """One target in one width."""

    def __init__(self, root, build, target, bits):
        self.target, self.bits = target, bits
        self.program = build / f"fuzz{bits}" / "bin" / f"fuzz_{target}"
        self.kept = root / "tests/fuzz/corpus" / target
        self.corpus = build / "fuzz/corpus" / target
        self.findings = build / "fuzz/findings"
        self.log = build / "fuzz" / f"{target}-{bits}.log"
        self.dictionary = root / "tests/fuzz/dictionaries" / f"{target}.dict"
        for folder in self.corpus, self.findings:
            folder.mkdir(parents=True, exist_ok=True)

    def options(self):
        options = [f"-max_len={LONGEST_INPUT}", f"-rss_limit_mb={MEMORY_MB}", f"-timeout={LONGEST_S}",
                   f"-artifact_prefix={self.findings}/{self.target}-{self.bits}-"]
        return options + ([f"-dict={self.dictionary}"] if self.dictionary.exists() else [])

    def start(self, seconds, seed):
        self.seed = seed
        with open(self.log, "w") as log:
            process = subprocess.Popen(
                [self.program, *self.options(), f"-seed={seed}", f"-max_total_time={seconds}", "-reload=0",
                 "-print_final_stats=1", self.corpus, self.kept],
                stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        running.append(process)
        return process

    def tell(self, code, seconds):
        """Prints how it went; whether there was no finding."""
        text = self.log.read_text(errors="replace")
        steps = re.findall(r"^#(\d+)\s.* cov: (\d+) ft: (\d+)", text, re.M)
        done, edges, features = map(int, steps[-1]) if steps else (0, 0, 0)
        counted = re.search(r"^stat::number_of_executed_units: (\d+)", text, re.M)
        added = re.search(r"^stat::new_units_added:\s+(\d+)", text, re.M)
        done = int(counted.group(1)) if counted else done
        found = re.findall(r"Test unit written to (\S+)", text)
        print(f"{self.target:<12}{self.bits} bits  {done:>11,} executions {done // max(seconds, 1):>8,}/s "
              f"{edges:>6} edges {features:>7} features {int(added.group(1)) if added else 0:>5} new inputs"
              f"  {'finding: ' + found[-1] if found else 'no finding' if self.is_good(code) else self.log}",
              flush=True)
        self.executions = done
        return self.is_good(code) and not found

    @staticmethod
    def is_good(code):
        return code == 0 or bool(stopped)


def fuzz(root, build, seconds, targets):
    fresh = int(os.environ.get("QOR_FUZZ_SEED") or secrets.randbelow(2**31 - 2) + 1)
    print(f"seeds: {FIXED_SEED} in 64 bits, {fresh} in 32 bits", flush=True)
    each = max(seconds // len(targets), 1)
    good, executions = True, 0
    for target in targets:
        pair = [Fuzzer(root, build, target, bits) for bits in (64, 32)]
        begin = time.monotonic()
        for fuzzer, seed in zip(pair, (FIXED_SEED, fresh)):
            fuzzer.start(each, seed)
        codes = [process.wait() for process in running]
        running.clear()
        for fuzzer, code in zip(pair, codes):
            good = fuzzer.tell(code, round(time.monotonic() - begin)) and good
            executions += fuzzer.executions
        if stopped:
            break
    print(f"{executions:,} executions in all")
    return 1 if not good else 130 if stopped else 0


def merge(root, build, targets):
    """Both widths count: the smaller inputs of either that reach something."""
    for target in targets:
        small = build / "fuzz/merged" / target
        shutil.rmtree(small, ignore_errors=True)
        small.mkdir(parents=True)
        for bits in 64, 32:
            fuzzer = Fuzzer(root, build, target, bits)
            with open(fuzzer.log, "w") as log:
                process = subprocess.Popen(
                    [fuzzer.program, *fuzzer.options(), "-merge=1", small, fuzzer.kept, fuzzer.corpus],
                    stdin=subprocess.DEVNULL, stdout=log, stderr=log)
            running.append(process)
            if process.wait() != 0:
                print(f"{target} in {bits} bits cannot be merged: {fuzzer.log}")
                return 1
            running.clear()
        before = len(list(fuzzer.kept.iterdir()))
        shutil.rmtree(fuzzer.kept)
        shutil.copytree(small, fuzzer.kept)
        print(f"{target:<12}{before:>6} inputs before, now {len(list(small.iterdir())):>6}, "
              f"{sum(file.stat().st_size for file in small.iterdir()):>9,} bytes", flush=True)
    return 0




def tell_branches(root, report):
    total, taken, missing = 0, 0, []
    for file in report["data"][0]["files"]:
        name = os.path.relpath(file["filename"], root)
        if name not in PARSING:
            continue
        # A line of a template is there once per type: a way counts as gone if it is in one of them.
        ways = {}
        for function in report["data"][0]["functions"]:
            for branch in function["branches"]:
                if function["filenames"][branch[6]] != file["filename"]:
                    continue
                for place, count in ((*branch[:2], "true"), branch[4]), ((*branch[:2], "false"), branch[5]):
                    ways[place] = ways.get(place, 0) + count
        gone = sum(1 for count in ways.values() if count)
        total, taken = total + len(ways), taken + gone
        missing += [f"{name}:{line}:{column}: never {way}"
                    for (line, column, way), count in sorted(ways.items()) if count == 0]
        print(f"{name:<45}{gone:>5} of {len(ways):>4} branches")
    print(f"{'framing and parsing':<45}{taken:>5} of {total:>4} branches, {100 * taken / max(total, 1):.1f} %")
    print("\n".join(missing))


def coverage(root, build, targets):
    folder = build / "fuzz/coverage"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    objects = []
    for target in targets:
        fuzzer = Fuzzer(root, build, target, 64)
        program = build / "fuzzcoverage/bin" / f"fuzz_{target}"
        subprocess.run([program, "-runs=0", fuzzer.kept], check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       env={**os.environ, "LLVM_PROFILE_FILE": str(folder / f"{target}.raw")})
        objects += ["-object", program] if objects else [program]
    profile = folder / "all.profile"
    subprocess.run(["llvm-profdata", "merge", "-sparse", *folder.glob("*.raw"), "-o", profile], check=True)
    told = subprocess.run(["llvm-cov", "export", f"-instr-profile={profile}", *objects], check=True,
                          stdout=subprocess.PIPE).stdout
    tell_branches(root, json.loads(told))
    return 0


def main():
    root, build, way, seconds, *targets = sys.argv[1:]
    root, build = pathlib.Path(root), pathlib.Path(build)
    signal.signal(signal.SIGTERM, stop)
    signal.signal(signal.SIGINT, stop)
    if way == "fuzz":
        return fuzz(root, build, int(seconds), targets)
    return {"merge": merge, "coverage": coverage}[way](root, build, targets)


if __name__ == "__main__":
    sys.exit(main())
