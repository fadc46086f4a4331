// Calls methods of the server.
"use strict";
Panel.rpc = (() => {
    let client = null;
    let lastId = 0;

    /// Of a call that failed; `cause` has name, sentence and check, as far as they are known.
    class CallError extends Error {
        constructor(method, code, message, cause = {}) {
            super(message);
            this.method = method;
            this.code = code;
            this.cause = { sentence: message, ...cause };
        }
    }

    const codes = { failed: -32000, busy: -32001, readOnly: -32002, ending: -32003, taken: -32004, refused: -32005, unreachable: 1 };

    const unreachable = (method) => new CallError(method, codes.unreachable, "The server does not answer.", {
        name: "noServer",
        check: "See whether qorctl serve still runs on its computer, and whether the network is there.",
    });

    const post = async (method, params, isLast) => {
        const sent = { "Content-Type": "application/json", ...Panel.token.headers() };
        if (client) sent["X-Qor-Client"] = client;
        const body = JSON.stringify({ jsonrpc: "2.0", id: ++lastId, method, params });
        const response = await fetch("/rpc", { method: "POST", headers: sent, body, keepalive: isLast })
            .catch(() => { throw unreachable(method); });
        if (response.status !== 401) return response;
        await Panel.token.ask(sent);
        return post(method, params, isLast);
    };

    /// The result of a method. `isLast`: the page may be gone before the answer comes.
    const call = async (method, params = {}, isLast = false) => {
        const response = await post(method, params, isLast);
        const answer = await response.json().catch(() => null);
        if (answer === null) throw unreachable(method);
        if (answer.result !== undefined) return answer.result;
        const error = answer.error ?? {};
        if (typeof error === "string") throw new CallError(method, response.status, error);
        throw new CallError(method, error.code, error.message ?? `HTTP ${response.status}`, error.data ?? {});
    };

    return { call, codes, CallError, setClient: (id) => { client = id; } };
})();
Panel.call = Panel.rpc.call;
