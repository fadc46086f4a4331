// The curves of what is watched: a chart per unit, all with the same times. They go along with the
// clock, or stand still at a piece that somebody looks at.
"use strict";
Panel.charts = (() => {
    const { byId, el, say, colour } = Panel.dom;
    const { shown, clock } = Panel.format;
    const drawMs = 100;
    const chartHeight = 210;
    const leastViewS = 0.5;
    const dashes = [[], [8, 4], [2, 3], [10, 3, 2, 3]]; // for more curves than there are colours
    const keepGaps = 2; // of uPlot: what stands beside a gap in time belongs to it
    let charts = []; // {plot, box, curves, range}
    let still = null; // {min, max}: does not go along
    let cursorS = null;
    let drawnAt = 0;

    const windowS = () => Number(byId("watch-window").value);
    const nowS = () => Date.now() / 1000;
    const view = () => still ?? { min: nowS() - windowS(), max: nowS() };

    /// Grows at once and shrinks late: an axis that follows every value would be restless.
    const calmRange = (kept) => (plot, low, high) => {
        if (low === null || high === null) return kept.range ?? [0, 1];
        const room = (high - low || Math.abs(high) || 1) * 0.08;
        const [from, to] = kept.range ?? [Infinity, -Infinity];
        const isInside = low >= from && high <= to && (high - low) > (to - from) * 0.45;
        if (!isInside) kept.range = [low - room, high + room];
        return kept.range;
    };

    const seriesOf = (each) => ({
        label: each.name, stroke: colour(Panel.watch.colourOf(each)), width: 1.75,
        dash: dashes[Math.floor(each.slot / 8) % dashes.length], spanGaps: false, points: { show: false },
    });

    const selected = (plot) => {
        if (plot.select.width < 4) return;
        const from = plot.posToVal(plot.select.left, "x");
        const to = plot.posToVal(plot.select.left + plot.select.width, "x");
        plot.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
        standStill(from, to);
    };

    const moved = (plot) => {
        const { left } = plot.cursor;
        cursorS = left === undefined || left < 0 ? null : plot.posToVal(left, "x");
        Panel.tell("cursor", cursorS);
    };

    const optionsOf = (unit, curves, kept, width) => ({
        width, height: chartHeight,
        cursor: {
            sync: { key: "watch" }, points: { size: 7 }, drag: { x: true, y: false, setScale: false },
            bind: { dblclick: () => () => goOn() },
        },
        legend: { show: false },
        scales: { x: { time: true, auto: false }, y: { range: calmRange(kept) } },
        axes: [
            Panel.plots.axis({ size: 30, space: 90, values: (plot, ticks) => ticks.map((tick) => clock(new Date(tick * 1000)) + (tick % 1 ? (tick % 1).toFixed(1).slice(1) : "")) }),
            Panel.plots.axis({ size: 66, values: (plot, ticks) => ticks.map(shown) }),
        ],
        series: [{}, ...curves.map(seriesOf)],
        hooks: { setSelect: [selected], setCursor: [moved] },
    });

    const dataOf = (curves, { min, max }) => uPlot.join(curves.map((each) => each.series.part(min, max)), curves.map(() => [0, keepGaps]));

    const groups = () => {
        const byUnit = new Map();
        for (const each of Panel.watch.all()) byUnit.set(each.unit, [...(byUnit.get(each.unit) ?? []), each]);
        return [...byUnit];
    };

    const titleOf = (unit, curves) => el("h3", {}, unit || "without a unit", el("span", { class: "legend" }, ...curves.map((each) => {
        const swatch = el("i", { class: "swatch" });
        swatch.style.background = `var(${Panel.watch.colourOf(each)})`;
        return el("span", {}, swatch, each.name);
    })));

    const build = () => {
        const home = byId("charts");
        charts.forEach(({ plot }) => plot.destroy());
        home.replaceChildren();
        charts = groups().map(([unit, curves]) => {
            const box = el("div", { class: "card chart", tabindex: "0", role: "group", "aria-label": `Chart of ${curves.map((each) => each.name).join(", ")}${unit ? ` in ${unit}` : ""}` });
            home.append(box);
            box.append(titleOf(unit, curves));
            const kept = {};
            const made = { box, curves, unit };
            made.plot = new uPlot(optionsOf(unit, curves, kept, Math.max(200, box.clientWidth - 24)), dataOf(curves, view()), box);
            made.plot.root.setAttribute("aria-hidden", "true"); // the box and the table of values tell of it
            box.addEventListener("keydown", (event) => byKey(made.plot, event));
            return made;
        });
        draw();
    };

    const draw = () => {
        const now = view();
        for (const { plot, curves } of charts) {
            plot.batch(() => {
                plot.setData(dataOf(curves, now), false);
                plot.setScale("x", now);
            });
        }
        const paused = still ? `Standing still, ${Panel.format.span((nowS() - still.max) * 1000)} behind` : "";
        say(byId("watch-state"), paused.replace(/\d+ s behind/, (text) => text));
    };

    const isSeen = () => Panel.tabs.chosen() === "watch" && !document.hidden;

    const tick = (time) => {
        requestAnimationFrame(tick);
        if (!isSeen() || time - drawnAt < drawMs) return;
        drawnAt = time;
        if (still === null) draw();
        Panel.tell("tick", nowS());
    };

    const showStill = () => {
        const button = byId("watch-pause");
        button.setAttribute("aria-pressed", String(still !== null));
        say(button, still ? "Go on live" : "Pause");
        byId("curves").classList.toggle("is-still", still !== null);
        draw();
    };

    const standStill = (min, max) => {
        if (max - min < leastViewS) return;
        still = { min, max };
        showStill();
    };

    const goOn = () => {
        still = null;
        showStill();
    };

    const zoom = (factor) => {
        const { min, max } = view();
        const middle = cursorS !== null && cursorS > min && cursorS < max ? cursorS : (min + max) / 2;
        standStill(middle - (middle - min) * factor, middle + (max - middle) * factor);
    };

    const pan = (share) => {
        const { min, max } = view();
        standStill(min + (max - min) * share, max + (max - min) * share);
    };

    const moveCursor = (plot, by) => {
        const width = plot.over.clientWidth;
        const left = plot.cursor.left === undefined || plot.cursor.left < 0 ? width / 2 : plot.cursor.left;
        if (still === null) standStill(view().min, view().max);
        plot.setCursor({ left: Math.min(width - 1, Math.max(0, left + by)), top: plot.over.clientHeight / 2 });
    };

    const byKey = (plot, event) => {
        const side = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
        const act = {
            ArrowLeft: () => (event.shiftKey ? pan(side * 0.2) : moveCursor(plot, side * 4)),
            ArrowRight: () => (event.shiftKey ? pan(side * 0.2) : moveCursor(plot, side * 4)),
            "+": () => zoom(0.5), "-": () => zoom(2), Escape: goOn,
        }[event.key];
        if (!act) return;
        event.preventDefault();
        act();
    };

    const begin = () => {
        byId("watch-pause").addEventListener("click", () => (still ? goOn() : standStill(view().min, view().max)));
        byId("watch-in").addEventListener("click", () => zoom(0.5));
        byId("watch-out").addEventListener("click", () => zoom(2));
        byId("watch-window").addEventListener("change", goOn);
        Panel.hear("watched", () => { if (isSeen()) build(); });
        Panel.hear("view", (name) => { if (name === "watch") build(); });
        Panel.plots.onColours(() => { if (isSeen()) build(); });
        addEventListener("resize", () => { if (isSeen()) build(); });
        requestAnimationFrame(tick);
    };

    return { begin, view, all: () => charts, isStill: () => still !== null };
})();
