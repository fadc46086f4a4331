// A client of "qorctl serve" with fetch: connects the ECU with QOR's progress, reads, asks for two
// things at once, is refused, streams for a second.
//
// usage: node serve_fetch.mjs URL [TOKEN]    the URL is what the server prints, as http://127.0.0.1:8080/
//
// Node.js 18 and later, of 32 or 64 bits, without a package. What each step saw goes to standard
// output; the exit code is 0 if all went as it should.
const [base, token] = process.argv.slice(2);
const headers = token ? { Authorization: `Bearer ${token}` } : {};
const leave = new AbortController();

// The events of the server, as [name, what it tells].
async function* events(body) {
    let text = '';
    for await (const part of body.pipeThrough(new TextDecoderStream())) {
        text += part;
        for (let end; (end = text.indexOf('\n\n')) >= 0; text = text.slice(end + 2)) {
            const lines = text.slice(0, end).split('\n');
            const field = (name) => lines.filter((line) => line.startsWith(name + ': '))
                .map((line) => line.slice(name.length + 2)).join('\n');
            if (field('event')) yield [field('event'), JSON.parse(field('data'))];
        }
    }
}

// A request, or several in an array; what the server answers.
async function rpc(message) {
    const response = await fetch(new URL('rpc', base), {
        method: 'POST', body: JSON.stringify(message),
        headers: { ...headers, 'Content-Type': 'application/json', 'X-Qor-Client': client },
    });
    if (!response.ok) throw new Error(`status ${response.status}: ${(await response.json()).error}`);
    return response.json();
}

let lastId = 0;
const request = (method, params = {}) => ({ jsonrpc: '2.0', id: ++lastId, method, params });

// The result of one method; a failure of it is an exception.
async function call(method, params) {
    const { result, error } = await rpc(request(method, params));
    if (error) throw Object.assign(new Error(error.message), error.data);
    return result;
}

// Whoever listens to the events is a client; "hello" comes first. When that connection ends the
// client has left: its streams end, its actuators are given back.
const stream = await fetch(new URL('events', base), { headers, signal: leave.signal });
if (!stream.ok) throw new Error(`status ${stream.status}: ${(await stream.json()).error}`);
const told = events(stream.body);
const [, { client }] = (await told.next()).value;

let names = [], count = 0;
const handlers = {
    connectProgress: ({ figure }) => console.log(`progress: ${figure}`),
    values: ({ samples }) => {
        for (const [name, value, timeMs, missed] of samples) {
            ++count;
            console.log(`value: ${names[name]} = ${value.toFixed(2)}, missed ${missed}`);
        }
    },
};
const listening = (async () => {
    for await (const [name, params] of told) handlers[name]?.(params);
})().catch((error) => { if (error.name !== 'AbortError') throw error; });

console.log(`server: ${(await call('getState')).version}`);
await call('connect', { settings: { refreshPeriodMs: 100 } });
console.log('connect: ok');
const speed = await call('getParamData', { name: 'EngineSpeed' });
console.log(`read: EngineSpeed = ${speed.values[0].toFixed(2)}`);

const both = await rpc([request('getParamData', { name: 'CylinderCount' }),
    request('getParamDescription', { name: 'EngineSpeed' })]);
both.sort((a, b) => a.id - b.id); // answers of a batch come in any order
console.log(`batch: ${both[0].result.values[0]} cylinders, speed in ${both[1].result.unit}`);

await call('getParamData', { name: 'NoSuchName' }).catch((error) => {
    console.log(`refused: ${error.name}: ${error.sentence}`);
});

names = ['EngineSpeed', 'OilPressure'];
const { stream: number } = await call('startParamRead', { names });
await new Promise((done) => { setTimeout(done, 1000); });
await call('stopParamRead', { stream: number });
console.log(`stream: ${count} values`);
leave.abort();
await listening;
process.exitCode = count > 2 ? 0 : 1;
