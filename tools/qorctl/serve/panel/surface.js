// A map of the ECU's as a surface in space, which can be turned.
"use strict";
Panel.surface = (() => {
    const { colour, el } = Panel.dom;
    const { isNumber, shown } = Panel.format;
    const tilt = 0.58;
    const tall = 0.5;
    let turn = 0; // radians

    /// Where a point of the box from -0.5 to 0.5 lies on the picture, and how deep.
    const projected = (x, y, z, width, height) => {
        const across = x * Math.cos(turn) - y * Math.sin(turn);
        const deep = x * Math.sin(turn) + y * Math.cos(turn);
        const size = Math.min(width / 1.7, height / 1.45);
        return { x: width / 2 + across * size, y: height / 2 + (-deep * tilt - z * tall) * size, deep };
    };

    /// Seen from where its highest corner lies behind, so that it hides nothing.
    const bestTurn = ({ values, second, third }) => {
        const columns = second.length, rows = third.length;
        const corners = [(rows - 1) * columns, rows * columns - 1, columns - 1, 0].map((i) => Number(values[i]) || 0);
        return -0.65 + corners.indexOf(Math.max(...corners)) * Math.PI / 2;
    };

    const facesOf = (map, range, width, height) => {
        const columns = map.second.length, rows = map.third.length;
        const point = (i, k) => {
            const value = map.values[k * columns + i];
            return { value, ...projected(i / (columns - 1) - 0.5, k / (rows - 1) - 0.5, (isNumber(value) ? range.share(value) : 0) - 0.5, width, height) };
        };
        const faces = [];
        for (let k = 0; k + 1 < rows; ++k)
            for (let i = 0; i + 1 < columns; ++i) {
                const corners = [point(i, k), point(i + 1, k), point(i + 1, k + 1), point(i, k + 1)];
                const numbers = corners.map((each) => each.value).filter(isNumber);
                faces.push({
                    corners,
                    deep: corners.reduce((sum, each) => sum + each.deep, 0),
                    mean: numbers.reduce((sum, each) => sum + each, 0) / Math.max(1, numbers.length),
                });
            }
        return faces.sort((a, b) => b.deep - a.deep); // what lies behind comes first
    };

    const way = (pen, points) => {
        pen.beginPath();
        points.forEach(({ x, y }, i) => (i === 0 ? pen.moveTo(x, y) : pen.lineTo(x, y)));
    };

    const drawFloor = (pen, map, width, height) => {
        const at = (x, y) => projected(x, y, -0.5, width, height);
        way(pen, [at(-0.5, -0.5), at(0.5, -0.5), at(0.5, 0.5), at(-0.5, 0.5)]);
        pen.closePath();
        pen.strokeStyle = colour("--line");
        pen.stroke();
        pen.fillStyle = colour("--faint");
        pen.textAlign = "center";
        const text = (words, x, y) => {
            const place = at(x, y);
            pen.fillText(words, place.x, place.y);
        };
        text(`x ${shown(map.second[0])}`, -0.5, -0.62);
        text(shown(map.second.at(-1)), 0.5, -0.6);
        text(`y ${shown(map.third[0])}`, 0.64, -0.5);
        text(shown(map.third.at(-1)), 0.62, 0.5);
    };

    const paint = (pen, map, width, height) => {
        const range = Panel.heatmap.rangeOf(map.values);
        pen.clearRect(0, 0, width, height);
        drawFloor(pen, map, width, height);
        pen.lineWidth = 0.75;
        for (const { corners, mean } of facesOf(map, range, width, height)) {
            way(pen, corners);
            pen.closePath();
            pen.fillStyle = Panel.heatmap.colourOf(range.share(mean));
            pen.fill();
            pen.strokeStyle = colour("--card");
            pen.stroke();
        }
    };

    const draw = (map, label, width, height) => {
        const { canvas, pen } = Panel.heatmap.canvasOf(width, height, Panel.heatmap.describe(map, label));
        canvas.tabIndex = 0;
        canvas.classList.add("turns");
        const by = (step) => {
            turn += step;
            paint(pen, map, width, height);
        };
        canvas.addEventListener("pointerdown", (event) => canvas.setPointerCapture(event.pointerId));
        canvas.addEventListener("pointermove", (event) => event.buttons === 1 && by(event.movementX / 120));
        canvas.addEventListener("keydown", (event) => {
            const step = { ArrowLeft: -0.1, ArrowRight: 0.1 }[event.key];
            if (step === undefined) return;
            event.preventDefault();
            by(step);
        });
        turn = bestTurn(map);
        by(0);
        return el("div", { class: "plot" }, canvas, el("p", { class: "faint told" }, "Drag it, or use \u2190 \u2192, to turn it."));
    };

    return { draw };
})();
