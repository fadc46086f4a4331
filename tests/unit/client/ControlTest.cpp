#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Writing a text, and direct control.
class Control : public ClientTest {
protected:
    Control() {
        clock.msPerRead = 1;
        qor.knows("Fan", 26);
    }
    const CommandDirectCtrl& request() { return qor.last<CommandDirectCtrl>(); }
};

TEST_F(Control, StartingNamesIndexOperationAndParameter) {
    EXPECT_TRUE(client().startDirectCtrl("Fan"));
    EXPECT_EQ(request().paramIndex, 26u);
    EXPECT_EQ(request().operation, 2u);
    EXPECT_THAT(request().values, IsEmpty());
    EXPECT_EQ(request().name, "Fan");
}

TEST_F(Control, StoppingIsTheSameRecordButForItsOperation) {
    EXPECT_TRUE(client().stopDirectCtrl("Fan"));
    EXPECT_EQ(request().paramIndex, 26u);
    EXPECT_EQ(request().operation, 3u);
    EXPECT_THAT(request().values, IsEmpty());
    EXPECT_EQ(request().name, "Fan");
}

TEST_F(Control, ADynamicWriteCarriesTheTextInThePlaceOfTheName) {
    EXPECT_TRUE(client().setDynamicData("Fan", {}, "3 %d"));
    EXPECT_EQ(request().paramIndex, 26u);
    EXPECT_EQ(request().operation, 5u);
    EXPECT_THAT(request().values, IsEmpty());
    EXPECT_EQ(request().name, "3 %d");
    EXPECT_TRUE(client().setDynamicData("Fan", {1.0, 2.0}, ""));
    EXPECT_THAT(request().values, ElementsAre(1.0, 2.0));
}

TEST_F(Control, EachGivesQor400MsForTheNameAnd500MsForTheRest) {
    client().startDirectCtrl("Fan");
    client().stopDirectCtrl("Fan");
    client().setDynamicData("Fan", {}, "1");
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 7, 7, 7));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 400u);
    for (const std::size_t number : {1u, 2u, 3u})
        EXPECT_EQ(qor.sent().at(number).timeoutMs, 500u) << number;
}

TEST_F(Control, TheAcknowledgementAloneDecides) {
    for (const bool taken : {true, false}) {
        qor.on<CommandDirectCtrl>([=](const CommandDirectCtrl&) { return taken; });
        EXPECT_EQ(client().startDirectCtrl("Fan"), taken);
        EXPECT_EQ(client().stopDirectCtrl("Fan"), taken);
        EXPECT_EQ(client().setDynamicData("Fan", {}, "1"), taken);
    }
}

TEST_F(Control, AnUnknownNameSendsNothingButTheQuestion) {
    EXPECT_FALSE(client().startDirectCtrl("Unknown"));
    EXPECT_FALSE(client().stopDirectCtrl("Unknown"));
    EXPECT_FALSE(client().setDynamicData("Unknown", {}, "1"));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 3, 3));
}

TEST_F(Control, ADescriptionThatComesAfter700MsIsTooLate) {
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo&) {
        clock.after(700, [this] {
            CommandGetParamInfo answer;
            answer.name = "Pump";
            answer.paramIndex = 25;
            qor.send(answer);
        });
        return true;
    });
    EXPECT_FALSE(client().startDirectCtrl("Pump"));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3));
}

}  // namespace
