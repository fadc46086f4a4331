// What this browser keeps of the page: which names are watched and driven, and the connect's settings.
"use strict";
Panel.memory = (() => {
    const key = "qor-panel";

    // A browser may refuse to keep anything, and what it kept may be of another version.
    const all = () => {
        try {
            const kept = JSON.parse(localStorage.getItem(key) ?? "{}");
            return kept !== null && typeof kept === "object" ? kept : {};
        } catch {
            return {};
        }
    };

    const get = (name, orElse) => all()[name] ?? orElse;

    const put = (name, value) => {
        try {
            localStorage.setItem(key, JSON.stringify({ ...all(), [name]: value }));
        } catch {
            // then the next visit begins anew
        }
    };

    const texts = (name) => {
        const kept = get(name, []);
        return Array.isArray(kept) ? kept.filter((each) => typeof each === "string") : [];
    };

    return { get, put, texts };
})();
