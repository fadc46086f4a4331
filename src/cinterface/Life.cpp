// Opening and closing, and what is asked without a request to QOR.

#include "cinterface/Arguments.h"
#include "cinterface/OutBuffer.h"
#include "cinterface/Shell.h"
#include "cinterface/Text.h"

using cinterface::call;
using cinterface::callOn;
using cinterface::Cause;
using cinterface::mustNotBeNull;
using cinterface::Outcome;
using cinterface::Session;

int QOR_CALL QorOpen(const char* settingsPath, unsigned int readPeriodMs, const char* hostPath,
                     QorHandle* handle) {
    return call([&]() -> Outcome {
        const std::string settings = cinterface::textOf(settingsPath, "settingsPath");
        const std::string host = cinterface::optionalTextOf(hostPath, "hostPath");
        mustNotBeNull(handle, "handle");
        auto session = std::make_shared<Session>(settings, readPeriodMs, host);
        if (!session->isOperating()) {
            // What else an agent fails for it finds later, or earlier: that is told by what asks
            // it.
            Outcome end = session->agentsEnd();
            if (end.cause == Cause::systemFailure) return end;
        }
        const std::uint32_t number = cinterface::process().sessions.add(std::move(session));
        if (number == 0) return cinterface::systemFailure("there is no room for another handle");
        *handle = reinterpret_cast<QorHandle>(std::uintptr_t{number});
        return {};
    });
}

int QOR_CALL QorClose(QorHandle handle) {
    return call([&]() -> Outcome {
        if (cinterface::isInHostFunction())
            cinterface::refuse(Cause::wrongOrder, "a callback must not close a handle");
        const auto session = cinterface::process().sessions.remove(cinterface::numberOf(handle));
        if (session == nullptr) cinterface::refuseHandle();
        session->close();
        return {};
    });
}

int QOR_CALL QorSetTcpNoDelay(QorHandle handle, int wanted) {
    return callOn(handle, [&](Session& session) -> Outcome {
        session.channel().isTcpNoDelay = wanted != 0;
        return {};
    });
}

int QOR_CALL QorIsEcuOnline(QorHandle handle, int* online) {
    return callOn(handle, [&](Session& session) -> Outcome {
        mustNotBeNull(online, "online");
        *online = session.facade().isEcuOnline() ? 1 : 0;
        return {};
    });
}

int QOR_CALL QorIsConnecting(QorHandle handle, int* connecting) {
    return callOn(handle, [&](Session& session) -> Outcome {
        mustNotBeNull(connecting, "connecting");
        const auto connect = session.lastConnect();
        *connecting = connect != nullptr && connect->isRunning() ? 1 : 0;
        return {};
    });
}

int QOR_CALL QorGetQorExecutablePath(QorHandle handle, char* path, unsigned int capacity,
                                     unsigned int* needed) {
    return callOn(handle, [&](Session& session) -> Outcome {
        const cinterface::OutText out(path, capacity, needed, "path");
        // Not the facade's operation, which waits for it.
        const std::string known = session.channel().executable.get();
        if (known.empty())
            return cinterface::failure(Cause::notReady,
                                       "the settings have not been read, or name no executable");
        return out.put(cinterface::text::shownUtf8Of(known));
    });
}

const char* QOR_CALL QorGetEdcRamSegmentName(void) {
    return QorControlFacade::getEdcRamSegmentName().c_str();
}

const char* QOR_CALL QorGetEdcRomSegmentName(void) {
    return QorControlFacade::getEdcRomSegmentName().c_str();
}
