// QOR is another one, or has opened another model: what the old one said of its parameters is
// worth nothing.

#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NewQor : public ClientTest {
protected:
    NewQor() {
        clock.msPerRead = 1;
        qor.knows("S1", 5);
        qor.knows("S2", 6);
        qor.on<CommandDirectCtrl>([this](const CommandDirectCtrl& request) {
            CommandDirectCtrl answer;
            answer.paramIndex = request.paramIndex;
            answer.values = {static_cast<double>(request.paramIndex)};
            qor.send(answer);
            return true;
        });
    }

    /// The two parameters have changed places.
    void isThere() {
        qor.knows("S1", 6);
        qor.knows("S2", 5);
        client().onNewQor();
    }
    std::vector<double> read(const std::string& name) {
        common::Doubles values;
        EXPECT_TRUE(client().getParamData(name, values, 100, true));
        return values.all();
    }
    std::uint32_t writtenIndex(const std::string& name) {
        EXPECT_TRUE(client().setParamData(name, {1.0}));
        return qor.last<CommandDirectCtrl>().paramIndex;
    }
};

TEST_F(NewQor, NamesAreAskedForAnewAndTheRightParameterIsReadAndWritten) {
    EXPECT_THAT(read("S1"), ElementsAre(5.0));
    isThere();
    EXPECT_THAT(read("S1"), ElementsAre(6.0));
    EXPECT_EQ(writtenIndex("S1"), 6u);
    EXPECT_EQ(writtenIndex("S2"), 5u);
}

TEST_F(NewQor, AModelThatIsOpenedCountsAsOne) {
    EXPECT_THAT(read("S1"), ElementsAre(5.0));
    qor.knows("S1", 9);
    EXPECT_TRUE(client().startEdit(protocol::StartEdit()));
    EXPECT_THAT(read("S1"), ElementsAre(9.0));
}

TEST_F(NewQor, SoDoesOneThatCouldNotBeOpened) {
    EXPECT_THAT(read("S1"), ElementsAre(5.0));
    qor.knows("S1", 9);
    qor.on<CommandStartEdit>([](const auto&) { return false; });
    EXPECT_FALSE(client().startEdit(protocol::StartEdit()));
    EXPECT_THAT(read("S1"), ElementsAre(9.0));
}

TEST_F(NewQor, ValuesThatTheOldOneSentAreGone) {
    SampledValue sample;
    client().onParamValue(5, 1.5);
    EXPECT_TRUE(client().peekParamData("S1", sample));
    isThere();
    EXPECT_FALSE(client().peekParamData("S1", sample));
    EXPECT_FALSE(client().peekParamData("S2", sample));
}

TEST_F(NewQor, ARequestThatWasResolvedBeforeDoesNotLeaveAfter) {
    EXPECT_THAT(read("S1"), ElementsAre(5.0));
    qor.forgetSent();
    qor.beforeLeaving = [this](const IExternalCommand&) { client().onNewQor(); };
    const Epoch epoch = client().epoch();
    EXPECT_FALSE(client().setParamData("S1", {1.0}));
    EXPECT_NE(client().epoch(), epoch);
    EXPECT_THAT(qor.sentIds(), IsEmpty());
}

TEST_F(NewQor, ARequestThatBeganBeforeNamesNoParameterAfter) {
    client().beginRequest(nullptr);
    protocol::ParamInfo description;
    EXPECT_TRUE(client().getParamInfo("S1", description, 100, false));
    isThere();
    EXPECT_FALSE(client().setParamData("S1", {1.0}));  // which learns the new place
    EXPECT_THAT(qor.all<CommandDirectCtrl>(), IsEmpty());
    client().endRequest();
    EXPECT_EQ(writtenIndex("S1"), 6u);
}

TEST_F(NewQor, TheEcuIsOfflineUntilItSaysOtherwise) {
    client().onParamValue(-10, 1.0);
    client().isEcuOnline();
    client().onParamValue(-10, 1.0);
    EXPECT_TRUE(client().isEcuOnline());
    client().onNewQor();
    EXPECT_FALSE(client().isEcuOnline());
}

TEST_F(NewQor, AnAnswerOfTheNextOneIsNotTakenForThatOfTheOld) {
    qor.on<CommandStaticParam>([this](const CommandStaticParam&) {
        client().onNewQor();
        client().onParamValue(5, 99.0);  // another parameter by now
        return true;
    });
    SampledValue sample;
    EXPECT_FALSE(client().getStaticParam("S1", sample, 100));
    common::Doubles values;
    qor.on<CommandDirectCtrl>([this](const CommandDirectCtrl& request) {
        client().onNewQor();
        client().onDirectCtrl(request);
        return true;
    });
    EXPECT_FALSE(client().getParamData("S1", values, 100, true));
}

TEST_F(NewQor, AGroupOfWhichTheOldOneResolvedAPartIsNotRead) {
    EXPECT_THAT(read("S1"), ElementsAre(5.0));
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo& question) {
        client().onNewQor();
        CommandGetParamInfo answer(question.payload());
        answer.paramIndex = 8;
        qor.send(answer);
        return true;
    });
    std::vector<std::vector<double>> values;
    EXPECT_FALSE(client().readTogether({"S1", "S2"}, values, 100));
    EXPECT_THAT(qor.all<CommandReadTogether>(), IsEmpty());
}

TEST_F(NewQor, NothingIsSubscribedAtItThatTheOldOneWasAskedFor) {
    const Epoch old = client().epoch();
    EXPECT_TRUE(client().subscribe(old, {"S1"}));
    isThere();
    qor.forgetSent();
    EXPECT_FALSE(client().subscribe(old, {"S2"}));
    EXPECT_THAT(qor.all<CommandSetParamList>(), IsEmpty());
    // It may be the same one behind a new connection, and know its list.
    EXPECT_TRUE(client().unsubscribe(old, {"S1"}));
    EXPECT_THAT(qor.last<CommandSetParamList>().paramIndices.items, IsEmpty());
    EXPECT_TRUE(client().subscribe(client().epoch(), {"S2"}));
    EXPECT_THAT(qor.last<CommandSetParamList>().paramIndices.items, ElementsAre(5u));
}

TEST_F(NewQor, AStreamCountedForTheOldOneDoesNotEndOneOfTheNew) {
    const Epoch old = client().epoch();
    EXPECT_TRUE(client().subscribe(old, {"S1"}));
    client().onNewQor();
    EXPECT_TRUE(client().subscribe(client().epoch(), {"S1"}));
    EXPECT_TRUE(client().unsubscribe(old, {"S1"}));
    EXPECT_TRUE(client().subscribe(client().epoch(), {"S2"}));
    EXPECT_THAT(qor.last<CommandSetParamList>().paramIndices.items, ElementsAre(5u, 6u));
}

}  // namespace
