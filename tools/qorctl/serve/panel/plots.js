// What all plots have in common, and the plot of a curve of the ECU's.
"use strict";
Panel.plots = (() => {
    const { colour, el } = Panel.dom;
    const { shown, isNumber } = Panel.format;
    const all = new Set(); // functions that draw anew in other colours

    const axis = (more) => ({
        stroke: colour("--faint"),
        font: "12px system-ui, sans-serif",
        labelFont: "12px system-ui, sans-serif",
        grid: { stroke: colour("--grid"), width: 1 },
        ticks: { stroke: colour("--line"), width: 1 },
        ...more,
    });

    const numberAxis = (label) => axis({ label, labelSize: 18, size: 62, values: (chart, ticks) => ticks.map(shown) });

    /// For plots that stay for long: called when the colours of the system change.
    const onColours = (draw) => {
        all.add(draw);
        return () => all.delete(draw);
    };
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => all.forEach((draw) => draw()));

    /// A curve; lines go straight from point to point, as the ECU does it.
    const curve = ({ values, second }, label, width, height) => {
        const order = second.map((x, i) => i).filter((i) => isNumber(second[i]) && isNumber(values[i]))
            .sort((a, b) => second[a] - second[b]);
        const home = el("div", { class: "plot", role: "img", "aria-label": describe(values, order.length, label) });
        const options = {
            width, height,
            cursor: { drag: { x: false, y: false }, points: { size: 9 } },
            legend: { live: true },
            scales: { x: { time: false } },
            axes: [axis({ label: "x", labelSize: 18, size: 36, values: (chart, ticks) => ticks.map(shown) }), numberAxis(label)],
            series: [{ label: "x", value: (chart, value) => shown(value) }, {
                label, stroke: colour("--curve-1"), width: 2, points: { show: true, size: 6, fill: colour("--card") },
                value: (chart, value) => shown(value),
            }],
        };
        new uPlot(options, [order.map((i) => second[i]), order.map((i) => values[i])], home);
        return home;
    };

    const describe = (values, points, label) => {
        const numbers = values.filter(isNumber);
        if (numbers.length === 0) return `Curve of ${label}, without values`;
        return `Curve of ${label}: ${points} points, from ${shown(Math.min(...numbers))} to ${shown(Math.max(...numbers))}`;
    };

    return { axis, numberAxis, onColours, curve };
})();
