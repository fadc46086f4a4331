// Trouble codes: read, followed, and cleared after a second question.
"use strict";
Panel.codes = (() => {
    const { byId, el, say, show, sure, announce } = Panel.dom;
    const { clock, ago } = Panel.format;
    const readMs = 2000;
    const clearMs = 5000;
    let codes = null;
    let readAt = 0;
    let stream = null;

    const hex = (number, digits) => number.toString(16).toUpperCase().padStart(digits, "0");
    const failure = () => byId("codes-failure");

    const take = (list) => {
        const isOther = JSON.stringify(list) !== JSON.stringify(codes);
        codes = list;
        readAt = Date.now();
        tick();
        if (!isOther) return;
        const cell = (text, kind = "") => el("td", { class: kind }, text);
        byId("codes-table").tBodies[0].replaceChildren(...codes.map(({ code, status, texts }) => el("tr", {},
            cell(hex(code, 4), "mono"), cell(hex(status, 2), "mono"), el("th", { scope: "row", class: "strong" }, texts[0] ?? ""),
            ...[1, 2, 3].map((i) => cell(texts[i] ?? "")))));
        show(byId("codes-table"), codes.length > 0);
        show(byId("codes-none"), codes.length === 0);
        say(byId("codes-none"), "No trouble codes.");
        say(byId("codes-count"), codes.length === 1 ? "1 code" : `${codes.length} codes`);
    };

    const read = () => Panel.failure.guarded(failure(), "Trouble codes not read", async () => {
        take((await Panel.call("getDtcByStatus", { timeoutMs: readMs })).dtcs);
    });

    const clear = async () => {
        const what = codes === null ? "all trouble codes" : codes.length === 1 ? "the trouble code" : `the ${codes.length} trouble codes`;
        if (!await sure(`Clear ${what}?`, "The ECU forgets them and what it has stored with them. That cannot be undone.", "Clear them")) return;
        await Panel.failure.guarded(failure(), "Trouble codes not cleared", async () => {
            await Panel.call("clearDtc", { timeoutMs: clearMs });
            take((await Panel.call("getDtcByStatus", { timeoutMs: readMs })).dtcs);
            announce(codes.length === 0 ? "Cleared. There are no trouble codes." : `Cleared, but the ECU tells of ${codes.length} again.`);
        });
    };

    const follow = async () => {
        const isWanted = byId("codes-follow").checked;
        await Panel.failure.guarded(failure(), "Trouble codes not followed", async () => {
            if (isWanted && stream === null) stream = (await Panel.call("startDtcRead", { timeoutMs: 1000, periodMs: 1000 })).stream;
            else if (!isWanted && stream !== null) {
                const ended = stream;
                stream = null;
                await Panel.call("stopDtcRead", { stream: ended });
            }
        });
        if (isWanted && stream === null) byId("codes-follow").checked = false;
        tick();
    };

    const tick = () => {
        const isFollowed = stream !== null && Panel.link.isOpen();
        const age = codes === null ? "" : `${isFollowed ? "Followed; last change" : "Read"} at ${clock(new Date(readAt))}, ${ago(Date.now() - readAt)}`;
        say(byId("codes-age"), age);
        byId("codes-table").classList.toggle("is-stale", codes !== null && !Panel.link.isOpen());
    };

    const trouble = ({ sentence }) => failure().replaceChildren(Panel.failure.noteOf("The last four reads have failed", { sentence }));

    const begin = () => {
        byId("codes-read").addEventListener("click", read);
        byId("codes-clear").addEventListener("click", clear);
        byId("codes-follow").addEventListener("change", follow);
        show(byId("codes-table"), false);
        Panel.hear("server:dtcs", ({ dtcs }) => { failure().replaceChildren(); take(dtcs); });
        Panel.hear("server:dtcTrouble", trouble);
        Panel.hear("lost", () => { stream = null; });
        Panel.hear("open", () => { if (byId("codes-follow").checked) void follow(); });
        setInterval(tick, 1000);
    };

    return { begin };
})();
