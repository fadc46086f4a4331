// Values and trouble codes that flow into the host's queues.

#include "StreamingFixture.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Streaming : public StreamingTest {};

INSTANTIATE_TEST_SUITE_P(Over, Streaming, everyTransport(), transportName);

TEST_P(Streaming, ValuesFlowAfterTheStartAndStopAfterTheStop) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed", "MaxEngineSpeed"}));
    ASSERT_TRUE(awaitBatchOf({"EngineSpeed", "MaxEngineSpeed"}));
    EXPECT_TRUE(awaitRequest("SetParamList 4 33"));
    Values batch;
    ASSERT_TRUE(eventually(amply, [&] { return values.pop(batch, 200); }));
    for (const auto& value : batch) {
        ASSERT_EQ(1u, value.values.size());
        EXPECT_TRUE(value.name != "MaxEngineSpeed" || value.values.front() == 6500);
    }
    EXPECT_TRUE(station.traceHolds("1\tQorControlFacade::paramStartRead(EngineSpeed"));

    EXPECT_TRUE(station->stopParamRead(&values));
    ASSERT_TRUE(station->pingQor(amply));
    EXPECT_TRUE(hasDried());
    EXPECT_TRUE(awaitRequest("SetParamList"));
    EXPECT_TRUE(station.traceHolds("1\tQorControlFacade::paramStopAllRead()"));
}

TEST_P(Streaming, ARegistrationBeforeTheStartWaitsForTheEcu) {
    station.open();
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed"}));
    ASSERT_TRUE(station->pingQor(15000));
    EXPECT_TRUE(hasDried());
    ASSERT_TRUE(station.connectEcu(periodMs));
    EXPECT_TRUE(awaitBatchOf({"EngineSpeed"}));
}

TEST_P(Streaming, RegisteringAgainReplacesTheNames) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed"}));
    // The first batch may still be of the round in which the agent notes that it reads these
    // names; names that are registered anew in that very round would be taken for noted too.
    ASSERT_TRUE(awaitBatchOf({"EngineSpeed"}));
    ASSERT_TRUE(awaitBatchOf({"EngineSpeed"}));
    ASSERT_TRUE(station->startParamRead(&values, {"BatteryVoltage", "OilPressure"}));
    EXPECT_TRUE(awaitBatchOf({"BatteryVoltage", "OilPressure"}));
}

TEST_P(Streaming, TwoQueuesHaveEachTheirOwnNames) {
    ParamQueue more{10};
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed", "OilPressure"}));
    ASSERT_TRUE(station->startParamRead(&more, {"EngineSpeed"}));
    EXPECT_TRUE(awaitBatchOf({"EngineSpeed", "OilPressure"}));
    Values batch;
    EXPECT_TRUE(eventually(amply, [&] {
        return more.pop(batch, 200) && namesOf(batch) == std::set<std::string>{"EngineSpeed"};
    }));
    // What the other one still reads is not taken from QOR's list.
    EXPECT_TRUE(station->stopParamRead(&more));
    EXPECT_TRUE(station->pingQor(amply));
    values.clear();
    EXPECT_TRUE(awaitBatchOf({"EngineSpeed", "OilPressure"}));
    station.close();
}

TEST_P(Streaming, AParameterThatStallsDisappearsWhileTheOthersFlow) {
    station.script = R"({"at":[{"since":"connect","afterMs":2500,"stall":"EngineSpeed"}]})";
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed", "OilPressure"}));
    ASSERT_TRUE(awaitBatchOf({"EngineSpeed", "OilPressure"}));
    EXPECT_TRUE(awaitBatchOf({"OilPressure"}));
}

TEST_P(Streaming, WhenAllStallsNothingOldIsRepeated) {
    station.script = R"({"at":[{"since":"connect","afterMs":2500,"stall":"*"}]})";
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed"}));
    ASSERT_TRUE(awaitBatchOf({"EngineSpeed"}));
    EXPECT_TRUE(eventually(amply, [&] { return hasDried(); }));
}

TEST_P(Streaming, WithoutARefreshPeriodNoValueIsFresh) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu(0));
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed"}));
    ASSERT_TRUE(awaitRequest("SetParamList 4"));
    EXPECT_TRUE(hasDried());
}

TEST_P(Streaming, AnUnknownNameKeepsItsRegistrationWaiting) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed", "NoSuchParameter"}));
    EXPECT_TRUE(hasDried());
    EXPECT_TRUE(station->pingQor(amply));
    const std::size_t records = station.wire().size();
    EXPECT_TRUE(station->stopParamRead(&values));
    EXPECT_TRUE(station->pingQor(amply));
    EXPECT_THAT(station.requests(records), ElementsAre("Ping 0"));
}

TEST_P(Streaming, StoppingWhatNeverRanIsNoFailureAndSendsNothing) {
    ASSERT_TRUE(station.start());
    const std::size_t records = station.wire().size();
    EXPECT_TRUE(station->stopParamRead(&values));
    EXPECT_TRUE(station->stopParamRead(nullptr));
    EXPECT_TRUE(station->startParamRead(nullptr, {"EngineSpeed"}));
    EXPECT_TRUE(station->pingQor(amply));
    EXPECT_THAT(station.requests(records), ElementsAre("Ping 0"));
}

TEST_P(Streaming, RequestsAreServedWhileValuesFlow) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startParamRead(&values, {"EngineSpeed"}));
    ASSERT_TRUE(awaitBatchOf({"EngineSpeed"}));
    for (int i = 0; i < 20; ++i) {
        const double written = 6000 + i;
        ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {written}, {}, {}, amply));
    }
    EXPECT_TRUE(awaitBatchOf({"EngineSpeed"}));
}

TEST_P(Streaming, AStreamedValueIsReadWithoutARequest) {
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station.connectEcu(4000));
    ASSERT_TRUE(station->startParamRead(&values, {"MaxEngineSpeed"}));
    ASSERT_TRUE(awaitBatchOf({"MaxEngineSpeed"}));
    const std::size_t records = station.wire().size();
    std::vector<double> read;
    ASSERT_TRUE(station->getParamData("MaxEngineSpeed", read, amply));
    EXPECT_THAT(read, ElementsAre(6500));
    EXPECT_THAT(station.requests(records), IsEmpty());
}

TEST_P(Streaming, TroubleCodesFlowUntilTheStop) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startDtcRead(&codes, 2000, 100));
    for (int i = 0; i < 3; ++i) {
        Codes list;
        ASSERT_TRUE(eventually(amply, [&] { return codes.pop(list, 200); }));
        EXPECT_EQ(5u, list.size());
    }
    ASSERT_TRUE(station->stopDtcRead());
    ASSERT_TRUE(station->pingQor(amply));
    codes.clear();
    Codes list;
    EXPECT_FALSE(codes.pop(list, 500));
}

TEST_P(Streaming, ClearedTroubleCodesFlowAsAnEmptyList) {
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->clearDtc(2000));
    ASSERT_TRUE(station->startDtcRead(&codes, 2000, 100));
    Codes list = {{}};
    ASSERT_TRUE(eventually(amply, [&] { return codes.pop(list, 200); }));
    EXPECT_THAT(list, IsEmpty());
}

TEST_P(Streaming, AfterFourSilentReadsTheHostGetsOneEmptyEntry) {
    station.script = R"({"rules":[{"match":{"id":9},"action":{"answer":"silent"}}]})";
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startDtcRead(&codes, 100, 150));
    Codes list;
    ASSERT_TRUE(eventually(amply, [&] { return codes.pop(list, 200); }));
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ(0u, list[0].code);
    EXPECT_EQ(0u, list[0].status);
    EXPECT_EQ("", list[0].text1 + list[0].text2 + list[0].text3 + list[0].text4);
    const auto requests = station.requests();
    EXPECT_EQ(4, std::count(requests.begin(), requests.end(), "GetDtc [] 1"));
}

TEST_P(Streaming, ASecondStartRedirectsTheTroubleCodes) {
    ThreadSafeQueue<Codes> other{10};
    ASSERT_TRUE(startConnected());
    ASSERT_TRUE(station->startDtcRead(&codes, 2000, 100));
    Codes list;
    ASSERT_TRUE(eventually(amply, [&] { return codes.pop(list, 200); }));
    ASSERT_TRUE(station->startDtcRead(&other, 2000, 100));
    ASSERT_TRUE(eventually(amply, [&] { return other.pop(list, 200); }));
    codes.clear();
    EXPECT_FALSE(codes.pop(list, 400));
    station.close();
}

TEST_P(Streaming, AfterTheEndOnlyTheStartOfValuesStillSucceeds) {
    ASSERT_TRUE(station.start());
    station->shutdown();
    EXPECT_TRUE(station->startParamRead(&values, {"EngineSpeed"}));
    EXPECT_TRUE(station->stopParamRead(&values));
    EXPECT_FALSE(station->startDtcRead(&codes, 100, 100));
    EXPECT_FALSE(station->stopDtcRead());
}

}  // namespace
