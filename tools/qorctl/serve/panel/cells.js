// The values of a parameter as fields that can be changed: one, a row, a curve's two rows, or a map's table.
"use strict";
Panel.cells = (() => {
    const { el } = Panel.dom;
    const { exact, parsed, shown, isNumber } = Panel.format;

    /// Which of the four it is.
    const kindOf = ({ values, second, third }) => {
        if (third.length > 0 && values.length === second.length * third.length) return "map";
        if (second.length > 0 && third.length === 0 && values.length === second.length) return "curve";
        if (second.length > 0 || third.length > 0) return "arrays";
        return values.length === 1 ? "scalar" : "row";
    };

    const nameOf = (kind, data, array, index) => {
        if (array === "second") return `x ${index + 1}`;
        if (array === "third") return kind === "map" ? `y ${index + 1}` : `third array ${index + 1}`;
        if (kind === "map") return `at x ${shown(data.second[index % data.second.length])}, y ${shown(data.third[Math.floor(index / data.second.length)])}`;
        if (kind === "curve") return `at x ${shown(data.second[index])}`;
        return kind === "scalar" ? "value" : `value ${index + 1}`;
    };

    const cellOf = (kind, data, name, array, index) => {
        const text = exact(data[array][index]);
        const input = el("input", {
            class: `cell ${array === "values" ? "" : "axis"}`, value: text, "data-array": array, "data-index": String(index),
            "data-was": text, inputmode: "decimal", autocomplete: "off", spellcheck: "false", "data-changes": true,
            "aria-label": `${name} ${nameOf(kind, data, array, index)}`,
        });
        if (kind !== "scalar") input.size = 6;
        return input;
    };

    const rowOf = (title, cells) => el("tr", {}, el("th", { scope: "row" }, title), ...cells.map((each) => el("td", {}, each)));

    const tableOf = (kind, data, name) => {
        const cell = (array, index) => cellOf(kind, data, name, array, index);
        const line = (array) => data[array].map((value, i) => cell(array, i));
        if (kind === "scalar") return el("div", { class: "scalar" }, cell("values", 0));
        const body = el("tbody");
        if (kind === "map") {
            const columns = data.second.length;
            body.append(rowOf("y \\ x", [...line("second")]));
            data.third.forEach((y, k) => body.append(el("tr", {}, el("th", { scope: "row" }, cell("third", k)),
                ...data.second.map((x, i) => el("td", {}, cell("values", k * columns + i))))));
        } else {
            if (data.second.length > 0) body.append(rowOf(kind === "curve" ? "x" : "second", line("second")));
            if (data.third.length > 0) body.append(rowOf("third", line("third")));
            body.append(rowOf("value", line("values")));
        }
        return el("table", { class: `values ${kind}` }, body);
    };

    /// A pale tint: how high a value of a map is can be seen in its table as well.
    const tint = (cells, data) => {
        const range = Panel.heatmap.rangeOf(data.values);
        for (const cell of cells) {
            const value = data.values[cell.dataset.index];
            if (cell.dataset.array === "values" && isNumber(value)) cell.style.setProperty("--share", `${Math.round(range.share(value) * 38)}%`);
        }
    };

    const move = (home, from, columns, rows) => {
        const row = from.closest("tr");
        const target = home.querySelectorAll("tr")[[...home.querySelectorAll("tr")].indexOf(row) + rows];
        const next = target?.children[[...row.children].indexOf(from.parentElement) + columns]?.querySelector("input");
        next?.focus();
        next?.select();
        return next;
    };

    const byKey = (home, event) => {
        const cell = event.target;
        if (!cell.matches?.(".cell") || !cell.closest("tr")) return;
        const isWhole = cell.selectionEnd - cell.selectionStart === cell.value.length;
        const atStart = isWhole || cell.selectionEnd === 0;
        const atEnd = isWhole || cell.selectionStart === cell.value.length;
        const step = { ArrowDown: [0, 1], ArrowUp: [0, -1], Enter: [0, 1], ArrowLeft: atStart && [-1, 0], ArrowRight: atEnd && [1, 0] }[event.key];
        if (!step) return;
        event.preventDefault();
        move(home, cell, ...step);
    };

    /// A block from a spreadsheet goes into the cells to the right and below.
    const byPaste = (home, event) => {
        const text = event.clipboardData.getData("text");
        if (!event.target.matches?.(".cell") || !/[\t\n]/.test(text.trim())) return;
        event.preventDefault();
        let first = event.target;
        for (const line of text.trimEnd().split(/\r?\n/)) {
            let cell = first;
            for (const piece of line.split("\t")) {
                if (!cell) break;
                cell.value = piece.trim();
                cell.dispatchEvent(new Event("input", { bubbles: true }));
                cell = move(home, cell, 1, 0);
            }
            first = first && move(home, first, 0, 1);
            if (!first) break;
        }
    };

    /// The fields for what was read. `changed` is called after each change of a field.
    const make = (data, name, changed) => {
        const kind = kindOf(data);
        const element = tableOf(kind, data, name);
        const all = [...element.querySelectorAll(".cell")];
        const now = () => {
            const copy = { values: [...data.values], second: [...data.second], third: [...data.third] };
            for (const cell of all) if (cell.value !== cell.dataset.was) copy[cell.dataset.array][cell.dataset.index] = parsed(cell.value);
            return copy;
        };
        const look = (cell) => {
            const isOther = cell.value !== cell.dataset.was;
            cell.toggleAttribute("data-changed", isOther);
            cell.title = isOther ? `was ${cell.dataset.was}` : "";
            if (isOther && parsed(cell.value) === null) cell.setAttribute("aria-invalid", "true");
            else cell.removeAttribute("aria-invalid");
        };
        const take = () => {
            if (kind === "map") tint(all, now());
            changed();
        };
        element.addEventListener("input", (event) => { look(event.target); take(); });
        element.addEventListener("keydown", (event) => byKey(element, event));
        element.addEventListener("paste", (event) => byPaste(element, event));
        element.addEventListener("focusin", (event) => kind !== "scalar" && event.target.select?.());
        if (kind === "map") tint(all, data);
        return {
            element, kind, now,
            changes: () => all.filter((each) => each.value !== each.dataset.was).length,
            wrong: () => all.find((each) => each.hasAttribute("aria-invalid")),
            discard: () => { all.forEach((each) => { each.value = each.dataset.was; look(each); }); take(); },
        };
    };

    return { make, kindOf };
})();
