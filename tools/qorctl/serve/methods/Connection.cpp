// The connection: QOR, the ECU, pages, models, the CAN bus.

#include <mutex>

#include "ConnectOptions.h"
#include "HostPaths.h"
#include "JsonText.h"
#include "qorcontrol/MessageBoxes.h"
#include "qorcontrol/Waiting.h"
#include "serve/methods/Common.h"
#include "serve/rpc/Failure.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;
using Effect = Method::Effect;
using Way = Method::Way;
using Connect = QorControlFacade::EcuConnect;

/// The client that asked cancels it, also by leaving.
class Monitor final : public IProgressMonitor {
public:
    Monitor(std::shared_ptr<Client> client, unsigned int cancels)
        : client_(std::move(client)), cancels_(cancels) {}

    void reserved1() override {}
    void reserved2() override {}
    void reserved3() override {}
    void reserved4() override {}
    void reserved5() override {}
    void reserved6() override {}
    bool isCancelled() override { return client_->isConnectCancelled(cancels_); }
    void reserved8() override {}
    void reserved9() override {}
    void reportError(const std::string&, unsigned int) override {}

private:
    const std::shared_ptr<Client> client_;
    const unsigned int cancels_;
};

Param typeParam() {
    Param type{"type", Kind::choice, "What to connect through"};
    type.choices = {"Default", "SecurityAccess", "Alternative"};
    return type.orElse("Default");
}

Connect::ConnType typeOf(const json& given) {
    if (given == "SecurityAccess") return Connect::SecurityAccess;
    return given == "Alternative" ? Connect::Alternative : Connect::Default;
}

/// What is not said is as QOR itself would have it.
Param settingsParam() {
    const ConnectOptions usual;
    Param settings{"settings", Kind::record, "How to reach the ECU"};
    settings.fields = {
        whole("protocol", "1 to 4; any other value is taken as 1").orElse(usual.protocol),
        whole("protocolOption", "QOR's word behind the protocol").orElse(usual.protocolOption),
        flag("optionFlag", "QOR's own").orElse(true),
        whole("kLineBaudRate", "bit/s").orElse(usual.kLineBaudRate),
        whole("canBaudRate", "bit/s").orElse(usual.canBaudRate),
        whole("refreshPeriodMs", "A value is reused for half of it").orElse(200),
        whole("canRequestId", "4294967295: none").orElse(usual.canRequestId),
        whole("canResponseId", "4294967295: none").orElse(usual.canResponseId),
        whole("addressByte1", "Its low 8 bits count").orElse(usual.addressByte1),
        whole("addressByte2", "Its low 8 bits count").orElse(usual.addressByte2),
        whole("addressWord", "QOR's own").orElse(usual.addressWord),
        flag("extraFlag", "QOR's own").orElse(true),
        text("securityDll", "Security-access library of the ECU, for SecurityAccess").orElse(""),
        flag("finalFlag", "QOR's own").orElse(true),
    };
    return settings.orElse(argumentsOf(settings.fields, nullptr));
}

Connect settingsOf(const json& given) {
    Connect settings = {};
    settings.protocol = wholeOf(given["protocol"]);
    settings.protocolOption = wholeOf(given["protocolOption"]);
    settings.optionFlag = given["optionFlag"];
    settings.kLineBaudRate = wholeOf(given["kLineBaudRate"]);
    settings.canBaudRate = wholeOf(given["canBaudRate"]);
    settings.refreshPeriodMs = wholeOf(given["refreshPeriodMs"]);
    settings.canRequestId = wholeOf(given["canRequestId"]);
    settings.canResponseId = wholeOf(given["canResponseId"]);
    settings.addressByte1 = static_cast<unsigned char>(wholeOf(given["addressByte1"]));
    settings.addressByte2 = static_cast<unsigned char>(wholeOf(given["addressByte2"]));
    settings.addressWord = wholeOf(given["addressWord"]);
    settings.extraFlag = given["extraFlag"];
    const std::string dll = ansiOf(given["securityDll"]);
    if (!dll.empty()) settings.securityDll = paths::absolute(dll);
    settings.finalFlag = given["finalFlag"];
    return settings;
}

Method connecting(const QorControlFacade& facade) {
    return {"connect",
            "Connects the ECU and waits for it; cancelConnect ends that",
            {settingsParam(), typeParam()},
            {},
            Way::inTurn,
            Effect::changes,
            [&facade](const json& given, const std::shared_ptr<Client>& client) {
                Monitor monitor(client, wholeOf(given["whenAsked"]));
                mustHaveWorked(
                    facade.connect(settingsOf(given["settings"]), typeOf(given["type"]), &monitor));
                return json::object();
            },
            [](const Client& client) { return json(client.cancels()); }};
}

Method cancelling() {
    return {"cancelConnect",
            "Cancels the connect that this client waits for",
            {},
            {},
            Way::atOnce,
            Effect::looks,
            [](const json&, const std::shared_ptr<Client>& client) {
                client->cancelConnect();
                return json::object();
            }};
}

Method pinging(const QorControlFacade& facade) {
    return {"pingQor",
            "Asks whether QOR answers",
            {timeoutMs()},
            {},
            Way::inTurn,
            Effect::looks,
            [&facade](const json& given, const auto&) {
                mustHaveWorked(facade.pingQor(wholeOf(given["timeoutMs"])));
                return json::object();
            }};
}

Method choosingPage(const QorControlFacade& facade) {
    return {
        "setEcuSegment",
        "Selects the memory page to work on",
        {text("segment", "One of the two names of the pages"),
         flag("flag", "QOR's own").orElse(false)},
        {},
        Way::inTurn,
        Effect::changes,
        [&facade](const json& given, const auto&) {
            mustHaveWorked(facade.setEcuSegment(ansiOf(given["segment"]), given["flag"], nullptr));
            return json::object();
        }};
}

Params modelParams() {
    return {whole("modelType", "1 to 5; 6 is taken as 2, any other value as 1").orElse(1),
            text("model", "Path of the model file"),
            whole("modelOption", "QOR's own").orElse(0xFFFFFFFFu),
            text("hex", "Path of the data file").orElse(""),
            whole("hexOption", "QOR's own").orElse(0),
            text("csv", "Path of the second data file").orElse(""),
            whole("csvOption", "QOR's own").orElse(0),
            Param{"extra", Kind::textMap, "Further entries for QOR"}.orElse(json::object())};
}

std::string pathOf(const json& given) {
    const std::string path = ansiOf(given);
    return path.empty() ? path : paths::absolute(path);
}

Method openingModel(const QorControlFacade& facade) {
    return {"openModel",
            "Lets QOR open a model, and waits for that; connect again afterwards",
            modelParams(),
            {},
            Way::inTurn,
            Effect::changes,
            [&facade](const json& given, const auto&) {
                QorControlFacade::ModelDescription model = {};
                model.modelType = wholeOf(given["modelType"]);
                model.model = pathOf(given["model"]);
                model.modelOption = wholeOf(given["modelOption"]);
                model.hex = pathOf(given["hex"]);
                model.hexOption = wholeOf(given["hexOption"]);
                model.csv = pathOf(given["csv"]);
                model.csvOption = wholeOf(given["csvOption"]);
                for (const auto& [key, value] : given["extra"].items())
                    model.extra[ansiOf(json(key))] = ansiOf(value);
                mustHaveWorked(qorcontrol::openModelAndWait(facade, model));
                return json::object();
            }};
}

Method openingBus(const QorControlFacade& facade) {
    return {"connectCanBus",
            "Opens the CAN bus, and waits for that",
            {whole("busParam", "Bus setting, a bit rate").orElse(500000),
             flag("firstFlag", "QOR's own").orElse(true),
             flag("secondFlag", "QOR's own").orElse(true), typeParam()},
            {},
            Way::inTurn,
            Effect::changes,
            [&facade](const json& given, const auto&) {
                mustHaveWorked(qorcontrol::connectCanBusAndWait(
                    facade, {wholeOf(given["busParam"]), given["firstFlag"], given["secondFlag"]},
                    typeOf(given["type"])));
                return json::object();
            }};
}

Method executablePath(QorControlFacade& facade) {
    return {"getQorExecutablePath",
            "Tells the path of QOR's executable",
            {},
            {text("path", "Empty where the settings name none")},
            Way::inTurn,
            Effect::looks,
            [&facade](const json&, const auto&) {
                return json{{"path", utf8Of(facade.getQorExecutablePath())}};
            }};
}

Method answeringBox(const QorControlFacade& facade) {
    return {
        "answerBox",
        "Answers a message box of QOR's, where the server was started with --boxes-to-clients",
        {whole("number", "Its number"), whole("choice", "The system's number of the button")},
        {},
        Way::atOnce,
        Effect::changes,
        [&facade](const json& given, const auto&) {
            if (!qorcontrol::answerBox(facade, wholeOf(given["number"]), wholeOf(given["choice"])))
                throw Failure{RpcCode::refused,
                              "that box does not wait for an answer of a client, or it has no "
                              "such button"};
            return json::object();
        }};
}

/// QOR ends direct control by itself, and tells nobody.
Method lettingGo(Method method) {
    method.letsEcuGo = true;
    return method;
}

}  // namespace

Methods connectionMethods(QorControlFacade& facade) {
    return {lettingGo(connecting(facade)),
            cancelling(),
            pinging(facade),
            choosingPage(facade),
            lettingGo(openingModel(facade)),
            openingBus(facade),
            executablePath(facade),
            answeringBox(facade)};
}

}  // namespace qorctl::serve
