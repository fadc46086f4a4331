// The memory page on which is worked. QOR does not tell which one that is: it is known from what any
// client has asked for, which the library's log tells, and not known before.
"use strict";
Panel.pages = (() => {
    const { byId, el } = Panel.dom;
    const home = byId("pages");
    let names = [];
    let active = "";
    let failures = null; // of all choices of all clients

    const show = () => {
        for (const each of home.children) {
            const isActive = each.dataset.page === active;
            each.setAttribute("aria-checked", String(isActive));
            each.title = isActive ? "Reads and writes go to this page" : `Work on ${each.dataset.page}`;
        }
        home.classList.toggle("is-unknown", active === "");
        Panel.dom.say(byId("page-known"), active === "" ? "not known yet" : "active:");
        Panel.tell("page", active);
    };

    const choose = async (name) => {
        try {
            await Panel.call("setEcuSegment", { segment: name });
            active = name;
            Panel.banners.remove("page");
            Panel.dom.announce(`${name} is active.`);
        } catch (error) {
            active = ""; // refused, or carried out too late for its answer
            const cause = error.cause ?? {};
            Panel.banners.put("page", `${name} was not chosen.`, [error.message, cause.check].filter(Boolean).join(" "), true,
                el("button", { type: "button", onclick: () => Panel.banners.remove("page") }, "Close"));
        }
        show();
    };

    // The arrow keys only go from one to the other: a press is what changes the ECU.
    const byKey = (event) => {
        if (!["ArrowLeft", "ArrowRight", "ArrowUp", "ArrowDown"].includes(event.key)) return;
        event.preventDefault();
        [...home.children].find((each) => each !== document.activeElement)?.focus();
    };

    const build = (state) => {
        if (state.segment !== undefined) active = state.segment;
        names = [state.ramSegment, state.romSegment];
        if (home.childElementCount === 0)
            home.append(...names.map((name) => el("button", {
                type: "button", role: "radio", "data-page": name, "data-changes": true, onclick: () => choose(name),
            }, name.replace(/(?<=[a-z])Page$/, " page"))));
        Panel.access.sweep(home);
        show();
    };

    /// The log tells of a request before its answer, and of another client's failure nothing.
    const takeStatus = ({ status }) => {
        const now = status.requestsByMethod.setEcuSegment?.failures ?? 0;
        const isNew = failures !== null && now > failures;
        failures = now;
        if (!isNew) return;
        active = "";
        show();
    };

    const takeLine = ({ line }) => {
        const [, name] = /^SET-segment\((.*)\): /.exec(line) ?? [];
        if (!names.includes(name)) return;
        active = name;
        show();
    };

    const begin = () => {
        Panel.hear("server:log", takeLine);
        Panel.hear("status", takeStatus);
        home.addEventListener("keydown", byKey);
        Panel.hear("open", () => Panel.call("getState").then(build).catch(() => {}));
        // Another client may have switched meanwhile, and a connect begins anew.
        Panel.hear("lost", () => { active = ""; failures = null; show(); });
        Panel.hear("state", (state) => {
            if (state.segment !== undefined) active = state.segment;
            else if (state.isConnecting) active = "";
            show();
        });
    };

    return { begin, active: () => active };
})();
