#!/usr/bin/env python3
"""Takes the picture of a watch's page that README.md shows, with the pointer at a time of it.

usage: picture.py PAGE.html PICTURE.png SECONDS
"""
import sys
from pathlib import Path

from chromium import Chromium

PLACE = """(() => {
    const chart = qorCharts()[0], box = chart.over.getBoundingClientRect();
    return [box.left + chart.valToPos(%r, "x"), box.top + box.height / 2];
})()"""


def main():
    page, picture, seconds = sys.argv[1:]
    with Chromium() as browser:
        browser.resize(1000, 815)
        browser.use_colours("light")
        browser.open(Path(page).resolve().as_uri())
        browser.point_at(*browser.run(PLACE % float(seconds)))
        browser.settle()
        browser.picture(picture)


if __name__ == "__main__":
    main()
