"""What was done and what came of it, of all stations together."""
import collections
import threading
import time

CAUSES = ["ok", "agentEnded", "agentBusy", "pushedOut", "noConnection", "qorSilent", "noData", "refused",
          "unknownName", "kwpBeforeConnect", "cancelled", "connectReported", "ecuOffline", "resultTooLarge",
          "badArgument", "outOfMemory", "requestTooLarge", "qorChanged", "badAnswer", "systemFailure"]
WORST = ("worstRecoveryMs", "worstOverrunMs", "worstLatenessMs")
SHOWN = 40


class Tally:
    def __init__(self, seed):
        self.seed, self._lock = seed, threading.Lock()
        self._done, self._results, self._worst = (collections.Counter() for _ in range(3))
        self._running, self._growth = {}, {}
        self.breaches = []
        self._start = time.monotonic()

    def count(self, what, more=1):
        with self._lock:
            self._done[what] += more

    def breach(self, station, step, text):
        with self._lock:
            self.breaches.append(text)
            if len(self.breaches) <= SHOWN:
                print(f"BREACH seed {self.seed} station {station} step {step}: {text}", flush=True)

    def grown(self, by):
        with self._lock:
            for key, more in by.items():
                self._growth[key] = max(self._growth.get(key, more), more)

    def running(self, station, counts):
        """What a host that still runs has done until now."""
        with self._lock:
            self._running[station] = counts

    def ended(self, station, counts):
        with self._lock:
            self._running.pop(station, None)
            self._add(counts, self._results, self._worst)

    @staticmethod
    def _add(counts, results, worst):
        for cause, count in enumerate(counts.get("causes", [])):
            results[cause] += count
        for key in ("values", "marked", "streamed", "recoveries", "boxes", "pressed", "late", "lateOnBusy"):
            results[key] += counts.get(key, 0)
        for key in WORST:
            worst[key] = max(worst[key], counts.get(key, 0))

    def _totals(self):
        with self._lock:
            results, worst = collections.Counter(self._results), collections.Counter(self._worst)
            for counts in self._running.values():
                self._add(counts, results, worst)
            return collections.Counter(self._done), results, worst

    def requests(self):
        results = self._totals()[1]
        return sum(count for cause, count in results.items() if isinstance(cause, int))

    def done(self, what):
        return self.requests() if what == "requests" else self._totals()[0][what]

    def progress(self):
        done = self._totals()[0]
        return (f"{time.monotonic() - self._start:.0f} s: {self.requests()} requests, {done['kills']} kills, "
                f"{done['cuts']} cuts, {len(self.breaches)} breaches")

    def table(self):
        done, results, worst = self._totals()
        rows = [("seed", self.seed), ("seconds", round(time.monotonic() - self._start)),
                ("requests", self.requests())]
        rows += [("  " + name, results[cause]) for cause, name in enumerate(CAUSES) if results[cause]]
        rows += [("values looked at", results["values"] + results["streamed"]),
                 ("  of streams", results["streamed"]),
                 ("  marked as perhaps an earlier request's", results["marked"]),
                 ("message boxes, told by the library", results["boxes"]),
                 ("  pressed on the screen", results["pressed"])]
        rows += [(name, count) for name, count in sorted(done.items())]
        rows += [("recoveries measured", results["recoveries"]),
                 ("  slowest, ms (at most 1500)", worst["worstRecoveryMs"]),
                 ("calls more than 50 ms beyond their time", results["late"] + results["lateOnBusy"]),
                 ("  on a busy machine", results["lateOnBusy"]),
                 ("  most, ms", worst["worstOverrunMs"]),
                 ("  the machine's own lateness then, ms", worst["worstLatenessMs"]),
                 *((f"most {key} that a host held more at its end, bytes", more)
                   for key, more in sorted(self._growth.items())),
                 ("breaches", len(self.breaches))]
        width = max(len(name) for name, _ in rows)
        return "\n".join(f"{name:<{width}}  {count:>12}" for name, count in rows)
