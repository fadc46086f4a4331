// What can be operated at present. Elements say what they need: `data-needs` a server that is there,
// `data-changes` one that also lets QOR and the ECU be changed. `data-off` is a reason of their own.
"use strict";
Panel.access = (() => {
    const readOnlyText = "This server is read-only: it was started with --read-only and refuses all that changes QOR or the ECU.";
    const lostText = "There is no connection to the server at present.";
    let isReadOnly = false;
    let isOpen = false;

    const reason = (element) => {
        if (!isOpen) return lostText;
        return isReadOnly && "changes" in element.dataset ? readOnlyText : "";
    };

    const apply = (element) => {
        const why = reason(element);
        const isOff = why !== "" || "off" in element.dataset;
        if (element.disabled !== isOff) element.disabled = isOff;
        if (why !== "") element.title = why;
        else if (element.title === readOnlyText || element.title === lostText) element.title = "";
    };

    /// For elements that came after the last change.
    const sweep = (root = document) => {
        root.querySelectorAll("[data-needs], [data-changes]").forEach(apply);
        root.querySelectorAll(".why-off").forEach((each) => {
            Panel.dom.say(each, isReadOnly ? readOnlyText : "");
            Panel.dom.show(each, isReadOnly);
        });
    };

    /// Switches off, or on again as far as the server lets it.
    const turn = (element, isOn) => {
        if (isOn) delete element.dataset.off;
        else element.dataset.off = "";
        apply(element);
    };

    Panel.hear("open", (hello) => {
        isOpen = true;
        isReadOnly = hello.readOnly;
        sweep();
    });
    Panel.hear("lost", () => {
        isOpen = false;
        sweep();
    });

    return { sweep, turn, mayChange: () => isOpen && !isReadOnly, isReadOnly: () => isReadOnly, readOnlyText };
})();
