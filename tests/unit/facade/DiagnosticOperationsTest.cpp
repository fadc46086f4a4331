// Trouble codes and the CAN bus. (KWP has a file of its own.)

#include "FacadeFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Dtcs = std::vector<QorControlFacade::DtcDescription>;

class TroubleCodes : public FacadeTest {
protected:
    void answers(const Dtcs& told) {
        const auto results = std::make_shared<channel::CmdDataDtcData>(0u);
        results->dtcs = told;
        after(37, [=](const Cmd& command) { ScriptedAgent::succeed(command, results); });
    }

    Dtcs dtcs{{7, 7, "old", "", "", ""}};
};

TEST_F(TroubleCodes, ReadingPostsTheTimeoutAndAnEmptyList) {
    answers({});
    start();
    facade->getDtcByStatus(dtcs, 500);
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, channel::Kind{18u});
    const auto& data = dynamic_cast<channel::CmdDataDtcData&>(*request.data);
    EXPECT_EQ(data.statusMask, 500u);
    EXPECT_THAT(data.dtcs, IsEmpty());
}

TEST_F(TroubleCodes, TheListIsReplacedAndItsSizeIsTraced) {
    answers({{0x1234, 5, "a", "b", "c", "d"}, {0xFFFFFFFFu, 0, "", "", "", ""}});
    start();
    EXPECT_TRUE(facade->getDtcByStatus(dtcs, 500));
    ASSERT_THAT(dtcs, SizeIs(2));
    EXPECT_EQ(dtcs[0].code, 0x1234u);
    EXPECT_EQ(dtcs[0].status, 5u);
    EXPECT_EQ(dtcs[0].text1 + dtcs[0].text2 + dtcs[0].text3 + dtcs[0].text4, "abcd");
    EXPECT_EQ(dtcs[1].code, 0xFFFFFFFFu);
    EXPECT_THAT(trace(), ElementsAre("1\tOK on DTC by status [size=2], t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TroubleCodes, AnEmptyListIsASuccessOfSize0) {
    answers({});
    start();
    EXPECT_TRUE(facade->getDtcByStatus(dtcs, 500));
    EXPECT_THAT(dtcs, IsEmpty());
    EXPECT_THAT(trace(), ElementsAre("1\tOK on DTC by status [size=0], t: 37 ms"));
}

TEST_F(TroubleCodes, AFailedReadLeavesTheList) {
    failAlways();
    start();
    EXPECT_FALSE(facade->getDtcByStatus(dtcs, 500));
    ASSERT_THAT(dtcs, SizeIs(1));
    EXPECT_EQ(dtcs[0].text1, "old");
}

TEST_F(TroubleCodes, ClearingPostsNothingButItsKind) {
    after(37, [](const Cmd& command) { ScriptedAgent::succeed(command); });
    start();
    EXPECT_TRUE(facade->clearDtc(500));
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, channel::Kind{9u});
    const auto& data = dynamic_cast<channel::CmdDataDtc&>(*request.data);
    EXPECT_EQ(data.queue, nullptr);
    EXPECT_EQ(data.statusMask, 0u);
    EXPECT_EQ(data.periodMs, 0u);
    EXPECT_THAT(trace(), ElementsAre("1\tOK on clear-dtc, t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

/// On the system's clock.
class SilentTroubleCodes : public RealTimeFacadeTest {};

TEST_F(SilentTroubleCodes, ClearingGivesUpAfterItsTimeoutAndReadingAfterTwiceAsMuch) {
    constexpr std::uint32_t tickStepMs = 20;
    Dtcs dtcs;
    start();
    const std::uint32_t begin = GetTickCount();
    EXPECT_FALSE(facade->clearDtc(100));
    const std::uint32_t cleared = GetTickCount();
    EXPECT_FALSE(facade->getDtcByStatus(dtcs, 100));
    const std::uint32_t read = GetTickCount();
    EXPECT_GE(cleared - begin + tickStepMs, 100u);
    EXPECT_LT(cleared - begin, 200u - tickStepMs);
    EXPECT_GE(read - cleared + tickStepMs, 200u);
}

class CanBus : public FacadeTest {
protected:
    void answers(const QorControlFacade::CanBusData& told) {
        const auto results = std::make_shared<channel::CmdCanBusData>(told, 0u);
        after(37, [=](const Cmd& command) { ScriptedAgent::succeed(command, results); });
    }

    QorControlFacade::CanBusData data{{{0x7FF, 5}, {0x1FFFFFFF, 6}}};
};

TEST_F(CanBus, ReadingPostsTheIdentifiersWhole) {
    answers({});
    start();
    facade->getCanBusData(data, 500);
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, channel::Kind{22u});
    const auto& posted = dynamic_cast<channel::CmdCanBusData&>(*request.data);
    EXPECT_EQ(posted.timeoutMs, 500u);
    ASSERT_THAT(posted.data.items, SizeIs(2));
    EXPECT_EQ(posted.data.items[0].canId, 0x7FFu);
    EXPECT_EQ(posted.data.items[0].value, 5);
    EXPECT_EQ(posted.data.items[1].canId, 0x1FFFFFFFu);
}

TEST_F(CanBus, TheAnswerReplacesTheRecordAndIsTracedEntryByEntry) {
    answers({{{0x7FF, -1}, {0xABCDEF01u, 2147483647}, {0, 0}}});
    start();
    EXPECT_TRUE(facade->getCanBusData(data, 500));
    ASSERT_THAT(data.items, SizeIs(3));
    EXPECT_EQ(data.items[0].value, -1);
    EXPECT_EQ(data.items[1].canId, 0xABCDEF01u);
    EXPECT_THAT(trace(), ElementsAre("1\tAnswer on CanBus-get [000007FF : -1 , ABCDEF01 : "
                                     "2147483647 , 00000000 : 0 , ], t: 37 ms"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(CanBus, AnEmptyAnswerIsASuccess) {
    answers({});
    start();
    EXPECT_TRUE(facade->getCanBusData(data, 500));
    EXPECT_THAT(data.items, IsEmpty());
    EXPECT_THAT(trace(), ElementsAre("1\tAnswer on CanBus-get [], t: 37 ms"));
}

TEST_F(CanBus, AFailedReadLeavesTheRecord) {
    failAlways();
    start();
    EXPECT_FALSE(facade->getCanBusData(data, 500));
    ASSERT_THAT(data.items, SizeIs(2));
    EXPECT_EQ(data.items[1].value, 6);
}

TEST_F(CanBus, AMessageTravelsInTheOrderOfItsArgumentsAndWritesNoLine) {
    succeedAlways();
    start();
    const std::string bytes("\x00%s\xFF", 4);
    EXPECT_TRUE(facade->sendCanBusMsg(1, 0xFFFFFFFFu, bytes, 500));
    const Cmd request = agent.requests().at(0);
    EXPECT_EQ(request.kind, channel::Kind{32u});
    const auto& posted = dynamic_cast<channel::CmdCanBusSend&>(*request.data);
    EXPECT_EQ(posted.first, 1u);
    EXPECT_EQ(posted.second, 0xFFFFFFFFu);
    EXPECT_EQ(posted.message, bytes);
    EXPECT_EQ(posted.timeoutMs, 500u);
    EXPECT_THAT(trace(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
