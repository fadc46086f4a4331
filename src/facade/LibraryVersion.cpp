#include "qorcontrol/LibraryVersion.h"

unsigned int qorcontrol::version() noexcept {
    return QOR_VERSION;
}

const char* qorcontrol::versionText() noexcept {
    return QOR_VERSION_TEXT;
}
