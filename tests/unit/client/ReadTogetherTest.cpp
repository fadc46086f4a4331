#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Indices = std::vector<std::uint32_t>;
using Arrays = std::vector<std::vector<double>>;

class ReadTogether : public ClientTest {
protected:
    ReadTogether() {
        clock.msPerRead = 1;
        qor.knows("a", 11);
        qor.knows("b", 12);
        qor.knows("c", 13);
    }

    void tell(const Indices& indices, const Arrays& told) {
        CommandReadTogether answer;
        answer.paramIndices = indices;
        answer.values = told;
        qor.send(answer);
    }
    /// QOR answers every read with these after `delayMs`, of which 0 means during the send.
    void answers(const Indices& indices, const Arrays& told, std::uint32_t delayMs = 0) {
        qor.on<CommandReadTogether>([=](const CommandReadTogether&) {
            if (delayMs == 0)
                tell(indices, told);
            else
                clock.after(delayMs, [=] { tell(indices, told); });
            return true;
        });
    }
    bool get(const std::vector<std::string>& names, unsigned int timeoutMs = 500) {
        return client().readTogether(names, values, timeoutMs);
    }

    Arrays values{{9.0}};
};

TEST_F(ReadTogether, NoNamesSucceedAtOnceWithoutACommand) {
    EXPECT_TRUE(get({}));
    EXPECT_THAT(values, IsEmpty());
    EXPECT_THAT(qor.sent(), IsEmpty());
}

TEST_F(ReadTogether, TheRequestHasTheIndicesAndTheNamesInTheCallersOrder) {
    answers({11, 12}, {{1.0}, {2.0}});
    EXPECT_TRUE(get({"b", "a"}, 321));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 3, 18));
    const auto& request = qor.last<CommandReadTogether>();
    EXPECT_THAT(request.paramIndices, ElementsAre(12u, 11u));
    EXPECT_THAT(request.names, ElementsAre("b", "a"));
    EXPECT_THAT(request.values, IsEmpty());
    for (const auto& each : qor.sent()) EXPECT_EQ(each.timeoutMs, 321u);
}

TEST_F(ReadTogether, TheValuesComeBackInTheOrderOfTheNames) {
    answers({13, 11, 12}, {{3.0, 3.5}, {}, {2.0}});
    EXPECT_TRUE(get({"a", "b", "c"}));
    EXPECT_THAT(values, ElementsAre(IsEmpty(), ElementsAre(2.0), ElementsAre(3.0, 3.5)));
}

TEST_F(ReadTogether, ANameMayStandTwice) {
    answers({11, 12, 11}, {{1.0}, {2.0}, {1.0}});
    EXPECT_TRUE(get({"a", "b", "a"}));
    EXPECT_THAT(values, ElementsAre(ElementsAre(1.0), ElementsAre(2.0), ElementsAre(1.0)));
    EXPECT_THAT(qor.last<CommandReadTogether>().paramIndices, ElementsAre(11u, 12u, 11u));
}

TEST_F(ReadTogether, ValuesOfAnEarlierReadAreNotTaken) {
    answers({11, 12}, {{1.0}, {2.0}});
    ASSERT_TRUE(get({"a", "b"}));
    qor.on<CommandReadTogether>([](const CommandReadTogether&) { return true; });
    EXPECT_FALSE(get({"a", "b"}));
    answers({12}, {{2.5}});
    EXPECT_FALSE(get({"a", "b"}));
    EXPECT_THAT(values, ElementsAre(ElementsAre(1.0), ElementsAre(2.0)));
}

TEST_F(ReadTogether, AnUnknownNameFailsTheWholeGroupWithoutTheCommand) {
    EXPECT_FALSE(get({"a", "Unknown", "b"}, 77));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 3));
    EXPECT_EQ(qor.sent().at(1).timeoutMs, 77u);
    EXPECT_THAT(values, ElementsAre(ElementsAre(9.0)));
}

TEST_F(ReadTogether, ADescriptionMayTakeTheCallersTime) {
    qor.forgets("a");
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo&) {
        clock.after(700, [this] {
            CommandGetParamInfo answer;
            answer.name = "a";
            answer.paramIndex = 11;
            qor.send(answer);
        });
        return true;
    });
    answers({11}, {{1.0}});
    EXPECT_TRUE(get({"a"}, 1000));
}

TEST_F(ReadTogether, ValuesForSomeOfTheNamesAreNotEnough) {
    answers({11, 13}, {{1.0}, {3.0}});
    EXPECT_FALSE(get({"a", "b", "c"}));
    EXPECT_THAT(values, ElementsAre(ElementsAre(9.0)));
}

TEST_F(ReadTogether, ValuesMayComeInSeveralRecords) {
    qor.on<CommandReadTogether>([this](const CommandReadTogether&) {
        tell({11}, {{1.0}});
        clock.after(50, [this] { tell({12}, {{2.0}}); });
        return true;
    });
    EXPECT_TRUE(get({"a", "b"}));
    EXPECT_THAT(values, ElementsAre(ElementsAre(1.0), ElementsAre(2.0)));
}

TEST_F(ReadTogether, AnAnswerWithFewerArraysThanIndicesFails) {
    answers({11, 12}, {{1.0}});
    EXPECT_FALSE(get({"a", "b"}));
}

TEST_F(ReadTogether, ItWaitsTheCallersTimeFromTheEndOfTheSend) {
    qor.on<CommandReadTogether>([this](const CommandReadTogether&) {
        clock.advance(300);
        clock.after(490, [this] { tell({11}, {{1.0}}); });
        return true;
    });
    EXPECT_TRUE(get({"a"}, 500));
    answers({11}, {{1.0}}, 520);
    EXPECT_FALSE(get({"a"}, 500));
}

TEST_F(ReadTogether, ASendThatFailsFailsEvenIfTheValuesCameMeanwhile) {
    qor.on<CommandReadTogether>([this](const CommandReadTogether&) {
        tell({11}, {{1.0}});
        return false;
    });
    EXPECT_FALSE(get({"a"}));
}

TEST_F(ReadTogether, ATimeoutOf0TakesWhatCameDuringTheSendAndElseFailsAtOnce) {
    answers({11}, {{1.0}});
    EXPECT_TRUE(get({"a"}, 0));
    answers({11}, {{1.0}}, 50);
    const std::uint32_t start = clock.now();
    EXPECT_FALSE(get({"a"}, 0));
    EXPECT_LE(clock.now() - start, 10u);
}

TEST_F(ReadTogether, WithoutALimitItWaitsUntilQorAnswersOrTheClientEnds) {
    qor.on<CommandReadTogether>([this](const CommandReadTogether&) {
        soon([this] { tell({11}, {{1.0}}); });
        return true;
    });
    EXPECT_TRUE(get({"a"}, 0xFFFFFFFFu));
    qor.on<CommandReadTogether>([this](const CommandReadTogether&) {
        soon([this] { client().stopOperating(); });
        return true;
    });
    EXPECT_FALSE(get({"a"}, 0xFFFFFFFFu));
}

TEST_F(ReadTogether, ThousandsOfNamesAreReadInOneCommand) {
    std::vector<std::string> names;
    Indices indices;
    Arrays told;
    for (int i = 0; i < 3000; ++i) {
        names.push_back("Parameter " + std::to_string(i));
        qor.knows(names.back(), i);
        indices.push_back(static_cast<std::uint32_t>(i));
        told.push_back({i / 8.0});
    }
    answers(indices, told);
    ASSERT_TRUE(get(names));
    EXPECT_THAT(qor.all<CommandReadTogether>(), SizeIs(1));
    EXPECT_EQ(values, told);
}

}  // namespace
