// Makes elements, and tells the parts of the page of each other. Texts go in as texts only: nothing
// that QOR or the server says is ever read as HTML.
"use strict";
const Panel = {};

Panel.dom = (() => {
    const byId = (id) => document.getElementById(id);

    const give = (made, key, value) => {
        if (key.startsWith("on")) made.addEventListener(key.slice(2), value);
        else if (key === "class") made.className = value;
        else if (typeof value === "boolean") made.toggleAttribute(key, value);
        else if (value != null) made.setAttribute(key, value);
    };

    /// el("p", {class: "x", onclick: f}, "text", another, ...); what is null among the children is left out.
    const el = (name, attributes = {}, ...children) => {
        const made = document.createElement(name);
        for (const [key, value] of Object.entries(attributes)) give(made, key, value);
        made.append(...children.filter((each) => each != null));
        return made;
    };

    /// Writes only what differs: what stands still must not flicker, nor be read out again.
    const say = (element, text) => {
        if (element.textContent !== text) element.textContent = text;
    };

    const show = (element, isShown) => {
        if (element.hidden === isShown) element.hidden = !isShown;
    };

    /// For people who listen.
    const announce = (text, isUrgent = false) => say(byId(isUrgent ? "urgent" : "polite"), text);

    const save = (name, type, content) => {
        const url = URL.createObjectURL(content instanceof Blob ? content : new Blob([content], { type }));
        el("a", { href: url, download: name }).click();
        setTimeout(() => URL.revokeObjectURL(url), 10000);
    };

    const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

    /// A dialog's question; true if it was answered by its dangerous button.
    const sure = (title, text, yes) => new Promise((answered) => {
        const dialog = byId("sure-dialog");
        say(byId("sure-title"), title);
        say(byId("sure-text"), text);
        say(byId("sure-yes"), yes);
        dialog.returnValue = "no";
        dialog.addEventListener("close", () => answered(dialog.returnValue === "yes"), { once: true });
        dialog.showModal();
    });

    return { byId, el, say, show, announce, save, colour, sure };
})();

/// What happens: Panel.hear("status", handler), Panel.tell("status", what).
Panel.hear = (() => {
    const handlers = new Map();
    Panel.tell = (name, what) => {
        for (const each of handlers.get(name) ?? []) each(what);
    };
    return (name, handler) => handlers.set(name, [...(handlers.get(name) ?? []), handler]);
})();
