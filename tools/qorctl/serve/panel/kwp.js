// KWP requests by hand.
"use strict";
Panel.kwp = (() => {
    const { byId, el } = Panel.dom;
    const { spaced, letters } = Panel.hex;
    // What an ECU gives as the reason of a negative response, ISO 14230-3.
    const reasons = new Map([
        [0x10, "general reject"], [0x11, "service not supported"], [0x12, "sub-function not supported or wrong format"],
        [0x21, "busy, repeat the request"], [0x22, "conditions not correct"], [0x23, "routine not complete"],
        [0x31, "request out of range"], [0x33, "security access denied"], [0x35, "invalid key"],
        [0x36, "too many attempts"], [0x37, "required time delay not over"], [0x78, "received, response pending"],
        [0x80, "service not supported in this session"],
    ]);

    const meaningOf = (data) => {
        const [first, , reason] = Panel.hex.pairs(data).map((each) => parseInt(each, 16));
        if (first !== 0x7F || reason === undefined) return "";
        return `negative response: ${reasons.get(reason) ?? `reason 0x${reason.toString(16).toUpperCase()}`}`;
    };

    const send = async () => {
        const service = Panel.hex.number(byId("kwp-service"));
        const data = Panel.hex.bytes(byId("kwp-data"));
        const timeoutMs = Panel.hex.decimal(byId("kwp-timeout"));
        const asked = `${service.toString(16).toUpperCase().padStart(2, "0")} ${spaced(data)}`.trim();
        const begun = performance.now();
        const answer = await Panel.call("sendKwpCommand", { service, data, timeoutMs });
        const took = Panel.format.millis(performance.now() - begun);
        const told = [answer.failed ? "failed" : "", meaningOf(answer.data)].filter(Boolean).join(", ");
        Panel.hex.log(byId("kwp-history"), asked, answer.failed, el("code", {}, spaced(answer.data) || "no bytes"),
            el("code", { class: "faint letters" }, letters(answer.data)), el("span", { class: answer.failed ? "bad-text" : "faint" }, [told, took].filter(Boolean).join(" \u00b7 ")));
    };

    const begin = () => byId("kwp").addEventListener("submit", (event) => {
        event.preventDefault();
        void Panel.failure.guarded(byId("kwp-failure"), "KWP request not sent", send);
    });

    return { begin };
})();
