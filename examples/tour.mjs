// A tour of QorControlC.dll with Node.js and koffi: connects an ECU, reads, writes, is refused,
// streams, reads and clears trouble codes.
//
// usage: node tour.mjs SETTINGS [QorControlC.dll]    with a 32-bit Node.js (process.arch is "ia32")
//
// What each step saw goes to standard output; the exit code is 0 if all went as it should.
import { fileURLToPath } from 'node:url';
import koffi from 'koffi';

// QorControl.h, which says what each function does. Into a pointer behind _Out_ or _Inout_ the
// library writes: pass an array of one element for a number, an object for a structure, a typed
// array or a Buffer for an array. A handle is a number.
koffi.alias('QorHandle', 'uint32_t');
koffi.alias('QorStream', 'uint32_t');
const QorConnectProgress = koffi.struct('QorConnectProgress', {
    size: 'unsigned int', running: 'int', cause: 'int', progress: 'int', steps: 'unsigned int',
    elapsedMs: 'unsigned int',
});
const QorDtc = koffi.struct('QorDtc', { code: 'unsigned int', status: 'unsigned int' });
const QorSample = koffi.struct('QorSample', {
    name: 'unsigned int', missed: 'unsigned int', value: 'double', timeMs: 'double',
});
// For the others: the prototype from the header, with _Out_ where it has no const.
const prototypes = [
    'const char* QorVersionText(void)',
    'int QorLastCause(void)',
    'int QorLastSentence(_Out_ char* text, unsigned int capacity, _Out_ unsigned int* needed)',
    'int QorLastCheck(_Out_ char* text, unsigned int capacity, _Out_ unsigned int* needed)',
    'const char* QorCauseName(int cause)',
    'int QorOpen(const char* settingsPath, unsigned int readPeriodMs, const char* hostPath, _Out_ QorHandle* handle)',
    'int QorClose(QorHandle handle)',
    'int QorConnectStart(QorHandle handle, const void* settings, int type)',
    'int QorConnectPoll(QorHandle handle, _Inout_ QorConnectProgress* progress)',
    'int QorConnectWait(QorHandle handle, unsigned int timeoutMs)',
    'int QorConnectCancel(QorHandle handle)',
    'int QorPingQor(QorHandle handle, unsigned int timeoutMs)',
    'int QorGetParamData(QorHandle handle, const char* name, unsigned int timeoutMs, _Out_ double* values,'
        + ' unsigned int capacity, _Out_ unsigned int* needed)',
    'int QorSetParamData(QorHandle handle, const char* name, const double* values, unsigned int count,'
        + ' const double* second, unsigned int secondCount, const double* third, unsigned int thirdCount,'
        + ' unsigned int timeoutMs)',
    'int QorGetParamDataAtOnce(QorHandle handle, const char** names, unsigned int nameCount,'
        + ' unsigned int timeoutMs, _Out_ double* values, unsigned int capacity, _Out_ unsigned int* needed,'
        + ' _Out_ unsigned int* counts)',
    'int QorClearDtc(QorHandle handle, unsigned int timeoutMs)',
    'int QorGetDtcByStatus(QorHandle handle, unsigned int timeoutMs, _Out_ QorDtc* dtcs, unsigned int capacity,'
        + ' _Out_ unsigned int* needed)',
    'int QorResultText(QorHandle handle, unsigned int row, unsigned int column, _Out_ char* text,'
        + ' unsigned int capacity, _Out_ unsigned int* needed)',
    'double QorNowMs(void)',
    'int QorStartParamRead(QorHandle handle, const char** names, unsigned int nameCount,'
        + ' unsigned int slots, _Out_ QorStream* stream)',
    'int QorReadParamStream(QorStream stream, _Out_ QorSample* samples, unsigned int capacity,'
        + ' _Out_ unsigned int* count, unsigned int timeoutMs)',
    'int QorStopParamRead(QorStream stream)',
];
const QOR_OK = 0, QOR_REFUSED = 7, QOR_UNKNOWN_NAME = 8, QOR_NOT_READY = 21;
const QOR_CONNECT_DEFAULT = 1;

let lib;

function load(path) {
    if (process.arch !== 'ia32') throw new Error('QorControlC.dll needs a 32-bit Node.js');
    const dll = koffi.load(path);
    const functions = prototypes.map((prototype) => [/Qor\w+(?=\()/.exec(prototype)[0], dll.func(prototype)]);
    return Object.fromEntries(functions);
}

// What a function copies into a buffer, as a text.
function textOf(fill) {
    const buffer = Buffer.alloc(1000), needed = [0];
    return fill(buffer, buffer.length, needed) === QOR_OK ? buffer.toString('utf8', 0, needed[0] - 1) : '';
}

// Why the last call failed. Ask at once: the next one has a cause of its own.
function printCause() {
    const cause = lib.QorLastCause();
    console.log(`  cause: ${cause} ${lib.QorCauseName(cause)}`);
    console.log(`  sentence: ${textOf(lib.QorLastSentence)}`);
    console.log(`  check: ${textOf(lib.QorLastCheck)}`);
}

// What a step came to.
function worked(step, cause) {
    console.log(`${step}: ${cause === QOR_OK ? 'ok' : 'failed'}`);
    if (cause !== QOR_OK) printCause();
    return cause === QOR_OK;
}

// A connect may take a minute. It runs in the background, and an await would let the program do
// something else meanwhile. QorConnect does all this in one call, without figures.
function connectEcu(qor) {
    let cause = lib.QorConnectStart(qor, null, QOR_CONNECT_DEFAULT);
    if (cause !== QOR_OK) return worked('connect', cause);
    const state = { size: koffi.sizeof(QorConnectProgress) };
    let shown = -1;
    do {
        lib.QorConnectWait(qor, 20); // QOR_NOT_READY while it runs
        cause = lib.QorConnectPoll(qor, state);
        if (cause !== QOR_OK) return worked('connect', cause);
        if (state.progress >= 0 && state.progress !== shown) // -1: none
            console.log(`progress: ${shown = state.progress}`);
        if (state.elapsedMs > 60000) lib.QorConnectCancel(qor);
    } while (state.running);
    return worked('connect', lib.QorConnectWait(qor, 0));
}

function read(qor, name, values) {
    return lib.QorGetParamData(qor, name, 1000, values, values.length, null);
}

function write(qor, name, value) {
    return lib.QorSetParamData(qor, name, Float64Array.of(value), 1, null, 0, null, 0, 1000);
}

function readAndWrite(qor) {
    const target = 'IdleSpeedTarget', value = new Float64Array(1);
    let cause = read(qor, 'EngineSpeed', value);
    if (cause !== QOR_OK) return worked('read', cause);
    console.log(`read: EngineSpeed = ${value[0].toFixed(2)}`);
    if (!worked('write', write(qor, target, 900))) return false;
    // This read asks QOR itself; QorGetParamData may tell what was just written, from the cache.
    cause = lib.QorGetParamDataAtOnce(qor, [target], 1, 1000, value, 1, null, null);
    if (cause !== QOR_OK) return worked('read back', cause);
    console.log(`read back: ${target} = ${value[0].toFixed(2)}`);
    return value[0] === 900;
}

// What must not work, and what the library says about it.
function beRefused(qor) {
    console.log('refused: IdleSpeedTarget = 99999');
    const written = write(qor, 'IdleSpeedTarget', 99999);
    printCause();
    console.log('refused: NoSuchName');
    const known = read(qor, 'NoSuchName', new Float64Array(1));
    printCause();
    return written === QOR_REFUSED && known === QOR_UNKNOWN_NAME;
}

// Values as they come, for a second. The library collects them, this thread fetches them.
function streamValues(qor) {
    const names = ['EngineSpeed', 'OilPressure'], start = lib.QorNowMs(), handle = [0];
    if (!worked('stream', lib.QorStartParamRead(qor, names, names.length, 1000, handle))) return false;
    const capacity = 50, buffer = Buffer.alloc(capacity * koffi.sizeof(QorSample)), count = [0];
    let total = 0;
    for (let cause = QOR_OK; lib.QorNowMs() < start + 1000 && [QOR_OK, QOR_NOT_READY].includes(cause);) {
        cause = lib.QorReadParamStream(handle[0], buffer, capacity, count, 100); // waits for the first one
        if (cause !== QOR_OK) continue;
        for (const sample of koffi.decode(buffer, koffi.array(QorSample, count[0])))
            console.log(`value: ${names[sample.name]} = ${sample.value.toFixed(2)}`
                + ` after ${(sample.timeMs - start).toFixed(0)} ms, missed ${sample.missed}`);
        total += count[0];
    }
    return worked('stream end', lib.QorStopParamRead(handle[0])) && total > 0;
}

// Each trouble code has four texts, which stay with this thread until its next result.
function readCodes(qor) {
    const capacity = 100, buffer = Buffer.alloc(capacity * koffi.sizeof(QorDtc)), count = [0];
    const cause = lib.QorGetDtcByStatus(qor, 1000, buffer, capacity, count);
    if (cause !== QOR_OK) return worked('trouble codes', cause) || null;
    console.log(`trouble codes: ${count[0]}`);
    const codes = count[0] ? koffi.decode(buffer, koffi.array(QorDtc, count[0])) : [];
    codes.forEach(({ code, status }, row) => {
        const texts = [0, 1, 2, 3].map((column) => textOf((...out) => lib.QorResultText(qor, row, column, ...out)));
        const hex = code.toString(16).toUpperCase().padStart(4, '0');
        console.log(`  0x${hex} status ${status}, ${texts.join(', ')}`);
    });
    return codes;
}

function goRound(qor) {
    return worked('ping', lib.QorPingQor(qor, 10000)) // QOR may still be starting
        && connectEcu(qor) && readAndWrite(qor) && beRefused(qor) && streamValues(qor)
        && readCodes(qor) !== null && worked('clear', lib.QorClearDtc(qor, 1000))
        && readCodes(qor)?.length === 0;
}

function main(settings, dll = fileURLToPath(new URL('../bin/QorControlC.dll', import.meta.url))) {
    lib = load(dll);
    console.log(`library: ${lib.QorVersionText()}`);
    const handle = [0];
    if (!worked('open', lib.QorOpen(settings, 100, '', handle))) return 1;
    const good = goRound(handle[0]);
    return worked('close', lib.QorClose(handle[0])) && good ? 0 : 1; // the end; also of QOR, if the settings name its program
}

if (process.argv.length < 3) {
    console.error('usage: node tour.mjs SETTINGS [QorControlC.dll]');
    process.exitCode = 2;
} else {
    process.exitCode = main(...process.argv.slice(2));
}
