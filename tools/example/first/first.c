/* Reads a value. The argument is QOR's settings file. */
#include <stdio.h>

#include "QorControl.h"

int main(int argc, char** argv) {
    QorHandle qor = NULL;
    double speed;
    char sentence[500] = "";
    int cause = QorOpen(argc > 1 ? argv[1] : "", 100, "", &qor);
    if (cause == QOR_OK) cause = QorPingQor(qor, 10000); /* QOR may still be starting */
    if (cause == QOR_OK) cause = QorConnect(qor, NULL, QOR_CONNECT_DEFAULT, 60000);
    if (cause == QOR_OK) cause = QorGetParamData(qor, "EngineSpeed", 1000, &speed, 1, NULL);
    if (cause == QOR_OK)
        printf("EngineSpeed = %.0f\n", speed);
    else if (QorLastSentence(sentence, sizeof sentence, NULL) == QOR_OK)
        printf("%s: %s\n", QorCauseName(cause), sentence);
    QorClose(qor); /* the end; also of QOR, if the settings name its program */
    return cause;
}
