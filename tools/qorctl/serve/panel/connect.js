// Connects the ECU, tells how it goes, and cancels it.
"use strict";
Panel.connect = (() => {
    const { byId, el, say, show } = Panel.dom;
    // What is left empty is as QOR itself would have it; the placeholders say how that is.
    const types = ["Default", "SecurityAccess", "Alternative"];
    const usual = [
        ["protocol", "Protocol, 1 to 4", "1"], ["canBaudRate", "CAN, bit/s", "125000"],
        ["kLineBaudRate", "K-line, bit/s", "10400"], ["refreshPeriodMs", "Refresh, ms", "200"],
    ];
    const further = [
        ["protocolOption", "Protocol option", "1"], ["canRequestId", "CAN request id", "none"],
        ["canResponseId", "CAN response id", "none"], ["addressByte1", "Address byte 1", "255"],
        ["addressByte2", "Address byte 2", "255"], ["addressWord", "Address word", "255"],
    ];
    const flags = [["optionFlag", "Option flag"], ["extraFlag", "Extra flag"], ["finalFlag", "Final flag"]];
    const fields = new Map();
    let isOurs = false;
    let lastProgress = null;

    const field = (key, title, placeholder) => {
        const input = el("input", { id: `connect-${key}`, class: "mono", placeholder, autocomplete: "off", spellcheck: "false", "data-changes": true });
        fields.set(key, input);
        return el("div", { class: "field" }, el("label", { for: input.id }, title), input);
    };

    const flag = ([key, title]) => {
        const input = el("input", { id: `connect-${key}`, type: "checkbox", checked: true, "data-changes": true });
        fields.set(key, input);
        return el("label", { class: "check" }, input, title);
    };

    const build = () => {
        const type = el("select", { id: "connect-type", "data-changes": true }, ...types.map((each) => el("option", {}, each)));
        fields.set("type", type);
        byId("connect-form").append(
            el("div", { class: "grid-fields" },
                el("div", { class: "field" }, el("label", { for: type.id }, "Connection type"), type),
                ...usual.map((each) => field(...each))),
            el("details", {}, el("summary", {}, "Further settings"),
                el("div", { class: "grid-fields" }, ...further.map((each) => field(...each)),
                    field("securityDll", "Security library", "path on the server's computer")),
                el("div", { class: "row" }, ...flags.map(flag))),
            el("div", { class: "row" }, el("button", { type: "submit", class: "primary", "data-changes": true }, "Connect ECU")));
    };

    /// Throws, naming the field, if one is no number.
    const settings = () => {
        const found = {};
        for (const [key, input] of fields) {
            input.removeAttribute("aria-invalid");
            const text = input.value.trim();
            if (key === "type" || (input.type !== "checkbox" && text === "")) continue;
            if (input.type === "checkbox") found[key] = input.checked;
            else if (key === "securityDll") found[key] = text;
            else if (/^(\d+|0x[\da-f]+)$/i.test(text)) found[key] = Number(text);
            else {
                input.setAttribute("aria-invalid", "true");
                input.focus();
                throw new Error(`"${text}" is no whole number.`);
            }
        }
        return found;
    };

    const run = async () => {
        if (isOurs || !Panel.access.mayChange()) return;
        await Panel.failure.guarded(byId("connect-failure"), "Not connected", async () => {
            const asked = settings();
            isOurs = true;
            lastProgress = null;
            showProgress();
            Panel.dom.announce("Connecting the ECU.");
            await Panel.call("connect", { settings: asked, type: fields.get("type").value });
            Panel.dom.announce("Connected.");
        });
        isOurs = false;
        showProgress();
        // The reason must be seen, from wherever it was asked for.
        if (byId("connect-failure").childElementCount > 0) Panel.tabs.choose("overview");
    };

    const showProgress = () => {
        const isRunning = isOurs || Panel.status.state().isConnecting;
        show(byId("connect-progress"), isRunning);
        show(byId("connect"), !isRunning);
        show(byId("connect-cancel"), isOurs);
        const who = isOurs ? "Connecting" : "Another client connects";
        const figure = lastProgress && lastProgress.figure >= 0 ? `, step ${lastProgress.figure}` : "";
        const time = lastProgress ? `, ${(lastProgress.elapsedMs / 1000).toFixed(1)} s` : "\u2026";
        say(byId("connect-progress").querySelector(".text"), `${who}${figure}${time}`);
        say(byId("connect"), Panel.status.state().isEcuOnline ? "Connect again" : "Connect ECU");
        byId("connect").classList.toggle("primary", !Panel.status.state().isEcuOnline);
    };

    const begin = () => {
        build();
        byId("connect-form").addEventListener("submit", (event) => {
            event.preventDefault();
            void run();
        });
        byId("connect").addEventListener("click", run);
        byId("connect-cancel").addEventListener("click", () => {
            say(byId("connect-progress").querySelector(".text"), "Cancelling\u2026");
            Panel.call("cancelConnect").catch((error) => Panel.failure.show(byId("connect-failure"), "Not cancelled", error));
        });
        Panel.hear("server:connectProgress", (progress) => {
            lastProgress = progress;
            showProgress();
        });
        Panel.hear("state", ({ isConnecting }) => {
            if (!isConnecting) lastProgress = null;
            showProgress();
        });
        Panel.hear("lost", () => { lastProgress = null; });
    };

    return { begin };
})();
