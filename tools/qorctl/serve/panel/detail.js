// One parameter: read, changed, written and read back; as fields and as a picture.
"use strict";
Panel.detail = (() => {
    const { byId, el, say, show, announce } = Panel.dom;
    const { clock, ago } = Panel.format;
    const timeoutMs = 1000;
    const home = byId("detail");
    let shown = null; // what belongs to the parameter that is shown

    const isText = ({ values, second }, unit) => second.length === 0 && values.length > 1 && unit === "" &&
        values.every((each) => Number.isInteger(each) && (each === 0 || (each >= 0x20 && each <= 0xFF && each !== 0x7F))) &&
        2 * values.filter((each) => each < 0x7F && /[a-z\d]/i.test(String.fromCharCode(each))).length >= values.filter((each) => each > 0x20).length &&
        values.some((each) => each > 0x20);

    const button = (text, act, more = {}) => el("button", { type: "button", onclick: act, ...more }, text);

    const frame = (about) => {
        const parts = {
            note: el("div", { role: "status" }), failure: el("div", { role: "alert" }), body: el("div", { class: "detail-body" }),
            picture: el("div", { class: "picture" }), age: el("span", { class: "faint age" }), facts: el("p", { class: "faint" }),
            write: el("button", { type: "submit", class: "primary", "data-changes": true, "data-off": "" }, "Write"),
            discard: button("Discard", () => shown.cells?.discard(), { "data-off": "", "data-needs": true }),
            again: el("input", { type: "checkbox", "data-needs": true }),
            asText: el("button", { type: "button", hidden: true, onclick: () => { shown.asText = !shown.asText; render(); } }),
        };
        const form = el("form", { onsubmit: (event) => { event.preventDefault(); void write(); } },
            el("div", { class: "row tools" }, button("Read", () => read(), { "data-needs": true }), parts.write, parts.discard, parts.asText,
                button("Watch", () => Panel.watch.add(about.name)),
                el("label", { class: "check" }, parts.again, "every second"), parts.age),
            el("p", { class: "why-off", hidden: true }), parts.failure, parts.note, parts.body);
        home.replaceChildren(el("h2", { class: "name" }, about.name), el("p", { class: "meaning" }, about.meaning), parts.facts, form, parts.picture);
        return parts;
    };

    const showFacts = () => {
        const { about, parts } = shown;
        const facts = [about.group && `Group ${about.group}`, about.unit ? `unit ${about.unit}` : about.described && "no unit"];
        say(parts.facts, facts.filter(Boolean).join(", "));
        say(home.querySelector(".meaning"), about.meaning);
    };

    const open = async (name) => {
        shown = { name, about: Panel.names.of(name), parts: null, data: null, cells: null, asText: undefined, isBusy: false };
        const mine = shown;
        shown.parts = frame(shown.about);
        showFacts();
        Panel.access.sweep(home);
        if (!shown.about.described) {
            const about = await Panel.failure.guarded(mine.parts.failure, "Not described", () => Panel.names.describe(name));
            if (mine !== shown || about === undefined) return;
            shown.about = about;
            showFacts();
        }
        await read();
    };

    /// What QOR has now, and from where.
    const fetchData = async ({ name }) => {
        const data = await Panel.call("getParamData", { name, timeoutMs });
        return { ...data, at: Date.now(), page: Panel.pages.active() };
    };

    const read = async (isQuiet = false) => {
        const mine = shown;
        if (mine.isBusy) return;
        mine.isBusy = true;
        const data = await Panel.failure.guarded(mine.parts.failure, "Not read", () => fetchData(mine));
        mine.isBusy = false;
        if (mine !== shown || !data) return;
        const isSame = isQuiet && mine.data && JSON.stringify([mine.data.values, mine.data.second, mine.data.third]) === JSON.stringify([data.values, data.second, data.third]);
        mine.data = data;
        if (!isQuiet) mine.parts.note.replaceChildren();
        if (!isSame) render();
        showAge();
    };

    const textForm = (data) => {
        const text = String.fromCharCode(...data.values).replace(/[\0\u00ff ]+$/, "");
        const input = el("input", { class: "cell text", value: text, "aria-label": `${shown.name} text`, maxlength: String(data.values.length), autocomplete: "off", spellcheck: "false", "data-changes": true });
        const update = () => { input.toggleAttribute("data-changed", input.value !== text); changed(); };
        input.addEventListener("input", update);
        return {
            element: el("div", { class: "scalar" }, input), kind: "text", text: () => input.value,
            changes: () => (input.value === text ? 0 : 1), wrong: () => undefined, now: () => data,
            discard: () => { input.value = text; update(); },
        };
    };

    const render = () => {
        const { data, parts, about, name } = shown;
        const mayBeText = isText(data, about.unit);
        shown.asText ??= mayBeText;
        show(parts.asText, mayBeText);
        say(parts.asText, shown.asText ? "As numbers" : "As text");
        shown.cells = shown.asText ? textForm(data) : Panel.cells.make(data, name, changed);
        const unit = shown.cells.kind === "scalar" && about.unit ? el("span", { class: "unit faint" }, about.unit) : null;
        if (unit) shown.cells.element.append(unit);
        const focus = parts.body.querySelector(":focus")?.dataset.index;
        parts.body.replaceChildren(el("div", { class: "scroll" }, shown.cells.element));
        if (focus !== undefined) parts.body.querySelector(`[data-array="values"][data-index="${Number(focus)}"]`)?.focus();
        Panel.access.sweep(parts.body);
        changed();
    };

    const changed = () => {
        const count = shown.cells.changes();
        say(shown.parts.write, count > 1 ? `Write ${count} changes` : "Write");
        Panel.access.turn(shown.parts.write, count > 0 && !shown.cells.wrong());
        Panel.access.turn(shown.parts.discard, count > 0);
        draw();
    };

    const pictureOf = (kind, data, label, width) => {
        if (kind === "curve") return Panel.plots.curve(data, label, width, 300);
        const asSurface = Panel.memory.get("surface", false) && data.second.length > 1 && data.third.length > 1;
        const toggle = button(asSurface ? "As heat map" : "As surface", () => {
            Panel.memory.put("surface", !asSurface);
            draw();
            shown.parts.picture.querySelector("button")?.focus();
        });
        const drawn = (asSurface ? Panel.surface : Panel.heatmap).draw(data, label, width, Math.max(260, Math.min(380, width * 0.5)));
        return el("div", {}, toggle, drawn);
    };

    const draw = () => {
        const { cells, parts, about, name } = shown;
        const width = Math.min(860, home.clientWidth - 2 * parseFloat(getComputedStyle(home).paddingLeft));
        const isPicture = (cells.kind === "curve" || cells.kind === "map") && home.clientWidth > 0;
        parts.picture.replaceChildren(...(isPicture ? [pictureOf(cells.kind, cells.now(), about.unit ? `${name} [${about.unit}]` : name, width)] : []));
    };

    const send = ({ name, cells, about }) => {
        if (cells.kind === "text") return Panel.call("setDynamicData", { name, value: cells.text(), timeoutMs });
        const { values, second, third } = cells.now();
        return Panel.call("setParamData", about.threeArrays ? { name, values, second, third, timeoutMs } : { name, values, timeoutMs });
    };

    const differences = (sent, got) => ["values", "second", "third"].reduce((count, array) => count +
        sent[array].filter((value, i) => value !== got[array][i]).length + Math.abs(got[array].length - sent[array].length), 0);

    const write = async () => {
        const mine = shown;
        if (mine.cells.wrong() || mine.cells.changes() === 0) return;
        const sent = mine.cells.kind === "text" ? null : mine.cells.now();
        const data = await Panel.failure.guarded(mine.parts.failure, "Not written", async () => {
            await send(mine);
            return fetchData(mine);
        });
        if (mine !== shown || !data) return;
        mine.data = data;
        render();
        showAge();
        const other = sent ? differences(sent, data) : 0;
        const text = other === 0 ? `Written and read back at ${clock()}.`
            : `Written at ${clock()}, but QOR now has something else in ${other} ${other === 1 ? "place" : "places"}.`;
        mine.parts.note.replaceChildren(el("div", { class: `note ${other === 0 ? "good" : "warn"}` }, text));
        announce(text);
    };

    const showAge = () => {
        if (!shown?.data) return;
        const { data, parts } = shown;
        const isOther = data.page !== Panel.pages.active() && Panel.pages.active() !== "";
        const where = data.page ? ` from ${data.page}` : "";
        say(parts.age, `Read${where} at ${clock(new Date(data.at))}, ${ago(Date.now() - data.at)}${isOther ? " \u2013 another page is active now" : ""}`);
        parts.body.classList.toggle("is-stale", isOther || !Panel.link.isOpen());
    };

    const tick = () => {
        showAge();
        const isSeen = Panel.tabs.chosen() === "parameters" && !document.hidden && Panel.link.isOpen();
        if (isSeen && shown?.parts.again.checked && shown.cells && shown.cells.changes() === 0) void read(true);
    };

    const begin = () => {
        home.append(el("p", { class: "empty" }, "Choose a parameter to see its values."));
        Panel.hear("chosen", open);
        Panel.hear("page", showAge);
        Panel.hear("view", (view) => { if (view === "parameters" && shown?.cells) draw(); });
        addEventListener("resize", () => { if (shown?.cells) draw(); });
        Panel.plots.onColours(() => { if (shown?.cells) draw(); });
        setInterval(tick, 1000);
    };

    return { begin };
})();
