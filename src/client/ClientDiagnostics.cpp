#include <utility>

#include "client/ClientCommands.h"
#include "client/ClientExternalOperating.h"
#include "client/ClientSend.h"

namespace {

constexpr unsigned int routineMs = 400;
constexpr unsigned int kwpMs = 400;
constexpr unsigned int canExtraMs = 150;
constexpr unsigned int busMs = 10000;
constexpr unsigned int segmentMs = 10000;
constexpr unsigned int editMs = 90000;

/// Takes an answer out, if it has come.
template <class T>
bool take(Arrival<T>& arrival, T& content) {
    if (arrival.arrived) content = std::move(arrival.content);
    return arrival.arrived;
}

/// Lets one answer be kept, to the end of the block; an earlier one is forgotten.
template <class T>
class Expecting {
public:
    Expecting(common::Guarded<ClientState>& state, Arrival<T> ClientState::*arrival)
        : state_(state), arrival_(arrival) {
        reset(true);
    }
    ~Expecting() { reset(false); }
    Expecting(const Expecting&) = delete;
    Expecting& operator=(const Expecting&) = delete;

private:
    void reset(bool expected) {
        Arrival<T> empty;
        empty.expected = expected;
        std::swap((*state_.lock()).*arrival_, empty);
    }

    common::Guarded<ClientState>& state_;
    Arrival<T> ClientState::*const arrival_;
};

/// Drops the answer to an earlier request, which came while the present one was being made.
template <class T>
auto forgetting(Arrival<T> ClientState::*arrival) {
    return [arrival](ClientState& state) { (state.*arrival).arrived = false; };
}

}  // namespace

bool ClientExternalOperating::getDtc(std::uint32_t statusMask,
                                     std::vector<protocol::DtcRecord>& dtcs,
                                     unsigned int timeoutMs) {
    const Expecting expecting(state_, &ClientState::dtcs);
    protocol::GetDtc request;
    request.option = statusMask != 0;
    return ask<ClientCommandGetDTC, Answer>(request, timeoutMs, &ClientState::owedAnswers,
                                            {Answer::troubleCodes},
                                            forgetting(&ClientState::dtcs)) &&
           awaitData(timeoutMs, [&](ClientState& state) { return take(state.dtcs, dtcs); });
}

bool ClientExternalOperating::clearDtc() {
    protocol::EcuToolRoutine request;
    request.routine = protocol::EcuToolRoutine::clearDtc;
    return send<CommandEcuToolRoutine>(request, routineMs);
}

bool ClientExternalOperating::execKwp(const protocol::ExecKwp& request, protocol::ExecKwp& answer) {
    protocol::ExecKwp command = request;
    {
        const auto state = state_.lock();
        if (!state->connecting) return fail(qorcontrol::Cause::kwpBeforeConnect);
        command.channel = state->connectRecord.protocol;
    }
    const Expecting expecting(state_, &ClientState::kwpAnswer);
    return ask<ClientCommandExecKwp, Answer>(std::move(command), kwpMs, &ClientState::owedAnswers,
                                             {Answer::kwp}, forgetting(&ClientState::kwpAnswer)) &&
           awaitData(clientsend::withExtra(request.timeoutMs, kwpMs),
                     [&](ClientState& state) { return take(state.kwpAnswer, answer); });
}

bool ClientExternalOperating::connectCanBus(const protocol::CanBusConnect& settings) {
    return send<CommandCanBusConnect>(settings, busMs);
}

bool ClientExternalOperating::getCanBusData(const std::vector<protocol::CanBusItem>& request,
                                            std::vector<protocol::CanBusItem>& frames,
                                            unsigned int timeoutMs) {
    const Expecting expecting(state_, &ClientState::canFrames);
    return ask<ClientCommandCanBusData, Answer>(protocol::CanBusData{request}, timeoutMs,
                                                &ClientState::owedAnswers, {Answer::canValues},
                                                forgetting(&ClientState::canFrames)) &&
           awaitData(clientsend::withExtra(timeoutMs, canExtraMs),
                     [&](ClientState& state) { return take(state.canFrames, frames); });
}

bool ClientExternalOperating::sendCanBusMsg(const protocol::CanBusSend& message,
                                            unsigned int timeoutMs) {
    return send<CommandCanBusSend>(message, timeoutMs);
}

bool ClientExternalOperating::setEcuSegment(const std::string& segment, bool flag) {
    protocol::EcuSegment request;
    request.segment = segment;
    request.flag = flag;
    return send<ClientCommandEcuSegment>(request, segmentMs);
}

bool ClientExternalOperating::startEdit(const protocol::StartEdit& model) {
    const bool opened = send<CommandStartEdit>(model, editMs);
    // Even if that failed: the session before it is over. But QOR is the same, and what it owes
    // beside parameters may still come.
    clientsend::beginEpoch(*state_.lock());
    return opened;
}
