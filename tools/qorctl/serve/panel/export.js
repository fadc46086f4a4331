// What was watched, as a file: all values as CSV, what is shown as PNG.
"use strict";
Panel.export = (() => {
    const { byId, colour, save } = Panel.dom;

    /// A cell of a CSV file. A name that begins like a formula must not become one in a spreadsheet.
    const cell = (text) => {
        const harmless = /^[=+\-@\t\r]/.test(text) ? `'${text}` : text;
        return /[",\r\n]/.test(harmless) ? `"${harmless.replaceAll('"', '""')}"` : harmless;
    };

    const headOf = ({ name, unit }) => cell(unit ? `${name} [${unit}]` : name);

    const csv = () => {
        const all = Panel.watch.all();
        const [times, ...columns] = uPlot.join(all.map(({ series }) => [series.times, series.values]));
        const lines = [["time", ...all.map(headOf)].join(",")];
        (times ?? []).forEach((time, i) => {
            const values = columns.map((column) => column[i] ?? "");
            if (values.some((value) => value !== "")) lines.push([new Date(time * 1000).toISOString(), ...values].join(","));
        });
        return lines.join("\r\n") + "\r\n";
    };

    const drawTitle = (pen, { unit, curves }, top, scale) => {
        let left = 12 * scale;
        const put = (text, style, weight = "") => {
            pen.font = `${weight} ${13 * scale}px system-ui, sans-serif`;
            pen.fillStyle = style;
            pen.fillText(text, left, top + 15 * scale);
            left += pen.measureText(text).width + 14 * scale;
        };
        put(unit || "without a unit", colour("--text"), "600");
        curves.forEach((each) => put(each.name, colour(Panel.watch.colourOf(each))));
    };

    const png = () => new Promise((done) => {
        const charts = Panel.charts.all();
        const scale = devicePixelRatio || 1;
        const title = 24 * scale, pad = 12 * scale;
        const canvas = document.createElement("canvas");
        canvas.width = Math.max(...charts.map(({ plot }) => plot.ctx.canvas.width)) + 2 * pad;
        canvas.height = charts.reduce((sum, { plot }) => sum + plot.ctx.canvas.height + title + pad, pad);
        const pen = canvas.getContext("2d");
        pen.fillStyle = colour("--card");
        pen.fillRect(0, 0, canvas.width, canvas.height);
        let top = pad;
        for (const chart of charts) {
            drawTitle(pen, chart, top, scale);
            pen.drawImage(chart.plot.ctx.canvas, pad, top + title);
            top += chart.plot.ctx.canvas.height + title + pad;
        }
        canvas.toBlob(done, "image/png");
    });

    const begin = () => {
        byId("watch-csv").addEventListener("click", () => save(`qor-${Panel.format.stamp()}.csv`, "text/csv", csv()));
        byId("watch-png").addEventListener("click", async () => save(`qor-${Panel.format.stamp()}.png`, "image/png", await png()));
        Panel.hear("watched", (all) => ["watch-csv", "watch-png"].forEach((id) => { byId(id).disabled = all.length === 0; }));
        ["watch-csv", "watch-png"].forEach((id) => { byId(id).disabled = true; });
    };

    return { begin };
})();
