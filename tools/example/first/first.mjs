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

const handle = [0], speed = [0];
let cause = QorOpen(settings, 100, '', handle);
cause ||= QorPingQor(handle[0], 10000); // QOR may still be starting
cause ||= QorConnect(handle[0], null, 1, 60000);
cause ||= QorGetParamData(handle[0], 'EngineSpeed', 1000, speed, 1, null);
console.log(cause ? QorCauseName(cause) : `EngineSpeed = ${speed[0].toFixed(0)}`);
QorClose(handle[0]); // disconnects the ECU, shuts QOR down
process.exitCode = cause;
