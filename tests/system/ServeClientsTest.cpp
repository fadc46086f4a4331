// Several clients of "qorctl serve" at once: each has its own, and none holds another up.

#include <algorithm>

#include "ServeScene.h"

using nlohmann::json;
using testing::Contains;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr int taken = -32004;
constexpr int refused = -32005;
constexpr int ending = -32003;

/// Every read past the cache takes a while.
const char* const slowReads = R"({"rules":[{"match":{"id":18},"action":{"delayMs":100}}]})";
const json slowRead = {{"names", {"OilPressure"}}, {"timeoutMs", 5000}};

class ServeClients : public ServeScene {
protected:
    /// Whether QOR was asked to give back what it was asked for last.
    bool isGivenBack() const {
        const auto all = controls();
        return !all.empty() && all.back().find(" stop") != std::string::npos;
    }
    /// Of how many names QOR sends values, as it was told last.
    std::ptrdiff_t streamedNames() const {
        std::string last;
        for (const std::string& line : station.requests())
            if (line.find("SetParamList") == 0) last = line;
        return std::max<std::ptrdiff_t>(0, std::count(last.begin(), last.end(), ' '));
    }
};

INSTANTIATE_TEST_SUITE_P(Over, ServeClients, everyTransport(), transportName);

TEST_P(ServeClients, AreToldWhoTheyAreAndHowThingsStand) {
    serveHttp();
    const auto one = visitor();
    const auto two = visitor();
    EXPECT_NE(one->name(), two->name());
    EXPECT_EQ(32u, one->name().size());
    EXPECT_EQ(false, one->hello()["readOnly"]);
    EXPECT_TRUE(one->hello()["version"].is_string());
    EXPECT_TRUE(one->awaitEvent("state", [](const json& told) {
        return told["isEcuOnline"] == false && told["isConnecting"] == false;
    }));
    one->resultOf("connect");
    for (RpcPeer* const each :
         {static_cast<RpcPeer*>(peer.get()), static_cast<RpcPeer*>(two.get())})
        EXPECT_TRUE(
            each->awaitEvent("state", [](const json& told) { return told["isEcuOnline"]; }));
}

TEST_P(ServeClients, FollowAConnectOfSomebodyElse) {
    station.settings.connectMs = 1500;
    serveHttp();
    const auto one = visitor();
    const auto two = visitor();
    one->resultOf("connect");
    EXPECT_TRUE(two->awaitEvent("connectProgress", [](const json& told) {
        return told["elapsedMs"].get<int>() > 500 && told.contains("figure") &&
               told.contains("steps");
    }));
    EXPECT_TRUE(two->awaitEvent("state", [](const json& told) { return told["isConnecting"]; }));
}

TEST_P(ServeClients, AreToldTheHostsLog) {
    serveHttp();
    const auto one = visitor();
    peer->ask("getParamData", {{"name", "Nobody"}});
    EXPECT_TRUE(one->awaitEvent("log", [](const json& told) {
        return told["line"].get<std::string>().find("FAILED") == 0;
    }));
}

TEST_P(ServeClients, HaveStreamsOfTheirOwn) {
    serveHttp();
    connectEcu();
    const auto one = visitor();
    const auto two = visitor();
    const json first = one->resultOf("startParamRead", {{"names", {"EngineSpeed"}}})["stream"];
    two->resultOf("startParamRead", {{"names", {"EngineSpeed", "EngineLoad"}}});
    const auto isOf = [](std::size_t names) {
        return [names](const json& told) {
            return std::any_of(told["samples"].begin(), told["samples"].end(),
                               [&](const json& each) { return each[0] == names - 1; });
        };
    };
    EXPECT_TRUE(one->awaitEvent("values", isOf(1)));
    EXPECT_TRUE(two->awaitEvent("values", isOf(2)));
    for (const json& told : one->eventsOf("values")) EXPECT_EQ(first, told["stream"]);
    EXPECT_THAT(peer->eventsOf("values"), IsEmpty());
    EXPECT_EQ(-32602, two->errorOf("stopParamRead", {{"stream", first}}));
    EXPECT_EQ(2, streamedNames());
}

TEST_P(ServeClients, AreToldTroubleCodesTheFirstListAndEachThatDiffers) {
    serveHttp();
    connectEcu();
    const auto one = visitor();
    const json stream =
        one->resultOf("startDtcRead", {{"periodMs", 100}, {"timeoutMs", 1000}})["stream"];
    const auto hasCodes = [&](std::size_t count) {
        return [stream, count](const json& told) {
            return told["stream"] == stream && told["dtcs"].size() == count;
        };
    };
    EXPECT_TRUE(one->awaitEvent("dtcs", hasCodes(5)));
    peer->resultOf("clearDtc");
    EXPECT_TRUE(one->awaitEvent("dtcs", hasCodes(0)));
    Sleep(500);
    EXPECT_EQ(2u, one->eventsOf("dtcs").size());
    one->resultOf("stopDtcRead", {{"stream", stream}});
}

TEST_P(ServeClients, FollowTheTrace) {
    serveHttp();
    const auto one = visitor();
    one->resultOf("startTraceRead");
    peer->ask("getParamData", {{"name", "NobodyWhomTheTraceNames"}});
    EXPECT_TRUE(one->awaitEvent("trace", [](const json& told) {
        return told["lines"].dump().find("NobodyWhomTheTraceNames") != std::string::npos;
    }));
}

TEST_P(ServeClients, ThatDoNotStayMayHoldNothing) {
    serveHttp();
    const json calls = json::parse(R"([["startDirectCtrl", ["CoolingFan"]],
        ["startParamRead", [["EngineSpeed"]]], ["startDtcRead", []], ["startTraceRead", []]])");
    for (const auto& call : calls) {
        const json answer = json::parse(post(requestOf(1, call[0], call[1]).dump()).body);
        EXPECT_THAT(answer, IsError(refused)) << call;
    }
    EXPECT_THAT(controls(), IsEmpty());
    EXPECT_EQ(850, json::parse(post(requestOf(1, "getParamData", {"IdleSpeedTarget"}).dump())
                                   .body)["result"]["values"][0]);
}

TEST_P(ServeClients, HaveTheirTurnsThoughOneAsksALot) {
    station.script = slowReads;
    serveOurs({"--listen", "127.0.0.1:0"});
    const std::string err = process->errSoFar();
    port =
        static_cast<unsigned short>(std::stoi(err.substr(err.find("listening on http://") + 30)));
    std::string lines;
    for (int i = 0; i < 100; ++i)
        lines += requestOf(i, "getParamDataAtOnce", slowRead).dump() + "\n";
    process->write(lines);  // ten seconds' worth
    const auto one = visitor();
    for (int i = 0; i < 5; ++i) {
        const unsigned took = elapsedMsOf([&] { one->resultOf("pingQor"); });
        EXPECT_LT(took, 600u);
    }
    EXPECT_LT(elapsedMsOf([&] { one->resultOf("getState"); }), 200u);
    process->kill();
}

TEST_P(ServeClients, CannotTakeWhatAnotherOneHasAndAreTold) {
    serveHttp();
    const auto one = visitor();
    const auto two = visitor();
    one->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
    EXPECT_EQ(taken, two->errorOf("startDirectCtrl", {{"name", "CoolingFan"}}));
    EXPECT_EQ(taken, peer->errorOf("startDirectCtrl", {{"name", "CoolingFan"}}));
    two->resultOf("startDirectCtrl", {{"name", "PurgeValve"}});
    const auto says = [](bool isHeld, bool isOwn) {
        return [isHeld, isOwn](const json& told) {
            return told["name"] == "CoolingFan" && told["held"] == isHeld && told["own"] == isOwn;
        };
    };
    EXPECT_TRUE(one->awaitEvent("control", says(true, true)));
    EXPECT_TRUE(two->awaitEvent("control", says(true, false)));
    EXPECT_TRUE(peer->awaitEvent("control", says(true, false)));
    // Giving back is the safe direction: everybody may.
    two->resultOf("stopDirectCtrl", {{"name", "CoolingFan"}});
    EXPECT_TRUE(one->awaitEvent("control", says(false, true)));
    two->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
}

TEST_P(ServeClients, ThatVanishGiveBackWhatTheyHadAndEndTheirStreams) {
    serveHttp();
    connectEcu();
    auto one = visitor();
    const auto two = visitor();
    two->resultOf("startParamRead", {{"names", {"EngineSpeed"}}});
    one->resultOf("startParamRead", {{"names", {"EngineSpeed", "EngineLoad", "OilPressure"}}});
    one->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
    one->resultOf("setDynamicData", {{"name", "CoolingFan"}, {"value", "2"}});
    EXPECT_EQ(3, streamedNames());
    one->vanish();
    EXPECT_TRUE(eventually(4000, [&] { return isGivenBack(); }));
    EXPECT_TRUE(two->awaitEvent("control", [](const json& told) { return !told["held"]; }));
    EXPECT_TRUE(eventually(4000, [&] { return streamedNames() == 1; })) << streamedNames();
    EXPECT_EQ(0, freshValueOf("CoolingFan"));
    const std::size_t before = two->countOf("values");
    EXPECT_TRUE(eventually(3000, [&] { return two->countOf("values") > before + 5; }));
    const HttpAnswer late =
        post(requestOf(1, "getState").dump(), "X-Qor-Client: " + one->name() + "\r\n");
    EXPECT_EQ(404, late.status);
}

// A second taking that QOR refuses changes nothing about the first.
TEST_P(ServeClients, ThatVanishGiveBackWhatTheyHadAskedForTwice) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":2,"nth":2},
                                   "action":{"answer":"refuse"}}]})";
    serveHttp();
    auto one = visitor();
    one->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
    EXPECT_EQ(-32000, one->errorOf("startDirectCtrl", {{"name", "CoolingFan"}}));
    EXPECT_EQ(taken, peer->errorOf("startDirectCtrl", {{"name", "CoolingFan"}}));
    one->vanish();
    EXPECT_TRUE(eventually(4000, [&] { return isGivenBack(); }));
    EXPECT_EQ(3u, controls().size());
}

// A long message takes its time to be read: its client may have gone by then.
TEST_P(ServeClients, ThatVanishWhileTheirMessageIsReadHoldNothing) {
    serveHttp();
    std::string body = "[" + requestOf(1, "startDirectCtrl", {"CoolingFan"}).dump() + ",[0";
    for (int i = 0; i < 300000; ++i) body += ",1.5";
    body += "]]";
    for (unsigned delayMs = 0; delayMs < 200; delayMs += 10) {
        auto one = visitor();
        HttpClient client(port);
        client.send(httpRequest("POST", "/rpc", "X-Qor-Client: " + one->name() + "\r\n", body));
        Sleep(delayMs);
        one->vanish();
        client.readAnswer(5000);
        ASSERT_TRUE(
            eventually(3000, [&] { return peer->resultOf("getServerStatus")["clients"] == 1; }));
        peer->resultOf("pingQor");
        EXPECT_EQ(json::array(), peer->resultOf("getServerStatus")["controls"]) << delayMs;
    }
}

TEST_P(ServeClients, ThatVanishLeaveNobodyWaitingAndTheirConnectIsCancelled) {
    station.settings.connectMs = 20000;
    serveHttp();
    auto one = visitor();
    auto connect = one->begin("connect", json::object());
    ASSERT_TRUE(one->awaitEvent("state", [](const json& told) { return told["isConnecting"]; }));
    auto waiting = one->begin("pingQor", json::object());
    Sleep(200);
    one->vanish();
    EXPECT_LT(elapsedMsOf([&] {
                  EXPECT_THAT(waiting.get(), IsError(ending));
                  EXPECT_EQ("cancelled", connect.get()["error"]["data"]["name"]);
                  EXPECT_TRUE(peer->resultOf("pingQor").is_object());
              }),
              5000u);
}

TEST_P(ServeClients, CancelTheirOwnConnectAndNoOther) {
    station.settings.connectMs = 1500;
    serveHttp();
    const auto one = visitor();
    const auto two = visitor();
    auto connect = one->begin("connect", json::object());
    ASSERT_TRUE(one->awaitEvent("state", [](const json& told) { return told["isConnecting"]; }));
    two->resultOf("cancelConnect");
    peer->resultOf("cancelConnect");
    EXPECT_TRUE(connect.get().contains("result"));
}

TEST_P(ServeClients, GiveBackWhenTheirLeaseIsOver) {
    serveHttp();
    const auto one = visitor();
    one->resultOf("startDirectCtrl", {{"name", "CoolingFan"}, {"leaseMs", 800}});
    for (int i = 0; i < 6; ++i) {
        Sleep(300);
        one->resultOf("renewDirectCtrl", {{"name", "CoolingFan"}, {"leaseMs", 800}});
        EXPECT_FALSE(isGivenBack());
    }
    EXPECT_EQ(taken, peer->errorOf("renewDirectCtrl", {{"name", "CoolingFan"}, {"leaseMs", 800}}));
    const unsigned took = elapsedMsOf([&] {
        EXPECT_TRUE(one->awaitEvent("control", [](const json& told) { return !told["held"]; }));
    });
    EXPECT_GE(took, 700u);
    EXPECT_LE(took, 1800u);
    EXPECT_TRUE(eventually(1000, [&] { return isGivenBack(); }));
    EXPECT_EQ(taken, one->errorOf("renewDirectCtrl", {{"name", "CoolingFan"}, {"leaseMs", 800}}));
}

TEST_P(ServeClients, AreToldThatTheServerEnds) {
    serveHttp();
    const auto one = visitor();
    one->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
    const HttpClient idle(port);
    HttpClient half(port);
    half.send("POST /rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Le");
    EXPECT_EQ(refused, one->errorOf("shutdownServer"));
    const unsigned took = elapsedMsOf([&] { end(); });
    EXPECT_LT(took, 6000u);
    EXPECT_TRUE(one->awaitEvent("serverEnds", [](const json&) { return true; }));
    EXPECT_TRUE(eventually(3000, [&] { return one->isEnded(); }));
    EXPECT_TRUE(isGivenBack());
}

TEST_P(ServeClients, MayEndTheServerWhereThatIsAllowed) {
    serveHttp({"--allow-shutdown"});
    const auto one = visitor();
    EXPECT_TRUE(one->resultOf("shutdownServer").is_object());
    const auto ended = process->wait(10000);
    EXPECT_EQ(0, ended.exitCode) << ended.err;
}

}  // namespace
