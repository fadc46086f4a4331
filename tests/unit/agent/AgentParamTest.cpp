#include <limits>

#include "AgentFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class AgentParam : public AgentTest {
protected:
    std::shared_ptr<channel::CmdDataParamData> paramRequest(const std::string& name,
                                                            unsigned int timeoutMs = 500) {
        return std::make_shared<channel::CmdDataParamData>(name, timeoutMs);
    }
    /// Reads a parameter; null if that fails.
    std::shared_ptr<channel::CmdDataParamData> read(const std::string& name,
                                                    unsigned int timeoutMs = 500) {
        const auto answer = carryOut(channel::Kind::getParamData, paramRequest(name, timeoutMs));
        return answer.result == 1
                   ? std::dynamic_pointer_cast<channel::CmdDataParamData>(answer.data)
                   : nullptr;
    }
    void hasValues(const std::vector<double>& values) {
        qor.on<CommandDirectCtrl>([=](const CommandDirectCtrl& command) {
            CommandDirectCtrl answer(command.payload());
            answer.values = values;
            return command.operation != 1 || qor.send(answer);
        });
    }
    void hasArrays(const std::vector<double>& first, const std::vector<double>& second,
                   const std::vector<double>& third, std::uint32_t afterMs = 0) {
        qor.on<CommandStaticParam>([=](const CommandStaticParam& command) {
            CommandStaticParam answer(command.payload());
            answer.first = first;
            answer.second = second;
            answer.third = third;
            if (command.operation == 1) clock.after(afterMs, [=] { qor.send(answer); });
            return true;
        });
    }
    void describesAfter(std::uint32_t ms, const std::string& name, bool threeArrays) {
        qor.on<CommandGetParamInfo>([=](const CommandGetParamInfo&) {
            CommandGetParamInfo answer;
            answer.name = name;
            answer.paramIndex = 7;
            answer.threeArrays = threeArrays;
            clock.after(ms, [=] { qor.send(answer); });
            return true;
        });
    }
};

TEST_F(AgentParam, ADescriptionIsHandedOnInItsCrossedOrder) {
    protocol::ParamInfo told;
    told.name = "Speed";
    told.firstText = "first";
    told.secondText = "second";
    told.thirdText = "third";
    told.firstLimit = 1.0;
    told.secondLimit = 2.0;
    told.paramIndex = 7;
    told.threeArrays = false;
    qor.knows(told);
    wex::ParamDescription passed{"other", "a", "b", "c", "d", 99, true};
    const auto answer = carryOut(channel::Kind::getParamDescription,
                                 std::make_shared<channel::CmdDataParamInfo>("Speed", passed));
    ASSERT_EQ(answer.result, 1u);
    const auto* data = dynamic_cast<channel::CmdDataParamInfo*>(answer.data.get());
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->description.name, "Speed");
    EXPECT_EQ(data->description.text1, "Speed");
    EXPECT_EQ(data->description.text2, "first");
    EXPECT_EQ(data->description.text3, "third");
    EXPECT_EQ(data->description.text4, "second");
    EXPECT_EQ(data->description.value, 0u);
    EXPECT_FALSE(data->description.threeArrays);
    EXPECT_EQ(qor.last<CommandGetParamInfo>().name, "Speed");
    EXPECT_EQ(qor.last<CommandGetParamInfo>().firstText, "");
    EXPECT_EQ(qor.sent().back().timeoutMs, 400u);
}

TEST_F(AgentParam, ADescriptionIsAskedForOnce) {
    qor.knows("Map", 7, true);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(
            succeeds(channel::Kind::getParamDescription,
                     std::make_shared<channel::CmdDataParamInfo>("Map", wex::ParamDescription())));
    EXPECT_THAT(qor.all<CommandGetParamInfo>(), SizeIs(1));
}

TEST_F(AgentParam, ADescriptionThatDoesNotComeIn400MsFails) {
    describesAfter(500, "Speed", false);
    EXPECT_FALSE(
        succeeds(channel::Kind::getParamDescription,
                 std::make_shared<channel::CmdDataParamInfo>("Speed", wex::ParamDescription())));
}

TEST_F(AgentParam, AParameterOfOneArrayIsReadByDirectControl) {
    qor.knows("Speed", 7, false);
    hasValues({1.5, 2.5});
    const auto data = read("Speed", 321);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->name, "Speed");
    EXPECT_THAT(data->values, ElementsAre(1.5, 2.5));
    EXPECT_THAT(data->second, IsEmpty());
    EXPECT_THAT(data->third, IsEmpty());
    EXPECT_THAT(sentIds(), ElementsAre(3, 7));
    EXPECT_EQ(qor.last<CommandDirectCtrl>().operation, 1u);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 321u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 321u);
}

TEST_F(AgentParam, AParameterOfThreeArraysIsReadAsSuch) {
    qor.knows("Map", 5, true);
    hasArrays({1.0}, {2.0}, {3.0});
    const auto data = read("Map", 321);
    ASSERT_NE(data, nullptr);
    EXPECT_THAT(data->values, ElementsAre(1.0));
    EXPECT_THAT(data->second, ElementsAre(2.0));
    EXPECT_THAT(data->third, ElementsAre(3.0));
    EXPECT_THAT(sentIds(), ElementsAre(3, 12));
    EXPECT_EQ(qor.last<CommandStaticParam>().operation, 1u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 321u);
}

TEST_F(AgentParam, EachReadAsksQorForTheValuesAfresh) {
    qor.knows("Speed", 7, false);
    hasValues({1.0});
    read("Speed");
    hasValues({2.0});
    const auto data = read("Speed");
    ASSERT_NE(data, nullptr);
    EXPECT_THAT(data->values, ElementsAre(2.0));
    EXPECT_THAT(sentIds(), ElementsAre(3, 7, 7));
}

TEST_F(AgentParam, AnAnswerIsANewRecordWithItsOwnStamp) {
    qor.knows("Map", 5, true);
    hasArrays({1.0}, {}, {}, 300);
    const auto request = paramRequest("Map");
    const common::Moment requested = request->stamp;
    const auto answer = carryOut(channel::Kind::getParamData, request);
    const auto* data = dynamic_cast<channel::CmdDataParamData*>(answer.data.get());
    ASSERT_NE(data, nullptr);
    EXPECT_NE(data, request.get());
    EXPECT_GE(data->stamp, requested + 300);
    EXPECT_THAT(request->values, IsEmpty());
    EXPECT_EQ(request->stamp, requested);
}

TEST_F(AgentParam, AReadOfThreeArraysAnsweredAfter800MsIsInTimeFor2000) {
    qor.knows("Map", 5, true);
    hasArrays({1.0}, {}, {}, 800);
    EXPECT_NE(read("Map", 2000), nullptr);
}

TEST_F(AgentParam, AReadGivesTheDescriptionItsOwnTimeout) {
    describesAfter(700, "Speed", false);
    hasValues({1.0});
    EXPECT_NE(read("Speed", 1000), nullptr);
}

TEST_F(AgentParam, AWriteGivesTheDescriptionNoMoreThan400Ms) {
    describesAfter(700, "Speed", false);
    EXPECT_FALSE(succeeds(channel::Kind::setParamData, paramRequest("Speed", 5000)));
    EXPECT_EQ(qor.last<CommandGetParamInfo>().name, "Speed");
    EXPECT_THAT(qor.all<CommandDirectCtrl>(), IsEmpty());
}

TEST_F(AgentParam, AnUnknownParameterIsNeitherReadNorWritten) {
    qor.knows("Unknown", -1);
    EXPECT_EQ(read("Unknown"), nullptr);
    EXPECT_FALSE(succeeds(channel::Kind::setParamData, paramRequest("Unknown")));
    EXPECT_FALSE(
        succeeds(channel::Kind::getParamDescription,
                 std::make_shared<channel::CmdDataParamInfo>("Unknown", wex::ParamDescription())));
    EXPECT_THAT(sentIds(), ElementsAre(3));
}

TEST_F(AgentParam, ValuesThatDoNotComeFailTheRead) {
    qor.knows("Speed", 7, false);
    const std::uint32_t start = clock.now();
    EXPECT_EQ(read("Speed", 300), nullptr);
    EXPECT_GE(clock.now() - start, 300u);
    EXPECT_LE(clock.now() - start, 320u);
}

TEST_F(AgentParam, AWriteOfOneArrayLeavesTheOtherTwoBehind) {
    qor.knows("Speed", 7, false);
    auto request = paramRequest("Speed");
    request->values = {1.0, 2.0};
    request->second = {3.0};
    request->third = {4.0};
    const auto answer = carryOut(channel::Kind::setParamData, request);
    EXPECT_EQ(answer.result, 1u);
    EXPECT_EQ(answer.data, nullptr);
    EXPECT_THAT(sentIds(), ElementsAre(3, 7));
    EXPECT_EQ(qor.last<CommandDirectCtrl>().operation, 4u);
    EXPECT_THAT(qor.last<CommandDirectCtrl>().values, ElementsAre(1.0, 2.0));
    EXPECT_EQ(qor.last<CommandDirectCtrl>().name, "");
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 400u);
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 500u);
}

TEST_F(AgentParam, AWriteOfThreeArraysSendsThemInTheirOrder) {
    qor.knows("Map", 5, true);
    auto request = paramRequest("Map");
    request->values = {1.0};
    request->second = {2.0};
    request->third = {3.0};
    EXPECT_TRUE(succeeds(channel::Kind::setParamData, request));
    EXPECT_THAT(sentIds(), ElementsAre(3, 12));
    const auto& sent = qor.last<CommandStaticParam>();
    EXPECT_EQ(sent.operation, 2u);
    EXPECT_THAT(sent.first, ElementsAre(1.0));
    EXPECT_THAT(sent.second, ElementsAre(2.0));
    EXPECT_THAT(sent.third, ElementsAre(3.0));
}

TEST_F(AgentParam, WhatAWriteCarriedDoesNotLiveOnInItsRequest) {
    for (const bool threeArrays : {false, true}) {
        const std::string name = threeArrays ? "Map" : "Speed";
        qor.knows(name, threeArrays ? 5 : 7, threeArrays);
        auto request = paramRequest(name);
        request->values = request->second = request->third = {1.0};
        EXPECT_TRUE(succeeds(channel::Kind::setParamData, request));
        EXPECT_THAT(request->values, IsEmpty()) << name;
        EXPECT_THAT(request->second, IsEmpty()) << name;
        EXPECT_THAT(request->third, IsEmpty()) << name;
    }
}

TEST_F(AgentParam, AWriteThatQorDoesNotTakeFails) {
    qor.knows("Map", 5, true);
    qor.on<CommandStaticParam>([](const CommandStaticParam&) { return false; });
    EXPECT_FALSE(succeeds(channel::Kind::setParamData, paramRequest("Map")));
}

TEST_F(AgentParam, TheDescriptionOnceToldDecidesHowAParameterIsRead) {
    qor.knows("Speed", 7, false);
    hasValues({1.0});
    read("Speed");
    qor.knows("Speed", 7, true);
    EXPECT_NE(read("Speed"), nullptr);
    EXPECT_THAT(sentIds(), ElementsAre(3, 7, 7));
}

}  // namespace
