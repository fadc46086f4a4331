/*
 * A library with the face of QorControlC.dll for the machine that the tests run on: there Python
 * and C# can be run, which cannot load the real one. It has what a tour calls, answers what the
 * real one would, and refuses what does not arrive as it should. It controls nothing.
 */
#include <string.h>

#include "QorControl.h"

#define HANDLE ((QorHandle)(size_t)41)
#define STREAM ((QorStream)(size_t)42)

static int lastCause, polls, cleared;
static double nowMs, target = 850;

static const struct {
    QorDtc dtc;
    const char* texts[4];
} codes[] = {{{0x0113, 96}, {"P0113", "Intake air temperature sensor: \xC3\xB6", "", "Air"}},
             {{0xC100, 161}, {"U0100", "Lost communication", "present", "Network"}}};

static int ended(int cause) {
    return lastCause = cause;
}

static int isText(const char* text, const char* wanted) {
    return text && strcmp(text, wanted) == 0;
}

static int copyText(const char* from, char* text, unsigned int capacity, unsigned int* needed) {
    const unsigned int size = (unsigned int)strlen(from) + 1;
    if (needed) *needed = size;
    if (size > capacity) return QOR_RESULT_TOO_LARGE;
    memcpy(text, from, size);
    return QOR_OK;
}

static int copyValue(double from, double* values, unsigned int capacity, unsigned int* needed) {
    if (needed) *needed = 1;
    if (capacity < 1 || !values) return ended(QOR_RESULT_TOO_LARGE);
    *values = from;
    return ended(QOR_OK);
}

const char* QorVersionText(void) {
    return QOR_VERSION_TEXT;
}

int QorLastCause(void) {
    return lastCause;
}

int QorLastSentence(char* text, unsigned int capacity, unsigned int* needed) {
    return copyText(lastCause == QOR_OK ? "" : "A sentence of some length: \xC3\xA4.", text,
                    capacity, needed);
}

int QorLastCheck(char* text, unsigned int capacity, unsigned int* needed) {
    return copyText(lastCause == QOR_OK ? "" : "Something to check.", text, capacity, needed);
}

const char* QorCauseName(int cause) {
    return cause == QOR_REFUSED        ? "QOR_REFUSED"
           : cause == QOR_UNKNOWN_NAME ? "QOR_UNKNOWN_NAME"
           : cause == QOR_SILENT       ? "QOR_SILENT"
                                       : "QOR_BAD_ARGUMENT";
}

int QorOpen(const char* settingsPath, unsigned int readPeriodMs, const char* hostPath,
            QorHandle* handle) {
    if (!isText(settingsPath, "settings \xC3\xBC.ini") || readPeriodMs != 100 ||
        !isText(hostPath, ""))
        return ended(QOR_BAD_ARGUMENT);
    *handle = HANDLE;
    return ended(QOR_OK);
}

int QorClose(QorHandle handle) {
    return ended(handle == HANDLE ? QOR_OK : QOR_BAD_HANDLE);
}

int QorPingQor(QorHandle handle, unsigned int timeoutMs) {
    return ended(handle != HANDLE ? QOR_BAD_HANDLE : timeoutMs != 10000 ? QOR_SILENT : QOR_OK);
}

int QorConnectStart(QorHandle handle, const QorEcuConnect* settings, int type) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    return ended(settings || type != QOR_CONNECT_DEFAULT ? QOR_BAD_ARGUMENT : QOR_OK);
}

int QorConnect(QorHandle handle, const QorEcuConnect* settings, int type, unsigned int timeoutMs) {
    const int cause = QorConnectStart(handle, settings, type);
    return cause != QOR_OK ? cause : ended(timeoutMs == 60000 ? QOR_OK : QOR_SILENT);
}

int QorConnectWait(QorHandle handle, unsigned int timeoutMs) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    return ended(polls > 4 && timeoutMs == 0 ? QOR_OK : QOR_NOT_READY);
}

int QorConnectPoll(QorHandle handle, QorConnectProgress* progress) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    if (progress->size != sizeof *progress) return ended(QOR_BAD_ARGUMENT);
    progress->running = polls < 5;
    progress->cause = progress->running ? QOR_NOT_READY : QOR_OK;
    progress->progress = polls == 0 || polls == 5 ? -1 : 25 * polls;
    progress->steps = (unsigned int)polls;
    progress->elapsedMs = 20;
    ++polls;
    return ended(QOR_OK);
}

int QorConnectCancel(QorHandle handle) {
    (void)handle;
    return ended(QOR_BAD_ARGUMENT); /* nobody has a reason */
}

int QorGetParamData(QorHandle handle, const char* name, unsigned int timeoutMs, double* values,
                    unsigned int capacity, unsigned int* needed) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    if (timeoutMs != 1000) return ended(QOR_BAD_ARGUMENT);
    if (!isText(name, "EngineSpeed")) return ended(QOR_UNKNOWN_NAME);
    return copyValue(851.25, values, capacity, needed);
}

int QorSetParamData(QorHandle handle, const char* name, const double* values, unsigned int count,
                    const double* second, unsigned int secondCount, const double* third,
                    unsigned int thirdCount, unsigned int timeoutMs) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    if (!isText(name, "IdleSpeedTarget") || count != 1 || second || secondCount || third ||
        thirdCount || timeoutMs != 1000)
        return ended(QOR_BAD_ARGUMENT);
    if (values[0] > 1500) return ended(QOR_REFUSED);
    target = values[0];
    return ended(QOR_OK);
}

int QorGetParamDataAtOnce(QorHandle handle, const char* const* names, unsigned int nameCount,
                          unsigned int timeoutMs, double* values, unsigned int capacity,
                          unsigned int* needed, unsigned int* counts) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    if (nameCount != 1 || !isText(names[0], "IdleSpeedTarget") || timeoutMs != 1000 || counts)
        return ended(QOR_BAD_ARGUMENT);
    return copyValue(target, values, capacity, needed);
}

int QorGetDtcByStatus(QorHandle handle, unsigned int timeoutMs, QorDtc* dtcs, unsigned int capacity,
                      unsigned int* needed) {
    const unsigned int count = cleared ? 0 : sizeof codes / sizeof codes[0];
    unsigned int i;
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    if (timeoutMs != 1000) return ended(QOR_BAD_ARGUMENT);
    *needed = count;
    if (count > capacity) return ended(QOR_RESULT_TOO_LARGE);
    for (i = 0; i < count; ++i) dtcs[i] = codes[i].dtc;
    return ended(QOR_OK);
}

int QorResultText(QorHandle handle, unsigned int row, unsigned int column, char* text,
                  unsigned int capacity, unsigned int* needed) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    if (row >= sizeof codes / sizeof codes[0] || column > 3) return ended(QOR_BAD_ARGUMENT);
    return ended(copyText(codes[row].texts[column], text, capacity, needed));
}

int QorClearDtc(QorHandle handle, unsigned int timeoutMs) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    cleared = 1;
    return ended(timeoutMs == 1000 ? QOR_OK : QOR_SILENT);
}

double QorNowMs(void) {
    return nowMs += 100;
}

int QorStartParamRead(QorHandle handle, const char* const* names, unsigned int nameCount,
                      unsigned int slots, QorStream* stream) {
    if (handle != HANDLE) return ended(QOR_BAD_HANDLE);
    if (nameCount != 2 || !isText(names[0], "EngineSpeed") || !isText(names[1], "OilPressure") ||
        slots != 1000)
        return ended(QOR_BAD_ARGUMENT);
    *stream = STREAM;
    return ended(QOR_OK);
}

int QorReadParamStream(QorStream stream, QorSample* samples, unsigned int capacity,
                       unsigned int* count, unsigned int timeoutMs) {
    static int calls;
    unsigned int i;
    if (stream != STREAM) return ended(QOR_BAD_HANDLE);
    if (timeoutMs != 100 || capacity < 2) return ended(QOR_BAD_ARGUMENT);
    if (++calls % 3 == 0) return ended(QOR_NOT_READY);
    *count = 2;
    for (i = 0; i < 2; ++i) {
        samples[i].name = i;
        samples[i].missed = i;
        samples[i].value = i ? 2.5 : 852.5;
        samples[i].timeMs = nowMs;
    }
    return ended(QOR_OK);
}

int QorStopParamRead(QorStream stream) {
    return ended(stream == STREAM ? QOR_OK : QOR_BAD_HANDLE);
}
