// A call that failed: what, why, and what to check.
"use strict";
Panel.failure = (() => {
    const { el } = Panel.dom;

    const noteOf = (what, cause) => el("div", { class: "note bad" },
        el("strong", {}, what),
        el("div", {}, cause.sentence ?? "", cause.name ? el("span", { class: "faint" }, ` (${cause.name})`) : null),
        cause.check ? el("div", { class: "check-this" }, `Check: ${cause.check}`) : null);

    const show = (home, what, error) => {
        // A plain Error tells of what was typed; the others of a fault of the page.
        if (!(error instanceof Panel.rpc.CallError) && error.constructor !== Error) console.error(error);
        home.replaceChildren(noteOf(what, error.cause ?? { sentence: String(error.message ?? error) }));
    };

    /// Runs a step of the user's; what goes wrong in it is shown in `home`.
    const guarded = async (home, what, step) => {
        try {
            const result = await step();
            home.replaceChildren();
            return result;
        } catch (error) {
            show(home, what, error);
            return undefined;
        }
    };

    return { noteOf, show, guarded };
})();
