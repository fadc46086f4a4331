// The trace as it is written: all lines or those with a text, and a search in what is shown.
"use strict";
Panel.trace = (() => {
    const { byId, el, say } = Panel.dom;
    const mostKept = 20000;
    const mostShown = 2000;
    const home = byId("trace-lines");
    let lines = [];
    let matches = [];
    let at = -1;
    let stream = null;
    let isAsked = false;
    let missed = 0;
    let held = null; // lines that came while it is paused

    const isBad = (text) => /\bfail|exception|error/i.test(text);

    const marked = (text, word) => {
        if (word === "") return [text];
        const low = text.toLowerCase();
        const pieces = [];
        let from = 0;
        for (let hit = low.indexOf(word); hit >= 0 && low.length === text.length; hit = low.indexOf(word, from)) {
            pieces.push(text.slice(from, hit), el("mark", {}, text.slice(hit, hit + word.length)));
            from = hit + word.length;
        }
        return [...pieces, text.slice(from)];
    };

    const word = () => byId("trace-search").value.toLowerCase();
    const fits = (text) => text.toLowerCase().includes(byId("trace-filter").value.toLowerCase());
    const lineOf = (text) => el("div", { class: isBad(text) ? "bad" : "" }, ...marked(text, word()));

    const toEnd = () => {
        if (byId("trace-follow").checked) home.scrollTop = home.scrollHeight;
    };

    const count = () => {
        matches = word() === "" ? [] : [...home.querySelectorAll("mark")];
        at = Math.min(at, matches.length - 1);
        say(byId("trace-matches"), word() === "" ? "" : matches.length === 0 ? "not found" : at < 0 ? `${matches.length} found` : `${at + 1} of ${matches.length}`);
        [byId("trace-before"), byId("trace-next")].forEach((each) => { each.disabled = matches.length === 0; });
    };

    const showAll = () => {
        const shown = lines.filter(fits);
        home.replaceChildren(...shown.slice(-mostShown).map(lineOf));
        at = -1;
        count();
        toEnd();
        showState();
    };

    const showState = () => {
        const parts = [`${lines.length} lines`];
        if (byId("trace-filter").value !== "") parts.push(`${lines.filter(fits).length} with the text`);
        if (home.childElementCount >= mostShown) parts.push(`the last ${mostShown} are shown`);
        if (missed > 0) parts.push(`${missed} bytes were left out, since this page was too slow`);
        if (held) parts.push(`paused, ${held.length} new`);
        if (!Panel.link.isOpen()) parts.push("no connection");
        say(byId("trace-state"), parts.join(" \u00b7 "));
    };

    const append = (more) => {
        lines.push(...more);
        if (lines.length > mostKept) lines = lines.slice(-mostKept);
        home.append(...more.filter(fits).slice(-mostShown).map(lineOf));
        while (home.childElementCount > mostShown) home.firstChild.remove();
        if (word() !== "") count();
        toEnd();
        showState();
    };

    const take = (event) => {
        missed = event.missed ?? 0;
        if (held === null) return append(event.lines);
        held = [...held, ...event.lines].slice(-mostKept);
        showState();
    };

    const start = async () => {
        isAsked = true;
        await Panel.failure.guarded(byId("trace-failure"), "The trace cannot be followed", async () => {
            stream = (await Panel.call("startTraceRead", { tailBytes: lines.length === 0 ? 65536 : 0 })).stream;
        });
        showState();
    };

    const go = (step) => {
        if (matches.length === 0) return;
        matches[at]?.parentElement.classList.remove("is-at");
        at = at < 0 ? (step > 0 ? 0 : matches.length - 1) : (at + step + matches.length) % matches.length;
        matches[at].parentElement.classList.add("is-at");
        byId("trace-follow").checked = false;
        matches[at].scrollIntoView({ block: "center" });
        count();
    };

    const pause = () => {
        const waiting = held;
        held = held === null ? [] : null;
        byId("trace-pause").setAttribute("aria-pressed", String(held !== null));
        say(byId("trace-pause"), held === null ? "Pause" : "Go on");
        if (waiting) append(waiting);
        showState();
    };

    const begin = () => {
        let timer = 0;
        ["trace-filter", "trace-search"].forEach((id) => byId(id).addEventListener("input", () => {
            clearTimeout(timer);
            timer = setTimeout(showAll, 120);
        }));
        byId("trace-search").addEventListener("keydown", (event) => event.key === "Enter" && go(event.shiftKey ? -1 : 1));
        byId("trace-before").addEventListener("click", () => go(-1));
        byId("trace-next").addEventListener("click", () => go(1));
        byId("trace-pause").addEventListener("click", pause);
        byId("trace-follow").addEventListener("change", toEnd);
        byId("trace-save").addEventListener("click", () => Panel.dom.save(`qor-trace-${Panel.format.stamp()}.txt`, "text/plain", lines.filter(fits).join("\r\n") + "\r\n"));
        // Who scrolls up wants to read there.
        home.addEventListener("wheel", (event) => { if (event.deltaY < 0) byId("trace-follow").checked = false; }, { passive: true });
        home.addEventListener("keydown", (event) => { if (["ArrowUp", "PageUp", "Home"].includes(event.key)) byId("trace-follow").checked = false; });
        Panel.hear("server:trace", (event) => { if (stream === null || event.stream === stream) take(event); });
        Panel.hear("view", (view) => {
            if (view !== "trace") return;
            if (!isAsked && Panel.link.isOpen()) void start();
            toEnd();
        });
        Panel.hear("lost", () => {
            if (stream !== null) append(["\u2014 the connection to the server was lost here \u2014"]);
            stream = null;
        });
        Panel.hear("open", () => { if (isAsked || Panel.tabs.chosen() === "trace") void start(); });
        count();
        showState();
    };

    return { begin };
})();
