#include "ClientFixture.h"

namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr unsigned int noLimit = 0xFFFFFFFFu;

class GetParamInfo : public ClientTest {
protected:
    GetParamInfo() { clock.msPerRead = 1; }

    bool get(const std::string& name, unsigned int timeoutMs = 400, bool refresh = false) {
        return client().getParamInfo(name, description, timeoutMs, refresh);
    }
    /// QOR describes `name` that much time after each question for it.
    void answersAfter(std::uint32_t ms, const std::string& name, std::int32_t index) {
        qor.on<CommandGetParamInfo>([=](const CommandGetParamInfo&) {
            clock.after(ms, [=] { describe(name, index); });
            return true;
        });
    }
    void describe(const std::string& name, std::int32_t index) {
        CommandGetParamInfo answer;
        answer.name = name;
        answer.paramIndex = index;
        qor.send(answer);
    }

    protocol::ParamInfo description;
};

TEST_F(GetParamInfo, TheQuestionCarriesTheNameAndDefaultsAndTheCallersTimeout) {
    get("Speed", 123);
    ASSERT_THAT(qor.sent(), SizeIs(1));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 123u);
    const auto& question = qor.last<CommandGetParamInfo>();
    EXPECT_EQ(question.name, "Speed");
    EXPECT_EQ(question.firstText + question.secondText + question.thirdText, "");
    EXPECT_EQ(question.paramIndex, -1);
    EXPECT_TRUE(question.threeArrays);
}

TEST_F(GetParamInfo, EveryFieldOfTheAnswerComesBack) {
    protocol::ParamInfo told;
    told.name = "Speed";
    told.firstText = "one";
    told.secondText = "two";
    told.thirdText = "three";
    told.firstLimit = -1.5;
    told.secondLimit = 8000.0;
    told.paramIndex = 7;
    told.threeArrays = false;
    qor.knows(told);
    ASSERT_TRUE(get("Speed"));
    EXPECT_EQ(description.name, "Speed");
    EXPECT_EQ(description.firstText, "one");
    EXPECT_EQ(description.secondText, "two");
    EXPECT_EQ(description.thirdText, "three");
    EXPECT_EQ(description.firstLimit, -1.5);
    EXPECT_EQ(description.secondLimit, 8000.0);
    EXPECT_EQ(description.paramIndex, 7);
    EXPECT_FALSE(description.threeArrays);
}

TEST_F(GetParamInfo, AKnownNameIsAnsweredFromTheTable) {
    qor.knows("Speed", 7);
    get("Speed");
    description = {};
    EXPECT_TRUE(get("Speed"));
    EXPECT_EQ(description.paramIndex, 7);
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(GetParamInfo, ARefreshAsksQorAgain) {
    qor.knows("Speed", 7);
    get("Speed");
    qor.knows("Speed", 8);
    EXPECT_TRUE(get("Speed", 400, true));
    EXPECT_EQ(description.paramIndex, 8);
}

TEST_F(GetParamInfo, ANameWhoseDescriptionHasNoIndexFailsWithoutACommandEverAfter) {
    qor.knows("Unknown", -1);
    EXPECT_FALSE(get("Unknown"));
    EXPECT_FALSE(get("Unknown"));
    EXPECT_FALSE(get("Unknown", noLimit));
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(GetParamInfo, ARefreshGivesAnUnknownNameAnotherChance) {
    qor.knows("Unknown", -1);
    get("Unknown");
    qor.knows("Unknown", 3);
    EXPECT_TRUE(get("Unknown", 400, true));
    EXPECT_TRUE(get("Unknown"));
}

TEST_F(GetParamInfo, OtherNegativeIndicesAreKnown) {
    qor.knows("Odd", -2);
    EXPECT_TRUE(get("Odd"));
    EXPECT_EQ(description.paramIndex, -2);
}

TEST_F(GetParamInfo, AfterATimeoutTheSameNameIsAskedForAgain) {
    EXPECT_FALSE(get("Speed"));
    EXPECT_FALSE(get("Speed"));
    EXPECT_THAT(qor.all<CommandGetParamInfo>(), SizeIs(2));
}

TEST_F(GetParamInfo, AfterATimeoutTheEmptyNameIsKnownAsUnknown) {
    get("Speed");
    qor.forgetSent();
    qor.knows("", 5);
    EXPECT_FALSE(get(""));
    EXPECT_THAT(qor.sent(), IsEmpty());
}

TEST_F(GetParamInfo, BeforeAnyTimeoutTheEmptyNameIsANameLikeAnyOther) {
    qor.knows("", 5);
    EXPECT_TRUE(get(""));
    EXPECT_EQ(description.paramIndex, 5);
}

TEST_F(GetParamInfo, ASendThatFailsIsNoTimeoutAndLeavesTheEmptyNameAlone) {
    qor.acknowledges = false;
    get("Speed");
    qor.acknowledges = true;
    qor.knows("", 5);
    EXPECT_TRUE(get(""));
}

TEST_F(GetParamInfo, ASendThatFailsFailsEvenIfTheAnswerCameMeanwhile) {
    qor.knows("Speed", 7);
    qor.acknowledges = false;
    EXPECT_FALSE(get("Speed"));
    EXPECT_TRUE(get("Speed"));
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(GetParamInfo, ABareAcknowledgementIsNoAnswer) {
    const std::uint32_t start = clock.now();
    EXPECT_FALSE(get("Speed", 300));
    EXPECT_GE(clock.now() - start, 300u);
    EXPECT_LE(clock.now() - start, 310u);
}

TEST_F(GetParamInfo, AnAnswerUnderAnotherNameDoesNotEndTheWait) {
    answersAfter(10, "speed", 7);
    EXPECT_FALSE(get("Speed"));
    EXPECT_TRUE(get("speed"));
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(GetParamInfo, AnAnswerShortlyBeforeTheTimeoutIsTaken) {
    answersAfter(390, "Speed", 7);
    EXPECT_TRUE(get("Speed", 400));
}

TEST_F(GetParamInfo, AnAnswerAfterTheTimeoutServesTheNextCall) {
    answersAfter(450, "Speed", 7);
    EXPECT_FALSE(get("Speed", 400));
    clock.advance(100);
    EXPECT_TRUE(get("Speed", 400));
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(GetParamInfo, ATimeoutOf0TakesAnAnswerThatCameDuringTheSend) {
    qor.knows("Speed", 7);
    EXPECT_TRUE(get("Speed", 0));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 0u);
}

TEST_F(GetParamInfo, ATimeoutOf0OtherwiseFailsAtOnce) {
    const std::uint32_t start = clock.now();
    EXPECT_FALSE(get("Speed", 0));
    EXPECT_LE(clock.now() - start, 5u);
}

TEST_F(GetParamInfo, WithoutALimitItWaitsUntilQorAnswers) {
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo&) {
        soon([this] { describe("Speed", 7); });
        return true;
    });
    EXPECT_TRUE(get("Speed", noLimit));
}

TEST_F(GetParamInfo, WithoutALimitItEndsWithTheClient) {
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo&) {
        client().stopOperating();
        return true;
    });
    EXPECT_FALSE(get("Speed", noLimit));
}

TEST_F(GetParamInfo, ItsTimeIsTheSameAcrossTheWrapOfTheTickCount) {
    for (const std::uint32_t msBefore : {401u, 400u, 399u, 100u, 1u}) {
        SCOPED_TRACE(msBefore);
        clock.advanceToBeforeWrap(msBefore);
        const std::uint32_t start = clock.now();
        EXPECT_FALSE(get("Speed", 400));
        EXPECT_GT(clock.now() - start, 400u);
        EXPECT_LT(clock.now() - start, 410u);
    }
}

TEST_F(GetParamInfo, AnAnswerFromBehindTheWrapIsInTime) {
    clock.advanceToBeforeWrap(100);
    clock.after(380, [this] { describe("Speed", 7); });
    EXPECT_TRUE(get("Speed", 400));
}

TEST_F(GetParamInfo, TheLongestTimeWithALimitIs49Days) {
    constexpr std::uint32_t hourMs = 60 * 60 * 1000;
    clock.after(49 * 24 * hourMs, [this] { describe("Speed", 7); });
    clock.msPerRead = hourMs;
    EXPECT_TRUE(get("Speed", 0xFFFFFFFDu));
}

TEST_F(GetParamInfo, TheTransportsUsualTimeIsNoneForTheDataAtEveryTick) {
    for (const std::uint32_t start : {1000000u, 0xFFFFFFF0u, 0u, 1u, 0x80000000u}) {
        SCOPED_TRACE(start);
        clock.advance(start - clock.now());
        const std::uint32_t before = clock.now();
        EXPECT_FALSE(get("Speed", 0xFFFFFFFEu));
        EXPECT_LE(clock.now() - before, 5u);
    }
}

TEST_F(GetParamInfo, AFailureLeavesTheCallersRecordAlone) {
    description.name = "mine";
    description.paramIndex = 42;
    get("Speed");
    qor.knows("Unknown", -1);
    get("Unknown");
    EXPECT_EQ(description.name, "mine");
    EXPECT_EQ(description.paramIndex, 42);
}

TEST_F(GetParamInfo, NamesOfAnyKindTravelUnchanged) {
    for (const std::string& name :
         {std::string("%s%n"), std::string("a\r\nb"), std::string(10000, 'x'),
          std::string("\xE4\xF6\xFC\xFF"), std::string("zero\0inside", 11)}) {
        qor.knows(name, 9);
        EXPECT_TRUE(get(name));
        EXPECT_EQ(qor.last<CommandGetParamInfo>().name, name);
    }
}

TEST_F(GetParamInfo, ALaterDescriptionOfTheSameNameReplacesTheFirst) {
    qor.knows("Speed", 7);
    get("Speed");
    describe("Speed", 8);
    EXPECT_TRUE(get("Speed"));
    EXPECT_EQ(description.paramIndex, 8);
}

}  // namespace
