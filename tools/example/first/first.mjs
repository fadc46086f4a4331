// Reads a value. usage: node first.mjs SETTINGS QorControlC.dll
import koffi from 'koffi';

const [settings, dll] = process.argv.slice(2);
const lib = koffi.load(dll);
koffi.alias('QorHandle', 'uint32_t');
const QorOpen = lib.func('int QorOpen(const char* settingsPath, unsigned int readPeriodMs,'
    + ' const char* hostPath, _Out_ QorHandle* handle)');
const QorPingQor = lib.func('int QorPingQor(QorHandle handle, unsigned int timeoutMs)');
const QorConnect = lib.func('int QorConnect(QorHandle handle, const void* settings, int type,'
    + ' unsigned int timeoutMs)');
const QorGetParamData = lib.func('int QorGetParamData(QorHandle handle, const char* name,'
    + ' unsigned int timeoutMs, _Out_ double* values, unsigned int capacity, _Out_ unsigned int* needed)');
const QorClose = lib.func('int QorClose(QorHandle handle)');
const QorCauseName = lib.func('const char* QorCauseName(int cause)');
const [QorLastSentence, QorLastCheck] = ['QorLastSentence', 'QorLastCheck'].map((name) => lib.func(
    `int ${name}(_Out_ char* text, unsigned int capacity, _Out_ unsigned int* needed)`));
const text = Buffer.alloc(1000), needed = [0];
const textOf = (last) => (last(text, text.length, needed) ? '' : text.toString('utf8', 0, needed[0] - 1));

const handle = [0], speed = [0];
let cause = QorOpen(settings, 100, '', handle);
cause ||= QorPingQor(handle[0], 10000); // QOR may still be starting
cause ||= QorConnect(handle[0], null, 1, 60000);
cause ||= QorGetParamData(handle[0], 'EngineSpeed', 1000, speed, 1, null);
if (cause) // ask at once: the next call has a cause of its own
    console.log(`${QorCauseName(cause)}: ${textOf(QorLastSentence)}\n  ${textOf(QorLastCheck)}`);
else
    console.log(`EngineSpeed = ${speed[0].toFixed(0)}`);
QorClose(handle[0]); // the end; also of QOR, if the settings name its program
process.exitCode = cause;
