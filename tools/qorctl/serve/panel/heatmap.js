// A map of the ECU's as a picture: each value a field in a colour, and what the colours mean.
"use strict";
Panel.heatmap = (() => {
    const { colour, el, say } = Panel.dom;
    const { shown, isNumber } = Panel.format;
    // From low to high; even for people who see few colours.
    const ramp = [[68, 1, 84], [59, 82, 139], [33, 145, 140], [94, 201, 98], [253, 231, 37]];
    const left = 58, bottom = 38, top = 8, right = 74;

    /// `share` from 0 to 1.
    const colourOf = (share) => {
        const place = Math.min(0.9999, Math.max(0, share)) * (ramp.length - 1);
        const i = Math.floor(place);
        return `rgb(${ramp[i].map((from, k) => Math.round(from + (ramp[i + 1][k] - from) * (place - i))).join(" ")})`;
    };

    const rangeOf = (values) => {
        const numbers = values.filter(isNumber);
        if (numbers.length === 0) return { low: 0, high: 1, share: () => 0.5 };
        const low = Math.min(...numbers);
        const high = Math.max(...numbers);
        return { low, high, share: (value) => (high === low ? 0.5 : (value - low) / (high - low)) };
    };

    const canvasOf = (width, height, label) => {
        const scale = devicePixelRatio || 1;
        const canvas = el("canvas", { width: Math.round(width * scale), height: Math.round(height * scale), role: "img", "aria-label": label });
        canvas.style.width = `${width}px`;
        canvas.style.height = `${height}px`;
        const pen = canvas.getContext("2d");
        pen.scale(scale, scale);
        pen.font = "12px system-ui, sans-serif";
        pen.textBaseline = "middle";
        return { canvas, pen };
    };

    const describe = (map, label) => {
        const { low, high } = rangeOf(map.values);
        const place = (value) => {
            const at = map.values.indexOf(value);
            return `x ${shown(map.second[at % map.second.length])}, y ${shown(map.third[Math.floor(at / map.second.length)])}`;
        };
        return `Map of ${label}, ${map.second.length} by ${map.third.length}: lowest ${shown(low)} at ${place(low)}, highest ${shown(high)} at ${place(high)}`;
    };

    /// Every so many labels that they do not touch.
    const every = (count, space, least) => Math.max(1, Math.ceil((count * least) / space));

    const drawAxes = (pen, map, w, h, height) => {
        const columns = map.second.length, rows = map.third.length;
        pen.fillStyle = colour("--faint");
        pen.textAlign = "center";
        for (let i = 0; i < columns; i += every(columns, w, 44))
            pen.fillText(shown(map.second[i]), left + (i + 0.5) * w / columns, top + h + 10);
        pen.fillText("x", left + w / 2, height - 8);
        pen.textAlign = "right";
        for (let i = 0; i < rows; i += every(rows, h, 15))
            pen.fillText(shown(map.third[i]), left - 6, top + h - (i + 0.5) * h / rows);
        pen.fillText("y", 14, top + h / 2);
    };

    const drawScale = (pen, range, width, h) => {
        const x = width - right + 14;
        for (let i = 0; i < h; ++i) {
            pen.fillStyle = colourOf(1 - i / h);
            pen.fillRect(x, top + i, 12, 1.5);
        }
        pen.fillStyle = colour("--faint");
        pen.textAlign = "left";
        [[range.high, top + 6], [(range.high + range.low) / 2, top + h / 2], [range.low, top + h - 6]]
            .forEach(([value, y]) => pen.fillText(shown(Number(value.toPrecision(4))), x + 17, y));
    };

    /// Low values of y are below, as in any plot.
    const draw = (map, label, width, height) => {
        const columns = map.second.length, rows = map.third.length;
        const w = width - left - right, h = height - top - bottom;
        const range = rangeOf(map.values);
        const { canvas, pen } = canvasOf(width, height, describe(map, label));
        map.values.forEach((value, i) => {
            const column = i % columns, row = Math.floor(i / columns);
            pen.fillStyle = isNumber(value) ? colourOf(range.share(value)) : colour("--line");
            pen.fillRect(left + column * w / columns, top + h - (row + 1) * h / rows, w / columns + 0.5, h / rows + 0.5);
        });
        drawAxes(pen, map, w, h, height);
        drawScale(pen, range, width, h);
        const told = el("p", { class: "faint told" }, "Point at a field to read it.");
        canvas.addEventListener("pointermove", (event) => {
            const column = Math.floor((event.offsetX - left) / (w / columns));
            const row = Math.floor((top + h - event.offsetY) / (h / rows));
            if (column < 0 || column >= columns || row < 0 || row >= rows) return;
            say(told, `x ${shown(map.second[column])}, y ${shown(map.third[row])}: ${shown(map.values[row * columns + column])}`);
        });
        return el("div", { class: "plot" }, canvas, told);
    };

    return { draw, colourOf, rangeOf, canvasOf, describe };
})();
