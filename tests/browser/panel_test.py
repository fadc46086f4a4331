#!/usr/bin/env python3
"""Uses the panel as a person does, against a real server with the simulated QOR.

usage: panel_test.py PROGRAM-FOLDER tcp|window
"""
import base64
import sys
import time

import panel
from panel import SharedServer

IDLE = 850  # of EngineSpeed, without throttle
DRIVEN = 2000  # it passes that with 60 % throttle
MAP, AT, CELL = "BoostMap", 8, ".cell[data-array=values][data-index='8']"


class Parameters(SharedServer):
    def setUp(self):
        super().setUp()
        self.panel.view("parameters")

    def names(self):
        return self.panel.texts("#names .name")

    def search(self, text):
        self.panel.type("#search", text)
        self.panel.browser.settle()
        return self.names()

    def open_parameter(self, name):
        self.panel.type("#search", name)
        self.panel.browser.strike("Enter")
        self.panel.wait(f"document.querySelector('#detail .name')?.textContent === {name!r}"
                        " && document.querySelectorAll('#detail .cell').length", f"{name} is open")

    def test_are_found_by_name_text_unit_and_group(self):
        self.panel.says("#name-count", "57 known")
        self.panel.wait("!document.querySelector('#name-count').textContent.includes('asking')")
        self.assertEqual(["BatteryVoltage"], self.search("batteryv"))
        self.assertEqual(["BatteryVoltage"], self.search("battery voltage meas"))
        self.assertEqual(["IdleSpeedGainI", "IdleSpeedGainP"], self.search("controller gain %/("))
        self.search("")
        self.panel.run("document.querySelector('#search-unit').value = '=bar'")
        self.panel.run("document.querySelector('#search-unit').dispatchEvent(new Event('input'))")
        self.assertEqual(["FuelPressure", "OilPressure"], self.names())
        self.assertEqual("2 of", self.panel.text("#name-count")[:4])

    def test_a_name_that_is_in_no_list_is_asked_for(self):
        self.search("NobodyKnowsMe")
        self.panel.browser.strike("Enter")
        self.panel.says("#detail", "QOR knows no parameter of that name.")
        self.panel.says("#detail", "Check: Compare the spelling")

    def test_a_number_is_written_and_read_back(self):
        before = self.served.value("MaxEngineSpeed")[0]
        self.open_parameter("MaxEngineSpeed")
        self.assertTrue(self.panel.run("document.querySelector('#detail [type=submit]').disabled"))
        self.panel.type("#detail .cell", "6250")
        self.panel.browser.strike("Enter")
        self.panel.says("#detail", "Written and read back")
        self.assertEqual([6250], self.served.value("MaxEngineSpeed"))
        self.assertNotEqual(6250, before)

    def test_what_is_no_number_is_not_sent(self):
        before = self.served.value("KnockThreshold")
        self.open_parameter("KnockThreshold")
        self.panel.type("#detail .cell", "1,5 V")
        self.assertEqual("true", self.panel.run("document.querySelector('#detail .cell').ariaInvalid"))
        self.panel.browser.strike("Enter")
        self.assertTrue(self.panel.run("document.querySelector('#detail [type=submit]').disabled"))
        self.assertEqual(before, self.served.value("KnockThreshold"))

    def test_a_value_that_qor_refuses_tells_why(self):
        self.open_parameter("FuelCutSpeed")
        self.panel.type("#detail .cell", "99999")
        self.panel.click("#detail [type=submit]")
        self.panel.says("#detail", "Not written")
        self.panel.says("#detail", "Check:")
        self.assertEqual("99999", self.panel.run("document.querySelector('#detail .cell').value"))

    def pixel(self, share_x, share_y):
        return self.panel.run(
            "(() => { const canvas = document.querySelector('#detail canvas');"
            " const pixel = canvas.getContext('2d').getImageData(canvas.width * %r, canvas.height * %r, 1, 1);"
            " return [...pixel.data]; })()" % (share_x, share_y))

    def test_a_map_is_changed_in_its_table_and_written(self):
        self.open_parameter(MAP)
        self.assertEqual(6 * 5 + 6 + 5, self.panel.run("document.querySelectorAll('#detail .cell').length"))
        before = self.pixel(0.38, 0.68)
        self.panel.type(CELL, "1800.5")
        self.assertNotEqual(before, self.pixel(0.38, 0.68))  # seen before it is written
        self.assertEqual(1250, self.served.value(MAP)[AT])
        self.panel.click("#detail [type=submit]")
        self.panel.says("#detail", "Written and read back")
        there = self.served.call("getParamData", name=MAP, timeoutMs=1000)
        self.assertEqual(1800.5, there["values"][AT])
        self.assertEqual([1000, 1500, 2000, 3000, 4000, 5500], there["second"])
        self.assertEqual([20, 40, 60, 80, 100], there["third"])
        self.assertFalse(self.panel.run(f"document.querySelector({CELL!r}).hasAttribute('data-changed')"))

    def test_what_was_changed_can_be_discarded(self):
        self.open_parameter("LambdaMap")
        self.panel.type(CELL, "0.9")
        self.panel.click("#detail .tools button:nth-of-type(3)")
        self.assertEqual("1", self.panel.run(f"document.querySelector({CELL!r}).value"))

    def test_the_arrow_keys_go_from_cell_to_cell(self):
        self.open_parameter("IgnitionMap")
        self.panel.click(CELL)
        self.panel.run(f"document.querySelector({CELL!r}).select()")
        for key, index in (("ArrowRight", 9), ("ArrowDown", 17), ("ArrowLeft", 16), ("ArrowUp", 8)):
            self.panel.browser.strike(key)
            self.assertEqual(str(index), self.panel.run("document.activeElement.dataset.index"), key)

    def test_a_map_is_a_heat_map_and_a_surface(self):
        self.open_parameter("VolumetricEfficiency")
        drawn = "document.querySelector('#detail canvas').toDataURL()"
        heat = self.panel.run(drawn)
        self.assertIn("lowest 58.1 at x 800, y 300", self.panel.run("document.querySelector('#detail canvas').ariaLabel"))
        self.panel.click("#detail .picture button")
        surface = self.panel.run(drawn)
        self.assertNotEqual(heat, surface)
        self.panel.run("document.querySelector('#detail canvas').focus()")
        self.panel.browser.strike("ArrowRight")
        self.assertNotEqual(surface, self.panel.run(drawn))
        self.panel.click("#detail .picture button")

    def test_a_curve_is_a_plot_of_its_points(self):
        self.open_parameter("PedalCurve")
        self.assertIn("6 points, from 0 to 100", self.panel.run("document.querySelector('#detail .plot').ariaLabel"))
        self.panel.type(".cell[data-array=values][data-index='5']", "90")
        self.assertIn("from 0 to 90", self.panel.run("document.querySelector('#detail .plot').ariaLabel"))

    def test_a_text_is_shown_and_written_as_one(self):
        self.open_parameter("VehicleIdentNumber")
        self.assertEqual("TESTVEHICLE000042", self.panel.run("document.querySelector('#detail .cell').value"))
        self.panel.type("#detail .cell", "TESTVEHICLE000043")
        self.panel.click("#detail [type=submit]")
        self.panel.says("#detail", "Written and read back")
        self.assertEqual("TESTVEHICLE000043", self.served.call("getParamDataAsString", name="VehicleIdentNumber", timeoutMs=1000)["text"])

    def test_the_active_page_is_marked_and_reads_come_from_it(self):
        self.open_parameter("IdleSpeedTarget")
        marks = "[...document.querySelectorAll('#pages [role=radio]')].map(e => e.ariaChecked)"
        self.panel.click("#pages [data-page=WorkingPage]")
        self.panel.wait(f"String({marks}) === 'true,false'")
        self.panel.type("#detail .cell", "900")
        self.panel.click("#detail [type=submit]")
        self.panel.says("#detail", "Written and read back")
        self.panel.click("#pages [data-page=ReferencePage]")
        self.panel.wait(f"String({marks}) === 'false,true'")
        self.panel.says("#detail .age", "another page is active now")
        self.panel.click("#detail .tools button")
        self.panel.says("#detail .age", "Read from ReferencePage")
        self.assertEqual("850", self.panel.run("document.querySelector('#detail .cell').value"))
        self.panel.click("#pages [data-page=WorkingPage]")
        self.panel.wait(f"String({marks}) === 'true,false'")


    def test_a_page_that_another_client_chooses_is_marked_too(self):
        for page in ("ReferencePage", "WorkingPage"):
            self.served.call("setEcuSegment", segment=page)
            self.panel.wait(f"document.querySelector('#pages [data-page={page}]')?.ariaChecked === 'true'")


class Watching(SharedServer):
    def setUp(self):
        super().setUp()
        self.panel.view("watch")

    def values(self, name, count):
        """The newest values of a curve as it is drawn."""
        return self.panel.run(
            "(() => { for (const chart of qorCharts()) { const at = chart.series.findIndex(s => s.label === %r);"
            " if (at > 0) return chart.data[at].filter(v => v != null).slice(-%d); } })()" % (name, count))

    def intervals(self, name):
        """Those between the values of a curve, in seconds."""
        times = self.panel.run(
            "(() => { for (const chart of qorCharts()) { const at = chart.series.findIndex(s => s.label === %r);"
            " if (at > 0) return chart.data[0].filter((_, i) => chart.data[at][i] != null); } })()" % name)
        return [later - earlier for earlier, later in zip(times, times[1:])]

    def newest(self, name):
        return self.values(name, 1)[0]

    def wait_for(self, name, what, condition):
        deadline = time.monotonic() + panel.PATIENCE_S
        while not condition(self.newest(name)):
            self.assertLess(time.monotonic(), deadline, f"{name} {what}, not {self.newest(name)}")
            time.sleep(0.1)

    def held(self):
        return [each["name"] for each in self.served.call("getServerStatus")["controls"]]

    def add_throttle(self, value):
        self.panel.type("#drive-name", "ThrottleActuator")
        self.panel.browser.strike("Enter")
        self.panel.type(".actuator input", str(value))

    def test_an_actuator_is_driven_as_long_as_the_button_is_held(self):
        self.panel.watch("EngineSpeed")
        self.assertLess(self.newest("EngineSpeed"), IDLE + 100)
        self.add_throttle(60)
        self.assertEqual([], self.held())
        button = self.panel.place(".hold")
        self.panel.browser.press(button)
        self.wait_for("EngineSpeed", "rises", lambda value: value > DRIVEN)
        self.panel.says(".status", "Driven at 60 %")
        self.assertEqual(["ThrottleActuator"], self.held())
        self.panel.browser.let_go(button)
        self.panel.says(".status", "Given back.")
        self.assertEqual([], self.held())
        self.wait_for("EngineSpeed", "falls", lambda value: value < IDLE + 200)

    def test_a_key_holds_it_too_and_the_arrow_keys_change_the_value(self):
        self.panel.watch("ThrottlePosition")
        self.add_throttle(20)
        self.panel.run("document.querySelector('.hold').focus()")
        self.panel.browser.key("keyDown", " ")
        self.wait_for("ThrottlePosition", "rises", lambda value: value > 18)
        for _ in range(10):
            self.panel.browser.strike("ArrowUp")
        self.panel.says(".status", "Driven at 30 %")
        self.wait_for("ThrottlePosition", "rises further", lambda value: value > 28)
        self.panel.browser.key("keyUp", " ")
        self.panel.says(".status", "Given back.")
        self.assertEqual([], self.held())

    def test_who_turns_away_lets_go(self):
        self.add_throttle(30)
        for leave in ("dispatchEvent(new Event('blur'))", "document.querySelector('#watch-name').focus()",
                      "location.hash = '#/codes'"):
            with self.subTest(leave):
                self.panel.view("watch")
                button = self.panel.place(".hold")
                self.panel.browser.press(button)
                self.panel.says(".status", "Driven at 30 %")
                self.panel.run(leave)
                self.panel.wait("!document.querySelector('.hold').matches('[aria-pressed=true]')")
                deadline = time.monotonic() + panel.PATIENCE_S
                while self.held() and time.monotonic() < deadline:
                    time.sleep(0.05)
                self.assertEqual([], self.held())
                self.panel.browser.let_go(button)

    def test_a_page_that_dies_lets_go(self):
        self.add_throttle(30)
        self.panel.browser.press(self.panel.place(".hold"))
        self.panel.says(".status", "Driven at 30 %")
        self.panel.browser.call("Page.navigate", {"url": "about:blank"})
        deadline = time.monotonic() + panel.PATIENCE_S
        while self.held():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.05)

    def test_what_cannot_be_driven_tells_why(self):
        self.panel.type("#drive-name", "IdleSpeedTarget")
        self.panel.browser.strike("Enter")
        self.panel.browser.press(self.panel.place(".hold"))
        self.panel.says(".actuator", "QOR refused the request.")
        self.assertEqual("false", self.panel.run("document.querySelector('.hold').ariaPressed"))

    def test_what_is_suggested_later_moves_no_button(self):
        self.panel.type("#drive-name", "IdleSpeedTarget")
        self.panel.browser.strike("Enter")
        self.panel.wait("!!document.querySelector('.hold')")
        before, chips, after = self.panel.run("""(() => {
            const top = () => document.querySelector(".hold").getBoundingClientRect().top;
            const suggest = (...names) => Panel.tell("names", names.map((name) => ({...Panel.names.of(name), group: "Actuator"})));
            suggest();
            const before = top();
            suggest("Another", "One");
            return [before, [...document.querySelectorAll("#drive-suggested .chip")].map((e) => e.innerText), top()];
        })()""")
        self.assertEqual((["Another", "One"], before), (chips, after))

    def test_each_unit_has_a_chart(self):
        for name in ("EngineSpeed", "EngineLoad", "ThrottlePosition"):
            self.panel.watch(name)
        self.assertEqual([["EngineSpeed"], ["EngineLoad", "ThrottlePosition"]],
                         self.panel.run("qorCharts().map(c => c.series.slice(1).map(s => s.label))"))
        row = self.panel.watched("EngineLoad")
        self.assertEqual(("%", "0"), (row["unit"], row["missed"]))
        # A busy machine lets values come unevenly: the rate is a mean of the intervals that are drawn.
        drawn = "qorCharts()[1].data[1].filter(v => v != null).length"
        self.panel.wait(f"{drawn} > {self.panel.run(drawn)} + 2")
        rate, intervals = float(row["per s"]), self.intervals("EngineLoad")
        self.assertTrue(1 / max(intervals) - 0.1 <= rate <= 1 / min(intervals) + 0.1, f"{rate} per s of {intervals}")
        self.panel.click("#watched [data-name=EngineSpeed] button")
        self.panel.wait("qorCharts().length === 1")

    def test_what_nobody_knows_is_not_watched(self):
        self.panel.type("#watch-name", "Nobody")
        self.panel.browser.strike("Enter")
        self.panel.says("#watch-trouble", "QOR knows no parameter of that name.")
        self.assertEqual([], self.panel.texts("#watched tbody tr"))

    def ranges(self):
        return self.panel.run("qorCharts().map(c => [c.scales.x.min, c.scales.x.max])")

    def test_pausing_stands_still_and_goes_on(self):
        self.panel.watch("OilPressure")
        self.panel.click("#watch-pause")
        before = self.ranges()
        time.sleep(1)
        self.assertEqual(before, self.ranges())
        self.panel.says("#watch-state", "behind")
        self.panel.click("#watch-pause")
        self.panel.wait(f"qorCharts()[0].scales.x.max > {before[0][1]} + 1")

    def test_looking_closer_in_one_chart_moves_them_all(self):
        self.panel.watch("OilPressure")
        self.panel.watch("EngineSpeed")
        time.sleep(1)
        box = self.panel.run("(r => [r.left, r.top, r.width, r.height])(qorCharts()[0].over.getBoundingClientRect())")
        places = [(box[0] + box[2] * share, box[1] + box[3] / 2) for share in (0.9, 0.98)]
        self.panel.browser.drag(*places)
        self.panel.wait("document.querySelector('#curves').classList.contains('is-still')")
        (low, high), other = self.ranges()
        self.assertEqual([low, high], other)
        self.assertAlmostEqual(30 * 0.08, high - low, delta=0.2)
        self.panel.browser.double_click(places[0])
        self.panel.wait("!document.querySelector('#curves').classList.contains('is-still')")

    def test_the_cursor_reads_what_the_curve_has_there(self):
        self.panel.watch("ExhaustTemperature")
        time.sleep(2)
        self.panel.click("#watch-pause")
        self.panel.run("document.querySelector('.chart').focus()")
        chart = self.panel.run("(r => [r.right - 20, r.top + r.height / 2])(qorCharts()[0].over.getBoundingClientRect())")
        self.panel.browser.point_at(*chart)
        self.panel.wait("document.querySelector('#watched tbody td:nth-of-type(3)').textContent !== '\u2013'")
        self.panel.browser.settle()
        shown = self.panel.run("document.querySelector('#watched tbody td:nth-of-type(3)').textContent")
        at = self.panel.run("qorCharts()[0].posToVal(qorCharts()[0].cursor.left, 'x')")
        drawn = self.panel.run("(([x, y]) => y[x.findLastIndex((t, i) => t <= %r && y[i] != null)])(qorCharts()[0].data)" % at)
        self.assertAlmostEqual(drawn, float(shown), delta=0.01 * abs(drawn))

    def saved(self, button):
        """What a press on a button makes the page save."""
        self.panel.run("window.saved = []; URL.createObjectURL = (blob) => { saved.push(blob); return 'data:,'; };")
        self.panel.click(button)
        self.panel.wait("saved.length")
        return self.panel.run(
            "new Promise(done => { const reader = new FileReader();"
            " reader.onload = () => done([saved[0].type, reader.result]); reader.readAsDataURL(saved[0]); })")

    def test_csv_has_every_value_that_is_drawn(self):
        self.panel.watch("EngineSpeed")
        self.panel.watch("OilPressure")
        time.sleep(1)
        drawn = self.values("EngineSpeed", 5)
        kind, data = self.saved("#watch-csv")
        lines = base64.b64decode(data.split(",")[1]).decode().split("\r\n")
        self.assertEqual("text/csv", kind)
        self.assertEqual("time,EngineSpeed [1/min],OilPressure [bar]", lines[0])
        column = [line.split(",")[1] for line in lines[1:] if line]
        self.assertEqual([str(value) for value in drawn],
                         [repr(float(text)) for text in column if text and float(text) in drawn][:5])
        self.assertRegex(lines[1], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z,")

    def test_png_is_a_picture_of_the_charts(self):
        self.panel.watch("EngineSpeed")
        kind, data = self.saved("#watch-png")
        self.assertEqual("image/png", kind)
        size = self.panel.run("new Promise(done => { const image = new Image();"
                              f" image.onload = () => done([image.width, image.height]); image.src = {data!r}; }})")
        chart = self.panel.run("[qorCharts()[0].ctx.canvas.width, qorCharts()[0].ctx.canvas.height]")
        self.assertGreater(size[0], chart[0])
        self.assertGreater(size[1], chart[1])


class Diagnosis(SharedServer):
    def test_trouble_codes_are_cleared_only_after_a_second_question(self):
        self.panel.view("codes")
        self.panel.click("#codes-read")
        self.panel.says("#codes-count", "5 codes")
        self.panel.says("#codes-table", "P0301")
        self.panel.says("#codes-table", "Cylinder 1: misfire detected")
        self.panel.click("#codes-clear")
        self.panel.says("#sure-dialog", "Clear the 5 trouble codes?")
        self.panel.browser.strike("Enter")  # what is offered first changes nothing
        self.panel.wait("!document.querySelector('#sure-dialog').open")
        self.assertEqual(5, len(self.served.call("getDtcByStatus", timeoutMs=1000)["dtcs"]))
        self.panel.click("#codes-clear")
        self.panel.click("#sure-yes")
        self.panel.says("#codes-none", "No trouble codes.")
        self.assertEqual([], self.served.call("getDtcByStatus", timeoutMs=1000)["dtcs"])

    def test_kwp_requests_and_their_answers_are_listed(self):
        self.panel.view("bus")
        self.panel.type("#kwp-service", "1A")
        self.panel.type("#kwp-data", "9b")
        self.panel.click("#kwp button")
        self.panel.says("#kwp-history", "5A 9B 34 2E 31 32 2E 37 00 00")
        self.panel.says("#kwp-history", "4.12.7")
        self.panel.type("#kwp-service", "27")
        self.panel.type("#kwp-data", "02")
        self.panel.browser.strike("Enter")
        self.panel.says("#kwp-history", "negative response: invalid key")
        self.panel.type("#kwp-data", "0x2g")
        self.panel.browser.strike("Enter")
        self.panel.says("#kwp-failure", "is no row of bytes")

    def test_can_is_opened_sent_and_read(self):
        self.panel.view("bus")
        self.panel.click("#can-open button")
        self.panel.says("#can-history", "open")
        self.panel.click("#can-send button")
        self.panel.says("#can-history", "200 0: 01 02")
        self.panel.type("#can-ids", "200, 201")
        self.panel.click("#can-read button")
        self.panel.says("#can-values", "00000201")
        self.panel.says("#can-values", "-40")

    def test_the_trace_is_filtered_and_searched(self):
        self.panel.view("trace")
        self.panel.says("#trace-lines", "Connecting type")
        self.served.value("InjectorFlow")
        self.panel.says("#trace-lines", "InjectorFlow")  # live
        self.panel.type("#trace-filter", "injectorflow")
        self.panel.wait("[...document.querySelectorAll('#trace-lines div')].every(e => /InjectorFlow/.test(e.textContent))")
        self.panel.type("#trace-search", "168.5")
        self.panel.says("#trace-matches", "found")
        self.panel.browser.strike("Enter")
        self.panel.says("#trace-matches", "1 of")
        self.panel.type("#trace-search", "nobody wrote this")
        self.panel.says("#trace-matches", "not found")

    def test_failures_are_told_with_their_causes(self):
        try:
            self.served.value("Nobody")
        except Exception:  # that is what is wanted
            pass
        self.panel.says("#failures", "QOR knows no parameter of that name.")
        self.panel.says("#failures", "Check: Compare the spelling")
        self.panel.says("#failure-causes", "unknownName")

    def test_the_station_and_its_load_are_told(self):
        self.panel.says("#station", "qor.ini")
        self.panel.says("#where", "qor.ini")
        self.panel.wait("/^[\\d.]+ ms$/.test(document.querySelector('#vital-trip dd').textContent)")
        self.panel.wait("/^[\\d.]+ \\/s$/.test(document.querySelector('#vital-rate dd').textContent)")
        self.panel.says("#methods", "pingQor")


if __name__ == "__main__":
    panel.main(sys.argv)
