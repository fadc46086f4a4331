"""The wire between a library and its QOR: hands bytes on, in pieces or several at once, and cuts connections at
random places. It listens only while QOR does."""
import selectors
import socket
import struct
import threading
import time
from pathlib import Path


class Side:
    """One direction of a connection."""

    def __init__(self, source, target, cut_after):
        self.source, self.target, self.left = source, target, cut_after
        self.waiting, self.due = b"", 0.0


class Link:
    def __init__(self, near, far, dice, mood):
        self.near, self.far, self.dice, self.mood = near, far, dice, mood
        self.up, self.down = (Side(*ends, mood.cut_after(dice)) for ends in ((near, far), (far, near)))


class Mood:
    """How the wire behaves."""

    def __init__(self, most=None, splits=0.0, merges=0.0):
        self.most, self.splits, self.merges = most, splits, merges

    def cut_after(self, dice):
        """So many bytes go through, then the connection goes; None: it stays. Small numbers come as often as great."""
        return None if self.most is None else int(self.most ** dice.random()) - 1


def connections_of(*ports):
    """Lines of the system's list: from, to, state, bytes that wait to be sent and to be read."""
    numbers = tuple(f":{port:04X}" for port in ports)
    for line in Path("/proc/net/tcp").read_text().splitlines()[1:]:
        near, far, state, waiting = line.split()[1:5]
        if near.endswith(numbers) or far.endswith(numbers):
            yield f"{near} {far} {state} {waiting}"


class Proxy:
    def __init__(self, port, qor_port, dice, mood_dice, count):
        """`count`: of what was done, by name. The dice are of two threads, which take turns as they like."""
        self.port, self.qor_port, self._count = port, qor_port, count
        self._dice, self._mood_dice = dice, mood_dice
        self._listener = None
        self._lock = threading.RLock()
        self._selector = selectors.DefaultSelector()
        self._links, self._mood = [], Mood()
        self._ends = False
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def listen(self):
        with self._lock:
            listener = socket.socket()
            listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            listener.bind(("127.0.0.1", self.port))
            listener.setblocking(False)
            listener.listen(16)
            self._listener = listener
            self._selector.register(listener, selectors.EVENT_READ, None)

    def refuse(self):
        with self._lock:
            if self._listener is not None:
                self._selector.unregister(self._listener)
                self._listener.close()
                self._listener = None
            for link in list(self._links):
                self._drop(link, False)

    def cut_all(self):
        with self._lock:
            for link in list(self._links):
                self._count("cuts")
                self._drop(link, True)

    def be(self, mood):
        """From the next connection on, and of those that are there what is still to come."""
        with self._lock:
            self._mood = mood
            for link in self._links:
                link.mood = mood
                for side in (link.up, link.down):
                    side.left = mood.cut_after(self._mood_dice)

    def view(self):
        """What there is of it, and of its connections by the system's own list."""
        with self._lock:
            own = f"the wire {'runs' if self._thread.is_alive() else 'has failed'}, " \
                  f"{'listens' if self._listener else 'refuses'}, {len(self._links)} connections"
        return "; ".join([own] + list(connections_of(self.port, self.qor_port)))

    def close(self):
        self._ends = True
        self._thread.join()
        self.refuse()
        self._selector.close()

    def _run(self):
        while not self._ends:
            ready = self._selector.select(self._pause())
            with self._lock:
                for key, _ in ready:
                    self._serve(key)
                now = time.monotonic()
                for link in list(self._links):
                    for side in (link.up, link.down):
                        if side.waiting and side.due <= now and link in self._links:
                            self._send(link, side)

    def _pause(self):
        with self._lock:
            dues = [side.due for link in self._links for side in (link.up, link.down) if side.waiting]
        return min([0.05] + [max(0.0, due - time.monotonic()) for due in dues])

    def _serve(self, key):
        if key.fileobj is self._listener:
            return self._accept()
        if key.data is None or key.data[0] not in self._links:
            return None  # went a moment ago
        link, side = key.data
        try:
            received = side.source.recv(65536)
        except BlockingIOError:
            return None
        except OSError:
            received = b""
        if not received:
            if side.waiting:
                self._send(link, side)
            return self._drop(link, False)
        if side.waiting:
            self._count("merged on the wire")
        side.waiting += received
        if link.dice.random() < link.mood.merges:
            side.due = time.monotonic() + link.dice.choice((0.001, 0.005, 0.02))
            return None
        return self._send(link, side)

    def _accept(self):
        try:
            near, _ = self._listener.accept()
        except OSError:
            return
        far = socket.socket()
        try:
            far.connect(("127.0.0.1", self.qor_port))
        except OSError:
            near.close()
            return
        self._count("connections")
        link = Link(near, far, self._dice, self._mood)
        for end, side in ((near, link.up), (far, link.down)):
            end.setblocking(False)
            end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            self._selector.register(end, selectors.EVENT_READ, (link, side))
        self._links.append(link)

    def _send(self, link, side):
        out = side.waiting
        if len(out) > 1 and link.dice.random() < link.mood.splits:
            out = out[:link.dice.randrange(1, len(out))]
            self._count("pieces on the wire")
        is_cut = side.left is not None and len(out) >= side.left
        if is_cut:
            out = out[:side.left]
        elif side.left is not None:
            side.left -= len(out)
        try:
            sent = side.target.send(out) if out else 0
        except BlockingIOError:
            sent = 0
        except OSError:
            return self._drop(link, False)
        if is_cut:
            self._count("cuts")
            return self._drop(link, link.dice.random() < 0.5)
        side.waiting = side.waiting[sent:]
        side.due = time.monotonic() + 0.0005
        return None

    def _drop(self, link, is_reset):
        if link not in self._links:
            return
        self._links.remove(link)
        for end in (link.near, link.far):
            self._selector.unregister(end)
            if is_reset:
                end.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            end.close()
