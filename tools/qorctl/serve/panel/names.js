// The parameters that are known: names, and what QOR says of them.
"use strict";
Panel.names = (() => {
    const { byId, el } = Panel.dom;
    const publishMs = 400;
    const mostFailures = 10; // one after the other: then the list is not about this model
    let all = new Map();
    let isDescribing = false;

    const load = async () => {
        const { names } = await Panel.call("getParamNames");
        const own = [...all.values()].filter((each) => each.isOwn);
        all = new Map([...names, ...own.filter((each) => !names.some((other) => other.name === each.name))].map((each) => [each.name, each]));
        void describeAll();
        publish();
    };

    /// One after the other, so that nobody waits for it: a search by text, unit and group needs them.
    const describeAll = async () => {
        if (isDescribing) return;
        isDescribing = true;
        let publishedAt = performance.now();
        let failures = 0;
        for (const each of [...all.values()]) {
            if (each.described || !Panel.link.isOpen() || failures >= mostFailures) continue;
            const found = await ask(each.name).catch(() => null);
            failures = found ? 0 : failures + 1;
            if (performance.now() - publishedAt < publishMs) continue;
            publishedAt = performance.now();
            publish();
        }
        isDescribing = false;
        publish();
    };

    const ask = async (name) => {
        const known = all.get(name);
        const found = await Panel.call("getParamDescription", { name });
        const described = { ...found, name, described: true, isOwn: !known || known.isOwn };
        all.set(name, described);
        return described;
    };

    const publish = () => {
        byId("known-names").replaceChildren(...[...all.keys()].map((name) => el("option", { value: name })));
        Panel.tell("names", [...all.values()]);
    };

    /// What QOR says of a parameter; asked for once.
    const describe = async (name) => {
        const known = all.get(name);
        if (known?.described) return known;
        const described = await ask(name);
        publish();
        return described;
    };

    const of = (name) => all.get(name) ?? { name, described: false, meaning: "", unit: "", group: "", threeArrays: false };

    const begin = () => Panel.hear("open", () => load().catch(() => {}));

    return { begin, describe, of, isDescribing: () => isDescribing };
})();
