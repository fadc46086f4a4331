// Finds a parameter: by words in its name, text, unit or group, all of which must be there.
"use strict";
Panel.finder = (() => {
    const { byId, el, say } = Panel.dom;
    const mostShown = 300;
    const list = byId("names");
    const search = byId("search");
    let all = [];
    let found = [];
    let chosen = "";
    let at = -1;

    const wordsOf = () => search.value.toLowerCase().split(/\s+/).filter(Boolean);

    const fits = (each, words, group, unit) => {
        if (group !== "" && each.group !== group.slice(1)) return false;
        if (unit !== "" && each.unit !== unit.slice(1)) return false;
        const text = [each.name, each.meaning, each.unit, each.group].join("\n").toLowerCase();
        return words.every((word) => text.includes(word));
    };

    /// What was searched for is marked in the text.
    const marked = (text, words) => {
        const pieces = [];
        let rest = text;
        while (rest !== "") {
            const low = rest.toLowerCase();
            const hits = words.map((word) => [low.indexOf(word), word.length]).filter(([start]) => start >= 0);
            // Lower case may have another length in a few scripts: then nothing is marked.
            if (hits.length === 0 || low.length !== rest.length) break;
            const [start, length] = hits.reduce((a, b) => (b[0] < a[0] || (b[0] === a[0] && b[1] > a[1]) ? b : a));
            pieces.push(rest.slice(0, start), el("mark", {}, rest.slice(start, start + length)));
            rest = rest.slice(start + length);
        }
        return [...pieces, rest];
    };

    const item = (each, words, i) => el("li", {
        role: "option", id: `name-${i}`, "aria-selected": String(each.name === chosen), onclick: () => choose(i),
    }, el("span", { class: "name" }, ...marked(each.name, words)), el("span", { class: "unit faint" }, ...marked(each.unit, words)),
    el("span", { class: "meaning faint" }, ...marked(each.meaning, words)), el("span", { class: "group faint" }, ...marked(each.group, words)));

    const show = () => {
        const words = wordsOf();
        const group = byId("search-group").value;
        const unit = byId("search-unit").value;
        found = all.filter((each) => fits(each, words, group, unit));
        list.replaceChildren(...found.slice(0, mostShown).map((each, i) => item(each, words, i)));
        const asked = search.value.trim();
        const isNew = asked !== "" && !all.some((each) => each.name === asked);
        if (isNew) {
            found = [...found.slice(0, mostShown), { name: asked }];
            list.append(el("li", { role: "option", id: `name-${found.length - 1}`, class: "ask", "aria-selected": "false", onclick: () => choose(found.length - 1) },
                `Ask QOR for \u201c${asked}\u201d`));
        }
        const count = found.length - (isNew ? 1 : 0);
        const more = Panel.names.isDescribing() ? ", asking QOR about them\u2026" : "";
        say(byId("name-count"), `${count === all.length ? `${count} known` : `${count} of ${all.length}`}${more}`);
        say(byId("names-more"), count > mostShown ? `${count - mostShown} more: search for something narrower.` : "");
    };

    const searchAnew = () => {
        show();
        moveTo(-1);
    };

    const moveTo = (index) => {
        list.children[at]?.classList.remove("is-at");
        at = Math.min(index, list.childElementCount - 1);
        const item = list.children[at];
        item?.classList.add("is-at");
        item?.scrollIntoView({ block: "nearest" });
        if (item) search.setAttribute("aria-activedescendant", item.id);
        else search.removeAttribute("aria-activedescendant");
    };

    const choose = (index) => {
        const each = found[index];
        if (!each) return;
        chosen = each.name;
        [...list.children].forEach((item, i) => item.setAttribute("aria-selected", String(i === index)));
        Panel.tell("chosen", each.name);
    };

    const byKey = (event) => {
        const to = { ArrowDown: at + 1, ArrowUp: Math.max(at - 1, 0), PageDown: at + 10, PageUp: Math.max(at - 10, 0) }[event.key];
        if (to !== undefined) {
            event.preventDefault();
            moveTo(to);
        } else if (event.key === "Enter") {
            event.preventDefault();
            choose(Math.max(at, 0));
        }
    };

    const offer = (select, title, texts) => {
        const before = select.value;
        select.replaceChildren(el("option", { value: "" }, title),
            ...[...new Set(texts)].sort((a, b) => a.localeCompare(b)).map((text) => el("option", { value: `=${text}` }, text || "(none)")));
        select.value = before;
        if (select.selectedIndex < 0) select.value = "";
    };

    const take = (names) => {
        all = names.sort((a, b) => a.name.localeCompare(b.name));
        offer(byId("search-group"), "all groups", all.map((each) => each.group));
        offer(byId("search-unit"), "all units", all.map((each) => each.unit));
        const name = found[at]?.name;
        const top = list.scrollTop;
        show();
        list.scrollTop = top;
        if (name !== undefined) moveTo(found.findIndex((each) => each.name === name));
    };

    const begin = () => {
        [search, byId("search-group"), byId("search-unit")].forEach((each) => each.addEventListener("input", searchAnew));
        search.addEventListener("keydown", byKey);
        Panel.hear("names", take);
        searchAnew();
    };

    return { begin };
})();
