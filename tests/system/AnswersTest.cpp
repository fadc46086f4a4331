// Answers that are late, double, about something else, incomplete or in pieces.

#include <gmock/gmock.h>

#include "Station.h"
#include "Waiting.h"
#include "WireText.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr unsigned amply = 3000;
constexpr unsigned shortly = 300;

std::string ruleFor(const std::string& match, const std::string& action) {
    return R"({"rules":[{"match":)" + match + R"(,"action":)" + action + "}]}";
}

const char firstRead[] = R"({"id":7,"operation":1,"nth":1})";

class Answers : public testing::TestWithParam<Transport> {
protected:
    Station station{GetParam()};
    std::vector<double> values;

    /// The first read meets the fault and fails; the second one is as if nothing had been.
    void expectOneReadToFail(const std::string& action) {
        station.script = ruleFor(firstRead, action);
        ASSERT_TRUE(station.start());
        EXPECT_FALSE(station->getParamData("MaxEngineSpeed", values, shortly));
        EXPECT_THAT(values, IsEmpty());
        EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
        EXPECT_THAT(values, ElementsAre(6500));
    }
};

INSTANTIATE_TEST_SUITE_P(Over, Answers, everyTransport(), transportName);

TEST_P(Answers, AValueThatComesTooLateIsNotTakenForTheNextOne) {
    station.script = ruleFor(firstRead, R"({"delayMs":700})");
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->getParamData("MaxEngineSpeed", values, shortly));
    ASSERT_TRUE(station->setParamData("MaxEngineSpeed", {7000}, {}, {}, amply));
    ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(7000));
    Sleep(800);
    ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(7000));
}

TEST_P(Answers, ADoubleAnswerIsTakenForItsOwnParameterOnly) {
    station.script = ruleFor(R"({"id":7})", R"({"duplicates":3})");
    ASSERT_TRUE(station.start());
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
        EXPECT_THAT(values, ElementsAre(6500));
        ASSERT_TRUE(station->getParamData("KnockRetard", values, amply));
        EXPECT_THAT(values, ElementsAre(2.25));
    }
}

TEST_P(Answers, AValueOfAnotherParameterIsNotTaken) {
    expectOneReadToFail(R"({"answer":"wrongName"})");
}

TEST_P(Answers, ARecordOfAnotherKindIsNotTaken) {
    expectOneReadToFail(R"({"answer":"wrongType"})");
}

TEST_P(Answers, AMereAcknowledgementIsNoValue) {
    expectOneReadToFail(R"({"answer":"ackOnly"})");
}

TEST_P(Answers, ADescriptionOfAnotherParameterIsNotTaken) {
    station.script = ruleFor(R"({"id":3,"nth":1})", R"({"answer":"wrongName"})");
    ASSERT_TRUE(station.start());
    wex::ParamDescription found = {};
    EXPECT_FALSE(station->getParamDescription("MaxEngineSpeed", found));
    EXPECT_EQ("MaxEngineSpeed", found.name);
    EXPECT_EQ("", found.text1);
    EXPECT_TRUE(station->getParamDescription("MaxEngineSpeed", found));
    EXPECT_EQ("MaxEngineSpeed", found.text1);
}

TEST_P(Answers, AGroupWithAVectorMissingFails) {
    station.script = ruleFor(R"({"id":18,"nth":1})", R"({"answer":"fewerVectors"})");
    ASSERT_TRUE(station.start());
    std::vector<std::vector<double>> group;
    EXPECT_FALSE(station->getParamDataAtOnce({"MaxEngineSpeed", "KnockRetard"}, group, 500));
    EXPECT_THAT(group, IsEmpty());
    EXPECT_TRUE(station->getParamDataAtOnce({"MaxEngineSpeed", "KnockRetard"}, group, amply));
    EXPECT_THAT(group, ElementsAre(ElementsAre(6500), ElementsAre(2.25)));
}

TEST_P(Answers, AnUnknownParameterIsAskedForOnlyOnce) {
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->getParamData("NoSuchParameter", values, amply));
    const std::size_t records = station.wire().size();
    EXPECT_FALSE(station->getParamData("NoSuchParameter", values, amply));
    EXPECT_THAT(station.requests(records), IsEmpty());
}

TEST_P(Answers, ASilentDescriptionFailsAndIsAskedForAgain) {
    station.script = ruleFor(R"({"id":3,"nth":1})", R"({"answer":"silent"})");
    ASSERT_TRUE(station.start());
    wex::ParamDescription found = {};
    bool described = true;
    const unsigned elapsedMs =
        elapsedMsOf([&] { described = station->getParamDescription("MaxEngineSpeed", found); });
    EXPECT_FALSE(described);
    EXPECT_GE(elapsedMs, 370u);
    EXPECT_LE(elapsedMs, 3100u);
    EXPECT_TRUE(station->getParamDescription("MaxEngineSpeed", found));
}

/// Faults that only a stream of bytes can have.
class StreamFaults : public testing::Test {
protected:
    Station station{Transport::tcp};
    std::vector<double> values;

    void expectReadsToSucceed(const std::string& action) {
        station.script = ruleFor(R"({"id":7,"operation":1})", action);
        ASSERT_TRUE(station.start());
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, amply)) << action;
            EXPECT_THAT(values, ElementsAre(6500));
        }
    }
};

TEST_F(StreamFaults, AnAnswerSplitBehindItsFirstByteArrives) {
    expectReadsToSucceed(R"({"splitAfterBytes":1,"gapMs":40})");
}

TEST_F(StreamFaults, AnAnswerSplitWithinItsLengthArrives) {
    expectReadsToSucceed(R"({"splitAfterBytes":10,"gapMs":40})");
}

TEST_F(StreamFaults, AnAnswerSplitWithinItsValuesArrives) {
    expectReadsToSucceed(R"({"splitAfterBytes":27,"gapMs":40})");
}

TEST_F(StreamFaults, AnAnswerInOneSegmentWithTheNextArrives) {
    expectReadsToSucceed(R"({"mergeWithNext":true,
        "then":[{"afterMs":30,"push":{"name":"OilPressure","value":3}}]})");
}

TEST_F(StreamFaults, ACompleteRecordThatNobodyKnowsIsSkipped) {
    expectReadsToSucceed(R"({"rawHexBefore":"630000000100000003000000AABBCC"})");
}

TEST_F(StreamFaults, AListWithAnAbsurdCountIsSkipped) {
    expectReadsToSucceed(R"({"rawHexBefore":"090000000100000004000000FFFFFFFF"})");
}

TEST_F(StreamFaults, AConnectionClosedWithinAnAnswerIsMadeAnew) {
    station.script = ruleFor(firstRead, R"({"close":"mid"})");
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->getParamData("MaxEngineSpeed", values, shortly));
    ASSERT_TRUE(eventually(10000, [&] { return station->pingQor(1000); }));
    EXPECT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    EXPECT_THAT(values, ElementsAre(6500));
}

TEST_F(StreamFaults, AnAnswerToACallThatGaveUpIsNotTakenForTheOneAfterIt) {
    station.script = ruleFor(R"({"id":7,"operation":2})", R"({"delayMs":400})");
    ASSERT_TRUE(station.start());
    wex::ParamDescription known = {};
    ASSERT_TRUE(station->getParamDescription("CoolingFan", known));
    // QOR acknowledges when the caller has long gone, and the next call is already waiting.
    EXPECT_FALSE(station->startDirectCtrl("CoolingFan", 50));
    EXPECT_FALSE(station->startDirectCtrl("NoSuchActuator", amply));
}

TEST_F(StreamFaults, ARefusalIsAnAcknowledgementWithStatusTwo) {
    station.script = ruleFor(R"({"id":8})", R"({"answer":"refuse"})");
    ASSERT_TRUE(station.start());
    EXPECT_FALSE(station->clearDtc(amply));
    const auto records = withoutOnlineQueries(station.wire());
    ASSERT_FALSE(records.empty());
    EXPECT_EQ("Ping 2", asText(records).back());
    EXPECT_TRUE(records.back().isReply);
    EXPECT_EQ(records[records.size() - 2].requestId, records.back().requestId);
}

TEST_F(StreamFaults, WhatQorTellsByItselfIsAcknowledgedWithStatusOne) {
    station.settings.answerStyle = "separate";
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(station->getParamData("MaxEngineSpeed", values, amply));
    const auto acknowledged = [&] {
        const auto records = withoutOnlineQueries(station.wire());
        for (const WireRecord& value : records)
            for (const WireRecord& record : records)
                if (!value.toQor && value.id == 7 && record.toQor &&
                    record.requestId == value.requestId)
                    return describe(record) == "Ping 1" && record.isReply;
        return false;
    };
    EXPECT_TRUE(eventually(2000, acknowledged));
}

}  // namespace
