// The CAN bus: opened, identifiers read, messages sent.
"use strict";
Panel.can = (() => {
    const { byId, el } = Panel.dom;
    const { clock } = Panel.format;
    const timeoutMs = 1000;
    let isReading = false;

    const open = async () => {
        const busParam = Panel.hex.decimal(byId("can-rate"));
        const type = byId("can-type").value;
        await Panel.call("connectCanBus", { busParam, firstFlag: byId("can-first").checked, secondFlag: byId("can-second").checked, type });
        Panel.hex.log(byId("can-history"), `bus ${busParam}`, false, "open");
    };

    const showValue = ({ canId, value }) => {
        const body = byId("can-values").tBodies[0];
        const id = canId.toString(16).toUpperCase().padStart(3, "0");
        let row = [...body.rows].find((each) => each.dataset.id === id);
        if (!row) {
            row = el("tr", { "data-id": id }, el("th", { scope: "row", class: "mono" }, id), ...[1, 2, 3].map(() => el("td", { class: "number mono" })));
            body.append(row);
        }
        [String(value), (value >>> 0).toString(16).toUpperCase().padStart(8, "0"), clock()].forEach((text, i) => Panel.dom.say(row.cells[i + 1], text));
    };

    const read = async () => {
        const canIds = Panel.hex.numbers(byId("can-ids"));
        const { items } = await Panel.call("getCanBusData", { canIds, timeoutMs });
        items.forEach(showValue);
    };

    const send = async () => {
        const first = Panel.hex.number(byId("can-number1"));
        const second = Panel.hex.number(byId("can-number2"));
        const message = Panel.hex.bytes(byId("can-bytes"));
        await Panel.call("sendCanBusMsg", { first, second, message, timeoutMs });
        const asked = `${first.toString(16).toUpperCase()} ${second.toString(16).toUpperCase()}: ${Panel.hex.spaced(message)}`;
        Panel.hex.log(byId("can-history"), asked, false, "sent");
    };

    const guard = (what, step) => Panel.failure.guarded(byId("can-failure"), what, step);

    const again = async () => {
        if (!byId("can-again").checked || isReading || !Panel.link.isOpen() || document.hidden || Panel.tabs.chosen() !== "bus") return;
        isReading = true;
        await guard("CAN values not read", read);
        // A failure every second helps nobody.
        if (byId("can-failure").childElementCount > 0) byId("can-again").checked = false;
        isReading = false;
    };

    const begin = () => {
        const on = (id, what, step) => byId(id).addEventListener("submit", (event) => {
            event.preventDefault();
            void guard(what, step);
        });
        on("can-open", "Bus not opened", open);
        on("can-read", "CAN values not read", read);
        on("can-send", "CAN message not sent", send);
        setInterval(again, 1000);
    };

    return { begin };
})();
