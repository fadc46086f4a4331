#include "qorcontrol/TcpNoDelay.h"

#include "facade/FacadeImpl.h"

void qorcontrol::setTcpNoDelay(const QorControlFacade& facade, bool isWanted) {
    FacadeAccess::stateOf(facade).channel->isTcpNoDelay = isWanted;
}
