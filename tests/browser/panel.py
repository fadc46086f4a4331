"""The panel of `qorctl serve` as a person uses it: by what it shows, with pointer and keys."""
import time
import unittest

from chromium import Chromium
from served import Served

PATIENCE_S = 30
VIEWS = ["overview", "parameters", "watch", "codes", "bus", "trace"]

SEEN = """(() => {
    const found = document.querySelector(%r);
    if (!found) return null;
    found.scrollIntoView({block: "nearest", inline: "nearest"});
    const box = found.getBoundingClientRect();
    return [box.left + box.width / 2, box.top + box.height / 2, box.width * box.height];
})()"""


class Panel:
    """A browser with the page of a server."""

    def __init__(self, served, width=1600, scheme="light"):
        self.served = served
        self.browser = Chromium()
        self.browser.resize(width, 1000)
        self.browser.use_colours(scheme)
        self.browser.open(served.url)

    def run(self, script):
        return self.browser.run(script)

    def wait(self, script, what=None, seconds=PATIENCE_S):
        """Until a script's value is true; that value."""
        deadline = time.monotonic() + seconds
        while True:
            value = self.run(script)
            if value:
                return value
            if time.monotonic() > deadline:
                told = what() if callable(what) else what or script
                raise AssertionError(f"{told}: waited {seconds} s")
            time.sleep(0.05)

    def place(self, selector):
        found = self.wait(SEEN % selector, f"{selector} is there")
        if not found[2]:
            raise AssertionError(f"{selector} is not to be seen")
        self.browser.settle()
        return self.run(SEEN % selector)[:2]

    def click(self, selector):
        self.wait(f"!document.querySelector({selector!r})?.disabled", f"{selector} can be used")
        self.browser.click(self.place(selector))

    def type(self, selector, text):
        """In place of what a field has."""
        self.click(selector)
        self.run(f"document.querySelector({selector!r}).select()")
        if text:
            self.browser.write(text)
        else:
            self.browser.strike("Backspace")

    def text(self, selector):
        return self.run(f"document.querySelector({selector!r})?.innerText.trim()")

    def texts(self, selector):
        return self.run(f"[...document.querySelectorAll({selector!r})].map(e => e.innerText.trim())")

    def says(self, selector, text, seconds=PATIENCE_S):
        """Waits until an element is seen and shows a text somewhere."""
        self.wait(f"(e => !!e?.checkVisibility() && e.innerText.includes({text!r}))(document.querySelector({selector!r}))",
                  lambda: f"{selector} says {text!r}, not {self.text(selector)!r}", seconds)

    def view(self, name):
        self.click(f"#tab-{name}")

    def connect(self):
        self.says("#vital-server", "connected")
        self.click("#connect")
        self.says("#vital-ecu", "online")
        self.wait("!document.querySelector('#connect').hidden")

    def watch(self, name):
        self.type("#watch-name", name)
        self.browser.strike("Enter")
        self.wait(f"[...document.querySelectorAll('#watched tbody tr')].some(row =>"
                  f" row.dataset.name === {name!r} && !row.classList.contains('is-stale'))", f"{name} flows")

    def watched(self, name):
        """The cells of a row by the words of the table's head."""
        return self.run("(() => { const heads = [...document.querySelectorAll('#watched thead th')].map(e => e.textContent);"
                        f" const row = [...document.querySelectorAll('#watched tbody tr')].find(row => row.dataset.name === {name!r});"
                        " return Object.fromEntries([...row.cells].map((cell, i) => [heads[i], cell.textContent])); })()")

    def complaints(self):
        """What went wrong in the page."""
        return [str(event) for kind in ("Runtime.exceptionThrown", "Runtime.consoleAPICalled", "Page.javascriptDialogOpening")
                for event in self.browser.said(kind)]

    def close(self):
        self.browser.close()


class PanelTest(unittest.TestCase):
    """Each test gets a page of its own."""
    programs, transport = ".", "tcp"

    def open(self, served, **options):
        panel = Panel(served, **options)
        self.addCleanup(panel.close)
        return panel

    def serve(self, *options, **station):
        served = Served(self.programs, self.transport, *options, **station)
        self.addCleanup(served.close)
        return served


class SharedServer(PanelTest):
    """All tests of the class use one server, whose ECU is online."""
    station = {}

    @classmethod
    def setUpClass(cls):
        cls.served = Served(cls.programs, cls.transport, **cls.station)
        cls.addClassCleanup(cls.served.close)
        cls.served.call("connect")

    def setUp(self):
        self.panel = self.open(self.served)
        self.addCleanup(lambda: self.assertEqual([], self.panel.complaints()))
        self.panel.says("#vital-ecu", "online")


def main(arguments):
    """usage: SCRIPT PROGRAM-FOLDER [TRANSPORT]"""
    PanelTest.programs = arguments.pop(1)
    if len(arguments) > 1 and arguments[1] in ("tcp", "window"):
        PanelTest.transport = arguments.pop(1)
    unittest.main(module="__main__", argv=arguments, verbosity=2)
