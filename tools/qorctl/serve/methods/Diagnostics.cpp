// Trouble codes, KWP, CAN.

#include "HexText.h"
#include "JsonText.h"
#include "serve/methods/Common.h"
#include "TroubleCodes.h"

namespace qorctl::serve {
namespace {

using nlohmann::json;
using Effect = Method::Effect;
using Way = Method::Way;

Method readingCodes(const QorControlFacade& facade) {
    Param code{"dtcs", Kind::record, "The trouble codes"};
    code.fields = {whole("code", "Its number"), whole("status", "Its status"),
                   text("texts", "QOR's four texts").listed()};
    return {"getDtcByStatus",
            "Reads the trouble codes",
            {timeoutMs()},
            {code.listed()},
            Way::inTurn,
            Effect::looks,
            [&facade](const json& given, const auto&) {
                std::vector<QorControlFacade::DtcDescription> codes;
                mustHaveWorked(facade.getDtcByStatus(codes, wholeOf(given["timeoutMs"])));
                return json{{"dtcs", qorctl::jsonOf(codes)}};
            }};
}

Method clearingCodes(const QorControlFacade& facade) {
    return {"clearDtc",
            "Clears the trouble codes",
            {timeoutMs()},
            {},
            Way::inTurn,
            Effect::changes,
            [&facade](const json& given, const auto&) {
                mustHaveWorked(facade.clearDtc(wholeOf(given["timeoutMs"])));
                return json::object();
            }};
}

Method exchangingKwp(const QorControlFacade& facade) {
    return {"sendKwpCommand",
            "Sends a KWP request; works only after a connect",
            {whole("service", "Service identifier"),
             Param{"data", Kind::bytes, "Bytes of the request"}.orElse(""), timeoutMs()},
            {{"data", Kind::bytes, "Bytes of the answer"},
             flag("failed", "Whether the ECU reports the exchange as failed")},
            Way::inTurn,
            Effect::changes,
            [&facade](const json& given, const auto&) {
                QorControlFacade::KwpCommand kwp = {};
                kwp.service = wholeOf(given["service"]);
                kwp.data = bytesOf({given["data"].get<std::string>()});
                mustHaveWorked(facade.sendKwpCommand(kwp, wholeOf(given["timeoutMs"])));
                return json{{"data", hexOf(kwp.data)}, {"failed", kwp.failed != 0}};
            }};
}

Param canItems(const char* about) {
    Param item{"items", Kind::record, about};
    item.fields = {whole("canId", "CAN identifier"), {"value", Kind::signedWhole, "Its value"}};
    return item.listed();
}

Method readingCan(const QorControlFacade& facade) {
    return {"getCanBusData",
            "Reads the values of CAN identifiers",
            {whole("canIds", "CAN identifiers").listed(), timeoutMs()},
            {canItems("QOR's answer")},
            Way::inTurn,
            Effect::looks,
            [&facade](const json& given, const auto&) {
                QorControlFacade::CanBusData data;
                for (const json& each : given["canIds"]) data.items.push_back({wholeOf(each), 0});
                mustHaveWorked(facade.getCanBusData(data, wholeOf(given["timeoutMs"])));
                json items = json::array();
                for (const auto& each : data.items)
                    items.push_back({{"canId", each.canId}, {"value", each.value}});
                return json{{"items", std::move(items)}};
            }};
}

Method sendingCan(const QorControlFacade& facade) {
    return {"sendCanBusMsg",
            "Sends a CAN message",
            {whole("first", "QOR's first number"),
             whole("second", "QOR's second number"),
             {"message", Kind::bytes, "Bytes of the message"},
             timeoutMs()},
            {},
            Way::inTurn,
            Effect::changes,
            [&facade](const json& given, const auto&) {
                mustHaveWorked(facade.sendCanBusMsg(
                    wholeOf(given["first"]), wholeOf(given["second"]),
                    bytesOf({given["message"].get<std::string>()}), wholeOf(given["timeoutMs"])));
                return json::object();
            }};
}

}  // namespace

Methods diagnosticMethods(const QorControlFacade& facade) {
    return {readingCodes(facade), clearingCodes(facade), exchangingKwp(facade), readingCan(facade),
            sendingCan(facade)};
}

}  // namespace qorctl::serve
