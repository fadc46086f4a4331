// What the host guide says of costs: the requests that each operation makes of QOR, the first time
// and later.

#include <gmock/gmock.h>

#include <functional>

#include "Station.h"
#include "Waiting.h"

using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

using Facade = QorControlFacade;
using Requests = std::vector<std::string>;

constexpr unsigned amply = 5000;

/// The kinds of requests that a call makes, the first time and the second time.
struct Cost {
    const char* operation;
    std::function<bool(Facade&)> call;
    Requests first;
    Requests later;
    bool succeeds = true;
};

bool describe(Facade& qor, const std::string& name) {
    wex::ParamDescription found = {};
    return qor.getParamDescription(name, found);
}

bool read(Facade& qor, const std::string& name) {
    std::vector<double> values;
    return qor.getParamData(name, values, amply);
}

bool readText(Facade& qor) {
    std::string text;
    return qor.getParamDataAsString("EcuSerialNumber", text, amply);
}

bool readTogether(Facade& qor, const std::vector<std::string>& names) {
    std::vector<std::vector<double>> values;
    return qor.getParamDataAtOnce(names, values, amply);
}

bool kwp(Facade& qor) {
    Facade::KwpCommand command = {0x3E, "", 0};
    return qor.sendKwpCommand(command, amply);
}

bool readCodes(Facade& qor) {
    std::vector<Facade::DtcDescription> codes;
    return qor.getDtcByStatus(codes, amply);
}

bool readBus(Facade& qor) {
    Facade::CanBusData data = {{{0x200, 0}}};
    return qor.getCanBusData(data, amply);
}

const Cost costs[] = {
    {"pingQor", [](Facade& q) { return q.pingQor(amply); }, {"Ping"}, {"Ping"}},
    {"connectWithAMonitor",
     [](Facade& q) {
         FakeMonitor monitor;
         return q.connect(usualConnect(), Facade::EcuConnect::Default, &monitor);
     },
     {"KwpConnect"},
     {"KwpConnect"}},
    {"setEcuSegment",
     [](Facade& q) { return q.setEcuSegment(Facade::getEdcRamSegmentName(), true, nullptr); },
     {"EcuSegment"},
     {"EcuSegment"}},
    {"connectCanBus",
     [](Facade& q) {
         return q.connectCanBus({500000, true, false}, Facade::EcuConnect::Default) && readBus(q);
     },
     {"CanBusConnect", "CanBusData"},
     {"CanBusConnect", "CanBusData"}},
    {"getParamDescription",
     [](Facade& q) { return describe(q, "LambdaMap"); },
     {"GetParamInfo"},
     {}},
    {"getParamDescription_unknown",
     [](Facade& q) { return describe(q, "NoSuchParameter"); },
     {"GetParamInfo"},
     {},
     false},
    {"getParamData",
     [](Facade& q) { return read(q, "KnockRetard"); },
     {"GetParamInfo", "DirectCtrl"},
     {"DirectCtrl"}},
    {"getParamData_threeArrays",
     [](Facade& q) { return read(q, "PedalCurve"); },
     {"GetParamInfo", "StaticParam"},
     {"StaticParam"}},
    {"getParamDataAsString", readText, {"GetParamInfo", "DirectCtrl"}, {"DirectCtrl"}},
    {"setParamData",
     [](Facade& q) { return q.setParamData("FuelCutSpeed", {1600}, {}, {}, amply); },
     {"GetParamInfo", "DirectCtrl"},
     {"DirectCtrl"}},
    {"setParamData_threeArrays",
     [](Facade& q) {
         return q.setParamData("DwellTime", {7, 5, 4, 3, 2}, {6, 8, 10, 13, 16}, {}, amply);
     },
     {"GetParamInfo", "StaticParam"},
     {"StaticParam"}},
    {"setDynamicData",
     [](Facade& q) { return q.setDynamicData("CylinderCount", "6", amply); },
     {"GetParamInfo", "DirectCtrl"},
     {"DirectCtrl"}},
    {"startAndStopDirectCtrl",
     [](Facade& q) {
         return q.startDirectCtrl("CoolingFan", amply) && q.stopDirectCtrl("CoolingFan", amply);
     },
     {"GetParamInfo", "DirectCtrl", "DirectCtrl"},
     {"DirectCtrl", "DirectCtrl"}},
    {"getParamDataAtOnce",
     [](Facade& q) {
         return readTogether(q, {"EngineLoad", "OilPressure", "BatteryVoltage"});
     },
     {"GetParamInfo", "GetParamInfo", "GetParamInfo", "ReadTogether"},
     {"ReadTogether"}},
    {"getParamDataAtOnce_ofNothing", [](Facade& q) { return readTogether(q, {}); }, {}, {}},
    {"clearDtc",
     [](Facade& q) { return q.clearDtc(amply); },
     {"EcuToolRoutine"},
     {"EcuToolRoutine"}},
    {"getDtcByStatus", readCodes, {"GetDtc"}, {"GetDtc"}},
    {"sendKwpCommand", kwp, {"ExecKwp"}, {"ExecKwp"}},
    {"sendCanBusMsg",
     [](Facade& q) { return q.sendCanBusMsg(0x200, 0, "x", amply); },
     {"CanBusSend"},
     {"CanBusSend"}},
    {"state",
     [](Facade& q) {
         return q.isEcuOnline() && !q.isConnecting() && !q.getQorExecutablePath().empty();
     },
     {},
     {}},
    // The last, for it disconnects the ECU.
    {"openModel",
     [](Facade& q) {
         return q.openModel({1, "m.sdm", 0, "", 0, "", 0, {}}) && q.pingQor(amply);
     },
     {"KwpConnect", "Shutdown", "StartEdit", "Ping"},
     {"KwpConnect", "Shutdown", "StartEdit", "Ping"}},
};

/// The first word of each.
Requests kindsOf(Requests requests) {
    for (std::string& request : requests) request = request.substr(0, request.find(' '));
    return requests;
}

class GuideCosts : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};

    void expectRequests(const Cost& cost, const Requests& expected) {
        const std::size_t records = station.wire().size();
        EXPECT_EQ(cost.succeeds, cost.call(station.facade()));
        EXPECT_THAT(kindsOf(station.requests(records)), ElementsAreArray(expected));
    }
};

INSTANTIATE_TEST_SUITE_P(Over, GuideCosts, everyTransport(), transportName);

TEST_P(GuideCosts, AreThoseOfTheGuide) {
    ASSERT_TRUE(station.start());
    // Without a refresh period no value is reused.
    ASSERT_TRUE(station.connectEcu(0));
    for (const Cost& cost : costs) {
        const testing::ScopedTrace operation(__FILE__, __LINE__, cost.operation);
        expectRequests(cost, cost.first);
        expectRequests(cost, cost.later);
    }
}

TEST_P(GuideCosts, ACachedValueCostsNothingNotEvenTheAgent) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu(20000));
    ASSERT_TRUE(read(station.facade(), "KnockRetard"));
    const std::size_t records = station.wire().size();
    for (int i = 0; i < 100; ++i) ASSERT_TRUE(read(station.facade(), "KnockRetard"));
    EXPECT_THAT(station.requests(records), IsEmpty());
}

TEST_P(GuideCosts, AStreamCostsItsNamesAndOneListAndItsEndAnother) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu(200));
    ThreadSafeQueue<std::vector<Facade::ParamValue>> queue(1);
    for (const Requests& expected :
         {Requests{"GetParamInfo", "GetParamInfo", "SetParamList", "SetParamList", "Ping"},
          Requests{"SetParamList", "SetParamList", "Ping"}}) {
        const std::size_t records = station.wire().size();
        ASSERT_TRUE(station->startParamRead(&queue, {"EngineSpeed", "OilPressure"}));
        std::vector<Facade::ParamValue> values;
        // A stop within the round of the first values is not passed on to QOR.
        for (int i = 0; i < 2; ++i)
            ASSERT_TRUE(eventually(8000, [&] { return queue.pop(values, 100); }));
        ASSERT_TRUE(station->stopParamRead(&queue));
        ASSERT_TRUE(station->pingQor(amply));
        EXPECT_THAT(kindsOf(station.requests(records)), ElementsAreArray(expected));
        queue.clear();
    }
}

TEST_P(GuideCosts, WhatIsKnownOfNamesOutlivesAConnectButNotAModel) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(describe(station.facade(), "KnockRetard"));
    ASSERT_FALSE(describe(station.facade(), "NoSuchParameter"));
    ASSERT_TRUE(station.connectEcu(0));
    std::size_t records = station.wire().size();
    EXPECT_TRUE(describe(station.facade(), "KnockRetard"));
    EXPECT_FALSE(describe(station.facade(), "NoSuchParameter"));
    EXPECT_THAT(station.requests(records), IsEmpty());
    ASSERT_TRUE(station->openModel({1, "m.sdm", 0, "", 0, "", 0, {}}));
    ASSERT_TRUE(station->pingQor(amply));
    records = station.wire().size();
    EXPECT_TRUE(describe(station.facade(), "KnockRetard"));
    EXPECT_FALSE(describe(station.facade(), "NoSuchParameter"));
    EXPECT_THAT(kindsOf(station.requests(records)),
                ElementsAreArray(Requests{"GetParamInfo", "GetParamInfo"}));
}

TEST_P(GuideCosts, AFarewellIsTwoRequests) {
    ASSERT_TRUE(station.start());
    const std::size_t records = station.wire().size();
    station->shutdown();
    EXPECT_THAT(kindsOf(station.requests(records)),
                ElementsAreArray(Requests{"KwpConnect", "Shutdown"}));
}

}  // namespace
