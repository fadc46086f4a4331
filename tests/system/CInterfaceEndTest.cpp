// What becomes of the C interface's waits when there is nobody left to answer them.

#include <atomic>
#include <thread>
#include <vector>

#include "CStation.h"

using testing::HasSubstr;

namespace {

constexpr unsigned amplyMs = 20000;

class CEnd : public testing::TestWithParam<Transport> {
protected:
    CStation station{GetParam()};

    QorHandle qor() const { return station.handle; }

    /// The first trouble codes never come.
    bool startWithoutFirstCodes() {
        station.script = R"({"rules":[{"match":{"id":9,"nth":1},"action":{"answer":"ackOnly"}}]})";
        return station.start();
    }
    /// Asks for them, which keeps the agent for three seconds.
    std::thread holdAgent() {
        return std::thread(
            [handle = qor()] { QorGetDtcByStatus(handle, 3000, nullptr, 0, nullptr); });
    }
    /// Of a settings file that is not there.
    void openInVain() {
        station.settings.executable.clear();  // there is no QOR whose end is awaited
        EXPECT_EQ(QOR_OK, station.open());
    }
};

INSTANTIATE_TEST_SUITE_P(Over, CEnd, everyTransport(), transportName);

TEST_P(CEnd, AWaitWithoutLimitEndsWithItsHandle) {
    ASSERT_TRUE(startWithoutFirstCodes());
    std::thread other = holdAgent();
    Sleep(200);
    std::atomic<int> cause{QOR_OK};
    std::thread waiting([&, handle = qor()] { cause = QorPingQor(handle, QOR_NO_LIMIT); });
    Sleep(200);
    EXPECT_EQ(QOR_OK, station.close());
    other.join();
    waiting.join();
    EXPECT_EQ(QOR_AGENT_ENDED, cause);
}

TEST_P(CEnd, AWaitWithoutLimitEndsWhenItsRequestIsPushedOut) {
    ASSERT_TRUE(startWithoutFirstCodes());
    std::thread holding = holdAgent();
    Sleep(200);
    std::atomic<int> cause{QOR_OK};
    std::thread waiting([&, handle = qor()] { cause = QorPingQor(handle, QOR_NO_LIMIT); });
    Sleep(100);
    std::vector<std::thread> others;
    for (int i = 0; i < 10; ++i) {
        others.emplace_back([handle = qor()] { QorPingQor(handle, 1500); });
        Sleep(30);
    }
    waiting.join();
    EXPECT_EQ(QOR_PUSHED_OUT, cause);
    for (auto& other : others) other.join();
    holding.join();
}

TEST_P(CEnd, TheFirstCallWithWrongSettingsFailsAsSoonAsThatIsKnown) {
    openInVain();
    const unsigned took =
        elapsedMsOf([&] { EXPECT_THAT(QorPingQor(qor(), 10000), IsCause(QOR_AGENT_ENDED)); });
    EXPECT_LT(took, 5000u);
    EXPECT_THAT(lastSentence(), HasSubstr("settings"));
}

TEST_P(CEnd, ReadersOfStreamsLearnThatTheAgentHasEnded) {
    openInVain();
    const char* const names[] = {"EngineSpeed"};
    QorStream stream = nullptr;
    const int started = QorStartParamRead(qor(), names, 1, 10, &stream);
    if (started != QOR_OK) GTEST_SKIP() << "the agent was quicker";
    QorSample sample = {};
    unsigned count = 0;
    const unsigned took = elapsedMsOf([&] {
        EXPECT_THAT(QorReadParamStream(stream, &sample, 1, &count, amplyMs),
                    IsCause(QOR_AGENT_ENDED));
    });
    EXPECT_LT(took, 5000u);
    EXPECT_THAT(lastSentence(), HasSubstr("settings"));
    EXPECT_THAT(QorReadParamStream(stream, &sample, 1, &count, 0), IsCause(QOR_AGENT_ENDED));
}

TEST_P(CEnd, AStreamOfTroubleCodesThatIsPushedOutIsTold) {
    ASSERT_TRUE(startWithoutFirstCodes());
    std::thread holding = holdAgent();
    Sleep(200);
    std::atomic<int> cause{QOR_OK};
    std::thread starting([&, handle = qor()] { cause = QorStartDtcRead(handle, 500, 200); });
    Sleep(100);
    std::vector<std::thread> others;
    for (int i = 0; i < 10; ++i) {
        others.emplace_back([handle = qor()] { QorPingQor(handle, 1500); });
        Sleep(30);
    }
    starting.join();
    EXPECT_EQ(QOR_PUSHED_OUT, cause);
    for (auto& other : others) other.join();
    holding.join();
    EXPECT_THAT(QorStartDtcRead(qor(), 500, 200), IsCause(QOR_OK));
    EXPECT_THAT(QorStopDtcRead(qor()), IsCause(QOR_OK));
}

}  // namespace
