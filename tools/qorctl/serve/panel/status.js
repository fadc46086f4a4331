// How things are: asked for once a second, and the vital figures of it in the head of the page.
"use strict";
Panel.status = (() => {
    const { byId, el, say } = Panel.dom;
    const { millis, none } = Panel.format;
    const pollMs = 1000;
    const pingEveryMs = 3000;
    const pingTimeoutMs = 2000;
    const vitals = new Map();
    let last = null; // {status, at, figure}
    let state = { isEcuOnline: false, isConnecting: false };
    let qor = { level: "off", text: none };
    let isPinging = false;
    let isAsking = false;
    let pingedAt = -Infinity;

    const vital = (key, title, isFigure) => {
        const value = el("dd", {}, none);
        const box = el("div", { id: `vital-${key}`, class: isFigure ? "figure" : "" }, el("dt", {}, title), value);
        byId("vitals").append(box);
        vitals.set(key, { box, value });
    };

    const set = (key, text, level = "off") => {
        const { box, value } = vitals.get(key);
        say(value, text);
        if (box.dataset.level !== level) box.dataset.level = level;
    };

    /// What the page itself asks for every second says nothing about the load.
    const figureOf = (status) => status.requests - (status.requestsByMethod?.getServerStatus?.requests ?? 0);

    const take = (status) => {
        const at = performance.now();
        const figure = figureOf(status);
        const rate = last ? (figure - last.figure) * 1000 / (at - last.at) : null;
        last = { status, at, figure, rate };
        set("rate", rate === null ? none : `${rate < 10 ? Math.max(0, rate).toFixed(1) : Math.round(rate)} /s`);
        set("failures", String(status.failures), status.failures > 0 ? "warn" : "off");
        set("trip", millis(status.pingMs));
        Panel.tell("status", last);
    };

    const ask = async () => {
        if (!Panel.link.isOpen() || document.hidden || isAsking) return;
        isAsking = true;
        try {
            take(await Panel.call("getServerStatus"));
        } catch (error) {
            if (!(error instanceof Panel.rpc.CallError)) console.error(error);
        }
        isAsking = false;
        void ping();
    };

    /// While a connect runs QOR answers nothing else: a ping would wait behind it.
    const ping = async () => {
        if (isPinging || state.isConnecting || performance.now() - pingedAt < pingEveryMs) return;
        isPinging = true;
        pingedAt = performance.now();
        try {
            await Panel.call("pingQor", { timeoutMs: pingTimeoutMs });
            qor = { level: "good", text: "answers" };
        } catch (error) {
            if (error.code === Panel.rpc.codes.failed) qor = { level: "bad", text: "silent" };
        }
        isPinging = false;
        showState();
    };

    const showState = () => {
        const isOpen = Panel.link.isOpen();
        set("server", isOpen ? "connected" : "lost", isOpen ? "good" : "bad");
        if (!isOpen) ["trip", "rate", "failures"].forEach((key) => set(key, none));
        set("qor", isOpen ? qor.text : "unknown", isOpen ? qor.level : "off");
        const ecu = state.isConnecting ? ["connecting", "warn"] : state.isEcuOnline ? ["online", "good"] : ["offline", "warn"];
        set("ecu", ...(isOpen ? ecu : ["unknown", "off"]));
    };

    const takeState = (now) => {
        if (now.isEcuOnline !== state.isEcuOnline) Panel.dom.announce(`The ECU is ${now.isEcuOnline ? "online" : "offline"}.`);
        state = now;
        showState();
        Panel.tell("state", state);
    };

    const begin = () => {
        vital("server", "Server");
        vital("qor", "QOR");
        vital("ecu", "ECU");
        vital("trip", "Round trip", true);
        vital("rate", "Requests", true);
        vital("failures", "Failures", true);
        Panel.hear("server:state", takeState);
        Panel.hear("open", () => { last = null; pingedAt = -Infinity; showState(); void ask(); });
        Panel.hear("lost", showState);
        setInterval(ask, pollMs);
        showState();
    };

    return { begin, state: () => state, qorIs: () => qor };
})();
