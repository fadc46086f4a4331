// Draws the plots of the page, each into the place that names its kind and figure.
"use strict";
(() => {
    const data = JSON.parse(document.getElementById("data").textContent);
    const plotHeight = 210;
    const axisWidth = 62;
    const headroom = 1.08;
    const greatestDrawn = 0.99; // above it a curve would be flat but for its end
    const nearBound = 2; // a bound further above the curve would press it flat
    const wholeSteps = [1, 2, 5, 10, 20, 50, 100, 200, 500];
    let charts = [];

    const colour = (name) =>
        getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    const shown = (value) => (value == null ? "\u2013" : String(Number(value.toPrecision(5))));

    const numbered = (values) => values.map((value, index) => index + 1);

    const withBound = (values, bound) =>
        bound > 0 && bound <= nearBound * Math.max(...values) ? values.map(() => bound) : null;

    /// What each kind of plot shows: its axes, columns of numbers and their names.
    const kinds = {
        quantiles: (figure) => {
            const drawn = figure.quantiles.filter(([share]) => share <= greatestDrawn);
            const values = drawn.map(([, us]) => us);
            return {
                x: "share of the samples in %", y: "\u00b5s", values, bound: figure.bound,
                places: drawn.map(([share]) => share * 100),
            };
        },
        parts: (figure) => ({
            x: "round", y: "\u00b5s, median", values: figure.parts, bound: figure.bound,
            places: numbered(figure.parts), steps: wholeSteps,
        }),
        p50: (row) => ({
            x: "run", y: "\u00b5s, p50", values: row.p50, places: numbered(row.p50), steps: wholeSteps,
        }),
        ratio: (row) => ({
            x: "run", y: "p50, times its " + row.over, values: row.ratio, bound: row.over === "bound" ? 1 : 0,
            places: numbered(row.ratio), steps: wholeSteps,
        }),
    };

    const axis = (more) => ({
        stroke: colour("--faint"),
        grid: { stroke: colour("--grid"), width: 1 },
        ticks: { stroke: colour("--line"), width: 1 },
        labelSize: 20,
        ...more,
    });

    const seriesOf = (label, name, more) => ({
        label, stroke: colour(name), width: 2, spanGaps: true, value: (chart, value) => shown(value), ...more,
    });

    const chartIn = (home) => {
        const { kind, figure } = home.dataset;
        const plot = kinds[kind](data[kind === "p50" || kind === "ratio" ? "history" : "figures"][figure]);
        const bound = withBound(plot.values, plot.bound);
        const columns = [plot.places, plot.values];
        const series = [
            { label: plot.x, value: (chart, value) => shown(value) },
            seriesOf(plot.y, "--curve-1", { points: { show: true, size: 5 } }),
        ];
        if (bound) {
            columns.push(bound);
            series.push(seriesOf("bound", "--curve-2", { dash: [6, 4], points: { show: false } }));
        }
        return new uPlot({
            width: home.clientWidth,
            height: plotHeight,
            // From zero: what looks twice as high is so.
            scales: { x: { time: false }, y: { range: (chart, least, most) => [0, most * headroom] } },
            axes: [
                axis({ label: plot.x, size: 34, ...(plot.steps ? { incrs: plot.steps } : {}) }),
                axis({ label: plot.y, size: axisWidth, values: (chart, ticks) => ticks.map(shown) }),
            ],
            series,
        }, columns, home);
    };

    const draw = () => {
        charts.forEach((chart) => chart.destroy());
        charts = [...document.querySelectorAll(".plot")].map(chartIn);
    };

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
