#include <QorControl.h>

unsigned int station_version(void) {
    return QorVersion();
}
