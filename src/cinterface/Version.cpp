#include "cinterface/QorControl.h"

unsigned int QOR_CALL QorVersion(void) {
    return QOR_VERSION;
}

const char* QOR_CALL QorVersionText(void) {
    return QOR_VERSION_TEXT;
}
