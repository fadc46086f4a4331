// How "qorctl serve" lets requests wait, cancels, and ends.

#include <atomic>
#include <thread>

#include "QorProcesses.h"
#include "ServeScene.h"

using nlohmann::json;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr int busy = -32001;
constexpr std::size_t longestLine = 100;

/// Every read past the cache takes a while.
const char* const slowReads = R"({"rules":[{"match":{"id":18},"action":{"delayMs":300}}]})";

class ServeWaiting : public ServeScene {
protected:
    /// Asks for so many slow reads without waiting; their ids are "slow 0" and so on.
    void askSlowly(std::size_t count) {
        std::string lines;
        for (std::size_t i = 0; i < count; ++i)
            lines += requestOf("slow " + std::to_string(i), "getParamDataAtOnce",
                               {{"names", {"OilPressure"}}, {"timeoutMs", 5000}})
                         .dump() +
                     "\n";
        process->write(lines);
    }
};

INSTANTIATE_TEST_SUITE_P(Over, ServeWaiting, everyTransport(), transportName);

TEST_P(ServeWaiting, TellsAtOnceThatTooManyRequestsWaitAndCarriesTheOthersOut) {
    station.script = slowReads;
    serveOurs();
    askSlowly(longestLine + 50);
    std::size_t refused = 0;
    EXPECT_TRUE(eventually(2000, [&] {
        for (const json& each : peer->takeResponses())
            if (each.contains("error") && each["error"]["code"] == busy) ++refused;
        return refused >= 45;
    })) << refused;
    EXPECT_LE(refused, 50u);
    // What needs no turn is answered meanwhile.
    EXPECT_LT(elapsedMsOf([&] { peer->resultOf("getState"); }), 250u);
    process->kill();
}

// A QOR that answers quickly: nothing is lost and nothing comes out of its turn.
TEST_P(ServeWaiting, AnswersInTheOrderOfTheRequests) {
    serve();
    std::string lines;
    for (int i = 0; i < 90; ++i)
        lines += requestOf(i, i % 3 == 0 ? "pingQor" : "getParamData",
                           i % 3 == 0 ? json::object() : json({"EngineSpeed"}))
                     .dump() +
                 "\n";
    process->write(lines);
    std::vector<int> ids;
    EXPECT_TRUE(eventually(20000, [&] {
        for (const json& each : peer->takeResponses()) ids.push_back(each["id"]);
        return ids.size() >= 90;
    }));
    EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
    EXPECT_EQ(90u, ids.size());
}

TEST_P(ServeWaiting, AnswersAllThatWasAskedWhenTheInputEnds) {
    station.script = slowReads;
    serve();
    askSlowly(8);
    process->write(requestOf("last", "getState").dump());  // without a line end
    const auto ended = end();
    const auto responses = peer->takeResponses();
    EXPECT_EQ(9u, responses.size());
    for (const json& each : responses) EXPECT_TRUE(each.contains("result")) << each;
    EXPECT_THAT(ended.err, HasSubstr("shut down"));
}

TEST_P(ServeWaiting, EndsInOrderAtCtrlCAndDoesNotCarryOutWhatWaits) {
    station.script = slowReads;
    serve();
    askSlowly(50);
    Sleep(400);
    process->raise(CTRL_C_EVENT);
    const auto ended = process->wait(8000);
    EXPECT_THAT(ended.err, HasSubstr("shut down"));
    std::size_t results = 0;
    for (const json& each : peer->takeResponses()) results += each.contains("result") ? 1 : 0;
    EXPECT_LT(results, 20u);
}

TEST_P(ServeWaiting, CancelsTheConnectThatItsClientWaitsFor) {
    station.settings.connectMs = 8000;
    serve();
    auto connect = peer->begin("connect", json::object());
    EXPECT_TRUE(eventually(3000, [&] { return peer->resultOf("getState")["isConnecting"]; }));
    EXPECT_LT(elapsedMsOf([&] {
                  EXPECT_EQ(json::object(), peer->resultOf("cancelConnect"));
                  const json ended = connect.get();
                  EXPECT_EQ("cancelled", ended["error"]["data"]["name"]) << ended;
              }),
              3000u);
    EXPECT_EQ(false, peer->resultOf("getState")["isConnecting"]);
    EXPECT_TRUE(peer->resultOf("pingQor").is_object());
}

TEST_P(ServeWaiting, CancelsAConnectThoughAnotherOneIsAskedForAtOnce) {
    station.settings.connectMs = 4000;
    serve();
    process->write(requestOf("first", "connect").dump() + "\n");
    EXPECT_TRUE(eventually(3000, [&] { return peer->resultOf("getState")["isConnecting"]; }));
    process->write(requestOf("cancel", "cancelConnect").dump() + "\n" +
                   requestOf("second", "connect").dump() + "\n");
    const json first = peer->await("first");
    ASSERT_TRUE(first.contains("error")) << first;
    EXPECT_EQ("cancelled", first["error"]["data"]["name"]);
    const json second = peer->await("second");
    EXPECT_TRUE(second.contains("result")) << second;
}

TEST_P(ServeWaiting, GivesActuatorsBackTheLastOneFirstWhenTheInputEnds) {
    serve();
    peer->resultOf("startDirectCtrl", {{"name", "ThrottleActuator"}});
    peer->resultOf("startDirectCtrl", {{"name", "CoolingFan"}});
    end();
    const auto all = controls();
    ASSERT_EQ(4u, all.size());
    EXPECT_EQ(all[1].substr(0, all[1].rfind(' ')) + " stop", all[2]);
    EXPECT_EQ(all[0].substr(0, all[0].rfind(' ')) + " stop", all[3]);
}

TEST_P(ServeWaiting, GivesActuatorsBackAtCtrlCAndWhenTheOutputIsClosed) {
    for (const bool isCtrlC : {true, false}) {
        serve();
        peer->resultOf("startDirectCtrl", {{"name", "ThrottleActuator"}});
        peer->resultOf("setDynamicData", {{"name", "ThrottleActuator"}, {"value", "30"}});
        if (isCtrlC)
            process->raise(CTRL_C_EVENT);
        else {
            process->closeOutput();
            Sleep(50);
            process->write(requestOf(1, "getState").dump() + "\n");
        }
        const auto ended = process->wait(8000);
        EXPECT_THAT(ended.err, Not(HasSubstr("NOT GIVEN BACK")));
        ASSERT_THAT(controls(), Not(IsEmpty())) << isCtrlC;
        EXPECT_THAT(controls().back(), EndsWith(" stop")) << isCtrlC;
        process.reset();
        peer.reset();
    }
}

TEST_P(ServeWaiting, EndsWhenItsOwnerIsGoneThoughAConnectGoesOn) {
    station.script = R"({"bootstrap":{"durationMs":120000,"steps":2}})";
    serve();
    process->write(requestOf(1, "connect").dump() + "\n");
    EXPECT_TRUE(eventually(5000, [&] { return peer->resultOf("getState")["isConnecting"]; }));
    process->closeInput();
    process->closeOutput();
    const auto ended = process->wait(20000);
    EXPECT_THAT(ended.err, HasSubstr("shut down"));
    process.reset();
    peer.reset();
}

TEST_P(ServeWaiting, EndsThoughItsOwnerReadsNothingAnyMore) {
    serve();
    process->readOutput(false);
    std::string batch;
    for (int i = 0; i < 40; ++i) batch += requestOf(i, "rpc.discover").dump() + "\n";
    process->write(batch);
    process->closeInput();
    const auto ended = process->wait(30000);
    EXPECT_THAT(ended.err, HasSubstr("shut down"));
    process.reset();
    peer.reset();
}

// It was asked for a second time while QOR hangs: it is still held, and must be given back.
TEST_P(ServeWaiting, GivesBackAnActuatorWhoseSecondTakingHasFailed) {
    station.script = R"({"rules":[{"match":{"id":7,"operation":2,"nth":2},
                                   "action":{"answer":"refuse"}}]})";
    serve();
    peer->resultOf("startDirectCtrl", {{"name", "ThrottleActuator"}});
    peer->ask("startDirectCtrl", {{"name", "ThrottleActuator"}});
    end();
    ASSERT_THAT(controls(), Not(IsEmpty()));
    EXPECT_THAT(controls().back(), EndsWith(" stop"));
}

/// Asks without end while nobody reads the answers.
class Flood {
public:
    explicit Flood(QorctlProcess& process)
        : thread_([this, &process] {
              std::string lines;
              for (int i = 0; i < 100; ++i) lines += requestOf(i, "rpc.discover").dump() + "\n";
              while (!isOver_ && process.write(lines)) ++rounds_;
          }) {}
    ~Flood() {
        isOver_ = true;
        thread_.join();
    }
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;

    int rounds() const { return rounds_; }
    void stop() { isOver_ = true; }

private:
    std::atomic<bool> isOver_{false};
    std::atomic<int> rounds_{0};
    std::thread thread_;
};

constexpr std::size_t mostMemory = 120u << 20;

TEST_P(ServeWaiting, KeepsItsMemoryBoundedWhileItsClientReadsNothing) {
    serve();
    process->readOutput(false);
    {
        Flood flood(*process);
        Sleep(3000);
        const int rounds = flood.rounds();
        EXPECT_GT(rounds, 0);
        EXPECT_LT(process->memory(), mostMemory);
        Sleep(1000);
        EXPECT_LT(process->memory(), mostMemory);
        flood.stop();
        process->readOutput(true);
    }
    EXPECT_TRUE(peer->resultOf("getState").is_object());
}

}  // namespace
