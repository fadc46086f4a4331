// A caller that gives up while the client works for it.

#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Caller : public ClientTest {
protected:
    Caller() {
        clock.msPerRead = 1;
        qor.knows("S1", 5);
        client().beginRequest(interest);
    }

    std::shared_ptr<common::Interest> interest = std::make_shared<common::Interest>();
};

TEST_F(Caller, ThatHasGivenUpGetsNothingSentAnyMore) {
    interest->giveUp();
    EXPECT_FALSE(client().setParamData("S1", {1.0}));
    EXPECT_FALSE(client().clearDtc());
    EXPECT_FALSE(client().ping(100));
    EXPECT_THAT(qor.sent(), IsEmpty());
}

TEST_F(Caller, ThatGivesUpWhileTheNameIsResolvedHasNothingWritten) {
    qor.on<CommandGetParamInfo>([this](const CommandGetParamInfo& question) {
        CommandGetParamInfo answer(question.payload());
        answer.paramIndex = 5;
        qor.send(answer);
        interest->giveUp();
        return true;
    });
    EXPECT_FALSE(client().setParamData("S1", {1.0}));
    EXPECT_FALSE(client().setStaticParam("S1", {{1.0}, {}, {}, {}}));
    EXPECT_FALSE(client().setDynamicData("S1", {}, "1"));
    EXPECT_FALSE(client().startDirectCtrl("S1"));
    EXPECT_FALSE(client().stopDirectCtrl("S1"));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3));
}

TEST_F(Caller, ThatStillWaitsIsServed) {
    EXPECT_TRUE(client().setParamData("S1", {1.0}));
    EXPECT_THAT(qor.sentIds(), ElementsAre(3, 7));
}

TEST_F(Caller, ThatHasGivenUpDoesNotStopWhatNobodyWaitsFor) {
    interest->giveUp();
    EXPECT_TRUE(client().sendCanBusMsg({1, 2, "x"}, 0));
    clock.advance(1000);
    client().isEcuOnline();
    EXPECT_THAT(qor.sentIds(), ElementsAre(19, 2));
}

TEST_F(Caller, ThatHasGivenUpDoesNotStopTheNext) {
    interest->giveUp();
    client().endRequest();
    EXPECT_TRUE(client().setParamData("S1", {1.0}));
}

}  // namespace
