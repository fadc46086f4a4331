// The views: one is shown, the arrow keys go from tab to tab, the address keeps which one it is.
"use strict";
Panel.tabs = (() => {
    const { byId } = Panel.dom;
    const tabs = [...byId("tabs").children];
    let chosen = "";

    const viewOf = (tab) => tab.getAttribute("aria-controls");

    const choose = (name, hasFocus = false) => {
        const tab = tabs.find((each) => viewOf(each) === name) ?? tabs[0];
        if (hasFocus) tab.focus();
        if (viewOf(tab) === chosen) return;
        chosen = viewOf(tab);
        for (const each of tabs) {
            each.setAttribute("aria-selected", String(each === tab));
            each.tabIndex = each === tab ? 0 : -1;
            byId(viewOf(each)).hidden = each !== tab;
        }
        history.replaceState(null, "", `#/${chosen}`); // the slash: no place on the page to jump to
        Panel.tell("view", chosen);
    };

    const byKey = (event) => {
        const at = tabs.indexOf(document.activeElement);
        const to = { ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: tabs.length - 1 }[event.key];
        if (to === undefined) return;
        event.preventDefault();
        choose(viewOf(tabs[(to + tabs.length) % tabs.length]), true);
    };

    const begin = () => {
        tabs.forEach((each) => each.addEventListener("click", () => choose(viewOf(each))));
        byId("tabs").addEventListener("keydown", byKey);
        addEventListener("hashchange", () => choose(location.hash.slice(2)));
        choose(location.hash.slice(2));
    };

    return { begin, choose, chosen: () => chosen };
})();
