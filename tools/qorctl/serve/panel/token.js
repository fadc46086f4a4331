// The token of a server that wants one. It is kept until the window is closed, and in this window only.
"use strict";
Panel.token = (() => {
    const { byId, say } = Panel.dom;
    const key = "qor-token";
    let token = sessionStorage.getItem(key) ?? "";
    let asking = null;

    const headers = () => (token === "" ? {} : { Authorization: `Bearer ${token}` });

    const askNow = () => new Promise((answered) => {
        const dialog = byId("token-dialog");
        const field = byId("token");
        say(byId("token-wrong"), token === "" ? "" : "The server refused that token.");
        field.value = "";
        dialog.addEventListener("close", () => {
            token = field.value.trim();
            field.value = "";
            sessionStorage.setItem(key, token);
            answered();
        }, { once: true });
        if (!dialog.open) dialog.showModal();
        field.focus();
    });

    /// Asks once for all who want to know. `refused`: the headers that were not enough; if there is
    /// another token by now it may be tried at once.
    const ask = async (refused) => {
        if ((refused.Authorization ?? "") !== (headers().Authorization ?? "")) return;
        asking ??= askNow().finally(() => { asking = null; });
        await asking;
    };

    // Without a token there is nothing to see.
    byId("token-dialog").addEventListener("cancel", (event) => event.preventDefault());

    return { headers, ask };
})();
