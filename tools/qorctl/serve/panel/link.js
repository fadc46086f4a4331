// The line on which the server tells what happens. It comes again by itself when it is lost, and
// everybody is told: "open" with what the server says of itself, "lost" with the wait until the next try.
"use strict";
Panel.link = (() => {
    const silentMs = 4000; // the server says something every second
    const firstWaitMs = 500;
    const longestWaitMs = 5000;
    let waitMs = firstWaitMs;
    let heardAt = 0;
    let isOpen = false;
    let abort = null;
    let tryNow = () => {};

    const take = (block) => {
        let name = "message";
        const data = [];
        for (const line of block.split(/\r?\n/)) {
            if (line.startsWith("event:")) name = line.slice(6).trim();
            else if (line.startsWith("data:")) data.push(line.slice(5).trimStart());
        }
        if (data.length === 0) return;
        const what = JSON.parse(data.join("\n"));
        if (name === "hello") hello(what);
        else Panel.tell(`server:${name}`, what);
    };

    const hello = (what) => {
        Panel.rpc.setClient(what.client);
        isOpen = true;
        waitMs = firstWaitMs;
        Panel.tell("open", what);
    };

    const read = async (body) => {
        const reader = body.pipeThrough(new TextDecoderStream()).getReader();
        let rest = "";
        for (;;) {
            const { value, done } = await reader.read();
            if (done) return;
            heardAt = performance.now();
            rest += value;
            const blocks = rest.split(/\r?\n\r?\n/);
            rest = blocks.pop();
            blocks.forEach(take);
        }
    };

    /// Until it is lost. What it was lost of does not matter: it is tried again.
    const once = async () => {
        abort = new AbortController();
        heardAt = performance.now();
        const headers = { Accept: "text/event-stream", ...Panel.token.headers() };
        const response = await fetch("/events", { headers, signal: abort.signal, cache: "no-store" });
        if (response.status === 401) {
            heardAt = Infinity; // a person looks for the token
            await Panel.token.ask(headers);
            waitMs = 0;
        } else if (response.ok) {
            await read(response.body);
        }
    };

    const lose = () => {
        isOpen = false;
        Panel.rpc.setClient(null);
        Panel.tell("lost", { waitMs });
    };

    const run = async () => {
        for (;;) {
            await once().catch((problem) => {
                if (!(problem instanceof DOMException || problem instanceof TypeError)) console.error(problem);
            });
            abort.abort();
            lose();
            await new Promise((next) => {
                tryNow = next;
                setTimeout(next, waitMs);
            });
            waitMs = Math.min(longestWaitMs, Math.max(firstWaitMs, waitMs * 1.7));
        }
    };

    setInterval(() => {
        if (abort && performance.now() - heardAt > silentMs) abort.abort();
    }, 500);

    return { run, isOpen: () => isOpen, tryNow: () => tryNow() };
})();
