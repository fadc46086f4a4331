#!/usr/bin/env python3
"""Opens the page of a watch in a browser and looks at what it shows.

usage: watch_page_test.py FOLDER    (with page.html, and samples.json: what the watch printed)
"""
import json
import sys
import unittest
from pathlib import Path

from chromium import Chromium

STALLING = "Engine"
NASTY = "</script><i>x</i>&lt;"
CHARTS = [["Engine [1/min]", "Turbine [1/min]"], ["OilPressure [bar]"], [NASTY + " [<b>%</b>]"]]
NO_VALUE = "\u2013"
STALE_S = 0.3  # three refresh periods
folder = Path(".")

# Coloured pixels of a chart's curve, one number per column of its plot area.
COLUMNS = """(() => {
    const chart = qorCharts()[%d], {left, top, width, height} = chart.bbox;
    const probe = document.createElement("canvas").getContext("2d", {willReadFrequently: true});
    probe.fillStyle = chart.series[%d]._stroke;
    probe.fillRect(0, 0, 1, 1);
    const [r, g, b] = probe.getImageData(0, 0, 1, 1).data;
    const {data} = chart.ctx.getImageData(left, top, width, height);
    const counts = new Array(Math.floor(width)).fill(0);
    for (let i = 0; i < data.length; i += 4)
        if (Math.abs(data[i] - r) + Math.abs(data[i + 1] - g) + Math.abs(data[i + 2] - b) < 24
            && data[i + 3] > 200)
            ++counts[(i / 4) %% width];
    return counts;
})()"""

# Where on the screen a time of a chart is.
PLACE = """(() => {
    const chart = qorCharts()[%d], box = chart.over.getBoundingClientRect();
    return [box.left + chart.valToPos(%r, "x"), box.top + box.height / 2];
})()"""


def shown(value):
    """A number as the page shows it: six significant digits."""
    return NO_VALUE if value is None else repr(float(f"{value:.6g}")).removesuffix(".0")


class WatchPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        lines = (folder / "samples.json").read_text(encoding="utf-8").splitlines()
        *cls.samples, cls.summary = [json.loads(line) for line in lines]

    def setUp(self):
        self.browser = Chromium()
        self.addCleanup(self.browser.close)
        self.browser.resize(1100, 1300)
        self.browser.use_colours("light")
        self.browser.open((folder / "page.html").as_uri())

    def texts(self, selector):
        return self.browser.run(
            f"[...document.querySelectorAll({selector!r})].map(e => e.textContent.trim())")

    def columns(self, chart, series):
        return self.browser.run(COLUMNS % (chart, series))

    def point_at_time(self, chart, time):
        self.browser.point_at(*self.browser.run(PLACE % (chart, time)))
        self.browser.settle()

    def gap(self):
        """The times of the last value before the stall and of the first one behind it."""
        times = [sample["t"] for sample in self.samples if STALLING in sample["values"]]
        length, before, behind = max((b - a, a, b) for a, b in zip(times, times[1:]))
        self.assertGreater(before, 0.3)
        self.assertGreater(length, 1)
        return before, behind

    def test_nothing_goes_wrong_and_nothing_is_fetched(self):
        self.browser.settle()
        page = (folder / "page.html").as_uri()
        asked = [event["request"]["url"] for event in self.browser.said("Network.requestWillBeSent")]
        self.assertEqual([], [url for url in asked if url != page and not url.startswith("data:")])
        self.assertIn(page, asked)
        self.assertEqual([], self.browser.said("Runtime.exceptionThrown"))
        self.assertEqual([], self.browser.said("Runtime.consoleAPICalled"))
        self.assertEqual([], self.browser.said("Log.entryAdded"))
        self.assertEqual([], self.browser.said("Page.javascriptDialogOpening"))

    def test_each_unit_has_a_chart_with_names_and_units_in_its_legend(self):
        legends = self.browser.run(
            "[...document.querySelectorAll('.chart')].map(chart =>"
            " [...chart.querySelectorAll('.u-legend .u-label')].map(e => e.textContent))")
        self.assertEqual([["time", *names] for names in CHARTS], legends)
        self.assertEqual(["1/min", "bar", "<b>%</b>"], self.texts(".chart h2"))

    def test_the_head_tells_of_the_watch(self):
        title = ", ".join(["Engine", "Turbine", "OilPressure", NASTY])
        self.assertEqual([title], self.texts("h1"))
        self.assertEqual(title, self.browser.run("document.title"))
        told = dict(zip(self.texts("#about dt"), self.texts("#about dd")))
        self.assertEqual(self.summary["settings"], told["Settings"])
        self.assertEqual(self.summary["transport"], told["Transport"])
        values = sum(len(sample["values"]) for sample in self.samples)
        self.assertEqual(f"{values}, refresh period 100 ms", told["Values"])
        self.assertRegex(told["Begun"], r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d$")
        self.assertIn("<img src=x onerror=alert(1)>", self.texts("#parameters td"))
        self.assertEqual(0, self.browser.run("document.images.length"))

    def test_every_curve_is_drawn_in_a_colour_of_its_own(self):
        colours = set()
        for chart, names in enumerate(CHARTS):
            for series in range(1, len(names) + 1):
                colours.add(self.browser.run(f"qorCharts()[{chart}].series[{series}]._stroke"))
                drawn = sum(1 for count in self.columns(chart, series) if count)
                self.assertGreater(drawn, 300, (chart, series))
        self.assertEqual(4, len(colours))

    def test_a_stall_is_a_gap_in_its_curve_alone(self):
        first, last = [self.browser.run(f"qorCharts()[0].valToPos({time}, 'x')")
                       for time in self.gap()]
        inside = slice(int(first) + 6, int(last) - 6)  # the outermost points have a width
        self.assertEqual(0, sum(self.columns(0, 1)[inside]))
        self.assertTrue(any(self.columns(0, 1)[:int(first)]))
        self.assertTrue(any(self.columns(0, 1)[int(last):]))
        self.assertTrue(all(self.columns(0, 2)[inside]))

    def read_out(self, name, time):
        """What the page shows of a curve at a time: what arrived then, or else nearest to it."""
        before, behind = self.gap()
        if name == STALLING and before < time < behind:
            return NO_VALUE
        own = {sample["t"]: sample["values"][name] for sample in self.samples
               if name in sample["values"]}
        moments = sorted({sample["t"] for sample in self.samples} | {round(before + STALE_S, 3)})
        at = moments.index(time)
        near = [i for i, moment in enumerate(moments) if moment in own]
        return shown(own[moments[min(near, key=lambda i: (abs(i - at), i))]])

    def test_the_read_out_is_what_arrived_under_the_pointer(self):
        before, behind = self.gap()
        for time in (self.samples[2]["t"], before, (before + behind) / 2, behind,
                     self.samples[-2]["t"]):
            self.point_at_time(0, time)
            first = self.texts(".chart:nth-of-type(1) .u-value")
            there = float(first[0].removesuffix(" s"))
            self.assertAlmostEqual(time, there, delta=0.06)  # to a pixel, and to an arrival
            self.assertEqual([self.read_out(name, there) for name in ("Engine", "Turbine")], first[1:])
            self.assertEqual([first[0], self.read_out("OilPressure", there)],
                             self.texts(".chart:nth-of-type(2) .u-value"))

    def test_a_dark_system_gets_a_dark_page_with_its_curves(self):
        light = self.browser.run("[getComputedStyle(document.body).backgroundColor,"
                                 " qorCharts()[0].series[1]._stroke]")
        self.browser.use_colours("dark")
        self.browser.settle()
        dark = self.browser.run("[getComputedStyle(document.body).backgroundColor,"
                                " qorCharts()[0].series[1]._stroke]")
        self.assertNotEqual(light[0], dark[0])
        self.assertNotEqual(light[1], dark[1])
        self.assertGreater(sum(self.columns(0, 1)), 300)

    def ranges(self):
        self.browser.settle()
        return self.browser.run("qorCharts().map(c => [c.scales.x.min, c.scales.x.max])")

    def test_looking_closer_in_one_chart_and_back_moves_them_all(self):
        whole = [self.samples[0]["t"], self.samples[-1]["t"]]
        self.assertEqual([whole] * len(CHARTS), self.ranges())
        left, right = [self.browser.run(PLACE % (1, self.samples[i]["t"])) for i in (10, 20)]
        self.browser.drag(left, right)
        for low, high in self.ranges():
            self.assertAlmostEqual(self.samples[10]["t"], low, delta=0.05)
            self.assertAlmostEqual(self.samples[20]["t"], high, delta=0.05)
        self.browser.double_click(left)
        self.assertEqual([whole] * len(CHARTS), self.ranges())


if __name__ == "__main__":
    folder = Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
