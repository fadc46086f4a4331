/* Reads a parameter through the C interface; the argument is QOR's settings file. */
#include <QorControl.h>
#include <stdio.h>
#include <windows.h>

/* The interface takes UTF-8, the program's arguments are in the ANSI code page. */
static void to_utf8(const char* ansi, char* utf8, int capacity) {
    WCHAR wide[MAX_PATH];
    MultiByteToWideChar(CP_ACP, 0, ansi, -1, wide, MAX_PATH);
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, utf8, capacity, NULL, NULL);
}

static int read_speed(QorHandle qor, double* speed) {
    unsigned int count = 0;
    int cause = QorPingQor(qor, 10000);
    if (cause == QOR_OK) cause = QorConnect(qor, NULL, QOR_CONNECT_DEFAULT, 30000);
    if (cause == QOR_OK) cause = QorGetParamData(qor, "EngineSpeed", 2000, speed, 1, &count);
    return cause;
}

int main(int argc, char** argv) {
    QorHandle qor;
    double speed = 0;
    int cause;
    char settings[3 * MAX_PATH], program[3 * MAX_PATH];
    if (argc != 2 || QorVersion() != QOR_VERSION) return 2;
    to_utf8(argv[1], settings, sizeof settings);
    to_utf8(argv[0], program, sizeof program);
    cause = QorOpen(settings, 100, program, &qor);
    if (cause == QOR_OK) {
        cause = read_speed(qor, &speed);
        QorClose(qor);
    }
    printf("C host, version %s, %s\n", QorVersionText(), QorCauseName(cause));
    if (cause == QOR_OK) printf("engine speed %.0f 1/min\n", speed);
    return cause;
}
