// Lines below the head of the page about what must not be overlooked, whichever view is shown.
"use strict";
Panel.banners = (() => {
    const { byId, el, say } = Panel.dom;
    const home = byId("banners");

    const remove = (id) => byId(`banner-${id}`)?.remove();

    /// A banner, in place of the one of this id. `more`: elements behind the text.
    const put = (id, title, text, isBad, ...more) => {
        const made = el("div", { id: `banner-${id}`, role: isBad ? "alert" : "status", class: isBad ? "bad" : "" },
            el("strong", {}, title), el("span", { class: "text" }, text), ...more);
        const old = byId(`banner-${id}`);
        if (old) old.replaceWith(made);
        else home.append(made);
        return made;
    };

    const countDown = (text, endsAt) => {
        const leftMs = endsAt - performance.now();
        if (!text.isConnected) return;
        say(text, leftMs > 200 ? `What is shown is from before and may be old. Next try in ${Math.ceil(leftMs / 1000)} s.`
            : "What is shown is from before and may be old. Trying again\u2026");
        if (leftMs > 200) setTimeout(() => countDown(text, endsAt), 250);
    };

    const lost = ({ waitMs }) => {
        document.body.classList.add("is-lost");
        if (waitMs === 0) return;
        const again = el("button", { type: "button", onclick: () => Panel.link.tryNow() }, "Try now");
        const old = byId("banner-lost");
        const made = old ?? put("lost", "Connection to the server lost.", "", true, again);
        countDown(made.querySelector(".text"), performance.now() + waitMs);
    };

    const open = () => {
        document.body.classList.remove("is-lost");
        if (byId("banner-lost")) Panel.dom.announce("The server is there again.");
        remove("lost");
        if (Panel.access.isReadOnly()) put("read-only", "Read-only.", Panel.access.readOnlyText, false);
        else remove("read-only");
    };

    const begin = () => {
        Panel.hear("lost", lost);
        Panel.hear("open", open);
        Panel.hear("server:serverEnds", () => Panel.dom.announce("The server ends.", true));
    };

    return { begin, put, remove };
})();
