// The first seconds of an agent: QOR's launch on a clock that the test's own time moves.

#include <gmock/gmock.h>
#include <stdexcept>
#include <vector>

#include "agent/QorProtocolAgent.h"
#include "support/FakeClock.h"
#include "support/TempFolder.h"

namespace {

/// An agent before QOR's windows, none of which is there.
class AgentStart : public ::testing::Test {
protected:
    AgentStart() {
        clock.onSleep = [this](unsigned int ms) { sleeps.push_back(ms); };
    }

    void start(const std::string& lines) {
        const std::string path =
            folder.write("qor.ini", "[CommonSettings]\r\nServerPipeName=nobody of " +
                                        folder.path() + "\r\n" + lines);
        QorProtocolAgent agent(std::make_shared<channel::Channel>(path, 200u));
        agent.start();
    }

    FakeClock clock;
    TempFolder folder;
    std::vector<unsigned int> sleeps;
};

TEST_F(AgentStart, GivesAQorThatDoesNotAnswerTenSecondsAndNoMore) {
    const std::uint32_t begin = clock.now();
    EXPECT_THROW(start("QORexecutable=client_start_probe.exe\r\n"), std::runtime_error);
    EXPECT_GE(clock.now() - begin, 10000u);
    EXPECT_LT(clock.now() - begin, 11000u);
}

TEST_F(AgentStart, LetsQorSettleForATenthOfASecond) {
    const std::uint32_t begin = clock.now();
    start("");
    ASSERT_FALSE(sleeps.empty());
    EXPECT_EQ(sleeps.front(), 100u);
    EXPECT_GE(clock.now() - begin, 100u);
}

}  // namespace
