// Every method of "qorctl serve", with names and positions, against QOR's stand-in.

#include <algorithm>
#include <set>

#include "ServeScene.h"

using nlohmann::json;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr int failed = -32000;
constexpr int invalidParams = -32602;

class ServeMethods : public ServeScene {};

INSTANTIATE_TEST_SUITE_P(Over, ServeMethods, everyTransport(), transportName);

TEST_P(ServeMethods, TellTheStateWithoutAskingQor) {
    serve();
    const std::size_t before = station.requests().size();
    const json state = peer->resultOf("getState");
    EXPECT_EQ(false, state["isEcuOnline"]);
    EXPECT_EQ(false, state["isConnecting"]);
    EXPECT_EQ("WorkingPage", state["ramSegment"]);
    EXPECT_EQ("ReferencePage", state["romSegment"]);
    EXPECT_TRUE(state["version"].is_string());
    EXPECT_EQ(before, station.requests().size());
}

TEST_P(ServeMethods, ReadAndWriteValuesByNameAndByPosition) {
    serve();
    EXPECT_EQ(json({{"values", {850}}, {"second", json::array()}, {"third", json::array()}}),
              peer->resultOf("getParamData", {{"name", "IdleSpeedTarget"}, {"timeoutMs", 3000}}));
    EXPECT_EQ(json::object(),
              peer->resultOf("setParamData", json::array({"IdleSpeedTarget", json::array({900})})));
    EXPECT_EQ(900, peer->resultOf("getParamData", {"IdleSpeedTarget"})["values"][0]);
    peer->resultOf("setDynamicData", {{"name", "IdleSpeedTarget"}, {"value", "925"}});
    EXPECT_EQ(json::parse("[[925],[0.045]]"),
              peer->resultOf("getParamDataAtOnce",
                             {{"names", {"IdleSpeedTarget", "IdleSpeedGainP"}}})["values"]);
}

TEST_P(ServeMethods, ReadAndWriteCurvesAndMaps) {
    serve();
    const json curve = peer->resultOf("getParamData", {{"name", "DwellTime"}});
    EXPECT_EQ(json({7.2, 5.1, 3.8, 3, 2.5}), curve["values"]);
    EXPECT_EQ(json({8, 10, 12, 14, 16}), curve["second"]);
    EXPECT_EQ(48u, peer->resultOf("getParamData", {"IgnitionMap"})["values"].size());
    peer->resultOf("setParamData", {{"name", "DwellTime"},
                                    {"values", {7, 5, 4, 3, 2}},
                                    {"second", curve["second"]},
                                    {"third", curve["third"]}});
    EXPECT_EQ(json({7, 5, 4, 3, 2}), peer->resultOf("getParamData", {"DwellTime"})["values"]);
}

TEST_P(ServeMethods, DescribeParametersAndReadTexts) {
    serve();
    const json speed = peer->resultOf("getParamDescription", {{"name", "EngineSpeed"}});
    EXPECT_EQ("Engine speed", speed["meaning"]);
    EXPECT_EQ("1/min", speed["unit"]);
    EXPECT_EQ("Measurement", speed["group"]);
    EXPECT_EQ(false, speed["threeArrays"]);
    EXPECT_EQ(true, peer->resultOf("getParamDescription", {"IgnitionMap"})["threeArrays"]);
    const json text = peer->resultOf("getParamDataAsString", {{"name", "SoftwareVersion"}});
    EXPECT_EQ("4.12.7", text["text"]);
    EXPECT_THAT(text["bytes"], StartsWith("34 2E 31"));
}

TEST_P(ServeMethods, ConnectTheEcuAndTalkToIt) {
    serve();
    connectEcu();
    const json codes = peer->resultOf("getDtcByStatus", {{"timeoutMs", 2000}})["dtcs"];
    ASSERT_EQ(5u, codes.size());
    EXPECT_EQ(0x0113, codes[0]["code"]);
    EXPECT_EQ("Intake air temperature sensor: signal too high", codes[0]["texts"][1]);
    peer->resultOf("clearDtc");
    EXPECT_EQ(json::array(), peer->resultOf("getDtcByStatus")["dtcs"]);
    EXPECT_EQ(json({{"data", "50 85"}, {"failed", false}}),
              peer->resultOf("sendKwpCommand", {{"service", 0x10}, {"data", "85"}}));
    EXPECT_EQ(json({{"data", "7F 27 35"}, {"failed", true}}),
              peer->resultOf("sendKwpCommand", json::array({0x27, "02", 2000})));
}

TEST_P(ServeMethods, UseTheCanBus) {
    serve();
    peer->resultOf("connectCanBus", {{"busParam", 250000}});
    peer->resultOf("sendCanBusMsg", {{"first", 0x200}, {"second", 0}, {"message", "0A 01 00 00"}});
    const json items = peer->resultOf("getCanBusData", {{"canIds", {0x200, 0x201, 1}}})["items"];
    EXPECT_EQ(json::parse(R"([{"canId":512,"value":266},{"canId":513,"value":-40},
                              {"canId":1,"value":-1}])"),
              items);
}

TEST_P(ServeMethods, SwitchPagesAndOpenAModel) {
    serve();
    peer->resultOf("setParamData", {{"name", "IdleSpeedTarget"}, {"values", {1000}}});
    peer->resultOf("setEcuSegment", {{"segment", "ReferencePage"}});
    EXPECT_EQ(850, freshValueOf("IdleSpeedTarget"));
    peer->resultOf("setEcuSegment", {"WorkingPage"});
    EXPECT_EQ(1000, freshValueOf("IdleSpeedTarget"));
    peer->resultOf("openModel",
                   {{"model", station.folder.pathOf("x.a2l")}, {"extra", {{"mode", "test"}}}});
    const auto asked = station.requests();
    EXPECT_TRUE(std::any_of(asked.begin(), asked.end(), [](const std::string& line) {
        return line.find("StartEdit stage=7") == 0 && line.find("'mode':'test'") != line.npos;
    }));
}

TEST_P(ServeMethods, DriveAnActuatorUnderDirectControl) {
    serve();
    EXPECT_EQ(failed, peer->errorOf("setDynamicData", {{"name", "CoolingFan"}, {"value", "1"}}));
    peer->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
    peer->resultOf("setDynamicData", {{"name", "CoolingFan"}, {"value", "2"}});
    EXPECT_EQ(2, freshValueOf("CoolingFan"));
    peer->resultOf("stopDirectCtrl", {{"name", "CoolingFan"}});
    EXPECT_EQ(0, freshValueOf("CoolingFan"));
    EXPECT_EQ(2u, controls().size());
}

TEST_P(ServeMethods, FailWithTheCauseAndWhatToCheck) {
    serve();
    const json answer = peer->ask("getParamData", {{"name", "Nobody"}, {"timeoutMs", 500}});
    ASSERT_THAT(answer, IsError(failed));
    const json cause = answer["error"]["data"];
    EXPECT_EQ("unknownName", cause["name"]);
    EXPECT_TRUE(cause["code"].is_number_integer());
    EXPECT_THAT(cause["check"], HasSubstr("spelling"));
    EXPECT_EQ(cause["sentence"], answer["error"]["message"]);
    EXPECT_TRUE(cause["elapsedMs"].is_number_integer());
    EXPECT_EQ("kwpBeforeConnect",
              peer->ask("sendKwpCommand", {{"service", 0x3E}})["error"]["data"]["name"]);
    EXPECT_EQ("refused", peer->ask("setParamData", {{"name", "IdleSpeedTarget"},
                                                    {"values", {9e9}}})["error"]["data"]["name"]);
}

TEST_P(ServeMethods, TellThatQorWasSilentAndHowLong) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":1,"name":"OilPressure"},"action":)" +
                     silence(GetParam(), 3000) + "}]}";
    serve();
    const json cause = peer->ask("getParamData", {"OilPressure", 400})["error"]["data"];
    EXPECT_THAT(cause["name"], testing::AnyOf("qorSilent", "noData"));
    EXPECT_GE(cause["elapsedMs"], 350);
    EXPECT_LE(cause["elapsedMs"], 2500);
}

TEST_P(ServeMethods, RefuseWrongParametersAndNameThem) {
    serve();
    const auto why = [&](const char* method, const json& params) -> std::string {
        const json answer = peer->ask(method, params);
        EXPECT_THAT(answer, IsError(invalidParams)) << method << params;
        return answer["error"].value("message", "");
    };
    EXPECT_THAT(why("getParamData", json::object()), HasSubstr("name"));
    EXPECT_THAT(why("getParamData", {{"nam", "x"}}), HasSubstr("name"));
    EXPECT_THAT(why("getParamData", {{"name", 1}}), HasSubstr("name"));
    EXPECT_THAT(why("getParamData", {"EngineSpeed", -1}), HasSubstr("timeoutMs"));
    EXPECT_THAT(why("getParamData", {"EngineSpeed", 4294967296.0}), HasSubstr("timeoutMs"));
    EXPECT_THAT(why("getParamData", {"EngineSpeed", 1.5}), HasSubstr("timeoutMs"));
    EXPECT_THAT(why("getParamData", {"EngineSpeed", "1000"}), HasSubstr("timeoutMs"));
    EXPECT_THAT(why("getParamData", json::array({"EngineSpeed", 1000, 1})), HasSubstr("2"));
    EXPECT_THAT(why("setParamData", {"DwellTime", {1, "two"}}), HasSubstr("values[1]"));
    EXPECT_THAT(why("setParamData", {{"name", "DwellTime"}, {"values", 3}}), HasSubstr("values"));
    EXPECT_THAT(why("sendKwpCommand", {16, "8"}), HasSubstr("data"));
    EXPECT_THAT(why("connect", {{"settings", {{"kLineBaudRat", 3}}}}), HasSubstr("kLineBaudRate"));
    EXPECT_THAT(why("connect", {{"type", "default"}}), HasSubstr("Alternative"));
    EXPECT_THAT(why("startParamRead", {{"names", json::array()}}), HasSubstr("names"));
    EXPECT_THAT(why("getParamData", {"\xE4\xB8\xAD"}), HasSubstr("code page"));
}

TEST_P(ServeMethods, TakeNumbersThatJsonLacksAsTexts) {
    serve();
    for (const char* const number : {"NaN", "Infinity", "-Infinity"}) {
        const json answer =
            peer->ask("setParamData", {{"name", "LambdaTarget"}, {"values", {number}}});
        EXPECT_NE(invalidParams, answer.value("/error/code"_json_pointer, 0)) << answer;
    }
    EXPECT_EQ(invalidParams, peer->errorOf("setParamData", {"LambdaTarget", {"nan"}}));
}

TEST_P(ServeMethods, AreAllDescribedAndEveryDescribedOneIsThere) {
    serve();
    const json document = peer->resultOf("rpc.discover");
    EXPECT_THAT(document["openrpc"], StartsWith("1."));
    std::set<std::string> names;
    for (const json& method : document["methods"]) {
        const std::string name = method["name"];
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_FALSE(method["summary"].get<std::string>().empty()) << name;
        for (const json& param : method["params"])
            EXPECT_TRUE(param.contains("name") && param.contains("schema")) << param;
        // Whatever it is, it must not be unknown, and wrong words must not reach QOR.
        EXPECT_EQ(invalidParams, peer->errorOf(name, {{"no such parameter", 1}})) << name;
    }
    for (const char* const name : {"getState",           "connect",
                                   "cancelConnect",      "pingQor",
                                   "setEcuSegment",      "openModel",
                                   "connectCanBus",      "getParamDescription",
                                   "getParamData",       "getParamDataAsString",
                                   "getParamDataAtOnce", "setParamData",
                                   "setDynamicData",     "startDirectCtrl",
                                   "stopDirectCtrl",     "clearDtc",
                                   "getDtcByStatus",     "sendKwpCommand",
                                   "getCanBusData",      "sendCanBusMsg",
                                   "startParamRead",     "stopParamRead",
                                   "rpc.discover"})
        EXPECT_THAT(names, Contains(name));
}

// Every method that changes something, with words that would do it.
const json changes = json::parse(R"({
    "connect": {}, "setEcuSegment": ["ReferencePage"], "openModel": {"model": "x.a2l"},
    "connectCanBus": {}, "setParamData": ["IdleSpeedTarget", [900]],
    "setDynamicData": ["IdleSpeedTarget", "900"], "startDirectCtrl": ["CoolingFan"],
    "stopDirectCtrl": ["CoolingFan"], "clearDtc": {}, "sendKwpCommand": [16],
    "sendCanBusMsg": [512, 0, "01"]})");

TEST_P(ServeMethods, ThatChangeSomethingAreRefusedByAServerThatMayOnlyLook) {
    serve({"--read-only"});
    const auto before = station.requests();
    for (const auto& [method, params] : changes.items())
        EXPECT_EQ(-32002, peer->errorOf(method, params)) << method;
    EXPECT_EQ(before, station.requests());
    EXPECT_EQ(850, peer->resultOf("getParamData", {"IdleSpeedTarget"})["values"][0]);
    EXPECT_EQ(5u, peer->resultOf("getDtcByStatus")["dtcs"].size());
}

}  // namespace
