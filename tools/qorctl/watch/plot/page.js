// Draws the curves of the page: one chart per unit over a common time axis.
"use strict";
(() => {
    const data = JSON.parse(document.getElementById("data").textContent);
    const curveColours = 8;
    const dashes = [[], [8, 4], [2, 3], [10, 3, 2, 3]]; // for more curves than there are colours
    const chartHeight = 260;
    const axisWidth = 78; // the same everywhere: the charts' time axes stand below each other
    const noValue = "\u2013";
    const keepGaps = 2; // of uPlot: what stands beside a gap in time belongs to it
    // Each curve has times of its own. Where others have a value and it has none it is undefined,
    // which its line passes over; only a gap is null.
    const columns = uPlot.join(data.curves.map((curve) => [curve.times, curve.values]),
        data.curves.map(() => [0, keepGaps]));
    let charts = [];

    const element = (name, parent, text = "") => {
        const made = document.createElement(name);
        made.textContent = text;
        parent.append(made);
        return made;
    };
    const colour = (name) =>
        getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    const shown = (value) => (value == null ? noValue : String(Number(value.toPrecision(6))));
    const shownTime = (value) => (value == null ? noValue : value.toFixed(3) + " s");
    const labelOf = (curve) => (curve.unit ? `${curve.name} [${curve.unit}]` : curve.name);

    /// The curves by unit, in the order in which the units come, each with its number.
    const groups = () => {
        const byUnit = new Map();
        data.curves.forEach((curve, index) => {
            if (!byUnit.has(curve.unit)) byUnit.set(curve.unit, []);
            byUnit.get(curve.unit).push({ ...curve, index });
        });
        return [...byUnit.values()];
    };

    const strokeOf = (index) => colour(`--curve-${(index % curveColours) + 1}`);

    const seriesOf = (curve) => ({
        label: labelOf(curve),
        stroke: strokeOf(curve.index),
        width: 2,
        dash: dashes[Math.floor(curve.index / curveColours) % dashes.length],
        spanGaps: false,
        // A value between two gaps has no line: a point shows it.
        points: { size: 5, filter: alonePoints },
        value: (chart, value) => shown(value),
    });

    const alonePoints = (chart, seriesIndex, show) => {
        const values = chart.data[seriesIndex];
        const alone = [];
        if (show) return null; // every point is drawn anyway
        const own = values.flatMap((value, i) => (value === undefined ? [] : [i]));
        own.forEach((at, i) => {
            if (values[at] != null && values[own[i - 1]] == null && values[own[i + 1]] == null)
                alone.push(at);
        });
        return alone;
    };

    const axis = (more) => ({
        stroke: colour("--faint"),
        grid: { stroke: colour("--grid"), width: 1 },
        ticks: { stroke: colour("--line"), width: 1 },
        ...more,
    });

    const optionsOf = (curves, width) => ({
        width,
        height: chartHeight,
        // Charts of one key move together: pointer, closer look and back.
        cursor: { sync: { key: "time" }, points: { size: 8 } },
        scales: { x: { time: false } },
        legend: { live: true },
        axes: [
            axis({ label: "time in s", labelSize: 22, size: 40 }),
            axis({ size: axisWidth, values: (chart, ticks) => ticks.map(shown) }),
        ],
        series: [{ label: "time", value: (chart, value) => shownTime(value) }, ...curves.map(seriesOf)],
    });

    const draw = () => {
        const home = document.getElementById("charts");
        charts.forEach((chart) => chart.destroy());
        charts = [];
        home.replaceChildren();
        charts = groups().map((curves) => {
            const box = element("section", home);
            box.className = "chart";
            element("h2", box, curves[0].unit || "without a unit");
            const style = getComputedStyle(box);
            const width = box.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight);
            const own = [columns[0], ...curves.map((curve) => columns[curve.index + 1])];
            return new uPlot(optionsOf(curves, width), own, box);
        });
    };

    const tellAbout = () => {
        const home = document.getElementById("about");
        for (const [key, text] of data.about) {
            const row = element("div", home);
            element("dt", row, key);
            element("dd", row, text);
        }
    };

    const tellParameters = () => {
        const table = document.getElementById("parameters");
        const cell = (row, kind, text, isNumber) => {
            element(kind, row, text).className = isNumber ? "number" : "";
        };
        const head = element("tr", element("thead", table));
        ["parameter", "meaning", "unit"].forEach((text) => cell(head, "th", text, false));
        ["lowest", "highest", "samples"].forEach((text) => cell(head, "th", text, true));
        const body = element("tbody", table);
        for (const curve of data.curves) {
            const values = curve.values.filter((value) => value != null);
            const least = values.reduce((a, b) => (a == null || b < a ? b : a), null);
            const most = values.reduce((a, b) => (a == null || b > a ? b : a), null);
            const row = element("tr", body);
            [curve.name, curve.meaning, curve.unit].forEach((text) => cell(row, "td", text, false));
            [shown(least), shown(most), values.length].forEach((text) => cell(row, "td", text, true));
        }
    };

    tellAbout();
    tellParameters();
    draw();

    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", draw);
    let width = innerWidth;
    addEventListener("resize", () => {
        if (innerWidth === width) return;
        width = innerWidth;
        draw();
    });
    // For whoever looks at the page from outside.
    window.qorCharts = () => charts;
})();
