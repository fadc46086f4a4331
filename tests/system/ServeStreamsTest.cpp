// Streams of "qorctl serve": values in their order, what was missed, and their end.

#include <map>

#include "QorProcesses.h"
#include "ServeScene.h"

using nlohmann::json;
using testing::HasSubstr;

namespace {

constexpr int invalidParams = -32602;
constexpr int failed = -32000;

const json twelve = {"EngineSpeed",        "EngineLoad",      "VehicleSpeed",
                     "CoolantTemperature", "OilTemperature",  "IntakeAirTemperature",
                     "ExhaustTemperature", "AmbientPressure", "ManifoldPressure",
                     "OilPressure",        "FuelPressure",    "BatteryVoltage"};

class ServeStreams : public ServeScene {
protected:
    /// The samples of a stream so far, each as it came.
    std::vector<json> samplesOf(const json& stream) {
        std::vector<json> all;
        for (const json& each : peer->eventsOf("values"))
            if (each["stream"] == stream)
                all.insert(all.end(), each["samples"].begin(), each["samples"].end());
        return all;
    }
    json startStream(const json& params) {
        return peer->resultOf("startParamRead", params)["stream"];
    }
};

INSTANTIATE_TEST_SUITE_P(Over, ServeStreams, everyTransport(), transportName);

TEST_P(ServeStreams, TellValuesInTheirOrderWithTheirTimes) {
    serve();
    connectEcu();
    const json stream = startStream({{"names", twelve}});
    ASSERT_TRUE(eventually(10000, [&] { return samplesOf(stream).size() >= 120; }));
    std::map<int, double> latest;
    for (const json& sample : samplesOf(stream)) {
        ASSERT_EQ(4u, sample.size()) << sample;
        const int name = sample[0];
        ASSERT_TRUE(name >= 0 && name < 12);
        EXPECT_TRUE(sample[1].is_number());
        EXPECT_GE(sample[2].get<double>(), latest[name]) << sample;
        latest[name] = sample[2];
        EXPECT_EQ(0, sample[3]) << "missed though it reads";
    }
    EXPECT_EQ(12u, latest.size());
}

TEST_P(ServeStreams, TellWhatQorHasSentAndNothingElse) {
    station.script = R"({"at":[{"since":"connect","afterMs":1500,"stall":"*"},
        {"since":"connect","afterMs":2500,"push":{"name":"IdleSpeedTarget","value":601}},
        {"since":"connect","afterMs":2600,"push":{"name":"IdleSpeedTarget","value":602}},
        {"since":"connect","afterMs":2700,"push":{"name":"IdleSpeedTarget","value":603}}]})";
    serve();
    connectEcu();
    const json stream = startStream({{"names", {"IdleSpeedTarget"}}});
    ASSERT_TRUE(eventually(8000, [&] {
        const auto all = samplesOf(stream);
        return !all.empty() && all.back()[1] == 603;
    }));
    const auto all = samplesOf(stream);
    ASSERT_GE(all.size(), 3u);
    EXPECT_EQ(601, all[all.size() - 3][1]);
    EXPECT_EQ(602, all[all.size() - 2][1]);
}

TEST_P(ServeStreams, EndWhenTheirClientStopsThemAndAreItsOwn) {
    serve();
    connectEcu();
    const json first = startStream({{"names", {"EngineSpeed"}}});
    const json second = startStream({{"names", {"EngineLoad", "EngineSpeed"}}, {"slots", 50}});
    EXPECT_NE(first, second);
    ASSERT_TRUE(eventually(5000, [&] { return samplesOf(first).size() > 3; }));
    peer->resultOf("stopParamRead", {{"stream", first}});
    const std::size_t before = samplesOf(first).size();
    const std::size_t others = samplesOf(second).size();
    ASSERT_TRUE(eventually(5000, [&] { return samplesOf(second).size() > others + 10; }));
    EXPECT_LE(samplesOf(first).size(), before + 1);
    EXPECT_EQ(invalidParams, peer->errorOf("stopParamRead", {{"stream", first}}));
    EXPECT_EQ(invalidParams, peer->errorOf("stopParamRead", {{"stream", 4711}}));
}

// One list of names for all streams: each new one, and each end, tells QOR what it needs anew.
TEST_P(ServeStreams, RegisterTheUnionOfTheirNamesOnce) {
    serve();
    connectEcu();
    startStream({{"names", {"EngineSpeed", "EngineLoad"}}});
    const json second = startStream({{"names", {"EngineLoad", "OilPressure"}}});
    ASSERT_TRUE(eventually(5000, [&] { return samplesOf(second).size() > 4; }));
    std::string last;
    for (const std::string& line : station.requests())
        if (line.find("SetParamList") == 0) last = line;
    const auto words = std::count(last.begin(), last.end(), ' ');
    EXPECT_GE(words, 3) << last;
    EXPECT_LE(words, 5) << last;
}

TEST_P(ServeStreams, OfUnknownNamesTellTheirTrouble) {
    serve();
    connectEcu();
    const json answer = peer->ask("startParamRead", {{"names", {"Nobody"}}});
    if (answer.contains("error")) {
        EXPECT_EQ("unknownName", answer["error"]["data"]["name"]);
        return;
    }
    EXPECT_TRUE(peer->awaitEvent("streamTrouble", [&](const json& told) {
        return told["stream"] == answer["result"]["stream"] &&
               told["cause"]["name"] == "unknownName" && told["cause"].contains("check");
    }));
}

TEST_P(ServeStreams, OfOneClientAreBounded) {
    serve();
    int begun = 0;
    int refusal = 0;
    for (; begun < 300 && refusal == 0; ++begun)
        refusal = peer->errorOf("startParamRead", {{"names", {"EngineSpeed"}}});
    EXPECT_EQ(-32001, refusal);
    EXPECT_LE(begun, 101);
    EXPECT_NE(
        0, peer->errorOf("startParamRead", {{"names", {"EngineSpeed"}}, {"slots", 4000000000u}}));
    EXPECT_NE(0, peer->errorOf("startParamRead", {{"names", json(200000, "EngineSpeed")}}));
}

// While it reads nothing, values of its own are lost, and counted.
TEST_P(ServeStreams, ThatNobodyReadsLoseValuesAndTellHowMany) {
    serve();
    peer->resultOf("connect", {{"settings", {{"refreshPeriodMs", 10}}}});
    json names = twelve;
    for (int i = 0; i < 20; ++i) names.push_back(twelve[i % 12]);
    const json stream = startStream({{"names", twelve}, {"slots", 100}});
    process->readOutput(false);
    // More than pipe and waiting lines hold, so that the server must let values go.
    std::string lines;
    for (int i = 0; i < 400; ++i) lines += requestOf(i, "rpc.discover").dump() + "\n";
    process->write(lines);
    const std::size_t before = process->memory();
    Sleep(4000);
    EXPECT_LT(process->memory(), before + (30u << 20));
    process->readOutput(true);
    EXPECT_TRUE(peer->awaitEvent("values", [&](const json& told) {
        return told["stream"] == stream && !told["samples"].empty() &&
               told["samples"].back()[3].get<int>() > 0;
    }));
    EXPECT_TRUE(peer->resultOf("getState").is_object());
}

}  // namespace
