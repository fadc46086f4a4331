// Functions of the host's that the library calls.

#include "cinterface/Shell.h"

using cinterface::callOn;
using cinterface::Outcome;
using cinterface::Session;

int QOR_CALL QorSetLog(QorHandle handle, QorLogFunction function, void* user) {
    return callOn(handle, [&](Session& session) -> Outcome {
        session.log().replace(function, user);
        return {};
    });
}

int QOR_CALL QorSetProgress(QorHandle handle, QorProgressFunction function, void* user) {
    return callOn(handle, [&](Session& session) -> Outcome {
        session.progress().replace(function, user);
        return {};
    });
}
