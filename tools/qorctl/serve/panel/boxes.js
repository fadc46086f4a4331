// Message boxes that QOR shows: until somebody answers them QOR does nothing else.
"use strict";
Panel.boxes = (() => {
    const { el } = Panel.dom;
    // By the system's numbers of kinds of boxes and of buttons.
    const ok = [1, "OK"], cancel = [2, "Cancel"], retry = [4, "Retry"];
    const yes = [6, "Yes"], no = [7, "No"];
    const buttonsOfKind = [
        [ok], [ok, cancel], [[3, "Abort"], retry, [5, "Ignore"]], [yes, no, cancel], [yes, no], [retry, cancel],
        [cancel, [10, "Try again"], [11, "Continue"]],
    ];
    const kindMask = 0xF;

    const answer = async (banner, number, choice) => {
        banner.querySelectorAll("button").forEach((each) => { each.disabled = true; });
        try {
            await Panel.call("answerBox", { number, choice });
        } catch (error) {
            banner.querySelectorAll("button").forEach((each) => { each.disabled = false; });
            banner.append(el("span", { class: "bad-text" }, error.message));
        }
    };

    const take = ({ number, caption, text, type, isOpen, isForClients }) => {
        const id = `box-${number}`;
        if (!isOpen) return Panel.banners.remove(id);
        const buttons = isForClients ? buttonsOfKind[type & kindMask] ?? [ok] : [];
        const where = isForClients ? "" : " (It stands on the screen of the server, and is closed there.)";
        const made = Panel.banners.put(id, `QOR asks: ${caption}`, text + where, true, ...buttons.map(([choice, name]) =>
            el("button", { type: "button", "data-changes": true, onclick: () => answer(made, number, choice) }, name)));
        Panel.access.sweep(made);
    };

    const begin = () => {
        Panel.hear("server:box", take);
        Panel.hear("lost", () => document.querySelectorAll("[id^=banner-box-]").forEach((each) => each.remove()));
    };

    return { begin };
})();
