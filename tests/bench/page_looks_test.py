#!/usr/bin/env python3
"""Opens the page of the figures in a browser: what is drawn, at two widths, light and dark.

usage: page_looks_test.py UPLOT-FOLDER
"""
import sys
import tempfile
import unittest
from pathlib import Path

from synthetic import FLOOR, ROOT, file, figure, rounds, run

sys.path.insert(0, str(ROOT / "tests" / "browser"))
import figures  # noqa: E402
import page  # noqa: E402
from chromium import Chromium  # noqa: E402

uplot = Path(".")
WIDTHS = (900, 1600)
LEAST_PLOT = 220  # pixels in width: below it labels of an axis meet

# Pixels of a chart that have the colour of one of its curves.
DRAWN = """qorCharts().map((chart) => {
    const probe = document.createElement("canvas").getContext("2d", {willReadFrequently: true});
    const {left, top, width, height} = chart.bbox;
    const {data} = chart.ctx.getImageData(left, top, width, height);
    return chart.series.slice(1).map((series) => {
        probe.fillStyle = series._stroke;
        probe.fillRect(0, 0, 1, 1);
        const [r, g, b] = probe.getImageData(0, 0, 1, 1).data;
        let count = 0;
        for (let i = 0; i < data.length; i += 4)
            if (Math.abs(data[i] - r) + Math.abs(data[i + 1] - g) + Math.abs(data[i + 2] - b) < 24
                && data[i + 3] > 200)
                ++count;
        return count;
    });
})"""


def one_run(seed):
    return run([figure(FLOOR, rounds(seed, 300)), figure("a request", rounds(seed + 1, 950), 1000.0 + seed),
                figure("an action", rounds(seed + 2, 0.06), 1.0),
                figure("x" * 120, rounds(seed + 3, 98765.4), floor=FLOOR)])


class Looks(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        home = tempfile.TemporaryDirectory()
        cls.addClassCleanup(home.cleanup)
        runs = [figures.read(file(home.name, f"{seed}.json", one_run(seed))) for seed in (1, 2, 3)]
        cls.page = Path(home.name, "page.html")
        cls.page.write_text(page.page(runs, uplot), encoding="utf-8")

    def setUp(self):
        self.browser = Chromium()
        self.addCleanup(self.browser.close)

    def open(self, width=WIDTHS[0], colours="light"):
        self.browser.resize(width, 1000)
        self.browser.use_colours(colours)
        self.browser.open(self.page.as_uri())
        self.browser.settle()

    def test_nothing_goes_wrong_and_nothing_is_fetched(self):
        self.open()
        asked = [event["request"]["url"] for event in self.browser.said("Network.requestWillBeSent")]
        self.assertEqual([self.page.as_uri()], [url for url in asked if not url.startswith("data:")])
        for trouble in ("Runtime.exceptionThrown", "Runtime.consoleAPICalled", "Log.entryAdded"):
            self.assertEqual([], self.browser.said(trouble))

    def test_every_curve_and_near_bound_is_drawn_light_and_dark(self):
        # Of the last run a curve of all samples and one of the rounds each, before them the runs.
        curves = {"p50": [1, 1, 1, 1], "ratio": [2, 1, 1], "quantiles": [1, 2, 1, 1], "parts": [1, 2, 1, 1]}
        for colours in ("light", "dark"):
            for width in WIDTHS:
                self.open(width, colours)
                kinds = self.browser.run("[...document.querySelectorAll('.plot')].map(e => e.dataset.kind)")
                drawn = self.browser.run(DRAWN)
                for kind, wanted in curves.items():
                    counts = [each for each, its in zip(drawn, kinds) if its == kind]
                    self.assertEqual(wanted, [len(each) for each in counts], kind)
                    self.assertGreater(min(min(each) for each in counts), 60, (kind, colours, width))

    def test_the_dark_page_is_another_one(self):
        looks = "[getComputedStyle(document.body).backgroundColor, qorCharts()[0].series[1]._stroke]"
        self.open()
        light = self.browser.run(looks)
        self.browser.use_colours("dark")
        self.browser.settle()
        for before, behind in zip(light, self.browser.run(looks)):
            self.assertNotEqual(before, behind)

    def test_nothing_is_wider_than_the_window_and_no_plot_is_narrow(self):
        for width in WIDTHS:
            self.open(width)
            self.assertEqual(width, self.browser.run("document.documentElement.scrollWidth"))
            widths = self.browser.run("qorCharts().map(chart => chart.width)")
            self.assertEqual(15, len(widths))
            self.assertGreaterEqual(min(widths), LEAST_PLOT)
            inside = self.browser.run("""[...document.querySelectorAll(".card")].every(card =>
                [...card.querySelectorAll("canvas, .beside")].every(e =>
                    e.getBoundingClientRect().right <= card.getBoundingClientRect().right))""")
            self.assertTrue(inside, width)

    def test_every_axis_has_a_label_and_times_have_their_unit(self):
        self.open()
        for x, y in self.browser.run("qorCharts().map(chart => chart.axes.map(axis => axis.label))"):
            self.assertIn(x, ("share of the samples in %", "round", "run"))
            self.assertIn(y, ("\u00b5s", "\u00b5s, median", "\u00b5s, p50", "p50, times its bound",
                              "p50, times its floor"))

    def test_a_plot_begins_at_zero(self):
        self.open()
        self.assertEqual({0}, set(self.browser.run("qorCharts().map(chart => chart.scales.y.min)")))

    def test_a_new_width_draws_the_plots_anew(self):
        self.open(WIDTHS[0])
        before = self.browser.run("qorCharts()[0].width")
        self.browser.resize(700, 1000)
        self.browser.settle()
        self.assertLess(self.browser.run("qorCharts()[0].width"), before)


if __name__ == "__main__":
    uplot = Path(sys.argv.pop(1)).resolve()
    unittest.main()
