// Bytes and numbers as people type them in hexadecimal, and what was exchanged, newest first.
"use strict";
Panel.hex = (() => {
    const { el } = Panel.dom;
    const { clock } = Panel.format;
    const longestHistory = 100;

    /// Marks the field and throws.
    const refuse = (input, text) => {
        input.setAttribute("aria-invalid", "true");
        input.focus();
        throw new Error(text);
    };

    /// Bytes, with or without blanks between them: "1a9b" of "1A 9B". A single digit stands for a byte.
    const bytes = (input) => {
        input.removeAttribute("aria-invalid");
        const pieces = input.value.trim().split(/[\s,]+/).filter(Boolean).map((each) => each.replace(/^0x/i, ""));
        const filled = pieces.map((each) => (each.length === 1 ? `0${each}` : each)).join("");
        if (!/^([\da-f]{2})*$/i.test(filled)) refuse(input, `"${input.value}" is no row of bytes, two hexadecimal digits each.`);
        return filled.toLowerCase();
    };

    const numberOf = (input, text) => {
        const digits = text.replace(/^0x/i, "");
        if (!/^[\da-f]{1,8}$/i.test(digits)) refuse(input, `"${text}" is no hexadecimal number of up to 8 digits.`);
        return parseInt(digits, 16);
    };

    const number = (input) => {
        input.removeAttribute("aria-invalid");
        return numberOf(input, input.value.trim());
    };

    const numbers = (input) => {
        input.removeAttribute("aria-invalid");
        const texts = input.value.trim().split(/[\s,;]+/).filter(Boolean);
        if (texts.length === 0) refuse(input, "There is no identifier.");
        return texts.map((each) => numberOf(input, each));
    };

    const decimal = (input) => {
        input.removeAttribute("aria-invalid");
        if (!/^\d{1,9}$/.test(input.value.trim())) refuse(input, `"${input.value}" is no whole number.`);
        return Number(input.value);
    };

    const pairs = (text) => text.match(/[\da-f]{2}/gi) ?? [];
    const spaced = (text) => pairs(text).join(" ").toUpperCase();

    /// What of it is readable; a dot for each byte that is not.
    const letters = (text) => pairs(text).map((each) => {
        const code = parseInt(each, 16);
        return code >= 0x20 && code < 0x7F ? String.fromCharCode(code) : "\u00b7";
    }).join("");

    /// `answer`: elements or texts.
    const log = (home, asked, isBad, ...answer) => {
        home.prepend(el("li", { class: isBad ? "bad" : "" }, el("time", { class: "faint" }, clock()),
            el("code", { class: "asked" }, asked), el("div", { class: "answer" }, ...answer)));
        while (home.childElementCount > longestHistory) home.lastChild.remove();
    };

    return { pairs, bytes, number, numbers, decimal, spaced, letters, log };
})();
