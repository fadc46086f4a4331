// The actuators that can be driven, each a card with a value and a button to hold.
"use strict";
Panel.drive = (() => {
    const { byId, el, say, announce } = Panel.dom;
    const { parsed, shown } = Panel.format;
    const dragPixels = 240; // over the whole range
    const deadPixels = 14; // a hand that holds is never quite still
    const cards = new Map(); // name -> {actuator, element}
    const usual = { low: 0, high: 100, value: 0 };

    const keep = () => {
        const kept = {};
        for (const [name, card] of cards) Object.defineProperty(kept, name, { value: card.settings(), enumerable: true });
        Panel.memory.put("actuators", kept);
        suggest();
    };

    const field = (id, title, value) => {
        const input = el("input", { id, class: "mono number", value: String(value), inputmode: "decimal", autocomplete: "off" });
        return { input, box: el("div", { class: "field" }, el("label", { for: id }, title), input) };
    };

    /// The button: held by pointer or key, and let go by everything that could mean so.
    const holdBy = (button, actuator, nudge) => {
        let pressedX = null;
        const release = () => { pressedX = null; actuator.release(); };
        button.addEventListener("pointerdown", (event) => {
            if (event.button !== 0) return;
            button.setPointerCapture(event.pointerId);
            pressedX = event.clientX;
            nudge.begin();
            actuator.take();
        });
        button.addEventListener("pointermove", (event) => {
            if (pressedX === null) return;
            const moved = event.clientX - pressedX;
            nudge.by(Math.sign(moved) * Math.max(0, Math.abs(moved) - deadPixels) / dragPixels);
        });
        ["pointerup", "pointercancel", "lostpointercapture", "blur"].forEach((name) => button.addEventListener(name, release));
        button.addEventListener("contextmenu", (event) => event.preventDefault());
        button.addEventListener("keydown", (event) => {
            if (event.key === "Escape" || event.key === "Tab") release();
            if ([" ", "Enter"].includes(event.key)) { event.preventDefault(); if (!event.repeat) actuator.take(); }
            const step = { ArrowUp: 1, ArrowRight: 1, ArrowDown: -1, ArrowLeft: -1, PageUp: 10, PageDown: -10 }[event.key];
            if (step !== undefined) { event.preventDefault(); nudge.step(step); }
        });
        button.addEventListener("keyup", (event) => { if ([" ", "Enter"].includes(event.key)) { event.preventDefault(); release(); } });
    };

    const cardOf = (name, id, given) => {
        const value = field(`drive-${id}-value`, "Value", given.value);
        const low = field(`drive-${id}-low`, "from", given.low);
        const high = field(`drive-${id}-high`, "to", given.high);
        const slider = el("input", { type: "range", "aria-label": `Value of ${name}`, step: "any", "data-changes": true });
        const button = el("button", { type: "button", class: "hold", "aria-pressed": "false", "data-changes": true, "aria-label": `Hold to drive ${name}` }, "Hold to drive");
        const status = el("p", { class: "status faint", role: "status" }, "Not driven.");
        const failure = el("div", { role: "alert" });
        const unit = el("span", { class: "unit faint" }, Panel.names.of(name).unit);
        const remove = el("button", { type: "button", class: "quiet", "aria-label": `Remove ${name} from the list`, onclick: () => drop(name) }, "\u00d7");
        const element = el("div", { class: "card actuator", role: "group", "aria-label": name },
            el("div", { class: "row top" }, el("h3", {}, name), unit, el("span", { class: "push" }), remove),
            el("div", { class: "row" }, value.box, low.box, high.box), slider, button, status, failure);
        element.dataset.name = name;
        return { name, value: value.input, low: low.input, high: high.input, slider, button, status, failure, unit, element };
    };

    /// What a card shows of how its actuator is.
    const teller = (card) => (state, text, error) => {
        card.element.dataset.state = state;
        card.button.setAttribute("aria-pressed", String(state === "held" || state === "taking"));
        say(card.button, state === "held" ? "Driving \u2013 let go to give back" : "Hold to drive");
        say(card.status, state === "held" && card.unit.textContent ? `${text} ${card.unit.textContent}` : text);
        if (error) Panel.failure.show(card.failure, `${card.name} is not driven`, error);
        else if (state === "taking") card.failure.replaceChildren();
        if (state === "failed") announce(`${card.name}: ${text}`, true);
    };

    const bounds = (card) => {
        const low = parsed(card.low.value), high = parsed(card.high.value);
        const isRange = typeof low === "number" && typeof high === "number" && low < high;
        [card.low, card.high].forEach((each) => each.toggleAttribute("aria-invalid", false));
        if (!isRange) [card.low, card.high].forEach((each) => each.setAttribute("aria-invalid", "true"));
        return isRange ? [low, high] : [0, 100];
    };

    /// A thousandth of the range, or a rounder number below: what a hand means by a place on the slider.
    const rounded = (value, range) => {
        const grain = 10 ** Math.floor(Math.log10(range / 1000));
        return Math.round(value / grain) * grain;
    };

    /// Brings field, slider and actuator to the same value.
    const wire = (card, actuator) => {
        let held = 0;
        const span = () => { const [low, high] = bounds(card); return high - low; };
        const put = (wanted, from) => {
            const [low, high] = bounds(card);
            const value = Number(Math.min(high, Math.max(low, wanted)).toPrecision(6));
            if (from !== card.value) card.value.value = String(value);
            if (from !== card.slider) card.slider.value = String(value);
            card.value.removeAttribute("aria-invalid");
            actuator.set(value);
        };
        const range = () => {
            const [low, high] = bounds(card);
            card.slider.min = String(low);
            card.slider.max = String(high);
            put(Number(parsed(card.value.value)) || 0);
        };
        const typed = () => {
            const value = parsed(card.value.value);
            const [low, high] = bounds(card);
            if (typeof value === "number" && value >= low && value <= high) put(value, card.value);
            else card.value.setAttribute("aria-invalid", "true");
        };
        card.value.addEventListener("input", typed);
        card.slider.addEventListener("input", () => put(rounded(Number(card.slider.value), span()), card.slider));
        [card.low, card.high].forEach((each) => each.addEventListener("change", () => { range(); keep(); }));
        [card.value, card.slider].forEach((each) => each.addEventListener("change", () => { put(Number(parsed(card.value.value)) || 0); keep(); }));
        holdBy(card.button, actuator, {
            begin: () => { held = Number(card.slider.value); },
            by: (share) => { if (share !== 0) put(rounded(held + share * span(), span())); },
            step: (steps) => put(Number(card.slider.value) + steps * span() / 100),
        });
        range();
    };

    let lastId = 0;
    const add = (name, given = usual) => {
        if (name === "" || cards.has(name)) return;
        const card = cardOf(name, ++lastId, given);
        const actuator = new Panel.actuator(name, teller(card));
        wire(card, actuator);
        cards.set(name, { actuator, card, settings: () => ({ value: Number(card.slider.value), low: bounds(card)[0], high: bounds(card)[1] }) });
        byId("actuators").append(card.element);
        Panel.access.sweep(card.element);
        Panel.names.describe(name).then((about) => say(card.unit, about.unit)).catch((error) => Panel.failure.show(card.failure, `${name} is not known`, error));
        keep();
    };

    const drop = (name) => {
        const { actuator, card } = cards.get(name);
        actuator.release();
        card.element.remove();
        cards.delete(name);
        keep();
    };

    const releaseAll = (why, isLast = false) => cards.forEach(({ actuator }) => actuator.release(why, isLast));

    /// What the list of names calls an actuator. Below the cards: names may come late, and a button that is
    /// about to be held must not move away.
    const suggest = () => {
        const offered = suggested.filter((name) => !cards.has(name)).slice(0, 12);
        byId("drive-suggested")?.remove();
        if (offered.length === 0) return;
        byId("actuators").after(el("p", { id: "drive-suggested", class: "chips" }, ...offered.map((name) =>
            el("button", { type: "button", class: "chip", "aria-label": `Add ${name}`, onclick: () => add(name) }, name))));
    };
    let suggested = [];

    const restore = () => {
        const kept = Panel.memory.get("actuators", {});
        for (const [name, each] of Object.entries(kept)) add(name, { ...usual, ...each });
    };

    const begin = () => {
        byId("drive-add").addEventListener("submit", (event) => {
            event.preventDefault();
            add(byId("drive-name").value.trim());
            byId("drive-name").value = "";
        });
        Panel.hear("names", (names) => {
            suggested = names.filter((each) => /actuator/i.test(each.group)).map((each) => each.name);
            suggest();
        });
        Panel.hear("server:control", (event) => cards.get(event.name)?.actuator.heard(event));
        Panel.hear("lost", () => releaseAll("The connection was lost; the server gives it back."));
        Panel.hear("view", () => releaseAll());
        addEventListener("blur", () => releaseAll("Given back, since the window was left."));
        document.addEventListener("visibilitychange", () => document.hidden && releaseAll("Given back, since the page was hidden."));
        addEventListener("pagehide", () => releaseAll("", true));
        let isRestored = false;
        Panel.hear("open", () => { if (!isRestored) restore(); isRestored = true; });
    };

    return { begin };
})();
