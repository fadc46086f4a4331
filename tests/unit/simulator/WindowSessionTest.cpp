#include "app/WindowSession.h"

#include <cstdio>
#include <fstream>
#include <memory>

#include "app/Clock.h"
#include "TestSupport.h"
#include "WindowClient.h"
#include "wire/RecordStream.h"

namespace simulator::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr UINT patienceMs = 5000;

Record recordOf(const WindowClient::Message& message) {
    RecordStream stream;
    stream.append(message.bytes);
    return stream.next().value();
}

std::string question() {
    ParamInfoPayload request;
    request.name = "Scalar";
    return Record{CommandId::GetParamInfo, false, 77, request.write()}.bytes();
}

// The simulated QOR on the test's thread, a client on another one.
class Station {
public:
    explicit Station(WindowAnswer way, const std::string& script = "{}",
                     AnswerStyle style = AnswerStyle::Stamped)
        : settings_(settingsFor(way)),
          model_(modelOf(smallModel())),
          recordLog_(logPath()),
          conversation_(model_, scriptOf(script, Transport::WindowMessages),
                        {style, 600, Transport::WindowMessages}, ExportFiles("unused"), recordLog_,
                        log_, nowMs()),
          session_(settings_, conversation_, recordLog_, log_),
          client_(std::make_unique<WindowClient>(settings_.clientTitle)) {}
    ~Station() {
        recordLog_ = RecordLog("");
        std::remove(logPath().c_str());
    }

    void turn() {
        session_.serve(20);
        conversation_.tick(nowMs());
        session_.sendWhatIsDue();
    }

    bool turnUntil(const std::function<bool()>& condition) {
        const DWORD startMs = GetTickCount();
        while (!condition()) {
            if (GetTickCount() - startMs > patienceMs) return false;
            turn();
        }
        return true;
    }

    std::future<int> clientSends(const std::string& bytes, DWORD tag = 3084,
                                 UINT flags = SMTO_BLOCK, UINT timeoutMs = patienceMs) {
        return client_->doing([this, bytes, tag, flags, timeoutMs] {
            return WindowClient::send(server(), tag, bytes, flags, timeoutMs);
        });
    }

    // Of a client that takes messages while it waits.
    std::size_t answersWhenTheRequestReturns() {
        const std::size_t before = client_->received().size();
        auto count = client_->doing([this] {
            WindowClient::send(server(), 3084, question(), SMTO_NORMAL, patienceMs);
            return client_->received().size();
        });
        turnUntil([&] { return isThere(count); });
        return count.get() - before;
    }

    // The result that the client gets.
    int result(const std::string& bytes, DWORD tag = 3084) {
        auto future = clientSends(bytes, tag);
        return turnUntil([&] { return isThere(future); }) ? future.get() : -2;
    }

    bool clientHas(std::size_t count) {
        return turnUntil([&] { return client_->received().size() >= count; });
    }

    std::vector<nlohmann::json> logged() {
        std::ifstream file(logPath());
        std::vector<nlohmann::json> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(nlohmann::json::parse(line));
        }
        return lines;
    }

    void clientLeaves() { client_.reset(); }
    void clientReturns() { client_ = std::make_unique<WindowClient>(settings_.clientTitle); }
    WindowClient& client() { return *client_; }
    WindowSession& session() { return session_; }

    HWND server() const { return FindWindowA(nullptr, settings_.serverTitle.c_str()); }

private:
    template <class Future>
    static bool isThere(const Future& future) {
        return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

    static Settings settingsFor(WindowAnswer way) {
        Settings settings;
        settings.transport = Transport::WindowMessages;
        settings.serverTitle = uniqueTitle("Qor");
        settings.clientTitle = uniqueTitle("Client");
        settings.windowAnswer = way;
        settings.windowSendMs = 200;
        return settings;
    }

    std::string logPath() const {
        return testing::TempDir() + "window-session-test-" + std::to_string(GetCurrentProcessId()) +
               ".jsonl";
    }

    Settings settings_;
    EcuModel model_;
    Log log_;
    RecordLog recordLog_;
    Conversation conversation_;
    WindowSession session_;
    std::unique_ptr<WindowClient> client_;
};

class EveryWayOfAnswering : public testing::TestWithParam<WindowAnswer> {};

std::string nameOf(const testing::TestParamInfo<WindowAnswer>& way) {
    if (way.param == WindowAnswer::Inside) return "Inside";
    return way.param == WindowAnswer::Released ? "Released" : "Later";
}

INSTANTIATE_TEST_SUITE_P(WindowSession, EveryWayOfAnswering,
                         testing::Values(WindowAnswer::Inside, WindowAnswer::Released,
                                         WindowAnswer::Later),
                         nameOf);

TEST_P(EveryWayOfAnswering, AClientThatBlocksGetsItsResultAndThenItsAnswerOnce) {
    Station station(GetParam());
    EXPECT_EQ(station.result(question()), 1);
    ASSERT_TRUE(station.clientHas(1));
    for (int i = 0; i < 5; ++i) station.turn();
    ASSERT_THAT(station.client().received(), SizeIs(1));
    const Record answer = recordOf(station.client().received()[0]);
    EXPECT_EQ(answer.id, CommandId::GetParamInfo);
    EXPECT_TRUE(answer.isReply);
    EXPECT_EQ(answer.requestId, 77U);
}

TEST_P(EveryWayOfAnswering, WhatCannotBeDoneHasTheResultZeroAndNoAnswer) {
    Station station(GetParam());
    EXPECT_EQ(station.result(Record{CommandId::EcuSegment, false, 1, ""}.bytes()), 0);
    for (int i = 0; i < 5; ++i) station.turn();
    EXPECT_THAT(station.client().received(), IsEmpty());
}

TEST_P(EveryWayOfAnswering, AnAnswerIsThereBeforeTheRequestReturnsOnlyWhenItComesFromInside) {
    Station station(GetParam());
    const std::size_t before = GetParam() == WindowAnswer::Inside ? 1 : 0;
    EXPECT_EQ(station.answersWhenTheRequestReturns(), before);
    EXPECT_TRUE(station.clientHas(1));
}

TEST(WindowSession, AScriptChoosesTheWayOfOneAnswer) {
    Station station(WindowAnswer::Later,
                    "{'rules': [{'match': {'nth': 1}, 'action': {'windowAnswer': 'inside'}}]}");
    EXPECT_EQ(station.answersWhenTheRequestReturns(), 1U);
    EXPECT_EQ(station.answersWhenTheRequestReturns(), 0U);
    EXPECT_TRUE(station.clientHas(2));
}

TEST(WindowSession, AMessageThatIsNoRecordIsRefusedAndLogged) {
    Station station(WindowAnswer::Released);
    EXPECT_EQ(station.result(question(), 3085), 0);
    EXPECT_EQ(station.result(question().substr(0, 11)), 0);
    EXPECT_EQ(station.result(bytesOf("00000000 00000000 FFFFFFFF")), 0);
    EXPECT_EQ(station.result(""), 0);
    const auto lines = station.logged();
    ASSERT_THAT(lines, SizeIs(4));
    EXPECT_EQ(lines[0]["tag"], 3085);
    EXPECT_EQ(lines[2]["raw"], "0000000000000000ffffffff");
    for (const auto& line : lines) EXPECT_EQ(line["result"], 0);
    EXPECT_THAT(station.client().received(), IsEmpty());
}

TEST(WindowSession, BytesBehindTheRecordDoNotCount) {
    Station station(WindowAnswer::Released);
    EXPECT_EQ(station.result(question() + question()), 1);
    ASSERT_TRUE(station.clientHas(1));
    for (int i = 0; i < 5; ++i) station.turn();
    EXPECT_THAT(station.client().received(), SizeIs(1));
}

TEST(WindowSession, TheLogTellsTheResultOfEveryMessageInBothDirections) {
    Station station(WindowAnswer::Released);
    station.client().onMessage([] { return 0; });
    EXPECT_EQ(station.result(question()), 1);
    ASSERT_TRUE(station.clientHas(1));
    station.turn();
    const auto lines = station.logged();
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[0]["dir"], "in");
    EXPECT_EQ(lines[0]["result"], 1);
    EXPECT_EQ(lines[1]["dir"], "out");
    EXPECT_EQ(lines[1]["result"], 0);
}

TEST(WindowSession, AHangHoldsTheSender) {
    Station station(WindowAnswer::Released,
                    "{'rules': [{'match': {'nth': 1}, 'action': {'hangMs': 400}}]}");
    auto hung = station.clientSends(question(), 3084, SMTO_BLOCK, 100);
    ASSERT_TRUE(station.clientHas(1));  // the answer comes all the same
    EXPECT_EQ(hung.get(), -1);
    EXPECT_EQ(station.result(question()), 1);
}

TEST(WindowSession, AClientThatHangsLosesItsAnswerAndNothingElse) {
    Station station(WindowAnswer::Later);
    station.client().onMessage([]() -> LRESULT {
        Sleep(500);
        return 1;
    });
    EXPECT_EQ(station.result(question()), 1);
    ASSERT_TRUE(station.turnUntil([&] { return station.logged().size() == 2; }));
    EXPECT_EQ(station.logged()[1]["failed"], "time-out");
    station.client().onMessage(nullptr);
    EXPECT_EQ(station.result(question()), 1);
    EXPECT_TRUE(station.clientHas(2));
}

TEST(WindowSession, AClientIsThereAsLongAsItsWindowIs) {
    Station station(WindowAnswer::Released,
                    "{'rules': [{'match': {}, 'action': {'delayMs': 300}}]}");
    station.turn();
    EXPECT_TRUE(station.session().hasClient());
    EXPECT_EQ(station.result(question()), 1);
    station.clientLeaves();
    ASSERT_TRUE(station.turnUntil([&] { return !station.session().hasClient(); }));
    station.clientReturns();
    ASSERT_TRUE(station.turnUntil([&] { return station.session().hasClient(); }));
    EXPECT_EQ(station.result(question()), 1);
    ASSERT_TRUE(station.clientHas(1));
    for (int i = 0; i < 20; ++i) station.turn();
    EXPECT_THAT(station.client().received(), SizeIs(1));  // what the first one asked for is dropped
}

TEST(WindowSession, AnAnswerForAClientThatHasGoneMeanwhileIsLostWithoutHarm) {
    Station station(WindowAnswer::Released,
                    "{'rules': [{'match': {}, 'action': {'hangMs': 500}}]}");
    station.turn();
    // The client goes while a request is being handled; another one sends it, so that it can.
    WindowClient stranger(uniqueTitle("Stranger"));
    auto result = stranger.doing([server = station.server()] {
        return WindowClient::send(server, 3084, question(), SMTO_BLOCK, patienceMs);
    });
    std::thread leaver([&] {
        while (station.logged().empty()) Sleep(5);
        station.clientLeaves();
    });
    EXPECT_TRUE(station.turnUntil([&] { return station.logged().size() == 2; }));
    leaver.join();
    EXPECT_EQ(result.get(), 1);
    EXPECT_EQ(station.logged().back()["failed"], "no client window");
    EXPECT_TRUE(station.turnUntil([&] { return !station.session().hasClient(); }));
}

TEST(WindowSession, AFloodReachesTheClientWholeAndTheClientIsServedMeanwhile) {
    Station station(WindowAnswer::Released,
                    "{'at': [{'since': 'client', 'flood': {'count': 300, 'seed': 5}}]}");
    station.client().onMessage([] { return 0; });
    ASSERT_TRUE(station.clientHas(10));
    EXPECT_EQ(station.result(question()), 1);
    ASSERT_TRUE(station.clientHas(301));
    station.turn();
    std::size_t refused = 0;
    for (const auto& line : station.logged()) {
        if (line["dir"] == "out" && line["result"] == 0) ++refused;
    }
    EXPECT_EQ(refused, 301U);
}

}  // namespace
}  // namespace simulator::test
