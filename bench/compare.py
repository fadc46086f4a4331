#!/usr/bin/env python3
"""Says what got slower or faster from one run of the benchmarks to another, beyond the noise.

usage: compare.py OLD NEW       exit code 1: something got slower; 2: the files cannot be compared
       compare.py --check OLD   only looks whether this file can be compared at all

Compared are the medians of the rounds, each over the bound of its figure that was measured in the same run:
machines differ in speed, and so does one from hour to hour. What is held to nothing, or to a fixed number, is
compared in microseconds, and judged only where the machine was the same and steady by its floors. Floors and
libraries of others are told and not judged: they are none of ours.

Rounds of one run are more alike than runs are, so a figure is slower only if it is so by more than a margin: the
test (Mann-Whitney) asks whether the new rounds are above the old ones and the margin. As many figures are tested
at once, the p values are Holm's.
"""
import math
import sys
from pathlib import Path
from typing import List, NamedTuple, Optional, Tuple

from scipy.stats import mannwhitneyu

import figures

MARGIN = 1.1
SIGNIFICANT = 0.01
STEADY = 1.25  # a machine none of whose floors changed by more times than that
SAME_MACHINE = ("name", "processor", "cores")


class Change(NamedTuple):
    name: str
    old: float
    new: float
    unit: str
    p: Optional[float]  # None: not judged

    @property
    def times(self) -> float:
        return self.new / self.old

    @property
    def verdict(self) -> str:
        if self.p is None:
            return "not judged"
        if self.p >= SIGNIFICANT:
            return ""
        return "SLOWER" if self.times > 1 else "faster"


class Pair(NamedTuple):
    old: figures.Figure
    new: figures.Figure

    @property
    def is_ours(self) -> bool:
        return not (self.new.is_floor or self.new.is_peer)

    @property
    def has_measured_bounds(self) -> bool:
        """Two runs never measure the very same: bounds that are equal are fixed numbers."""
        return self.old.bound > 0 and self.new.bound > 0 and self.old.bound != self.new.bound

    def scaled(self) -> Tuple[List[float], List[float]]:
        if not self.has_measured_bounds:
            return self.old.parts, self.new.parts
        return [each / self.old.bound for each in self.old.parts], [each / self.new.bound for each in self.new.parts]

    def change(self, p: Optional[float]) -> Change:
        if not self.has_measured_bounds:
            return Change(self.new.name, self.old.p50, self.new.p50, "us", p)
        return Change(self.new.name, self.old.p50 / self.old.bound, self.new.p50 / self.new.bound, "of bound", p)


def unrest(pairs: List[Pair]) -> float:
    """How many times a floor has changed, the most of them: no work on the library changes one."""
    changes = [pair.new.p50 / pair.old.p50 for pair in pairs if pair.new.is_floor]
    return max([1.0] + [max(each, 1 / each) for each in changes])


def is_same_machine(old: figures.Run, new: figures.Run) -> bool:
    return all(key in old.host and old.host[key] == new.host.get(key) for key in SAME_MACHINE)


def p_value(old: List[float], new: List[float], margin: float) -> float:
    """How likely rounds at least so far apart are if the difference is within the margin."""
    slower = mannwhitneyu(new, [each * margin for each in old], alternative="greater").pvalue
    faster = mannwhitneyu(new, [each / margin for each in old], alternative="less").pvalue
    return min(1.0, 2 * min(slower, faster))


def least_p(pair: Pair) -> float:
    """What rounds are worth that do not overlap at all."""
    return 2 / math.comb(len(pair.old.parts) + len(pair.new.parts), len(pair.old.parts))


def holm(values: List[float]) -> List[float]:
    """The same values, corrected for how many there are."""
    corrected = [0.0] * len(values)
    greatest = 0.0
    for rank, index in enumerate(sorted(range(len(values)), key=values.__getitem__)):
        greatest = max(greatest, min(1.0, values[index] * (len(values) - rank)))
        corrected[index] = greatest
    return corrected


def compare(old: figures.Run, new: figures.Run) -> List[Change]:
    pairs = [Pair(old.figures[name], figure) for name, figure in new.figures.items() if name in old.figures]
    change = unrest(pairs)
    takes_us = is_same_machine(old, new) and change <= STEADY
    judged = [pair for pair in pairs if pair.is_ours and pair.old.parts and pair.new.parts
              and (takes_us or pair.has_measured_bounds)]
    if not judged:
        raise figures.Unusable("the two runs have no figure in common that can be judged")
    if max(map(least_p, judged)) * len(judged) >= SIGNIFICANT:
        raise figures.Unusable(f"the two runs have too few rounds to tell anything of {len(judged)} figures; "
                               "10 in each are enough")
    p_of = dict(zip((pair.new.name for pair in judged), holm(
        [p_value(*pair.scaled(), MARGIN * (1 if pair.has_measured_bounds else change)) for pair in judged])))
    return [pair.change(p_of.get(pair.new.name)) for pair in pairs]


def rows(changes: List[Change]) -> List[str]:
    lines = [f"{'p50':<44}{'old':>10}{'new':>10} {'':<9}{'times':>7}{'p':>9}"]
    for each in changes:
        p = "-" if each.p is None else f"{each.p:.1g}"
        lines.append(f"{each.name:<44}{each.old:>10.2f}{each.new:>10.2f} {each.unit:<9}{each.times:>7.2f}{p:>9}"
                     f"  {each.verdict}".rstrip())
    return lines


def in_one_alone(old: figures.Run, new: figures.Run) -> List[str]:
    lines = []
    for which, here, there in (("old", old, new), ("new", new, old)):
        names = [name for name in here.figures if name not in there.figures]
        if names:
            more = f" and {len(names) - 3} more" if len(names) > 3 else ""
            lines.append(f"only in the {which} run: {'; '.join(names[:3])}{more}")
    return lines


def named(changes: List[Change], verdict: str) -> str:
    return "; ".join(f"{each.name} ({each.times:.2f} times, p {each.p:.1g})"
                     for each in changes if each.verdict == verdict)


def read(path: Path) -> figures.Run:
    run = figures.read(path)
    if not any(figure.parts for figure in run.figures.values()):
        raise figures.Unusable(f"{path}: tells no rounds (an older bench wrote it), so nothing can be compared")
    return run


def tell(old: figures.Run, new: figures.Run) -> int:
    changes = compare(old, new)
    judged = sum(each.p is not None for each in changes)
    print("\n".join(rows(changes) + in_one_alone(old, new)))
    faster, slower = named(changes, "faster"), named(changes, "SLOWER")
    if faster:
        print(f"faster beyond the noise: {faster}")
    print(f"{judged} of {len(changes)} figures judged: margin {100 * (MARGIN - 1):.0f} %, Holm's p below {SIGNIFICANT}",
          flush=True)
    if slower:
        print(f"run: slower beyond the noise: {slower}", file=sys.stderr)
        return 1
    print("none of them got slower beyond the noise")
    return 0


def main() -> int:
    old, new = sys.argv[1:]
    try:
        if old == "--check":
            read(Path(new))
            return 0
        return tell(read(Path(old)), read(Path(new)))
    except figures.Unusable as error:
        print(f"run: {error}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
