/*
 * A tour of QorControlC.dll in C89, for any compiler: connects an ECU, reads, writes, is refused,
 * streams, reads and clears trouble codes. The argument is QOR's settings file. What each step saw
 * goes to standard output; the exit code is 0 if all went as it should.
 */
#include <stdio.h>

#include "QorControl.h"

/* Why this thread's last call failed. Ask at once: the next call has a cause of its own. */
static void printCause(void) {
    const int cause = QorLastCause();
    char text[1000];
    printf("  cause: %d %s\n", cause, QorCauseName(cause));
    if (QorLastSentence(text, sizeof text, NULL) == QOR_OK) printf("  sentence: %s\n", text);
    if (QorLastCheck(text, sizeof text, NULL) == QOR_OK) printf("  check: %s\n", text);
}

/* What a step came to; 1 if it worked. */
static int worked(const char* step, int cause) {
    printf("%s: %s\n", step, cause == QOR_OK ? "ok" : "failed");
    if (cause != QOR_OK) printCause();
    return cause == QOR_OK;
}

/* A connect may take a minute. It runs in the background, so that a window could go on drawing and
 * a button could call QorConnectCancel. QorConnect does all this in one call, without figures. */
static int connectEcu(QorHandle qor) {
    QorConnectProgress state;
    int shown = -1;
    state.size = sizeof state;
    if (QorConnectStart(qor, NULL, QOR_CONNECT_DEFAULT) != QOR_OK)
        return worked("connect", QorLastCause());
    do {
        QorConnectWait(qor, 20); /* QOR_NOT_READY while it runs */
        if (QorConnectPoll(qor, &state) != QOR_OK) return worked("connect", QorLastCause());
        if (state.progress >= 0 && state.progress != shown) /* -1: none */
            printf("progress: %d\n", shown = state.progress);
        if (state.elapsedMs > 60000) QorConnectCancel(qor);
    } while (state.running);
    return worked("connect", QorConnectWait(qor, 0));
}

static int readAndWrite(QorHandle qor) {
    static const char* const target = "IdleSpeedTarget";
    double value = 900;
    if (QorGetParamData(qor, "EngineSpeed", 1000, &value, 1, NULL) != QOR_OK)
        return worked("read", QorLastCause());
    printf("read: EngineSpeed = %.2f\n", value);

    value = 900;
    if (!worked("write", QorSetParamData(qor, target, &value, 1, NULL, 0, NULL, 0, 1000))) return 0;
    /* This read asks QOR itself; QorGetParamData may tell what was just written, from the cache. */
    if (QorGetParamDataAtOnce(qor, &target, 1, 1000, &value, 1, NULL, NULL) != QOR_OK)
        return worked("read back", QorLastCause());
    printf("read back: %s = %.2f\n", target, value);
    return value == 900;
}

/* What must not work, and what the library says about it. */
static int beRefused(QorHandle qor) {
    const double tooMuch = 99999;
    double value;
    int good;
    printf("refused: IdleSpeedTarget = %.0f\n", tooMuch);
    good =
        QorSetParamData(qor, "IdleSpeedTarget", &tooMuch, 1, NULL, 0, NULL, 0, 1000) == QOR_REFUSED;
    printCause();
    printf("refused: NoSuchName\n");
    good &= QorGetParamData(qor, "NoSuchName", 1000, &value, 1, NULL) == QOR_UNKNOWN_NAME;
    printCause();
    return good;
}

/* Values as they come, for a second. The library collects them, this thread fetches them. */
static int streamValues(QorHandle qor) {
    static const char* const names[] = {"EngineSpeed", "OilPressure"};
    const double start = QorNowMs();
    QorStream stream;
    QorSample samples[50];
    unsigned int count, total = 0, i;
    int cause = QOR_OK;
    if (!worked("stream", QorStartParamRead(qor, names, 2, 1000, &stream))) return 0;
    while (QorNowMs() < start + 1000 && (cause == QOR_OK || cause == QOR_NOT_READY)) {
        cause = QorReadParamStream(stream, samples, 50, &count, 100); /* waits for the first one */
        for (i = 0; cause == QOR_OK && i < count; ++i, ++total)
            printf("value: %s = %.2f after %.0f ms, missed %u\n", names[samples[i].name],
                   samples[i].value, samples[i].timeMs - start, samples[i].missed);
    }
    return worked("stream end", QorStopParamRead(stream)) && total > 0;
}

/* Each trouble code has four texts, which stay with this thread until its next result. */
static int readCodes(QorHandle qor, unsigned int* count) {
    QorDtc codes[100];
    char text[200];
    unsigned int row, column;
    if (QorGetDtcByStatus(qor, 1000, codes, 100, count) != QOR_OK)
        return worked("trouble codes", QorLastCause());
    printf("trouble codes: %u\n", *count);
    for (row = 0; row < *count; ++row) {
        printf("  0x%04X status %u", codes[row].code, codes[row].status);
        for (column = 0; column < 4; ++column)
            if (QorResultText(qor, row, column, text, sizeof text, NULL) == QOR_OK)
                printf(", %s", text);
        printf("\n");
    }
    return 1;
}

static int goRound(QorHandle qor) {
    unsigned int count;
    return worked("ping", QorPingQor(qor, 10000)) && /* QOR may still be starting */
           connectEcu(qor) && readAndWrite(qor) && beRefused(qor) && streamValues(qor) &&
           readCodes(qor, &count) && worked("clear", QorClearDtc(qor, 1000)) &&
           readCodes(qor, &count) && count == 0;
}

int main(int argc, char** argv) {
    QorHandle qor;
    int good;
    if (argc != 2) {
        fprintf(stderr, "usage: tour SETTINGS\n");
        return 2;
    }
    printf("library: %s\n", QorVersionText());
    /* argv is text of the code page, the library wants UTF-8: a path with an umlaut is a
       QOR_BAD_ARGUMENT here. Convert it in a host of your own. */
    if (!worked("open", QorOpen(argv[1], 100, "", &qor))) return 1;
    good = goRound(qor);
    if (!worked("close", QorClose(qor))) good = 0; /* the end; also of QOR, if the settings name its program */
    return good ? 0 : 1;
}
