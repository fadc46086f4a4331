// The table of what is watched: the value now, at the cursor, and how well the values flow.
"use strict";
Panel.watched = (() => {
    const { byId, el, say, show } = Panel.dom;
    const { steady, none } = Panel.format;
    let rows = new Map(); // name -> {each, cells}
    let cursorS = null;

    const rowOf = (each) => {
        const swatch = el("i", { class: "swatch" });
        swatch.style.background = `var(${Panel.watch.colourOf(each)})`;
        const remove = el("button", { type: "button", class: "quiet", "aria-label": `Do not watch ${each.name}`, onclick: () => Panel.watch.remove(each.name) }, "\u00d7");
        const cells = ["value number strong", "unit faint", "number", "number", "number", "number", "number"].map((kind) => el("td", { class: kind }));
        const row = el("tr", {}, el("th", { scope: "row" }, swatch, each.name), ...cells, el("td", { class: "number" }, remove));
        row.dataset.name = each.name;
        return { each, row, cells };
    };

    const build = (all) => {
        rows = new Map(all.map((each) => [each.name, rowOf(each)]));
        byId("watched").tBodies[0].replaceChildren(...[...rows.values()].map(({ row }) => row));
        show(byId("watched-none"), rows.size === 0);
        show(byId("watched"), rows.size > 0);
        update(Date.now() / 1000);
    };

    const flow = (each, nowS) => {
        const { series, trouble } = each;
        if (trouble) return trouble.sentence ?? "trouble";
        if (series.lastS === null) return "no value yet";
        if (series.isStale(nowS)) return `none for ${Panel.format.span((nowS - series.lastS) * 1000)}`;
        return series.intervalS ? (1 / series.intervalS).toFixed(1) : none;
    };

    const update = (nowS) => {
        for (const { each, row, cells } of rows.values()) {
            const { series } = each;
            const size = Math.max(Math.abs(series.lowest ?? 0), Math.abs(series.highest ?? 0));
            const shown = (value) => steady(value, size);
            const texts = [shown(series.last), each.unit, cursorS === null ? none : shown(series.at(cursorS)),
                shown(series.lowest), shown(series.highest), flow(each, nowS), String(series.missed)];
            texts.forEach((text, i) => say(cells[i], text));
            cells[6].classList.toggle("bad-text", series.missed > 0);
            row.classList.toggle("is-stale", series.isStale(nowS) || each.trouble !== null || !Panel.link.isOpen());
        }
    };

    const begin = () => {
        Panel.hear("watched", build);
        Panel.hear("tick", update);
        Panel.hear("cursor", (timeS) => { cursorS = timeS; });
        build([]);
    };

    return { begin };
})();
