#include <cmath>
#include <limits>

#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Parameters of one array.
class ParamData : public ClientTest {
protected:
    ParamData() {
        clock.msPerRead = 1;
        qor.knows("Speed", 7);
    }

    /// QOR answers every read of values so.
    void hasValues(const std::vector<double>& told) {
        qor.on<CommandDirectCtrl>([=](const CommandDirectCtrl& command) {
            if (command.operation == 1) tell(command.paramIndex, told);
            return true;
        });
    }
    void tell(std::uint32_t index, const std::vector<double>& told, std::uint32_t operation = 1) {
        CommandDirectCtrl answer;
        answer.paramIndex = index;
        answer.operation = operation;
        answer.values = told;
        qor.send(answer);
    }
    bool get(unsigned int timeoutMs = 500, bool refresh = true) {
        return client().getParamData("Speed", values, timeoutMs, refresh);
    }

    common::Doubles values;
};

TEST_F(ParamData, AReadIsADescriptionAndThenTheValues) {
    hasValues({1.5, -2.0});
    EXPECT_TRUE(get(321));
    EXPECT_THAT(values, ElementsAre(1.5, -2.0));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 7));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 321u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 321u);
}

TEST_F(ParamData, TheRequestForTheValuesNamesIndexOperationAndParameter) {
    hasValues({1.0});
    get();
    const auto& request = qor.last<CommandDirectCtrl>();
    EXPECT_EQ(request.paramIndex, 7u);
    EXPECT_EQ(request.operation, 1u);
    EXPECT_THAT(request.values, IsEmpty());
    EXPECT_EQ(request.name, "Speed");
}

TEST_F(ParamData, WithRefreshQorIsAskedEachTime) {
    hasValues({1.0});
    get();
    hasValues({2.0});
    EXPECT_TRUE(get());
    EXPECT_THAT(values, ElementsAre(2.0));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 7, 7));
}

TEST_F(ParamData, WithoutRefreshAValueThatIsThereWillDo) {
    hasValues({1.0});
    get();
    hasValues({2.0});
    EXPECT_TRUE(get(500, false));
    EXPECT_THAT(values, ElementsAre(1.0));
    EXPECT_THAT(qor.all<CommandDirectCtrl>(), SizeIs(1));
}

TEST_F(ParamData, WithRefreshAnOldValueIsNotTakenForTheAnswer) {
    hasValues({1.0});
    get();
    qor.on<CommandDirectCtrl>([](const CommandDirectCtrl&) { return true; });
    values = {9.0};
    EXPECT_FALSE(get());
    EXPECT_THAT(values, ElementsAre(9.0));
}

TEST_F(ParamData, AnEmptyAnswerIsAnAnswer) {
    hasValues({});
    values = {9.0};
    EXPECT_TRUE(get());
    EXPECT_THAT(values, IsEmpty());
}

TEST_F(ParamData, TheAnswerOfAnotherParameterDoesNotEndTheWait) {
    qor.on<CommandDirectCtrl>([this](const CommandDirectCtrl&) {
        tell(8, {1.0});
        return true;
    });
    EXPECT_FALSE(get(100));
}

TEST_F(ParamData, AnAnswerOfWhateverOperationFillsTheValues) {
    qor.on<CommandDirectCtrl>([this](const CommandDirectCtrl& command) {
        tell(command.paramIndex, {5.0}, 4);
        return true;
    });
    EXPECT_TRUE(get(100));
    EXPECT_THAT(values, ElementsAre(5.0));
}

TEST_F(ParamData, ASendThatFailsFailsTheRead) {
    qor.on<CommandDirectCtrl>([this](const CommandDirectCtrl&) {
        tell(7, {1.0});
        return false;
    });
    EXPECT_FALSE(get());
}

TEST_F(ParamData, AnUnknownNameIsNeitherReadNorWritten) {
    common::Doubles untouched{3.0};
    EXPECT_FALSE(client().getParamData("Unknown", untouched, 77, true));
    EXPECT_FALSE(client().setParamData("Unknown", {1.0}));
    EXPECT_THAT(untouched, ElementsAre(3.0));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 3));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 77u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 400u);
}

TEST_F(ParamData, AReadMayTakeAsLongAsItsTimeoutForTheDescriptionAlone) {
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo&) {
        clock.after(700, [this] {
            CommandGetParamInfo answer;
            answer.name = "Speed";
            answer.paramIndex = 7;
            qor.send(answer);
        });
        return true;
    });
    hasValues({1.0});
    EXPECT_TRUE(get(1000));
}

TEST_F(ParamData, SpecialNumbersComeBackBitForBit) {
    const double infinity = std::numeric_limits<double>::infinity();
    hasValues({std::nan(""), infinity, -infinity, -0.0, std::numeric_limits<double>::denorm_min()});
    ASSERT_TRUE(get());
    ASSERT_THAT(values, SizeIs(5));
    EXPECT_TRUE(std::isnan(values.all()[0]));
    EXPECT_EQ(values.all()[1], infinity);
    EXPECT_EQ(values.all()[2], -infinity);
    EXPECT_TRUE(std::signbit(values.all()[3]));
    EXPECT_EQ(values.all()[4], std::numeric_limits<double>::denorm_min());
}

TEST_F(ParamData, AHundredThousandValuesComeBack) {
    std::vector<double> many(100000);
    for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<double>(i) / 3;
    hasValues(many);
    ASSERT_TRUE(get());
    EXPECT_EQ(values, many);
}

TEST_F(ParamData, AWriteCarriesTheValuesAndAnEmptyText) {
    EXPECT_TRUE(client().setParamData("Speed", {1.0, 2.0}));
    const auto& request = qor.last<CommandDirectCtrl>();
    EXPECT_EQ(request.paramIndex, 7u);
    EXPECT_EQ(request.operation, 4u);
    EXPECT_THAT(request.values, ElementsAre(1.0, 2.0));
    EXPECT_EQ(request.name, "");
    EXPECT_EQ(qor.sent().back().timeoutMs, 500u);
}

TEST_F(ParamData, AWriteSucceedsWithItsAcknowledgementAlone) {
    qor.on<CommandDirectCtrl>([](const CommandDirectCtrl&) { return true; });
    EXPECT_TRUE(client().setParamData("Speed", {}));
    qor.on<CommandDirectCtrl>([](const CommandDirectCtrl&) { return false; });
    EXPECT_FALSE(client().setParamData("Speed", {}));
}

/// Parameters of three arrays.
class StaticParam : public ClientTest {
protected:
    StaticParam() {
        clock.msPerRead = 1;
        qor.knows("Map", 5, true);
    }

    void tell(const std::vector<double>& first, const std::vector<double>& second,
              const std::vector<double>& third, std::uint32_t operation = 1) {
        CommandStaticParam answer;
        answer.paramIndex = 5;
        answer.operation = operation;
        answer.first = first;
        answer.second = second;
        answer.third = third;
        qor.send(answer);
    }
    void hasArrays() {
        qor.on<CommandStaticParam>([this](const CommandStaticParam&) {
            tell({1.0}, {2.0, 2.5}, {3.0});
            return true;
        });
    }
    bool get(unsigned int timeoutMs = 500) {
        return client().getStaticParam("Map", sample, timeoutMs);
    }

    SampledValue sample;
};

TEST_F(StaticParam, TheThreeArraysComeBackInTheirOrderOnTheWire) {
    hasArrays();
    ASSERT_TRUE(get(2000));
    EXPECT_THAT(sample.values, ElementsAre(1.0));
    EXPECT_THAT(sample.second, ElementsAre(2.0, 2.5));
    EXPECT_THAT(sample.third, ElementsAre(3.0));
}

TEST_F(StaticParam, AReadNamesIndexAndOperationAndGivesQorTheCallersTimeout) {
    hasArrays();
    get(2000);
    const auto& request = qor.last<CommandStaticParam>();
    EXPECT_EQ(request.paramIndex, 5u);
    EXPECT_EQ(request.operation, 1u);
    EXPECT_EQ(request.first.size() + request.second.size() + request.third.size(), 0u);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 2000u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 2000u);
}

TEST_F(StaticParam, AnAnswerLaterThan500MsIsInTimeForALongerTimeout) {
    qor.on<CommandStaticParam>([this](const CommandStaticParam&) {
        clock.after(800, [this] { tell({1.0}, {}, {}); });
        return true;
    });
    EXPECT_TRUE(get(2000));
}

TEST_F(StaticParam, AnOldSampleIsNotTakenForTheAnswer) {
    hasArrays();
    get();
    qor.on<CommandStaticParam>([](const CommandStaticParam&) { return true; });
    EXPECT_FALSE(get(100));
    qor.on<CommandStaticParam>([this](const CommandStaticParam&) {
        clock.after(5, [this] { tell({4.0}, {}, {}); });
        return true;
    });
    EXPECT_TRUE(get(100));
    EXPECT_THAT(sample.values, ElementsAre(4.0));
    EXPECT_THAT(sample.second, IsEmpty());
}

TEST_F(StaticParam, AStreamedValueEndsTheWaitAsOneArray) {
    qor.on<CommandStaticParam>([this](const CommandStaticParam&) {
        clock.after(5, [this] { qor.sendValue(5, 3.5); });
        return true;
    });
    ASSERT_TRUE(get(100));
    EXPECT_THAT(sample.values, ElementsAre(3.5));
    EXPECT_THAT(sample.second, IsEmpty());
    EXPECT_THAT(sample.third, IsEmpty());
}

TEST_F(StaticParam, ASampleIsStampedWhenItComes) {
    std::uint32_t arrival = 0;
    qor.on<CommandStaticParam>([&](const CommandStaticParam&) {
        clock.after(50, [&] {
            arrival = clock.now();
            tell({1.0}, {}, {});
        });
        return true;
    });
    ASSERT_TRUE(get());
    EXPECT_GE(FakeClock::tickOf(sample.tick), arrival);
    EXPECT_LE(FakeClock::tickOf(sample.tick), arrival + 2);
}

TEST_F(StaticParam, ThePseudoParametersOfAConnectAreNoSamples) {
    for (const std::int32_t id : {-10, -11, -12}) {
        qor.knows("Pseudo", id, true);
        client();
        qor.on<CommandStaticParam>([this, id](const CommandStaticParam&) {
            qor.sendValue(id, 1.0);
            return true;
        });
        EXPECT_FALSE(client().getStaticParam("Pseudo", sample, 50)) << id;
        protocol::ParamInfo ignored;
        qor.forgets("Pseudo");
        client().getParamInfo("Pseudo", ignored, 0, true);
    }
}

TEST_F(StaticParam, OtherNegativeIdsAreSamples) {
    qor.knows("Odd", -13, true);
    qor.on<CommandStaticParam>([this](const CommandStaticParam&) {
        qor.sendValue(-13, 1.0);
        return true;
    });
    EXPECT_TRUE(client().getStaticParam("Odd", sample, 50));
}

TEST_F(StaticParam, AWriteCarriesTheThreeArraysInTheSameOrder) {
    EXPECT_TRUE(client().setStaticParam("Map", {{1.0}, {2.0}, {3.0, 4.0}, {}}));
    const auto& request = qor.last<CommandStaticParam>();
    EXPECT_EQ(request.paramIndex, 5u);
    EXPECT_EQ(request.operation, 2u);
    EXPECT_THAT(request.first, ElementsAre(1.0));
    EXPECT_THAT(request.second, ElementsAre(2.0));
    EXPECT_THAT(request.third, ElementsAre(3.0, 4.0));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 400u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 500u);
}

TEST_F(StaticParam, AWriteTakesTheResultOfItsSend) {
    qor.on<CommandStaticParam>([](const CommandStaticParam&) { return false; });
    EXPECT_FALSE(client().setStaticParam("Map", {}));
}

TEST_F(StaticParam, AnUnknownNameIsNeitherReadNorWritten) {
    EXPECT_FALSE(client().getStaticParam("Unknown", sample, 50));
    EXPECT_FALSE(client().setStaticParam("Unknown", {}));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 3));
}

}  // namespace
