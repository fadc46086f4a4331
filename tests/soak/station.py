"""One station: a host that stays, and a QOR that comes and goes, and does wrong. All decisions come from the seed;
only how they meet in time is the machine's."""
import json
import random
import threading
import time

import faults
from host import Host, HostLost, ServerLost, Stopped
from proxy import Mood, Proxy
from qor import Qor
import wine

# What the system may have more of at an equal point, without anything that has leaked. (Wine makes an event now and
# then.) A leak per connection, per call or per QOR is a multiple of it.
MORE_HANDLES, MORE_THREADS, MORE_HEAP, MORE_PRIVATE = 6, 2, 400_000, 16_000_000
CHANGES = 12
VISITORS, GONE_S, CRASH_S, VISIT = 8, 30, 5, "visit.ini"


class Station:
    def __init__(self, name, tcp, programs, folder, seed, tally, ends, options, port, wire_port):
        self.name, self.tcp, self.programs, self.tally, self.ends = name, tcp, programs, tally, ends
        self.dice = random.Random(f"{seed}/{name}")
        self.options, self.step = options, 0
        folder.mkdir(parents=True)
        self.folder = folder
        dices = [random.Random(f"{seed}/{name}/{part}") for part in ("wire", "moods")]
        self.proxy = Proxy(wire_port, port, *dices, tally.count) if tcp else None
        self.qor = Qor(programs, folder, tcp, options.threads, port)
        self.settings = folder / "host.ini"
        self.settings.write_text(self.qor.settings_for(self.proxy.port if tcp else port))
        self.host, self.before, self.period_ms, self.is_strict = None, None, 0, True
        self.reachable_us = 0  # since then QOR is, by the host's clock
        self.lives = 0  # of QOR

    # The whole of it.

    def run(self, until, host_life_s):
        """Hosts follow each other until the time is over."""
        try:
            while time.monotonic() < until and not self.ends.is_set():
                self.live_or_lose_all(min(until, time.monotonic() + host_life_s * self.dice.uniform(0.7, 1.3)))
        except HostLost as lost:
            self.told(str(lost))
        except Stopped:
            pass
        finally:
            self.close()

    def live_or_lose_all(self, until):
        """That Wine's server crashes is none of the library's faults, whatever it looks like from here."""
        try:
            self.live(until)
        except Stopped:
            raise
        except Exception:  # pylint: disable=broad-except
            # (It still is there while the system writes down how it crashed.)
            if self.host is None or not wine.wait_until(lambda: not wine.lives(self.host.server), CRASH_S):
                raise
            self.tally.count("hosts lost with Wine's server")
            self.host.kill()
            self.tally.ended(self.name, self.host.counts)
            self.host = None
            self.stop_qor()

    def close(self):
        if self.host is not None:
            self.host.kill()
            self.tally.ended(self.name, self.host.counts)
        self.qor.kill()
        self.qor.collect_log()
        wine.kill_all_of(self.folder / VISIT)  # a visit that was broken off
        wine.wait_until(lambda: not list(wine.naming(self.folder)), GONE_S, 0.1)
        left = wine.kill_all_of(self.folder)
        if left:
            self.told(f"{left} processes were left running")
        for kind, count in self.qor.faults.items():
            self.tally.count("answers " + kind, count)
        if self.proxy is not None:
            self.proxy.close()

    def live(self, until):
        """One host, from its start to its end; what it holds is compared in between."""
        self.begin_host()
        self.before = self.census()
        while time.monotonic() < until:
            self.cycle()
        self.compare()
        self.end_host()
        self.visit()

    def begin_host(self):
        self.tally.count("hosts")
        self.host = Host(self.programs, self.settings, self.qor.caption, self.dice.getrandbits(48),
                         self.options.threads, self.options.grace, self.told, self.ends)
        self.start_qor(wrongs=0)
        self.order(f"open {self.dice.randrange(3)}")
        self.recover(self.clock_us())
        self.connect(100)
        self.order("warm")
        # What comes once comes in the first rounds.
        for _ in range(2):
            self.cycle()

    def end_host(self):
        """In order, or as in a crash."""
        if self.dice.random() < 0.5:
            self.order("quiet")
            self.end_in_order()
        else:
            self.order("load few")
            self.rest(self.dice.uniform(0.05, 0.3))
            self.host.kill()
            self.tally.count("hosts killed")
        self.tally.ended(self.name, self.host.counts)
        self.host = None
        self.stop_qor()

    def end_in_order(self):
        answer = self.host.end()
        if not answer.startswith("done"):
            self.told("a host does not end in order: " + answer)

    def visit(self):
        """A host that starts its QOR by itself, and that QOR goes with it; unless the host dies."""
        settings = self.folder / VISIT
        style = self.dice.choice(("stamped", "separate"))
        self.qor.prepare(faults.script(self.dice, self.tcp, self.qor.caption, 0), style, "released", settings,
                         wine.windows_path(self.qor.program))
        self.tally.count("hosts that start QOR")
        self.host = Host(self.programs, settings, self.qor.caption, self.dice.getrandbits(48), VISITORS,
                         self.options.grace, self.told, self.ends)
        self.order("open 1")
        self.order("await")
        self.connect(100)
        self.order(f"verify {self.step}")
        self.order("load few")
        self.rest(self.dice.uniform(0.1, 0.6))
        if self.dice.random() < 0.6:
            self.order("quiet")
            self.end_in_order()
            if not wine.wait_until(lambda: not list(wine.naming(settings)), GONE_S, 0.1):
                self.told("QOR is still there although its host has ended")
        else:
            self.host.kill()
            self.tally.count("hosts killed")
        self.tally.ended(self.name, self.host.counts)
        self.host = None
        wine.kill_all_of(settings)

    # Its parts.

    def told(self, text):
        self.tally.breach(self.name, self.step, text)

    def order(self, text):
        if self.ends.is_set():
            raise Stopped
        answer = self.host.order(text)
        self.tally.running(self.name, self.host.counts)
        if answer.startswith(("stuck", "unknown", "never")):
            raise HostLost(f"'{text}': {answer}")
        return answer

    def rest(self, seconds):
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            if self.ends.is_set():
                raise Stopped
            self.host.watch()
            time.sleep(max(0.0, min(0.2, deadline - time.monotonic())))

    def start_qor(self, wrongs):
        """A new one, which can be reached from then on."""
        style = self.dice.choice(("stamped", "separate"))
        script = faults.script(self.dice, self.tcp, self.qor.caption, wrongs)
        self.qor.prepare(script, style, self.dice.choice(("released", "later")))
        self.is_strict = not faults.may_fool(script, style)
        self.qor.start()
        self.tally.count("QORs started")
        if self.tcp:
            self.proxy.be(Mood())
            self.reachable_us = self.clock_us()
            self.proxy.listen()
        else:
            self.reachable_us = self.clock_us()
        self.lives += 1
        self.order(f"life {self.lives}")

    def stop_qor(self):
        if self.qor.kill():
            self.tally.count("kills")
        if self.tcp:
            self.proxy.refuse()

    def clock_us(self):
        """The host's, now; the way there and back is part of the time that QOR has been there."""
        return self.host.now_us()

    def recover(self, since_us):
        self.order("strict 1" if self.is_strict else "strict 0")
        try:
            self.order(f"recover {since_us}")
        except HostLost:
            self.told("seen from outside: " + self.view())
            raise

    def view(self):
        """Of a connection that does not come: whose fault it is."""
        wire = self.proxy.view() if self.tcp else "window messages"
        return f"{self.qor.view()}; {wire}"

    def connect(self, period_ms):
        """Without a period nothing comes out of the library's cache, so that each value must be a new one; but QOR
        would send streams as fast as it can, which is more than a busy machine takes."""
        self.period_ms = period_ms
        self.order(f"streams {1 if period_ms else 0}")
        answer = self.order(f"connect {period_ms}")
        if answer != "done":
            # A result that comes before the agent has seen the acknowledgement is lost, and the connect cancelled.
            self.tally.count("connects that were tried again")
            again = self.order(f"connect {period_ms}")
            if again != "done":
                self.told(f"no connect although QOR does nothing wrong: {answer}; {again}")

    def census(self):
        """At a point that is the same each time: all is quiet, QOR does nothing wrong, the ECU is online."""
        self.renew(wrongs=0)
        self.connect(100)
        self.order(f"verify {self.step}")
        # Who gave up has no answer queue until the next call of the kind: now each thread has all of them.
        self.order("warm")
        self.rest(0.3)
        return json.loads(self.order("census"))

    def change_often(self):
        """What is lost with each connection or QOR must show, also where a slow machine does little in the time."""
        self.renew(wrongs=0)
        for _ in range(CHANGES):
            if self.tcp:
                since_us = self.clock_us()
                self.proxy.cut_all()
                self.recover(since_us)
            else:
                self.renew(wrongs=0)

    def compare(self):
        self.change_often()
        after, before = self.census(), self.before
        more = {kind: after["handles"].get(kind, 0) - before["handles"].get(kind, 0)
                for kind in {*after["handles"], *before["handles"]}}
        self.tally.count("comparisons of what a host holds")
        more = {kind: count for kind, count in more.items() if count}
        if sum(more.values()) > MORE_HANDLES or any(count > MORE_HANDLES for count in more.values()):
            self.told(f"handles are lost: {more}")
        self.tally.grown({key: after[key] - before[key] for key in ("heap", "private")})
        for key, most in (("threads", MORE_THREADS), ("heap", MORE_HEAP), ("private", MORE_PRIVATE)):
            if after[key] - before[key] > most:
                self.told(f"{key} grow: {before[key]} before, {after[key]} now")

    def renew(self, wrongs):
        self.order("quiet")
        self.stop_qor()
        self.start_qor(wrongs)
        self.recover(self.reachable_us)

    def cycle(self):
        """A QOR, a load, faults, and its end."""
        self.step += 1
        wrongs = self.dice.choice((0, 0, 3, 6, 12))
        self.renew(wrongs)
        if wrongs == 0:
            self.connect(self.dice.choice((0, 0, 100)))
            self.order(f"verify {self.step}")
        elif self.dice.random() < 0.5:
            self.order(f"connect {self.period_ms}")
        if self.dice.random() < 0.06:
            return self.disturb()
        self.order("load " + ("crowd" if self.dice.random() < 0.12 else "few"))
        for _ in range(self.dice.randint(1, 4)):
            self.dice.choice(self.faults())()
        return self.end_of_qor()

    def disturb(self):
        """An order that has no time of its own, in the middle of which QOR hangs or dies."""
        text = self.dice.choice(("segment", f"connect {self.period_ms}"))
        self.host.begin(text)
        self.rest(self.dice.uniform(0.0, 0.05))
        if self.dice.random() < 0.5:
            self.hang()
        else:
            self.stop_qor()
        self.host.answer(text)
        self.tally.count("connects and segments disturbed")

    def faults(self):
        usual = [self.calm, self.hang, self.kill_and_start]
        return usual + [self.cuts, self.cuts, self.cuts, self.stutter] if self.tcp else usual

    def calm(self):
        self.rest(self.dice.uniform(0.1, 0.8))

    def hang(self):
        self.rest(self.dice.uniform(0.0, 0.3))
        self.qor.hang()
        self.tally.count("hangs")
        self.rest(self.dice.uniform(0.02, 1.0))
        self.qor.go_on()

    def kill_and_start(self):
        """While the load goes on."""
        self.rest(self.dice.uniform(0.0, 0.4))
        if self.dice.random() < 0.3:
            self.qor.hang()
            self.tally.count("hangs")
            self.rest(self.dice.uniform(0.0, 0.2))
        self.order("life 0")
        self.stop_qor()
        self.rest(self.dice.choice((0.0, 0.0, 0.3)))
        self.start_qor(self.dice.choice((0, 4)))
        # Before the first answers that it may be fooled by, for FIRST_AT comes after many of them.
        self.order("strict 1" if self.is_strict else "strict 0")

    def cuts(self):
        self.proxy.be(Mood(self.dice.choice((30, 200, 1000)), 0.1, 0.1))
        self.rest(self.dice.uniform(2.0, 6.0))
        self.proxy.be(Mood())

    def stutter(self):
        self.proxy.be(Mood(None, 0.4, 0.3))
        self.rest(self.dice.uniform(0.3, 1.0))
        self.proxy.be(Mood())

    def end_of_qor(self):
        """It dies under the load, or goes when all is quiet."""
        if self.dice.random() < 0.6:
            self.stop_qor()
            self.rest(self.dice.uniform(0.0, 0.4))
        self.order("quiet")
