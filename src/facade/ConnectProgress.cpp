#include "qorcontrol/ConnectProgress.h"

#include "facade/FacadeImpl.h"

qorcontrol::ConnectProgress qorcontrol::connectProgress(const QorControlFacade& facade) {
    const auto seen = FacadeAccess::stateOf(facade).channel->progress.seen();
    return {seen.figure, seen.steps};
}
