/*
 * The examples of the guide for C. What stands between the marks is shown there; main goes through
 * them all. The argument is QOR's settings file; QOR must want a message box shown soon after the
 * connect.
 */
#include <windows.h>

#include <stdio.h>
#include <stdlib.h>

#include "QorControl.h"

/* [failure] */
/* Why this thread's last call failed. Ask at once: the next call has a cause of its own. */
static int failed(const char* what) {
    const int cause = QorLastCause();
    char sentence[500], check[500];
    if (QorLastSentence(sentence, sizeof sentence, NULL) != QOR_OK) sentence[0] = '\0';
    if (QorLastCheck(check, sizeof check, NULL) != QOR_OK) check[0] = '\0';
    fprintf(stderr, "%s: %s after %u ms: %s\n  %s\n", what, QorCauseName(cause), QorLastElapsedMs(),
            sentence, check);
    return 0;
}
/* [/failure] */

/* [doubt] */
/* A value that may be an old one is read once more. */
static int readSurely(QorHandle qor, const char* name, double* value) {
    int tries, cause;
    for (tries = 0; tries < 3; ++tries) {
        cause = QorGetParamData(qor, name, 1000, value, 1, NULL);
        if (cause != QOR_OK || !QorLastMayBelongToEarlier()) return cause;
    }
    return QOR_BAD_ANSWER;
}
/* [/doubt] */

/* [sizes] */
/* A parameter of any size. The result is in *values; free it. */
static int readAll(QorHandle qor, const char* name, double** values, unsigned int* count) {
    const unsigned int guess = 16;
    int cause;
    *values = malloc(guess * sizeof **values);
    if (!*values) return QOR_OUT_OF_MEMORY;
    cause = QorGetParamData(qor, name, 1000, *values, guess, count);
    if (cause == QOR_RESULT_TOO_LARGE) { /* it is there, and QOR is not asked again */
        free(*values);
        *values = malloc(*count * sizeof **values);
        cause = *values ? QorResultValues(qor, 0, *values, *count, count) : QOR_OUT_OF_MEMORY;
    }
    return cause;
}
/* [/sizes] */

/* [three arrays] */
/* The axes of a map. Without a buffer only the sizes are told. */
static int sizesOfMap(QorHandle qor, const char* name, unsigned int* columns, unsigned int* rows) {
    int threeArrays = 0, cause;
    cause = QorGetParamDescription(qor, name, &threeArrays);
    if (cause != QOR_OK || !threeArrays) return cause == QOR_OK ? QOR_BAD_ARGUMENT : cause;
    cause = QorGetParamData(qor, name, 1000, NULL, 0, NULL);
    if (cause != QOR_OK) return cause;
    cause = QorResultValues(qor, 1, NULL, 0, columns);
    return cause == QOR_OK ? QorResultValues(qor, 2, NULL, 0, rows) : cause;
}
/* [/three arrays] */

/* [description] */
static int printTexts(QorHandle qor, const char* name) {
    char text[200];
    unsigned int column;
    const int cause = QorGetParamDescription(qor, name, NULL);
    for (column = 0; cause == QOR_OK && column < 5; ++column)
        if (QorResultText(qor, 0, column, text, sizeof text, NULL) == QOR_OK) printf("%s\n", text);
    return cause;
}
/* [/description] */

/* [string] */
/* The bytes are the ECU's. */
static int readSerialNumber(QorHandle qor, char* text, unsigned int capacity) {
    unsigned int count;
    const int cause = QorGetParamDataAsString(qor, "EcuSerialNumber", 1000, (unsigned char*)text,
                                              capacity - 1, &count);
    if (cause == QOR_OK) text[count] = '\0';
    return cause;
}
/* [/string] */

/* [utf-8] */
/* A path of the system as the library wants it. */
static int openWide(const wchar_t* settingsPath, QorHandle* qor) {
    char path[3 * MAX_PATH];
    if (!WideCharToMultiByte(CP_UTF8, 0, settingsPath, -1, path, sizeof path, NULL, NULL))
        return QOR_BAD_ARGUMENT;
    return QorOpen(path, 100, "", qor);
}
/* [/utf-8] */

/* [connect] */
/* Begins, and returns at once. */
static int beginConnect(QorHandle qor, unsigned int canBaudRate) {
    QorEcuConnect ecu;
    ecu.size = sizeof ecu;
    QorEcuConnectDefaults(&ecu);
    ecu.canBaudRate = canBaudRate;
    ecu.refreshPeriodMs = 50;
    return QorConnectStart(qor, &ecu, QOR_CONNECT_DEFAULT);
}

/* For the timer of a window. 1: it runs, 0: it has ended, and *cause tells how. */
static int lookAtConnect(QorHandle qor, int userWantsToCancel, int* cause) {
    QorConnectProgress state;
    state.size = sizeof state;
    if (userWantsToCancel) QorConnectCancel(qor);
    if (QorConnectPoll(qor, &state) != QOR_OK) return 0;
    printf("%d after %u ms\n", state.progress, state.elapsedMs);
    *cause = state.cause;
    return state.running;
}
/* [/connect] */

/* [control] */
/* An actuator moves only while it is under control. */
static int openThrottle(QorHandle qor, double percent) {
    int cause = QorStartDirectCtrl(qor, "ThrottleActuator", 1000);
    if (cause != QOR_OK) return cause;
    cause = QorSetParamData(qor, "ThrottleActuator", &percent, 1, NULL, 0, NULL, 0, 1000);
    Sleep(500);
    QorStopDirectCtrl(qor, "ThrottleActuator", 1000);
    return cause;
}
/* [/control] */

/* [together] */
/* Values of one moment. All arrays stand one after the other; counts has the length of each. */
static int readTogether(QorHandle qor, double* speed, double* trims, unsigned int capacity) {
    static const char* const names[] = {"EngineSpeed", "CylinderTrim"};
    double values[64];
    unsigned int counts[2], count, i;
    const int cause = QorGetParamDataAtOnce(qor, names, 2, 1000, values, 64, &count, counts);
    if (cause != QOR_OK) return cause;
    if (counts[0] != 1) return QOR_BAD_ANSWER;
    *speed = values[0];
    for (i = 0; i < counts[1] && i < capacity; ++i) trims[i] = values[1 + i];
    return QOR_OK;
}
/* [/together] */

/* [page] */
/* The value on the reference page. QorGetParamData may tell that of the page before. */
static int readReference(QorHandle qor, const char* name, double* value) {
    int cause = QorSetEcuSegment(qor, QorGetEdcRomSegmentName(), 0);
    if (cause == QOR_OK) cause = QorGetParamDataAtOnce(qor, &name, 1, 1000, value, 1, NULL, NULL);
    QorSetEcuSegment(qor, QorGetEdcRamSegmentName(), 1);
    return cause;
}
/* [/page] */

/* [model] */
/* Ends QOR's work with the ECU; connect again afterwards. What QOR exports of the model stands in
 * c:\qor_exp.sde. */
static int openModel(QorHandle qor, const char* path, const char* hexPath) {
    QorModelDescription model = {0};
    model.size = sizeof model;
    model.modelType = 1;
    model.model = path;
    model.hex = hexPath;
    return QorOpenModel(qor, &model);
}
/* [/model] */

/* [kwp] */
/* Service 0x1A, "read ECU identification". QOR_OK only says that the exchange took place. */
static int readIdentification(QorHandle qor, unsigned char which, unsigned char* answer,
                              unsigned int capacity, unsigned int* count) {
    int refused = 0;
    const int cause =
        QorSendKwpCommand(qor, 0x1A, &which, 1, 1000, answer, capacity, count, &refused);
    return cause == QOR_OK && refused ? QOR_REFUSED : cause;
}
/* [/kwp] */

/* [can] */
static int openBusAndRead(QorHandle qor, unsigned int canId, int* value) {
    QorCanBusConnect bus;
    QorCanBusItem wanted, item;
    unsigned int count;
    int cause;
    bus.size = sizeof bus;
    bus.busParam = 500000; /* bit/s */
    bus.firstFlag = 1;
    bus.secondFlag = 0;
    cause = QorConnectCanBus(qor, &bus, QOR_CONNECT_DEFAULT);
    if (cause != QOR_OK) return cause;
    wanted.canId = canId;
    wanted.value = 0;
    cause = QorGetCanBusData(qor, &wanted, 1, 1000, &item, 1, &count);
    if (cause != QOR_OK) return cause;
    if (count != 1 || item.canId != canId) return QOR_BAD_ANSWER;
    *value = item.value;
    return QOR_OK;
}
/* [/can] */

/* [stream] */
/* Waits until a measurement rises above a limit; QOR_NOT_READY if it does not in time. */
static int awaitAbove(QorHandle qor, const char* name, double limit, unsigned int patienceMs) {
    const double end = QorNowMs() + patienceMs;
    QorSample samples[20];
    QorStream stream;
    unsigned int count, i;
    int found = 0;
    int cause = QorStartParamRead(qor, &name, 1, 100, &stream);
    if (cause != QOR_OK) return cause;
    while (!found && (cause == QOR_OK || cause == QOR_NOT_READY) && QorNowMs() < end) {
        cause = QorReadParamStream(stream, samples, 20, &count, 50);
        for (i = 0; cause == QOR_OK && i < count; ++i) {
            if (samples[i].value > limit) found = 1;
            if (samples[i].missed) fprintf(stderr, "%u values were missed\n", samples[i].missed);
        }
    }
    QorStopParamRead(stream);
    return found ? QOR_OK : cause == QOR_OK ? QOR_NOT_READY : cause;
}
/* [/stream] */

/* [codes stream] */
/* Waits until the ECU has no trouble codes any more. */
static int awaitNoCodes(QorHandle qor, unsigned int patienceMs) {
    const double end = QorNowMs() + patienceMs;
    QorDtc codes[100];
    unsigned int count = 1, missed;
    double timeMs;
    int cause = QorStartDtcRead(qor, 300, 500);
    if (cause != QOR_OK) return cause;
    do {
        cause = QorReadDtcStream(qor, 600, codes, 100, &count, &timeMs, &missed);
    } while ((cause == QOR_NOT_READY || (cause == QOR_OK && count > 0)) && QorNowMs() < end);
    QorStopDtcRead(qor);
    return cause;
}
/* [/codes stream] */

/* [boxes] */
/* Called now and then. Each box is told once, whoever answers it. */
static void lookAtBoxes(QorHandle qor) {
    QorMessageBox box;
    char text[1000], caption[200];
    box.size = sizeof box;
    while (QorNextMessageBox(qor, &box, text, sizeof text, NULL, caption, sizeof caption, NULL) ==
           QOR_OK) {
        printf("QOR asks: %s: %s\n", caption, text);
        if (box.waiting) QorAnswerMessageBox(qor, box.id, QOR_CHOICE_YES);
    }
}
/* [/boxes] */

/* [log] */
/* Any thread that calls the library comes here, and threads of its own. */
static void QOR_CALL writeLine(void* user, int isFailure, const char* line) {
    fprintf((FILE*)user, "%s%s\n", isFailure ? "! " : "", line);
}
/* [/log] */

static void QOR_CALL noteProgress(void* user, int progress) {
    *(int*)user = progress;
}

/* What main has seen of it; the first step that did not work ends it. */
static int ok(const char* what, int cause) {
    printf("%s: %s\n", what, QorCauseName(cause));
    if (cause != QOR_OK) failed(what);
    return cause == QOR_OK;
}

static int connectAndAnswer(QorHandle qor) {
    int cause = QOR_NOT_READY, figure = -1, online = 0, connecting = 1, i;
    char path[500];
    if (!ok("policy", QorSetMessageBoxPolicy(qor, QOR_BOX_ASK, QOR_CHOICE_NO, 5000))) return 0;
    if (!ok("log", QorSetLog(qor, writeLine, stderr))) return 0;
    if (!ok("progress", QorSetProgress(qor, noteProgress, &figure))) return 0;
    if (!ok("connect", beginConnect(qor, 125000))) return 0;
    while (lookAtConnect(qor, 0, &cause)) Sleep(50);
    if (!ok("connected", cause)) return 0;
    for (i = 0; i < 60; ++i, Sleep(50)) lookAtBoxes(qor);
    if (!ok("no progress", QorSetProgress(qor, NULL, NULL))) return 0;
    return ok("online", QorIsEcuOnline(qor, &online)) && online &&
           ok("connecting", QorIsConnecting(qor, &connecting)) && !connecting && figure > 0 &&
           ok("path", QorGetQorExecutablePath(qor, path, sizeof path, NULL));
}

static int readThings(QorHandle qor) {
    double *map = NULL, value = 0, trims[4];
    unsigned int count = 0, columns = 0, rows = 0;
    char serial[40];
    if (!ok("all", readAll(qor, "IgnitionMap", &map, &count)) || count != 48) return 0;
    free(map);
    if (!ok("map", sizesOfMap(qor, "IgnitionMap", &columns, &rows)) || columns != 8 || rows != 6)
        return 0;
    return ok("texts", printTexts(qor, "EngineSpeed")) &&
           ok("serial", readSerialNumber(qor, serial, sizeof serial)) && printf("%s\n", serial) &&
           ok("surely", readSurely(qor, "IdleSpeedTarget", &value)) && value == 850 &&
           ok("together", readTogether(qor, &value, trims, 4)) && trims[3] < 0 &&
           ok("set", QorSetDynamicData(qor, "IdleSpeedTarget", "900", 1000)) &&
           ok("reference", readReference(qor, "IdleSpeedTarget", &value)) && value == 850;
}

static int doThings(QorHandle qor) {
    unsigned char answer[40];
    unsigned int count;
    int value = 0;
    return ok("control", openThrottle(qor, 30)) &&
           ok("kwp", readIdentification(qor, 0x9B, answer, sizeof answer, &count)) && count == 10 &&
           ok("can", openBusAndRead(qor, 0x201, &value)) && value == -40 &&
           ok("send", QorSendCanBusMsg(qor, 0x201, 0, (const unsigned char*)"\1", 1, 1000)) &&
           ok("above", awaitAbove(qor, "EngineSpeed", 500, 3000)) &&
           ok("clear", QorClearDtc(qor, 1000)) && ok("no codes", awaitNoCodes(qor, 3000)) &&
           ok("model", openModel(qor, "c:\\models\\engine.mod", NULL));
}

int main(int argc, char** argv) {
    wchar_t path[MAX_PATH];
    QorHandle qor;
    int good;
    if (argc != 2 || !MultiByteToWideChar(CP_ACP, 0, argv[1], -1, path, MAX_PATH)) return 2;
    if (!ok("open", openWide(path, &qor))) return 1;
    good = ok("ping", QorPingQor(qor, 10000)) && connectAndAnswer(qor) && readThings(qor) &&
           doThings(qor);
    return ok("close", QorClose(qor)) && good ? 0 : 1;
}
