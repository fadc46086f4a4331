#include "behaviour/SessionRequests.h"

namespace simulator {

namespace {

constexpr std::int32_t bootstrapFailed = -2;

bool isConnection(const ConnectPayload& request) {
    const bool modeFits = request.mode == ConnectPayload::Normal ||
                          request.mode == ConnectPayload::Alternative ||
                          request.mode == ConnectPayload::Security;
    return modeFits && request.protocol >= 1 && request.protocol <= 4;
}

Outcome onlineState(const Ecu& ecu) {
    Outcome outcome;
    const double value = ecu.bootstrap.isOnline() ? 1.0 : 0.0;
    outcome.then.push_back({0, PushEffect{ParamDataPayload::Online, value}});
    return outcome;
}

TimedEffect editEffect(std::uint32_t afterMs, EditPayload::Stage stage,
                       std::optional<std::uint32_t> exportBytes) {
    EditEffect effect;
    effect.edit.stage = stage;
    effect.exportBytes = exportBytes;
    return {afterMs, effect};
}

}  // namespace

bool asksForConnection(std::string_view connectPayload) {
    return isConnection(ConnectPayload::read(connectPayload));
}

Outcome kwpConnect(Ecu& ecu, std::string_view payload, const BootstrapPlan& plan,
                   std::uint64_t answerMs) {
    const ConnectPayload request = ConnectPayload::read(payload);
    if (request.mode == ConnectPayload::Query) return onlineState(ecu);
    if (request.mode == ConnectPayload::Normal && request.protocol == 0) {
        ecu.disconnect();
        return Outcome::done();
    }
    if (!isConnection(request)) {
        return Outcome::refused("no connection with protocol " + std::to_string(request.protocol) +
                                " and mode " + std::to_string(request.mode));
    }
    BootstrapPlan actual = plan;
    const bool lacksDll = request.mode == ConnectPayload::Security && request.securityDll.empty();
    if (lacksDll) actual.result = bootstrapFailed;
    ecu.disconnect();
    ecu.subscription.setPeriod(request.refreshPeriodMs);
    ecu.bootstrap.start(actual, answerMs);
    return Outcome::done();
}

Outcome ping(Ecu& /*ecu*/, std::string_view /*payload*/) {
    return Outcome::done();
}

Outcome shutDown(Ecu& ecu, std::string_view payload) {
    const ShutdownPayload request = ShutdownPayload::read(payload);
    ecu.disconnect();
    ecu.canBusOpen = false;
    Outcome outcome;
    if ((request.flags & ShutdownPayload::EndProcess) != 0) {
        outcome.then.push_back({0, ExitEffect{0, true}});
        outcome.note = "told to end";
    }
    return outcome;
}

Outcome selectSegment(Ecu& ecu, std::string_view payload) {
    const SegmentPayload request = SegmentPayload::read(payload);
    if (request.segment == pageNames[0]) {
        ecu.parameters.select(Page::Working);
    } else if (request.segment == pageNames[1]) {
        ecu.parameters.select(Page::Reference);
    } else {
        return Outcome::refused("there is no segment \"" + request.segment + "\"");
    }
    return Outcome::unlessRefused(std::nullopt, request.write());
}

Outcome startEdit(Ecu& ecu, std::string_view payload) {
    const EditPayload request = EditPayload::read(payload);
    if (request.stage != EditPayload::Request) {
        return Outcome::refused("stage " + std::to_string(request.stage) + " opens nothing");
    }
    if (request.path.empty()) return Outcome::refused("the model has no path");
    ecu.openModel = request.path;
    const EditModel& edit = ecu.model.edit;
    EditEffect information;
    information.edit.stage = EditPayload::Information;
    information.edit.info = edit.info;
    Outcome outcome;
    outcome.then.push_back({edit.delayMs, information});
    if (edit.exportBytes) {
        outcome.then.push_back(editEffect(edit.delayMs, EditPayload::Export, edit.exportBytes));
    }
    if (edit.addExportBytes) {
        outcome.then.push_back(
            editEffect(edit.delayMs, EditPayload::AdditionalExport, edit.addExportBytes));
    }
    return outcome;
}

Outcome getHex(Ecu& ecu, std::string_view /*payload*/) {
    const auto info = [&](const char* key) {
        const auto found = ecu.model.edit.info.find(key);
        return found == ecu.model.edit.info.end() ? std::string() : found->second;
    };
    HexPayload hex;
    hex.word = ecu.openModel.empty() ? 0 : 1;
    hex.texts[0] = info("name");
    hex.texts[1] = info("version");
    hex.texts[2] = info("description");
    hex.texts[3] = ecu.openModel;
    return Outcome::data(hex.write());
}

Outcome messageBoxAnswered(Ecu& /*ecu*/, std::string_view payload) {
    Outcome outcome;
    outcome.note = "the user chose " + std::to_string(MessageBoxPayload::read(payload).result);
    return outcome;
}

}  // namespace simulator
