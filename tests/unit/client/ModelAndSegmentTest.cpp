#include "client/ClientCommands.h"

#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;

/// What concerns the whole session: the model that is edited and the page that is worked on.
class ModelAndSegment : public ClientTest {};

TEST_F(ModelAndSegment, AModelGoesOutAsItIsWith90SecondsForQor) {
    protocol::StartEdit model;
    model.mode = 5;
    model.path = "m";
    model.number = 4;
    model.files = {"h"};
    model.fileNumbers = {9};
    model.info = {{"key", "value"}};
    EXPECT_TRUE(client().startEdit(model));
    ASSERT_THAT(qor.sentIds(), ElementsAre(1));
    const auto& sent = qor.last<CommandStartEdit>();
    EXPECT_EQ(sent.stage, 7u);
    EXPECT_EQ(sent.mode, 5u);
    EXPECT_EQ(sent.path, "m");
    EXPECT_EQ(sent.number, 4u);
    EXPECT_THAT(sent.files, ElementsAre("h"));
    EXPECT_THAT(sent.fileNumbers, ElementsAre(9u));
    EXPECT_EQ(sent.info, model.info);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 90000u);
}

TEST_F(ModelAndSegment, TheRequestForAModelHandlesNoAnswerItself) {
    client().startEdit({});
    EXPECT_EQ(dynamic_cast<const ClientCommandStartEdit*>(qor.sent().at(0).command.get()), nullptr);
}

TEST_F(ModelAndSegment, OpeningAModelTakesTheResultOfTheSend) {
    qor.acknowledges = false;
    EXPECT_FALSE(client().startEdit({}));
}

TEST_F(ModelAndSegment, APageIsNamedBehindTheWordOneWith10SecondsForQor) {
    EXPECT_TRUE(client().setEcuSegment("WorkingPage", true));
    ASSERT_THAT(qor.sentIds(), ElementsAre(14));
    EXPECT_EQ(qor.last<CommandEcuSegment>().word, 1u);
    EXPECT_EQ(qor.last<CommandEcuSegment>().segment, "WorkingPage");
    EXPECT_TRUE(qor.last<CommandEcuSegment>().flag);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 10000u);
    client().setEcuSegment("", false);
    EXPECT_FALSE(qor.last<CommandEcuSegment>().flag);
}

TEST_F(ModelAndSegment, SelectingAPageTakesTheResultOfTheSend) {
    qor.acknowledges = false;
    EXPECT_FALSE(client().setEcuSegment("WorkingPage", true));
}

}  // namespace
