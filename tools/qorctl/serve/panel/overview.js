// The first view: where this server stands, how busy it is, and what went wrong.
"use strict";
Panel.overview = (() => {
    const { byId, el, say } = Panel.dom;
    const { millis, span, ago } = Panel.format;
    const longestLog = 500;
    const shownFailures = 8;
    let executable = "";
    let lastFailures = "";

    const facts = (status) => [
        ["Settings", status.settings],
        ["Transport", status.transport],
        ["QOR's program", executable || "none in the settings"],
        ["Trace", status.trace || "none"],
        ["Library", status.version],
        ["Runs for", span(status.uptimeMs)],
        ["Clients", `${status.clients}, with ${status.streams} ${status.streams === 1 ? "stream" : "streams"}`],
        ["Waiting requests", String(status.waiting)],
        ["Under control", status.controls.map((each) => each.name + (each.own ? " (this page)" : "")).join(", ") || "nothing"],
    ];

    const showFacts = (status) => {
        const home = byId("station");
        const rows = facts(status);
        if (home.childElementCount === 0)
            home.append(...rows.flatMap(([key]) => [el("dt", {}, key), el("dd")]));
        rows.forEach(([, value], i) => say(home.children[2 * i + 1], value));
        const file = status.settings.split(/[\\/]/).pop();
        say(byId("where"), `${file} \u00b7 ${status.transport}`);
        byId("where").title = `${status.settings}, ${status.transport}`;
        document.title = `${file} \u2013 QOR panel`;
    };

    const showMethods = (byMethod) => {
        const body = byId("methods").tBodies[0];
        const rows = Object.entries(byMethod).sort(([a], [b]) => a.localeCompare(b));
        while (body.rows.length > rows.length) body.deleteRow(-1);
        rows.forEach(([name, each], i) => {
            const row = body.rows[i] ?? body.appendChild(el("tr", {}, el("th", { scope: "row" }),
                ...[1, 2, 3, 4].map(() => el("td", { class: "number" }))));
            const figure = (ms) => (ms == null ? Panel.format.none : ms.toFixed(1));
            [name, each.requests, each.failures, figure(each.lastMs), figure(each.meanMs)]
                .forEach((text, k) => say(row.cells[k], String(text)));
            row.cells[2].classList.toggle("bad-text", each.failures > 0);
        });
    };

    const failureItem = ({ method, name, sentence, check }) => el("li", {},
        el("span", { class: "method" }, method), el("span", { class: "faint age" }),
        el("div", { class: "why" }, el("div", {}, sentence, name ? el("span", { class: "faint" }, ` (${name})`) : null),
            check ? el("div", { class: "faint" }, `Check: ${check}`) : null));

    const showFailures = (status) => {
        const home = byId("failures");
        const shown = status.lastFailures.slice(0, shownFailures);
        // What stands there stays as long as there is nothing new; only the ages move on.
        const key = JSON.stringify([status.failures, shown.map(({ timeMs, ...rest }) => rest)]);
        if (key !== lastFailures) home.replaceChildren(...shown.map(failureItem));
        lastFailures = key;
        shown.forEach(({ timeMs }, i) => say(home.children[i].querySelector(".age"), ago(timeMs)));
        say(byId("failure-count"), `${status.failures} of ${status.requests} requests`);
        const causes = Object.entries(status.failuresByCause).sort(([, a], [, b]) => b - a);
        say(byId("failure-causes"), causes.length === 0 ? "Nothing has failed."
            : `By cause: ${causes.map(([name, count]) => `${name} ${count}`).join(", ")}.`);
    };

    const take = ({ status, rate }) => {
        showFacts(status);
        showMethods(status.requestsByMethod);
        showFailures(status);
        say(byId("request-rate"), rate === null ? "" : `${rate.toFixed(1)} per second, round trip to QOR ${millis(status.pingMs)}`);
    };

    const addLine = ({ level, line }) => {
        const home = byId("log");
        const wasAtEnd = home.scrollTop + home.clientHeight >= home.scrollHeight - 4;
        const isBad = level === "error" || line.startsWith("FAILED");
        home.append(el("div", { class: isBad ? "bad" : "" }, `${Panel.format.clock()}  ${line}`));
        while (home.childElementCount > longestLog) home.firstChild.remove();
        if (wasAtEnd) home.scrollTop = home.scrollHeight;
    };

    const begin = () => {
        Panel.hear("status", take);
        Panel.hear("server:log", addLine);
        Panel.hear("open", () => {
            addLine({ level: "info", line: "The page is connected to the server." });
            Panel.call("getQorExecutablePath").then((found) => { executable = found.path; }).catch(() => {});
        });
        Panel.hear("lost", () => {
            if (!byId("banner-lost")) addLine({ level: "error", line: "The page has lost the server." });
        });
    };

    return { begin };
})();
