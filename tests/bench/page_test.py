#!/usr/bin/env python3
"""What stands in the page of the figures.

usage: page_test.py UPLOT-FOLDER
"""
import contextlib
import html
import io
import re
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

import synthetic
from synthetic import figure, number, run

import page  # noqa: E402

NASTY = "</script><img src=x onerror=alert(1)> & \"a'"
uplot = Path(".")
# How a page can ask for something that does not stand in it. A text may hold an address.
FETCHES = re.compile(r"""<(?:link|script|img|iframe|object|embed|source|video|audio)\b[^>]*?\b(?:src|href|data)\s*=\s*
                         ["']?+(?!data:)|\burl\(\s*["']?+(?!data:)|@import\b|\bfetch\(|XMLHttpRequest|WebSocket|import\(""",
                     re.VERBOSE | re.IGNORECASE)


class Page(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = Path(home.name)

    def made(self, *contents):
        files = [synthetic.file(self.home, f"{i}.json", each) for i, each in enumerate(contents)]
        self.assertEqual((0, ""), self.main(*files))
        return (self.home / "page.html").read_text(encoding="utf-8")

    def main(self, *files):
        said = io.StringIO()
        command = ["page.py", str(self.home / "page.html"), str(uplot), *map(str, files)]
        with mock.patch.object(sys, "argv", command), contextlib.redirect_stderr(said):
            return page.main(), said.getvalue()

    def test_every_figure_and_number_stands_in_it(self):
        names = [f"figure <{i}>" for i in range(40)]
        text = self.made(run([figure(name, [i + 1.25]) for i, name in enumerate(names)]
                             + [number("a rate & more", 123456)]))
        self.assertEqual(names, [html.unescape(each) for each in re.findall("<h3>(.*?)</h3>", text)])
        for i in range(40):
            self.assertIn(f"<td class=number>{i + 1.25:g}</td>", text)
        self.assertIn("<td>a rate &amp; more</td><td>per second</td><td class=number>123460</td>", text)

    def test_each_plot_has_a_label_and_its_numbers_in_a_table_beside(self):
        text = self.made(run([figure("ping", [7.5, 9.75, 8.25, 8.5], 10.5)]))
        card = re.search('<section class="card">.*?</section>', text, re.DOTALL).group(0)
        labels = re.findall('role="img" data-kind="([a-z0-9]+)" data-figure="0" aria-label="[^"]*ping[^"]*"', card)
        self.assertEqual(["quantiles", "parts"], labels)
        for value in ("7.5", "8.25", "9.75", "8.5", "29.25", "10.5", "0.81"):
            self.assertIn(f"<td class=number>{value}</td>", card)

    def test_nothing_is_fetched(self):
        text = self.made(run([figure("ping", [1])]), run([figure("ping", [1])]))
        self.assertIsNone(FETCHES.search(text))
        self.assertIn("default-src 'none'", text)
        for tag in ('<script src="https://example.com/a.js">', "<link rel=icon href=a.png>", "<img src=//a>",
                    "background: url(a.png)", "@import 'a'", "fetch('a')"):
            self.assertIsNotNone(FETCHES.search(text.replace("</body>", tag)), tag)

    def test_names_are_texts_and_no_markup(self):
        text = self.made(run([figure(NASTY, [1], floor="raw"), figure("raw", [1])], {"name": NASTY}, commit=NASTY),
                         run([figure(NASTY, [1])], commit=NASTY))
        self.assertNotIn("<img", text)
        self.assertIn(html.escape(NASTY), text)

    def test_a_history_has_the_p50_and_the_ratio_of_every_run_in_order(self):
        old = [{"name": "ping", "count": 1, "minUs": 1, "p50Us": 5, "p95Us": 5, "p99Us": 5, "p50BoundUs": 4,
                "p99BoundUs": 0}]
        text = self.made(old, run([figure("other", [1])]), run([figure("ping", [6], 8), figure("new", [1])]))
        history = text.partition('id="history"')[2].partition("<h2>")[0]
        self.assertEqual(["ping"], re.findall("<h3>(.*?)</h3>", history))
        rows = re.findall("<tr><td>(.*?)</td><td class=number>(.*?)</td><td class=number>(.*?)</td></tr>", history)
        self.assertEqual([("1", "5", "1.25"), ("2", page.NO_VALUE, page.NO_VALUE), ("3", "6", "0.75")], rows)
        self.assertIn("<tr><td>1</td><td>\u2013</td><td>0.json</td>", text)

    def test_one_run_has_no_history(self):
        self.assertNotIn("History", self.made(run([figure("ping", [1])])))

    def test_the_ratios_of_round_trips_to_their_floors_stand_beside_each_other(self):
        text = self.made(run([figure("ours raw", [4]), figure("ours", [13], floor="ours raw"),
                              figure("raw", [2]), figure("theirs", [9], floor="raw", peer=True)]))
        rows = re.findall("<tr><td>(ours|theirs)</td><td>(.*?)</td>.*<td class=number>(.*?)</td></tr>", text)
        self.assertEqual([("ours", "ours raw", "3.25"), ("theirs", "raw", "4.5")], rows)

    def test_a_damaged_file_is_told_in_one_line(self):
        damaged = synthetic.file(self.home, "damaged.json", "[]")
        self.assertEqual((2, f"run: {damaged}: holds no figures\n"), self.main(damaged))


if __name__ == "__main__":
    uplot = Path(sys.argv.pop(1)).resolve()
    unittest.main()
