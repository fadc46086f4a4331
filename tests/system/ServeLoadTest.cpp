// Many clients of "qorctl serve", and such that read nothing: bounded, and the others go on.

#include <list>

#include "ServeScene.h"

using nlohmann::json;

namespace {

const json twelve = {"EngineSpeed",        "EngineLoad",      "VehicleSpeed",
                     "CoolantTemperature", "OilTemperature",  "IntakeAirTemperature",
                     "ExhaustTemperature", "AmbientPressure", "ManifoldPressure",
                     "OilPressure",        "FuelPressure",    "BatteryVoltage"};
constexpr std::size_t mostClients = 64;

class ServeLoad : public ServeScene {
protected:
    /// What the figures say of values that clients have lost.
    double missedByAll() {
        const std::string text = get("/metrics").body;
        const std::string name = "\nqor_stream_values_missed_total ";
        const std::size_t at = text.find(name);
        return at == std::string::npos ? 0 : std::stod(text.substr(at + name.size()));
    }
    bool flowsFor(RpcPeer& client) {
        const std::size_t before = client.countOf("values");
        return eventually(5000, [&] { return client.countOf("values") > before + 10; });
    }
};

INSTANTIATE_TEST_SUITE_P(Over, ServeLoad, testing::Values(Transport::tcp), transportName);

TEST_P(ServeLoad, BoundsTheNumberOfClientsAndTakesTheNextWhenOneHasLeft) {
    serveHttp();
    std::list<HttpPeer> all;
    for (std::size_t i = 0; i < mostClients; ++i) all.emplace_back(port);
    EXPECT_EQ(503, get("/events").status);
    EXPECT_EQ(200, post(requestOf(1, "pingQor").dump()).status);
    all.pop_front();
    EXPECT_TRUE(eventually(5000, [&] {
        try {
            HttpPeer next(port);
            return true;
        } catch (const std::runtime_error&) {
            return false;
        }
    }));
}

TEST_P(ServeLoad, AnswersWhileTwoHundredConnectionsDoNothing) {
    serveHttp();
    const std::size_t before = process->memory();
    std::list<HttpClient> idle;
    for (int i = 0; i < 200; ++i) {
        idle.emplace_back(port);
        if (i % 2 == 0) idle.back().send("POST /rpc HTTP/1.1\r\n");
    }
    const auto one = visitor();
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(one->resultOf("pingQor").is_object());
    EXPECT_LT(elapsedMsOf([&] { one->resultOf("pingQor"); }), 500u);
    EXPECT_LT(process->memory(), before + 210 * (2u << 20));
    idle.clear();
    // Their threads end some time after they were needed last.
    EXPECT_TRUE(eventually(30000, [&] { return process->memory() < before + (60u << 20); }))
        << before << " -> " << process->memory();
}

TEST_P(ServeLoad, OfMoreConnectionsThanItTakesTellsTheOthersAtOnceAndRecovers) {
    serveHttp();
    std::list<HttpClient> idle;
    int turnedAway = 0;
    for (int i = 0; i < 320; ++i) {
        idle.emplace_back(port);
        if (i >= 290 && idle.back().readAnswer(1000).status == 503) ++turnedAway;
    }
    EXPECT_GT(turnedAway, 0);
    EXPECT_TRUE(peer->resultOf("pingQor").is_object());
    idle.clear();
    EXPECT_TRUE(
        eventually(5000, [&] { return post(requestOf(1, "pingQor").dump()).status == 200; }));
}

TEST_P(ServeLoad, AnswersManyAtOnce) {
    serveHttp();
    std::vector<std::future<json>> all;
    const auto one = visitor();
    const auto two = visitor();
    for (int i = 0; i < 50; ++i) {
        all.push_back(one->begin("getParamData", {"EngineSpeed"}));
        all.push_back(two->begin("pingQor", json::object()));
    }
    for (auto& each : all) EXPECT_TRUE(each.get().contains("result"));
}

// Its own values are lost and counted; those of the others are not.
TEST_P(ServeLoad, GoesOnForOthersWhileSomeReadNothing) {
    serveHttp();
    peer->resultOf("connect", {{"settings", {{"refreshPeriodMs", 50}}}});
    std::list<HttpPeer> stalled;
    for (int i = 0; i < 4; ++i) {
        stalled.emplace_back(port);
        for (int streams = 0; streams < 100; ++streams)
            stalled.back().resultOf("startParamRead", {{"names", twelve}, {"slots", 20}});
        stalled.back().stall(true);
    }
    const auto one = visitor();
    one->resultOf("startParamRead", {{"names", twelve}});
    ASSERT_TRUE(flowsFor(*one));
    ASSERT_TRUE(eventually(30000, [&] { return missedByAll() > 1000; }));
    const std::size_t early = process->memory();
    Sleep(4000);
    EXPECT_LT(process->memory(), early + (10u << 20));
    EXPECT_TRUE(flowsFor(*one));
    for (const json& told : one->eventsOf("values"))
        for (const json& sample : told["samples"]) EXPECT_EQ(0, sample[3]) << sample;
    EXPECT_LT(elapsedMsOf([&] { one->resultOf("pingQor", {{"timeoutMs", 5000}}); }), 2000u);
    HttpPeer& late = stalled.back();
    late.stall(false);
    EXPECT_TRUE(late.awaitEvent("values", [](const json& told) {
        return !told["samples"].empty() && told["samples"].back()[3].get<int>() > 0;
    }));
    EXPECT_LT(elapsedMsOf([&] { end(); }), 10000u);
}

TEST_P(ServeLoad, FreesWhatClientsHadThatComeAndGo) {
    serveHttp();
    connectEcu();
    const auto comeAndGo = [&](int times) {
        for (int i = 0; i < times; ++i) {
            HttpPeer client(port);
            client.resultOf("startParamRead", {{"names", twelve}});
            client.resultOf("startDirectCtrl", {{"name", "CoolingFan"}, {"timeoutMs", 2000}});
            client.vanish();
            ASSERT_TRUE(peer->awaitEvent("control", [](const json&) { return true; }));
            ASSERT_TRUE(eventually(
                4000, [&] { return peer->resultOf("getServerStatus")["controls"].empty(); }));
        }
    };
    // The library has 500 ms for its first look at a name, however long a client would wait.
    peer->resultOf("getParamDescription", {"CoolingFan"});
    comeAndGo(10);
    const std::size_t before = process->memory();
    comeAndGo(40);
    EXPECT_LT(process->memory(), before + (20u << 20));
    const json status = peer->resultOf("getServerStatus");
    EXPECT_EQ(0, status["streams"]);
    EXPECT_EQ(1, status["clients"]);
    EXPECT_EQ(100u, controls().size());
}

}  // namespace
