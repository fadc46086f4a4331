// The connection to the ECU, QOR itself, models, the CAN bus.

#include <map>
#include <utility>

#include "cinterface/Arguments.h"
#include "cinterface/OutBuffer.h"
#include "cinterface/Shell.h"
#include "cinterface/Text.h"
#include "facade/Quietly.h"
#include "qorcontrol/Waiting.h"

using cinterface::call;
using cinterface::callOn;
using cinterface::Cause;
using cinterface::checked;
using cinterface::ConnectRun;
using cinterface::optionalTextOf;
using cinterface::Outcome;
using cinterface::outcomeOf;
using cinterface::refuse;
using cinterface::refuseArgument;
using cinterface::Session;
using cinterface::timeOutOf;
using EcuConnect = QorControlFacade::EcuConnect;

namespace {

/// A connect that was cancelled needs so long at most: QOR has 10 s to take its request.
constexpr unsigned int cancelMs = 15000;

QorEcuConnect usualSettings() {
    QorEcuConnect usual = {};
    usual.size = sizeof usual;
    usual.protocol = 1;
    usual.protocolOption = 1;
    usual.optionFlag = 1;
    usual.kLineBaudRate = 10400;
    usual.canBaudRate = 125000;
    usual.refreshPeriodMs = 100;
    usual.canRequestId = 0xFFFFFFFFu;
    usual.canResponseId = 0xFFFFFFFFu;
    usual.addressByte1 = 255;
    usual.addressByte2 = 255;
    usual.addressWord = 255;
    usual.extraFlag = 1;
    usual.finalFlag = 1;
    return usual;
}

unsigned char byteOf(unsigned int value, const char* what) {
    if (value > 255) refuseArgument(std::string(what) + " is larger than 255");
    return static_cast<unsigned char>(value);
}

EcuConnect::ConnType typeOf(int type) {
    switch (type) {
        case QOR_CONNECT_DEFAULT:
            return EcuConnect::Default;
        case QOR_CONNECT_SECURITY_ACCESS:
            return EcuConnect::SecurityAccess;
        case QOR_CONNECT_ALTERNATIVE:
            return EcuConnect::Alternative;
        default:
            refuseArgument("type is none of QOR_CONNECT_...");
    }
}

EcuConnect settingsOf(const QorEcuConnect* given) {
    const QorEcuConnect usual = usualSettings();
    const QorEcuConnect& from = given == nullptr ? usual : checked(given, "settings");
    EcuConnect settings = {};
    settings.protocol = from.protocol;
    settings.protocolOption = from.protocolOption;
    settings.optionFlag = from.optionFlag != 0;
    settings.kLineBaudRate = from.kLineBaudRate;
    settings.canBaudRate = from.canBaudRate;
    settings.refreshPeriodMs = from.refreshPeriodMs;
    settings.canRequestId = from.canRequestId;
    settings.canResponseId = from.canResponseId;
    settings.addressByte1 = byteOf(from.addressByte1, "addressByte1");
    settings.addressByte2 = byteOf(from.addressByte2, "addressByte2");
    settings.addressWord = from.addressWord;
    settings.extraFlag = from.extraFlag != 0;
    settings.securityDll = optionalTextOf(from.securityDll, "securityDll");
    settings.finalFlag = from.finalFlag != 0;
    return settings;
}

std::map<std::string, std::string> extraOf(const QorModelDescription& model) {
    if (model.extraCount > cinterface::maxNames) cinterface::refuseCount("extraKeys");
    if (model.extraCount != 0) {
        cinterface::mustNotBeNull(model.extraKeys, "extraKeys");
        cinterface::mustNotBeNull(model.extraValues, "extraValues");
    }
    std::map<std::string, std::string> extra;
    for (unsigned int i = 0; i < model.extraCount; ++i) {
        const auto [entry, isNew] =
            extra.emplace(cinterface::textOf(model.extraKeys[i], "one of extraKeys"),
                          optionalTextOf(model.extraValues[i], "one of extraValues"));
        if (!isNew) refuseArgument("extraKeys has a key twice");
    }
    return extra;
}

QorControlFacade::ModelDescription modelOf(const QorModelDescription& from) {
    QorControlFacade::ModelDescription model = {};
    model.modelType = from.modelType;
    model.model = optionalTextOf(from.model, "model");
    model.modelOption = from.modelOption;
    model.hex = optionalTextOf(from.hex, "hex");
    model.hexOption = from.hexOption;
    model.csv = optionalTextOf(from.csv, "csv");
    model.csvOption = from.csvOption;
    model.extra = extraOf(from);
    return model;
}

/// Of a connect that the host did not cancel itself.
Outcome tooSlow(unsigned int timeoutMs) {
    Outcome outcome;
    outcome.cause = Cause::cancelled;
    outcome.sentence = "The connect was not at its end after " + std::to_string(timeoutMs) + " ms.";
    outcome.check =
        "Give more time; check ignition, cable and interface, and see what QOR itself reports.";
    return outcome;
}

/// The handle's last one; throws a Refusal if there was none.
std::shared_ptr<ConnectRun> connectOf(Session& session) {
    auto connect = session.lastConnect();
    if (connect == nullptr) refuse(Cause::wrongOrder, "there was no connect yet");
    return connect;
}

}  // namespace

int QOR_CALL QorEcuConnectDefaults(QorEcuConnect* settings) {
    return call([&]() -> Outcome {
        checked(settings, "settings") = usualSettings();
        return {};
    });
}

int QOR_CALL QorConnect(QorHandle handle, const QorEcuConnect* settings, int type,
                        unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) -> Outcome {
        const auto connect = session.startConnect(settingsOf(settings), typeOf(type));
        if (connect->awaitEnd(timeoutMs)) return connect->outcome();
        connect->cancel();
        if (!connect->awaitEnd(cancelMs)) return tooSlow(timeoutMs);
        Outcome outcome = connect->outcome();
        return outcome.cause == Cause::cancelled ? tooSlow(timeoutMs) : outcome;
    });
}

int QOR_CALL QorConnectStart(QorHandle handle, const QorEcuConnect* settings, int type) {
    return callOn(handle, [&](Session& session) -> Outcome {
        session.startConnect(settingsOf(settings), typeOf(type));
        return {};
    });
}

int QOR_CALL QorConnectPoll(QorHandle handle, QorConnectProgress* progress) {
    return callOn(handle, [&](Session& session) -> Outcome {
        QorConnectProgress& to = checked(progress, "progress");
        const auto connect = connectOf(session);
        Outcome outcome = connect->outcome();
        to.cause = static_cast<int>(outcome.cause);
        to.running = outcome.cause == Cause::notReady ? 1 : 0;
        to.progress = connect->seen().figure;
        to.steps = connect->seen().steps;
        to.elapsedMs = connect->elapsedMs();
        return {};
    });
}

int QOR_CALL QorConnectWait(QorHandle handle, unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) -> Outcome {
        const auto connect = connectOf(session);
        connect->awaitEnd(timeoutMs);
        return connect->outcome();
    });
}

int QOR_CALL QorConnectCancel(QorHandle handle) {
    return callOn(handle, [&](Session& session) -> Outcome {
        if (const auto connect = session.lastConnect()) connect->cancel();
        return {};
    });
}

int QOR_CALL QorConnectReason(QorHandle handle, char* text, unsigned int capacity,
                              unsigned int* needed) {
    return callOn(handle, [&](Session& session) -> Outcome {
        const cinterface::OutText out(text, capacity, needed, "text");
        const auto connect = session.lastConnect();
        const std::string reason = connect == nullptr ? std::string() : connect->reason();
        return out.put(cinterface::text::shownUtf8Of(reason));
    });
}

int QOR_CALL QorPingQor(QorHandle handle, unsigned int timeoutMs) {
    return callOn(handle, [&](Session& session) {
        return outcomeOf(session.facade().pingQor(timeOutOf(timeoutMs)));
    });
}

int QOR_CALL QorSetEcuSegment(QorHandle handle, const char* segment, int flag) {
    return callOn(handle, [&](Session& session) {
        const std::string name = cinterface::textOf(segment, "segment");
        return outcomeOf(quietly::setEcuSegment(session.state(), name, flag != 0));
    });
}

int QOR_CALL QorOpenModel(QorHandle handle, const QorModelDescription* model) {
    return callOn(handle, [&](Session& session) {
        return outcomeOf(
            qorcontrol::openModelAndWait(session.facade(), modelOf(checked(model, "model"))));
    });
}

int QOR_CALL QorConnectCanBus(QorHandle handle, const QorCanBusConnect* settings, int type) {
    return callOn(handle, [&](Session& session) {
        const QorCanBusConnect& from = checked(settings, "settings");
        const QorControlFacade::CanBusConnect bus = {from.busParam, from.firstFlag != 0,
                                                     from.secondFlag != 0};
        return outcomeOf(qorcontrol::connectCanBusAndWait(session.facade(), bus, typeOf(type)));
    });
}
