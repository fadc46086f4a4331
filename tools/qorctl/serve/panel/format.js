// Numbers and times as people read them.
"use strict";
Panel.format = (() => {
    const none = "\u2013";
    const isNumber = (value) => typeof value === "number" && Number.isFinite(value);

    /// Six significant digits. What JSON has no number for comes as a text: "NaN", "Infinity", "-Infinity".
    const shown = (value) => {
        if (value == null) return none;
        if (typeof value === "string") return value;
        return Number.isFinite(value) ? String(Number(value.toPrecision(6))) : String(value);
    };

    /// All that there is of it: what is written back must be what was read.
    /// So many decimals that numbers of this size have five digits: what changes does not dance.
    const steady = (value, size) => {
        if (!isNumber(value)) return shown(value);
        if (size >= 1e6 || (size < 1e-3 && size > 0)) return shown(value);
        return value.toFixed(Math.min(6, Math.max(0, 4 - Math.floor(Math.log10(Math.max(size, 1e-3))) - 1 + (size < 1 ? 1 : 0))));
    };

    const exact = (value) => (value == null ? "" : String(value));

    /// A number of a text, or one of the texts that stand for a number; null if it is none.
    const parsed = (text) => {
        const trimmed = text.trim().replace("\u2212", "-");
        if (["NaN", "Infinity", "-Infinity"].includes(trimmed)) return trimmed;
        const isOne = /^[+-]?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?$/i.test(trimmed);
        return isOne && Number.isFinite(Number(trimmed)) ? Number(trimmed) : null;
    };

    const two = (number) => String(number).padStart(2, "0");

    const clock = (date = new Date()) =>
        `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}`;

    const stamp = (date = new Date()) =>
        `${date.getFullYear()}${two(date.getMonth() + 1)}${two(date.getDate())}-${clock(date).replaceAll(":", "")}`;

    /// How long, in one or two units.
    const span = (ms) => {
        const s = Math.max(0, Math.floor(ms / 1000));
        if (s < 60) return `${s} s`;
        if (s < 3600) return `${Math.floor(s / 60)} min ${s % 60} s`;
        return `${Math.floor(s / 3600)} h ${Math.floor((s % 3600) / 60)} min`;
    };

    const ago = (ms) => (ms < 1500 ? "just now" : `${span(ms)} ago`);

    const millis = (ms) => {
        if (ms == null) return none;
        return ms < 100 ? `${ms < 10 ? ms.toFixed(1) : Math.round(ms)} ms` : `${Math.round(ms)} ms`;
    };

    return { none, shown, steady, exact, isNumber, parsed, clock, stamp, span, ago, millis };
})();
