#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class TroubleCodes : public ClientTest {
protected:
    TroubleCodes() { clock.msPerRead = 1; }

    void tell(std::uint32_t code) {
        CommandGetDTC answer;
        answer.dtcs = {{code, 5, "a", "b", "c", "d"}};
        qor.send(answer);
    }
    /// QOR answers every read so late, counted from the end of the send.
    void answersAfter(std::uint32_t ms) {
        qor.on<CommandGetDTC>([=](const CommandGetDTC&) {
            clock.after(ms, [=] { tell(0x1234); });
            return true;
        });
    }
    bool get(unsigned int timeoutMs = 500) { return client().getDtc(timeoutMs, dtcs, timeoutMs); }

    std::vector<protocol::DtcRecord> dtcs{{7, 7, "old", "", "", ""}};
};

TEST_F(TroubleCodes, TheRequestIsAnEmptyListAndTheOptionAndTakesTheCallersTime) {
    EXPECT_FALSE(get(321));
    ASSERT_THAT(qor.sentIds(), ElementsAre(9));
    EXPECT_THAT(qor.last<CommandGetDTC>().dtcs, IsEmpty());
    EXPECT_TRUE(qor.last<CommandGetDTC>().option);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 321u);
}

TEST_F(TroubleCodes, AllFieldsOfTheAnswerComeBack) {
    answersAfter(10);
    ASSERT_TRUE(get());
    ASSERT_THAT(dtcs, SizeIs(1));
    EXPECT_EQ(dtcs[0].code, 0x1234u);
    EXPECT_EQ(dtcs[0].status, 5u);
    EXPECT_EQ(dtcs[0].text1 + dtcs[0].text2 + dtcs[0].text3 + dtcs[0].text4, "abcd");
}

TEST_F(TroubleCodes, AnEmptyListIsAnAnswer) {
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) {
        qor.send(CommandGetDTC());
        return true;
    });
    EXPECT_TRUE(get());
    EXPECT_THAT(dtcs, IsEmpty());
}

TEST_F(TroubleCodes, AnAnswerThatWasThereBeforeTheRequestIsNotTaken) {
    client();
    tell(1);
    EXPECT_FALSE(get());
    answersAfter(10);
    ASSERT_TRUE(get());
    qor.on<CommandGetDTC>([](const CommandGetDTC&) { return true; });
    EXPECT_FALSE(get());
    EXPECT_EQ(dtcs.at(0).code, 0x1234u);
}

TEST_F(TroubleCodes, TheAnswerHasTheCallersTimeFromTheEndOfTheSend) {
    answersAfter(490);
    EXPECT_TRUE(get(500));
    answersAfter(520);
    EXPECT_FALSE(get(500));
}

TEST_F(TroubleCodes, ASendThatFailsFailsEvenIfTheAnswerCameMeanwhile) {
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) {
        tell(1);
        return false;
    });
    EXPECT_FALSE(get());
    EXPECT_EQ(dtcs.at(0).text1, "old");
}

TEST_F(TroubleCodes, WithoutALimitItWaitsUntilQorAnswers) {
    qor.on<CommandGetDTC>([this](const CommandGetDTC&) {
        soon([this] { tell(1); });
        return true;
    });
    EXPECT_TRUE(get(0xFFFFFFFFu));
}

TEST_F(TroubleCodes, ClearingRunsRoutineThreeAndTakesTheResultOfTheSend) {
    EXPECT_TRUE(client().clearDtc());
    ASSERT_THAT(qor.sentIds(), ElementsAre(8));
    EXPECT_EQ(qor.last<CommandEcuToolRoutine>().routine, 3u);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 400u);
    qor.acknowledges = false;
    EXPECT_FALSE(client().clearDtc());
}

TEST_F(TroubleCodes, OfAnotherThreadEndTheWaitForThem) {
    clock.msPerRead = 0;
    qor.whileAwaited = [this](common::Event& handled, unsigned int timeoutMs) {
        EXPECT_EQ(timeoutMs, 10u);
        EXPECT_FALSE(handled.wait(0));
        soon([this] { tell(0x1234); });
        EXPECT_TRUE(handled.wait(5000));
        qor.whileAwaited = [](auto&&...) { ADD_FAILURE() << "they are there"; };
    };
    ASSERT_TRUE(get());
    EXPECT_EQ(dtcs.at(0).code, 0x1234u);
}

}  // namespace
