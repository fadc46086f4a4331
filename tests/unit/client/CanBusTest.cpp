#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Items = std::vector<protocol::CanBusItem>;

class CanBus : public ClientTest {
protected:
    CanBus() { clock.msPerRead = 1; }

    void tell(const Items& items) {
        CommandCanBusData answer;
        answer.items = items;
        qor.send(answer);
    }
    /// QOR answers every read so late, counted from the end of the send.
    void answersAfter(std::uint32_t ms, const Items& items = {{0x100, -1}}) {
        qor.on<CommandCanBusData>([=](const CommandCanBusData&) {
            clock.after(ms, [=] { tell(items); });
            return true;
        });
    }
    bool get(unsigned int timeoutMs = 500) {
        return client().getCanBusData({{0x7FF, 5}, {0x1FFFFFFF, 6}}, frames, timeoutMs);
    }

    Items frames{{7, 7}};
};

TEST_F(CanBus, AReadCarriesTheIdentifiersWholeAndTakesTheCallersTime) {
    get(321);
    ASSERT_THAT(qor.sentIds(), ElementsAre(17));
    const Items& sent = qor.last<CommandCanBusData>().items;
    ASSERT_THAT(sent, SizeIs(2));
    EXPECT_EQ(sent[0].canId, 0x7FFu);
    EXPECT_EQ(sent[0].value, 5);
    EXPECT_EQ(sent[1].canId, 0x1FFFFFFFu);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 321u);
}

TEST_F(CanBus, TheAnswerComesBackAsItIs) {
    answersAfter(10, {{0x100, -1}, {0x200, 2147483647}, {0x100, 0}});
    ASSERT_TRUE(get());
    ASSERT_THAT(frames, SizeIs(3));
    EXPECT_EQ(frames[0].value, -1);
    EXPECT_EQ(frames[1].value, 2147483647);
    EXPECT_EQ(frames[2].canId, 0x100u);
}

TEST_F(CanBus, AnEmptyAnswerIsAnAnswer) {
    answersAfter(10, {});
    EXPECT_TRUE(get());
    EXPECT_THAT(frames, IsEmpty());
}

TEST_F(CanBus, AnAnswerThatWasThereBeforeTheRequestIsNotTaken) {
    client();
    tell({{1, 1}});
    EXPECT_FALSE(get());
    answersAfter(10);
    ASSERT_TRUE(get());
    qor.on<CommandCanBusData>([](const CommandCanBusData&) { return true; });
    EXPECT_FALSE(get());
    EXPECT_EQ(frames.at(0).canId, 0x100u);
}

TEST_F(CanBus, TheAnswerHasTheCallersTimeAnd150MsMore) {
    answersAfter(640);
    EXPECT_TRUE(get(500));
    answersAfter(670);
    EXPECT_FALSE(get(500));
    answersAfter(140);
    EXPECT_TRUE(get(0));
}

TEST_F(CanBus, WithoutALimitTheTimeDoesNotWrap) {
    qor.on<CommandCanBusData>([this](const CommandCanBusData&) {
        soon([this] { tell({{1, 1}}); });
        return true;
    });
    EXPECT_TRUE(get(0xFFFFFFFFu));
}

TEST_F(CanBus, AReadWhoseSendFailsFailsEvenIfTheAnswerCameMeanwhile) {
    qor.on<CommandCanBusData>([this](const CommandCanBusData&) {
        tell({{1, 1}});
        return false;
    });
    EXPECT_FALSE(get());
    EXPECT_EQ(frames.at(0).canId, 7u);
}

TEST_F(CanBus, OpeningItGivesQor10SecondsAndTakesTheResultOfTheSend) {
    EXPECT_TRUE(client().connectCanBus({1, 500000, false, true}));
    ASSERT_THAT(qor.sentIds(), ElementsAre(16));
    const auto& sent = qor.last<CommandCanBusConnect>();
    EXPECT_EQ(sent.busMode, 1u);
    EXPECT_EQ(sent.busParam, 500000u);
    EXPECT_FALSE(sent.firstFlag);
    EXPECT_TRUE(sent.secondFlag);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 10000u);
    qor.acknowledges = false;
    EXPECT_FALSE(client().connectCanBus({}));
}

TEST_F(CanBus, AMessageKeepsTheOrderOfItsNumbersAndTakesTheCallersTime) {
    EXPECT_TRUE(client().sendCanBusMsg({1, 2, std::string("\0x", 2)}, 321));
    ASSERT_THAT(qor.sentIds(), ElementsAre(19));
    const auto& sent = qor.last<CommandCanBusSend>();
    EXPECT_EQ(sent.firstNumber, 1u);
    EXPECT_EQ(sent.secondNumber, 2u);
    EXPECT_EQ(sent.data, std::string("\0x", 2));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 321u);
    qor.acknowledges = false;
    EXPECT_FALSE(client().sendCanBusMsg({}, 1));
}

}  // namespace
