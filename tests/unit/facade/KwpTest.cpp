#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using KwpCommand = QorControlFacade::KwpCommand;

class SendKwpCommand : public FacadeTest {
protected:
    void answers(const std::string& data, std::uint32_t failed) {
        const auto results = std::make_shared<channel::CmdDataKwp>(0u, KwpCommand{0x99, data, 0});
        results->failed = failed;
        after(37, [=](const Cmd& command) { ScriptedAgent::succeed(command, results); });
    }
    bool send() { return facade->sendKwpCommand(kwp, 500); }

    KwpCommand kwp{0x27, std::string("\x02\x00\x0A\xFF", 4), 9};
};

TEST_F(SendKwpCommand, TheRequestCarriesTheWholeRecordAndTheTimeout) {
    answers("", 0);
    start();
    send();
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, channel::Kind{20u});
    const auto& posted = dynamic_cast<channel::CmdDataKwp&>(*request.data);
    EXPECT_EQ(posted.timeoutMs, 500u);
    EXPECT_EQ(posted.service, 0x27u);
    EXPECT_EQ(posted.data, std::string("\x02\x00\x0A\xFF", 4));
    EXPECT_EQ(posted.failed, 9u);
}

TEST_F(SendKwpCommand, RequestAndAnswerAreLoggedByteByByteInBothLogs) {
    answers(std::string("\x67\x00\x80", 3), 0);
    start();
    EXPECT_TRUE(send());
    EXPECT_THAT(trace(), ElementsAre("1\tSending KWP = 0x27 [02 00 0A FF ]",
                                     "1\tAnswer on KWP = 0x27 [67 00 80 ], OK , t: 37 ms"));
    EXPECT_THAT(log.lines(), ElementsAre("info: KWP-send(0x27): [02 00 0A FF ]",
                                         "info: KWP-answer(0x27): [67 00 80 ], OK"));
}

TEST_F(SendKwpCommand, TheRequestIsOnItsWayBeforeItsLinesAreWritten) {
    failAlways();
    const auto seen = watchFirstLine();
    start();
    EXPECT_FALSE(send());
    EXPECT_EQ(seen->posted, 1u);
    EXPECT_EQ(seen->traced, 1u);  // the trace comes before the host's log
}

TEST_F(SendKwpCommand, AByteBelow16IsPrintedWithItsZero) {
    answers("\x0A", 0);
    kwp = {0x0A, "\x0A", 0};
    start();
    EXPECT_TRUE(send());
    EXPECT_THAT(trace(), ElementsAre("1\tSending KWP = 0x0A [0A ]",
                                     "1\tAnswer on KWP = 0x0A [0A ], OK , t: 37 ms"));
}

TEST_F(SendKwpCommand, EmptyDataIsAnEmptyPairOfBrackets) {
    answers("", 0);
    kwp = {0x10, "", 0};
    start();
    EXPECT_TRUE(send());
    EXPECT_EQ(trace().at(0), "1\tSending KWP = 0x10 []");
    EXPECT_EQ(trace().at(1), "1\tAnswer on KWP = 0x10 [], OK , t: 37 ms");
    EXPECT_EQ(log.lines().at(0), "info: KWP-send(0x10): []");
    EXPECT_EQ(log.lines().at(1), "info: KWP-answer(0x10): [], OK");
}

TEST_F(SendKwpCommand, AnExchangeThatTheEcuRefusedIsStillTrueWithItsVerdict) {
    for (const std::uint32_t failed : {1u, 0x80u}) {
        answers("\x7F", failed);
        start();
        EXPECT_TRUE(send());
        EXPECT_EQ(kwp.data, "\x7F");
        EXPECT_EQ(kwp.failed, failed);
        EXPECT_EQ(trace().back(), "1\tAnswer on KWP = 0x27 [7F ], Failed , t: 37 ms");
        EXPECT_EQ(log.lines().back(), "info: KWP-answer(0x27): [7F ], Failed");
        facade.reset();
    }
}

TEST_F(SendKwpCommand, AShorterOrLongerAnswerReplacesTheDataAndTheServiceStays) {
    for (const std::string& answer : {std::string(), std::string(1, '\0'), std::string(300, 'x')}) {
        answers(answer, 0);
        start();
        EXPECT_TRUE(send());
        EXPECT_EQ(kwp.data, answer);
        EXPECT_EQ(kwp.failed, 0);
        EXPECT_EQ(kwp.service, 0x27u);
        facade.reset();
    }
}

TEST_F(SendKwpCommand, AFailureLeavesTheRecord) {
    failAlways();
    start();
    EXPECT_FALSE(send());
    EXPECT_EQ(kwp.service, 0x27u);
    EXPECT_EQ(kwp.data, std::string("\x02\x00\x0A\xFF", 4));
    EXPECT_EQ(kwp.failed, 9);
}

TEST_F(SendKwpCommand, TenThousandBytesTravelAndAreLoggedForTheHost) {
    answers(std::string(10000, '\xAB'), 0);
    kwp.data = std::string(10000, '\x0F');
    start();
    EXPECT_TRUE(send());
    EXPECT_EQ(kwp.data, std::string(10000, '\xAB'));
    ASSERT_THAT(log.lines(), SizeIs(2));
    EXPECT_EQ(log.lines().at(0).size(), std::string("info: KWP-send(0x27): []").size() + 30000);
}

TEST_F(SendKwpCommand, WithoutALogTheLinesAreStillTraced) {
    answers("x", 0);
    facade = std::make_unique<QorControlFacade>("s", nullptr, 0u, hostPath);
    EXPECT_TRUE(send());
    EXPECT_THAT(trace(), SizeIs(2));
    EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
