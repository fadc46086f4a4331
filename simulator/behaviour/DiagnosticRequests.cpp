#include "behaviour/DiagnosticRequests.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace simulator {

namespace {

constexpr std::int32_t unknownCanValue = -1;
constexpr unsigned char negativeResponse = 0x7F;
constexpr unsigned char serviceNotSupported = 0x11;

const KwpServiceModel* findService(const EcuModel& model, const KwpPayload& request) {
    for (const KwpServiceModel& service : model.kwpServices) {
        const bool prefixFits =
            request.data.compare(0, service.dataPrefix.size(), service.dataPrefix) == 0;
        if (service.service == request.service && prefixFits) return &service;
    }
    return nullptr;
}

std::int32_t toInt32(double value) {
    constexpr auto lowest = static_cast<double>(std::numeric_limits<std::int32_t>::min());
    constexpr auto highest = static_cast<double>(std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(std::clamp(std::round(value), lowest, highest));
}

std::int32_t canValue(const Ecu& ecu, std::uint32_t canId) {
    for (std::size_t i = 0; i < ecu.model.canFrames.size(); ++i) {
        const CanModel& frame = ecu.model.canFrames[i];
        if (frame.canId != canId) continue;
        if (frame.source.empty()) return ecu.sentCanValues[i];
        const ParameterModel* source = ecu.parameters.find(frame.source);
        const auto index = static_cast<std::uint32_t>(ecu.parameters.indexOf(*source));
        return toInt32(ecu.parameters.firstValue(index) * frame.scale);
    }
    return unknownCanValue;
}

/// Up to four bytes of a frame as a little-endian number.
std::int32_t numberFrom(const std::string& data) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(data.size(), 4); ++i) {
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(data[i])) << 8U * i;
    }
    return static_cast<std::int32_t>(value);
}

}  // namespace

Outcome getTroubleCodes(Ecu& ecu, std::string_view payload) {
    TroubleCodesPayload request = TroubleCodesPayload::read(payload);
    request.codes = ecu.troubleCodes;
    return Outcome::data(request.write());
}

Outcome runRoutine(Ecu& ecu, std::string_view payload) {
    const RoutinePayload request = RoutinePayload::read(payload);
    if (request.routine != RoutinePayload::ClearTroubleCodes) {
        return Outcome::refused("there is no routine " + std::to_string(request.routine));
    }
    ecu.troubleCodes.clear();
    return Outcome::done();
}

// The exchange fails (which is an answer, too) when the ECU is offline, does not know the service
// or takes longer than the client is willing to wait.
Outcome execKwp(Ecu& ecu, std::string_view payload) {
    KwpPayload request = KwpPayload::read(payload);
    const KwpServiceModel* service = findService(ecu.model, request);
    std::uint32_t delayMs = 0;
    request.failed = true;
    if (!ecu.bootstrap.isOnline()) {
        request.data.clear();
    } else if (service == nullptr) {
        request.data = {static_cast<char>(negativeResponse),
                        static_cast<char>(request.service & 0xFFU),
                        static_cast<char>(serviceNotSupported)};
    } else if (service->delayMs > request.timeoutMs) {
        request.data.clear();
        delayMs = request.timeoutMs;
    } else {
        request.data = service->response;
        request.failed = service->failed;
        delayMs = service->delayMs;
    }
    Outcome outcome = Outcome::data(request.write());
    outcome.answerDelayMs = delayMs;
    return outcome;
}

Outcome canBusConnect(Ecu& ecu, std::string_view payload) {
    const CanConnectPayload request = CanConnectPayload::read(payload);
    if (request.busParam == 0) return Outcome::refused("the bus setting is 0");
    ecu.canBusOpen = true;
    return Outcome::done();
}

Outcome canBusData(Ecu& ecu, std::string_view payload) {
    if (!ecu.canBusOpen) return Outcome::refused("the CAN bus is not connected");
    CanDataPayload request = CanDataPayload::read(payload);
    for (CanItem& item : request.items) item.value = canValue(ecu, item.canId);
    return Outcome::data(request.write());
}

// A frame sent to an identifier that the model knows is what the next reading of it finds.
Outcome canBusSend(Ecu& ecu, std::string_view payload) {
    if (!ecu.canBusOpen) return Outcome::refused("the CAN bus is not connected");
    const CanSendPayload request = CanSendPayload::read(payload);
    for (std::size_t i = 0; i < ecu.model.canFrames.size(); ++i) {
        if (ecu.model.canFrames[i].canId == request.first) {
            ecu.sentCanValues[i] = numberFrom(request.data);
        }
    }
    return Outcome::done();
}

}  // namespace simulator
