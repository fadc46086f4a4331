#!/usr/bin/env python3
"""Makes each named mutant in a copy of the tree and looks whether its test sees it.

usage: mutate.py ROOT COPY [FILTER]     FILTER: a regular expression on names; see catalogue.py

First all tests run on the tree as it is: a test that is red without its mutant proves nothing. Then
each mutant is made, the test's program is built, and that test alone runs. The exit code is 0 only if
every test has seen its mutant. A program that crashes or hangs has not: that shows a fault, but no test
told of it, so it counts only where the catalogue says that the fault shows itself so.
"""
import fnmatch
import re
import signal
import sys
from collections import Counter
from pathlib import Path
from typing import Dict, Iterator, List, NamedTuple, Optional, Tuple

from catalogue import Malformed, Mutant, mutants_of
from workshop import Ended, Passed, Workshop, now, passed_of

KILLED = "killed"
CRASHED = "killed by a crash"
HUNG = "killed by a hang"
DEATHS = {"crash": CRASHED, "hang": HUNG}
SURVIVED = "SURVIVED"
NO_BUILD = "does not build"
NO_TEXT = "no longer applies"
RED = "test is red without it"
MIN_LIMIT_S = 30.0
TIMES_SLOWER = 5.0  # so much longer than without the mutant before a test counts as hanging, also on
# a machine that has other work: what starting a program took belongs to it

Key = Tuple[str, str]


class Result(NamedTuple):
    mutant: Mutant
    outcome: str
    detail: str
    seconds: float


def say(text: str) -> None:
    print(text, flush=True)


def tail(output: str, lines: int = 25) -> str:
    return "\n".join(output.splitlines()[-lines:])


def grouped(mutants: List[Mutant]) -> Dict[Key, List[Mutant]]:
    groups: Dict[Key, List[Mutant]] = {}
    for mutant in sorted(mutants, key=lambda each: (each.key(), each.file)):
        groups.setdefault(mutant.key(), []).append(mutant)
    return groups


def is_green(passed: Passed, filters: str) -> bool:
    """Each part of the filter has run, and nothing of it has failed."""
    return all(fnmatch.filter(passed.seconds, wanted) and not fnmatch.filter(passed.failed, wanted)
               for wanted in filters.split(":"))


def limit_of(passed: Passed, filters: str) -> float:
    names = {name for wanted in filters.split(":") for name in fnmatch.filter(passed.seconds, wanted)}
    return MIN_LIMIT_S + TIMES_SLOWER * (passed.start_s + sum(passed.seconds[name] for name in names))


def how_killed(ended: Ended, limit_s: float) -> Tuple[str, str]:
    if ended.code is None:
        return HUNG, f"no end within {limit_s:.0f} s"
    failed = sorted(passed_of(ended.output).failed)
    return (KILLED, ", ".join(failed)) if failed else (CRASHED, "it did not come to its end")


def is_as_wanted(result: Result) -> bool:
    return result.outcome == KILLED or result.outcome == DEATHS.get(result.mutant.dies)


def unwanted(result: Result) -> str:
    is_dead = result.outcome in DEATHS.values()
    return ", which the catalogue does not say" if is_dead and not is_as_wanted(result) else ""


class Round:
    def __init__(self, workshop: Workshop):
        self.workshop = workshop

    def unmutated(self, key: Key, group: List[Mutant]) -> Optional[Passed]:
        """What the program's tests do on the tree as it is; None if it cannot be built."""
        built = self.workshop.build(*key)
        if built.code != 0:
            say(f"{key[1]} does not build without any mutant:\n{tail(built.output)}")
            return None
        filters = ":".join(sorted({each.filters for each in group}))
        start = now()
        return passed_of(self.workshop.test(*key, filters).output, now() - start)

    def attempt(self, mutant: Mutant, limit_s: float) -> Tuple[str, str]:
        if not self.workshop.apply(mutant):
            return NO_TEXT, f"its text does not occur exactly once in {mutant.file}"
        built = self.workshop.build(*mutant.key())
        if built.code != 0:
            errors = [line for line in built.output.splitlines() if "error: " in line]
            return NO_BUILD, errors[0].strip() if errors else "no error of a compiler"
        ended = self.workshop.test(*mutant.key(), mutant.filters, limit_s)
        if ended.code == 0:
            return SURVIVED, f"{mutant.filters} passes"
        return how_killed(ended, limit_s)

    def judge(self, mutant: Mutant, passed: Optional[Passed]) -> Tuple[str, str]:
        if passed is None:
            return NO_BUILD, "its program does not build without it either"
        if not is_green(passed, mutant.filters):
            return RED, mutant.filters
        return self.attempt(mutant, limit_of(passed, mutant.filters))

    def results(self, mutants: List[Mutant]) -> Iterator[Result]:
        for key, group in grouped(mutants).items():
            self.workshop.restore()
            say(f"== {key[1]} without a mutant")
            passed = self.unmutated(key, group)
            for mutant in group:
                start = now()
                outcome, detail = self.judge(mutant, passed)
                result = Result(mutant, outcome, detail, now() - start)
                say(f"{outcome}{unwanted(result)}: {mutant.name} ({detail}; {result.seconds:.0f} s)")
                yield result
        self.workshop.restore()


def tell_all(results: List[Result]) -> None:
    say("== mutants")
    for result in sorted(results, key=lambda each: each.mutant.name):
        say(f"{result.outcome:<22}  {result.mutant.name}{unwanted(result)}")
    counts = Counter(result.outcome for result in results)
    say("== " + ", ".join(f"{count} {outcome}" for outcome, count in counts.most_common()))


def main(arguments: List[str], make_workshop=Workshop) -> int:
    root, copy = Path(arguments[0]).resolve(), Path(arguments[1]).resolve()
    pattern = arguments[2] if len(arguments) > 2 else ""
    try:
        mutants = [mutant for mutant in mutants_of(root) if re.search(pattern, mutant.name)]
    except (Malformed, re.error) as error:
        print(f"mutate: {error}", file=sys.stderr)
        return 2
    if not mutants:
        print("mutate: no mutant has such a name", file=sys.stderr)
        return 2
    workshop = make_workshop(root, copy)
    workshop.fill()
    results = list(Round(workshop).results(mutants))
    tell_all(results)
    return 0 if all(is_as_wanted(result) for result in results) else 1


def guarded(arguments: List[str], make_workshop=Workshop) -> int:
    # All ends are one way: the child is ended, and the copy is mended by the next run.
    for number in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:
        signal.signal(number, signal.default_int_handler)
    try:
        return main(arguments, make_workshop)
    except KeyboardInterrupt:
        return 130


if __name__ == "__main__":
    sys.exit(guarded(sys.argv[1:]))
