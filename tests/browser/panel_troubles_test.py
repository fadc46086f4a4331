#!/usr/bin/env python3
"""The panel when things are not as one would wish: a server that is read-only, guarded or gone, a connect
that takes long, a QOR that asks, values that stall, texts that would break a page.

usage: panel_troubles_test.py PROGRAM-FOLDER
"""
import sys
import time

import panel
from panel import PanelTest
from served import CallFailed

NASTY = "</script><i>x</i>&lt;\"'"
TAG = "<img src=x onerror=alert(1)>"
MODEL = {
    "parameters": [
        {"name": NASTY, "description": TAG, "unit": "<b>%</b>", "group": "</title>" + TAG, "limits": [0, 10],
         "live": [{"kind": "sine", "mean": 5, "amplitude": 2, "periodS": 2}]},
        {"name": "__proto__", "description": "constructor", "unit": "toString", "group": "Actuator",
         "limits": [0, 100], "value": 0, "actuator": True},
        {"name": "=1+2", "description": "formula", "unit": "", "group": "g", "limits": [0, 10],
         "live": [{"kind": "sine", "mean": 5, "amplitude": 2, "periodS": 2}]}],
    "troubleCodes": [{"code": "0x1", "status": 1, "texts": [TAG, NASTY, "a", "b"]}],
    "kwpServices": [], "canFrames": [],
}
READ_ONLY = "This server is read-only"


class Troubles(PanelTest):
    def test_a_connect_tells_how_far_it_is_and_can_be_cancelled(self):
        served = self.serve(simulator={"ConnectMs": 20000})
        page = self.open(served)
        page.says("#vital-server", "connected")
        page.click("#connect")
        page.says("#connect-progress", "Connecting")
        page.says("#vital-ecu", "connecting")
        page.wait("/[1-9]\\.\\d s/.test(document.querySelector('#connect-progress').textContent)")
        page.click("#connect-cancel")
        page.says("#connect-failure", "Not connected")
        page.says("#connect-failure", "cancelled")
        page.wait("document.querySelector('#connect-progress').hidden")
        self.assertFalse(served.call("getState")["isConnecting"])

    def test_who_looks_on_sees_anothers_connect(self):
        served = self.serve(simulator={"ConnectMs": 2500})
        first, second = self.open(served), self.open(served)
        for page in (first, second):
            page.says("#vital-server", "connected")
        first.click("#connect")
        second.says("#connect-progress", "Another client connects")
        self.assertTrue(second.run("document.querySelector('#connect-cancel').hidden"))
        second.says("#vital-ecu", "online")

    def test_a_read_only_server_lets_look_and_says_why_no_more(self):
        served = self.serve("--read-only")
        page = self.open(served)
        page.says("#banner-read-only", READ_ONLY)
        self.assertEqual([], page.run("[...document.querySelectorAll('[data-changes]')].filter(e => !e.disabled).map(e => e.id)"))
        page.view("parameters")
        page.type("#search", "BoostMap")
        page.browser.strike("Enter")
        page.wait("document.querySelectorAll('#detail .cell').length")
        self.assertTrue(page.run("[...document.querySelectorAll('#detail .cell')].every(e => e.disabled)"))
        page.says("#detail .why-off", READ_ONLY)
        for view in ("overview", "watch", "codes", "bus"):
            page.view(view)
            page.says(f"#{view} .why-off", READ_ONLY)
        page.view("codes")
        page.click("#codes-read")
        page.says("#codes-count", "5 codes")

    def test_a_server_that_wants_a_token_gets_it(self):
        served = self.serve(token="correct-horse-battery-staple")
        page = self.open(served)
        page.says("#token-dialog", "This server wants a token")
        page.browser.write("wrong")
        page.browser.strike("Enter")
        page.says("#token-wrong", "refused")
        page.type("#token", "correct-horse-battery-staple")
        page.browser.strike("Enter")
        page.says("#vital-server", "connected")
        page.says("#vital-qor", "answers")
        page.browser.open(served.url + "?again")  # the same window has it still
        page.says("#vital-server", "connected")
        self.assertNotIn("correct-horse-battery-staple", page.run("document.documentElement.outerHTML"))

    def test_a_lost_server_is_marked_and_found_again(self):
        served = self.serve()
        served.call("connect")
        page = self.open(served)
        page.says("#vital-ecu", "online")
        page.view("watch")
        page.watch("EngineSpeed")
        served.stop()
        page.says("#banner-lost", "Connection to the server lost.")
        page.says("#vital-server", "lost")
        page.says("#vital-ecu", "unknown")
        page.wait("[...document.querySelectorAll('[data-needs]')].every(e => e.disabled)")
        page.says("#watched tbody", "none for")
        served.start()
        served.call("connect")
        page.wait("!document.querySelector('#banner-lost')", seconds=30)
        page.says("#vital-ecu", "online")
        page.wait("!document.querySelector('#watched tbody tr').classList.contains('is-stale')")
        self.assertEqual(1, page.run("document.querySelectorAll('#watched tbody tr').length"))
        gap = page.run("qorCharts()[0].data[1].includes(null)")
        self.assertTrue(gap)

    def test_values_that_stall_are_marked_and_leave_a_gap(self):
        def at_service(number, effect):
            return {"match": {"id": 15, "operation": number}, "action": {"then": [{"afterMs": 0, effect: "EngineSpeed"}]}}

        served = self.serve(script={"rules": [at_service(0x3E, "stall"), at_service(0x21, "resume")]})
        page = self.open(served)
        page.connect()
        page.view("watch")
        page.watch("OilPressure")
        page.watch("EngineSpeed")
        served.call("sendKwpCommand", service=0x3E, timeoutMs=1000)
        page.wait("document.querySelector('#watched [data-name=EngineSpeed]').classList.contains('is-stale')")
        page.says("#watched [data-name=EngineSpeed]", "none for")
        self.assertFalse(page.run("document.querySelector('#watched [data-name=OilPressure]').classList.contains('is-stale')"))
        served.call("sendKwpCommand", service=0x21, data="01", timeoutMs=1000)
        page.wait("!document.querySelector('#watched [data-name=EngineSpeed]').classList.contains('is-stale')")
        drawn = "qorCharts().find(c => c.series[1].label === %r).data[1].includes(null)"
        page.wait(drawn % "EngineSpeed")
        self.assertFalse(page.run(drawn % "OilPressure"))

    def test_a_box_on_the_servers_screen_is_only_told_of(self):
        served = self.serve(script={"at": [{"since": "connect", "afterMs": 500, "messageBox": {
            "caption": "Model", "text": "Shall it be saved?", "type": 0}}]})
        page = self.open(served)
        page.connect()
        page.says("#banners", "on the screen of the server")
        self.assertEqual([], page.texts("#banners button"))

    def test_a_box_of_qors_is_answered(self):
        served = self.serve("--boxes-to-clients", script={"at": [{"since": "connect", "afterMs": 500, "messageBox": {
            "caption": "Model " + TAG, "text": "Shall it be saved?\n" + NASTY, "type": 4}}]})
        page = self.open(served)
        page.connect()
        page.says("#banners", "QOR asks: Model " + TAG)
        page.says("#banners", NASTY)
        self.assertEqual(["Yes", "No"], page.texts("#banners button"))
        page.click("#banners button:last-of-type")
        page.wait("!document.querySelector('[id^=banner-box-]')")
        self.assertEqual(0, page.run("document.images.length"))
        page.says("#vital-qor", "answers")

    def test_texts_of_qor_are_shown_as_they_are(self):
        served = self.serve(model=MODEL)
        served.call("connect")
        page = self.open(served)
        page.says("#vital-ecu", "online")
        page.view("parameters")
        page.type("#search", NASTY)
        page.browser.strike("Enter")
        page.wait("document.querySelectorAll('#detail .cell').length")
        for text in (NASTY, TAG, "<b>%</b>"):
            self.assertIn(text, page.text("#detail"))
        page.view("watch")
        for name in (NASTY, "=1+2"):
            page.watch(name)
        self.assertEqual("<b>%</b>", page.watched(NASTY)["unit"])
        page.type("#drive-name", "__proto__")
        page.browser.strike("Enter")
        page.browser.press(page.place(".hold"))
        page.says(".status", "Driven at 0 toString")
        page.browser.let_go(page.place(".hold"))
        page.view("codes")
        page.click("#codes-read")
        page.says("#codes-table", TAG)
        page.browser.open(served.url + "?again")  # what was kept is as harmless
        page.view("watch")
        page.says("#watched tbody", NASTY)
        page.says("#actuators", "__proto__")
        self.assertEqual([0, 0], page.run("[document.images.length, document.querySelectorAll('main i:not(.swatch), b').length]"))
        self.assertEqual([], page.complaints())

    def test_a_formula_does_not_get_into_a_spreadsheet(self):
        served = self.serve(model=MODEL)
        served.call("connect")
        page = self.open(served)
        page.view("watch")
        page.watch("=1+2")
        page.run("URL.createObjectURL = (blob) => { window.saved = blob; return 'data:,'; }; null")
        page.click("#watch-csv")
        page.wait("!!window.saved")
        self.assertTrue(page.run("saved.text()").startswith("time,'=1+2\r\n"))

    def test_a_memory_page_that_qor_refuses_is_not_marked(self):
        served = self.serve(script={"rules": [{"match": {"id": 14, "name": "ReferencePage"}, "action": {"answer": "refuse"}}]})
        served.call("connect")
        page = self.open(served)
        marked = "[...document.querySelectorAll('#pages [aria-checked=true]')].map(e => e.dataset.page).join()"
        page.says("#vital-ecu", "online")
        page.click("#pages [data-page=WorkingPage]")
        page.wait(f"{marked} === 'WorkingPage'")
        page.click("#pages [data-page=ReferencePage]")
        page.says("#banner-page", "ReferencePage was not chosen.")
        self.assertEqual("", page.run(marked))
        page.says("#page-known", "not known yet")
        page.click("#banner-page button")
        page.click("#pages [data-page=WorkingPage]")
        page.wait(f"{marked} === 'WorkingPage'")
        with self.assertRaises(CallFailed):
            served.call("setEcuSegment", segment="ReferencePage")
        page.wait(f"{marked} === ''")

    def test_two_pages_do_not_drive_the_same_actuator(self):
        served = self.serve()
        served.call("connect")
        first, second = self.open(served), self.open(served)
        for page in (first, second):
            page.says("#vital-ecu", "online")
            page.view("watch")
            page.type("#drive-name", "IdleValve")
            page.browser.strike("Enter")
        first.browser.press(first.place(".hold"))
        first.says(".status", "Driven at 0 %")
        second.says(".status", "Another client drives it.")
        second.browser.press(second.place(".hold"))
        second.says(".actuator", "is not driven")
        time.sleep(2)  # longer than a lease: the first one's is renewed
        self.assertIn("Driven at 0 %", first.text(".status"))
        self.assertEqual(["IdleValve"], [each["name"] for each in served.call("getServerStatus")["controls"]])


if __name__ == "__main__":
    panel.main(sys.argv)
