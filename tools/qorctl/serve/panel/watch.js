// The streams of the watched parameters. Each has a stream of its own: a name that QOR does not know
// would silence the others of its stream.
"use strict";
Panel.watch = (() => {
    const { byId } = Panel.dom;
    const colours = 8;
    const watched = new Map(); // name -> {name, unit, slot, series, stream, trouble}
    const early = new Map(); // values of streams whose number is not known yet
    let offsetMs = null; // from the server's clock to this computer's

    const slotFree = () => {
        const taken = new Set([...watched.values()].map((each) => each.slot));
        let slot = 0;
        while (taken.has(slot)) ++slot;
        return slot;
    };

    const keep = () => {
        Panel.memory.put("watched", [...watched.keys()]);
        Panel.tell("watched", [...watched.values()]);
    };

    const takeSamples = (each, samples) => {
        for (const [, value, timeMs, missed] of samples) {
            offsetMs ??= Date.now() - timeMs;
            each.series.add((timeMs + offsetMs) / 1000, value, missed);
        }
        each.trouble = null;
    };

    const take = ({ stream, samples }) => {
        const each = [...watched.values()].find((one) => one.stream === stream);
        if (each) return takeSamples(each, samples);
        early.set(stream, [...(early.get(stream) ?? []), ...samples]);
    };

    const takeTrouble = ({ stream, cause }) => {
        for (const each of watched.values()) if (each.stream === stream) each.trouble = cause;
    };

    const start = async (each) => {
        try {
            const about = await Panel.names.describe(each.name);
            if (about.unit !== each.unit) {
                each.unit = about.unit;
                Panel.tell("watched", [...watched.values()]);
            }
        } catch (error) {
            each.trouble = error.cause;
            return false;
        }
        const { stream } = await Panel.call("startParamRead", { names: [each.name] });
        if (!watched.has(each.name)) return stop(stream);
        each.stream = stream;
        each.series.beginAnew();
        if (early.has(stream)) takeSamples(each, early.get(stream));
        early.delete(stream);
        return true;
    };

    const stop = (stream) => Panel.call("stopParamRead", { stream }).catch(() => {});

    /// Adds a curve; false if it is there already or QOR does not know it.
    const add = async (name) => {
        if (name === "" || watched.has(name)) return false;
        const each = { name, unit: Panel.names.of(name).unit, slot: slotFree(), series: new Panel.series(), stream: null, trouble: null };
        watched.set(name, each);
        const isThere = await Panel.failure.guarded(byId("watch-trouble"), `${name} is not watched`, async () => {
            const isStarted = await start(each);
            if (!isStarted && each.trouble) {
                watched.delete(name);
                throw Object.assign(new Panel.rpc.CallError("watch", 0, each.trouble.sentence ?? ""), { cause: each.trouble });
            }
            return true;
        });
        if (!isThere) watched.delete(name);
        keep();
        if (isThere) Panel.dom.announce(`${name} is watched.`);
        return isThere === true;
    };

    const remove = (name) => {
        const each = watched.get(name);
        watched.delete(name);
        if (each?.stream) void stop(each.stream);
        keep();
    };

    /// After the line was lost all streams are new ones.
    const again = () => {
        offsetMs = null;
        early.clear();
        for (const name of Panel.memory.texts("watched"))
            if (!watched.has(name)) watched.set(name, { name, unit: Panel.names.of(name).unit, slot: slotFree(), series: new Panel.series(), stream: null, trouble: null });
        Panel.tell("watched", [...watched.values()]);
        for (const each of watched.values()) start(each).catch((error) => { each.trouble = error.cause; });
    };

    const begin = () => {
        Panel.hear("server:values", take);
        Panel.hear("server:streamTrouble", takeTrouble);
        Panel.hear("open", again);
        Panel.hear("lost", () => { for (const each of watched.values()) each.stream = null; });
        byId("watch-add").addEventListener("submit", async (event) => {
            event.preventDefault();
            const field = byId("watch-name");
            if (await add(field.value.trim())) field.value = "";
            field.focus();
        });
    };

    return { begin, add, remove, all: () => [...watched.values()], colourOf: (each) => `--curve-${(each.slot % colours) + 1}` };
})();
