#!/usr/bin/env python3
"""How the panel looks and is operated without a pointer: in each view, at 900 and 1600 pixels, light and dark.

usage: panel_looks_test.py PROGRAM-FOLDER
"""
import sys

import panel
from panel import VIEWS, SharedServer

WIDTHS = [900, 1600]

# What can be operated and has no name that would be read out.
NAMELESS = """(() => {
    const isSeen = (e) => e.checkVisibility() && !e.closest("[hidden], [aria-hidden]") && !e.parentElement.closest("[role=img]");
    const nameOf = (e) => {
        const by = e.getAttribute("aria-labelledby");
        if (by) return by.split(" ").map((id) => document.getElementById(id)?.textContent ?? "").join(" ");
        if (e.ariaLabel) return e.ariaLabel;
        if (e.labels?.length) return [...e.labels].map((label) => label.textContent).join(" ");
        return e.matches("input, select") ? "" : e.textContent;
    };
    const all = document.querySelectorAll("button, input, select, a[href], [tabindex='0'], [role=tab], [role=radio],"
        + " [role=listbox], [role=region], dialog[open], canvas, [role=img]");
    return [...all].filter((e) => isSeen(e) && !nameOf(e).trim()).map((e) => e.outerHTML.slice(0, 120));
})()"""

# Texts with less contrast to what they stand on than 4.5 (3 if they are large), as WCAG counts it.
# What cannot be used at present is exempt there, too.
FAINT = """(() => {
    const probe = document.createElement("canvas").getContext("2d", {willReadFrequently: true});
    const rgba = (text) => {
        probe.clearRect(0, 0, 1, 1);
        probe.fillStyle = text;
        probe.fillRect(0, 0, 1, 1);
        const [r, g, b, a] = probe.getImageData(0, 0, 1, 1).data;
        return [r, g, b, a / 255];
    };
    const over = ([r, g, b, a], below) => [r, g, b].map((c, i) => c * a + below[i] * (1 - a));
    const light = (rgb) => {
        const [r, g, b] = rgb.map((c) => (c / 255 <= 0.04045 ? c / 255 / 12.92 : ((c / 255 + 0.055) / 1.055) ** 2.4));
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
    };
    const backOf = (e) => {
        if (!e) return [255, 255, 255];
        const own = rgba(getComputedStyle(e).backgroundColor);
        return own[3] === 1 ? own.slice(0, 3) : over(own, backOf(e.parentElement));
    };
    const opacityOf = (e) => (e ? Number(getComputedStyle(e).opacity) * opacityOf(e.parentElement) : 1);
    const texts = (e) => [...e.childNodes].some((n) => n.nodeType === 3 && n.textContent.trim()) || (e.matches("input") && e.value);
    const found = [];
    for (const e of document.querySelectorAll("body *")) {
        if (!texts(e) || !e.checkVisibility() || e.closest(":disabled, .unseen, .skip, datalist, option, script, style")) continue;
        const style = getComputedStyle(e);
        const back = backOf(e);
        const colour = rgba(style.color);
        const front = over([...colour.slice(0, 3), colour[3] * opacityOf(e)], back);
        const [high, low] = [light(front), light(back)].sort((a, b) => b - a);
        const ratio = (high + 0.05) / (low + 0.05);
        const isLarge = parseFloat(style.fontSize) >= 24 || (parseFloat(style.fontSize) >= 18.66 && Number(style.fontWeight) >= 700);
        if (ratio < (isLarge ? 3 : 4.5)) found.push([ratio.toFixed(2), e.textContent.trim().slice(0, 40), e.outerHTML.slice(0, 90)]);
    }
    return found;
})()"""

# Until no colour is on its way to another one.
FADED = "Promise.all(document.getAnimations().map((each) => each.finished)).then(() => true)"

# What reaches beyond the page, unless it lies in something that can be scrolled.
TOO_WIDE = """(() => {
    const limit = document.documentElement.clientWidth;
    const scrolls = (e) => e && (["auto", "scroll", "hidden"].includes(getComputedStyle(e).overflowX) && e !== document.documentElement
        && e !== document.body || scrolls(e.parentElement));
    const wide = [...document.querySelectorAll("body *")].filter((e) => e.checkVisibility() && !e.closest(".unseen, .skip")
        && e.getBoundingClientRect().right > limit + 0.5 && !scrolls(e.parentElement)).map((e) => e.outerHTML.slice(0, 90));
    if (document.documentElement.scrollWidth > limit) wide.push(`the page is ${document.documentElement.scrollWidth} wide`);
    return wide;
})()"""

# Texts that are cut off where nothing says so.
CUT = """[...document.querySelectorAll("button, th, td, dd, h1, h2, h3, label")].filter((e) => e.checkVisibility()
    && e.scrollWidth > e.clientWidth + 1 && getComputedStyle(e).overflowX !== "visible" && getComputedStyle(e).textOverflow !== "ellipsis")
    .map((e) => e.outerHTML.slice(0, 90))"""


class Looks(SharedServer):
    def fill(self):
        """Each view with something in it."""
        page = self.panel
        page.click("#pages [data-page=WorkingPage]")
        page.view("parameters")
        page.type("#search", "IgnitionMap")
        page.browser.strike("Enter")
        page.wait("document.querySelectorAll('#detail canvas').length")
        page.type(".cell[data-array=values][data-index='3']", "27")
        page.type("#search", "speed")
        page.view("watch")
        for name in ("EngineSpeed", "OilPressure", "ExhaustTemperature", "LambdaVoltage"):
            page.watch(name)
        page.click(".chip")
        page.view("codes")
        page.click("#codes-read")
        page.says("#codes-count", "5 codes")
        page.view("bus")
        page.click("#kwp button")
        page.says("#kwp-history", "5A")
        page.type("#kwp-data", "xyz")
        page.browser.strike("Enter")
        page.says("#kwp-failure", "no row of bytes")
        page.click("#can-open button")
        page.says("#can-history", "open")
        page.click("#can-read button")
        page.says("#can-values", "100")
        page.view("trace")
        page.says("#trace-lines", "OK on get")

    def look(self, script):
        """What a script finds anywhere, by view, width and colours."""
        self.fill()
        found = {}
        for scheme in ("light", "dark"):
            self.panel.browser.use_colours(scheme)
            for width in WIDTHS:
                self.panel.browser.resize(width, 1000)
                for view in VIEWS:
                    self.panel.run(f"location.hash = '#/{view}'")
                    self.panel.wait(f"!document.getElementById({view!r}).hidden")
                    self.panel.browser.settle()
                    self.panel.run(FADED)
                    problems = self.panel.run(script)
                    if problems:
                        found[view, width, scheme] = problems
        return found

    def test_all_that_can_be_operated_has_a_name(self):
        self.assertEqual({}, self.look(NAMELESS))

    def test_all_texts_have_contrast(self):
        self.assertEqual({}, self.look(FAINT))

    def test_nothing_reaches_beyond_the_page_or_is_cut_off(self):
        self.assertEqual({}, self.look(f"[...{TOO_WIDE}, ...{CUT}]"))

    def test_the_arrow_keys_go_from_tab_to_tab(self):
        self.panel.run("document.querySelector('#tab-overview').focus()")
        for key, view in (("ArrowRight", "parameters"), ("ArrowRight", "watch"), ("ArrowLeft", "parameters"), ("End", "trace"),
                          ("ArrowRight", "overview"), ("ArrowLeft", "trace"), ("Home", "overview")):
            self.panel.browser.strike(key)
            self.assertEqual(f"tab-{view}", self.panel.run("document.activeElement.id"))
            self.assertEqual([view], self.panel.run("[...document.querySelectorAll('[role=tabpanel]')].filter(e => !e.hidden).map(e => e.id)"))
            self.assertEqual(["true", "0"], self.panel.run("[document.activeElement.ariaSelected, String(document.activeElement.tabIndex)]"))
        self.assertEqual(1, self.panel.run("document.querySelectorAll('[role=tab][tabindex=\"0\"]').length"))

    def test_tab_visits_what_is_seen_in_the_order_in_which_it_is_seen(self):
        self.panel.view("bus")
        self.panel.run("document.querySelector('.skip').focus()")
        visited = []
        for _ in range(40):
            self.panel.browser.strike("Tab")
            place = self.panel.run("(e => e === document.body ? null : [e.id || e.textContent, e.matches(':focus-visible')"
                                   " && parseFloat(getComputedStyle(e).outlineWidth) > 0])(document.activeElement)")
            if place is None:
                break
            visited.append(place)
        self.assertEqual([], [name for name, has_ring in visited if not has_ring])
        wanted = ["connect", "tab-bus", "kwp-service", "kwp-data", "kwp-timeout", "can-rate", "can-type", "can-ids", "can-number1", "can-bytes"]
        names = [name for name, _ in visited]
        self.assertEqual(wanted, [name for name in names if name in wanted])

    def test_the_list_of_parameters_is_a_list_for_screen_readers(self):
        self.panel.view("parameters")
        self.panel.type("#search", "speed")
        for _ in range(2):
            self.panel.browser.strike("ArrowDown")
        at = self.panel.run("document.querySelector('#search').getAttribute('aria-activedescendant')")
        self.assertEqual("option", self.panel.run(f"document.getElementById({at!r}).getAttribute('role')"))
        self.panel.browser.strike("Enter")
        self.assertEqual("true", self.panel.run(f"document.getElementById({at!r}).ariaSelected"))

    def test_live_regions_tell_what_happens(self):
        self.panel.run("window.heard = []; for (const id of ['polite', 'urgent'])"
                       " new MutationObserver(() => heard.push(document.getElementById(id).textContent))"
                       ".observe(document.getElementById(id), {childList: true, characterData: true, subtree: true}); null")
        self.panel.click("#pages [data-page=ReferencePage]")
        self.panel.wait("heard.includes('ReferencePage is active.')")
        self.panel.click("#pages [data-page=WorkingPage]")
        self.panel.wait("heard.includes('WorkingPage is active.')")

    def test_nothing_is_fetched_but_from_its_server(self):
        self.fill()
        asked = {event["request"]["url"] for event in self.panel.browser.said("Network.requestWillBeSent")}
        own = {self.served.url, self.served.url + "rpc", self.served.url + "events"}
        self.assertEqual(set(), {url for url in asked - own if not url.startswith(("data:", "blob:"))})
        self.assertLessEqual(own, asked)


if __name__ == "__main__":
    panel.main(sys.argv)
