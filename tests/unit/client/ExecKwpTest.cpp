#include "ClientFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ExecKwp : public ClientTest {
protected:
    ExecKwp() { clock.msPerRead = 1; }

    bool connect(std::uint32_t protocolNumber) {
        protocol::KwpConnect record;
        record.protocol = protocolNumber;
        const bool connected = client().connectEcu(record, nullptr, callback);
        qor.forgetSent();
        return connected;
    }
    void tell(const std::string& data) {
        CommandExecKwp told;
        told.channel = 8;
        told.service = 0x50;
        told.data = data;
        told.timeoutMs = 9;
        told.failed = true;
        qor.send(told);
    }
    /// QOR answers every request so late, counted from the end of the send.
    void answersAfter(std::uint32_t ms) {
        qor.on<CommandExecKwp>([=](const CommandExecKwp&) {
            clock.after(ms, [=] { tell("answer"); });
            return true;
        });
    }
    bool exec(std::uint32_t timeoutMs = 500) {
        request.timeoutMs = timeoutMs;
        return client().execKwp(request, answer);
    }

    struct NoCallback final : ClientExternalOperating::ConnectCallback {
        void onProgress() override {}
        void onFigure(std::int32_t, std::uint32_t) override {}
    } callback;
    protocol::ExecKwp request{77, 0x27, std::string("\x01\x00\xFF", 3), 0, true};
    protocol::ExecKwp answer;
};

TEST_F(ExecKwp, BeforeAnyConnectItFailsWithoutSending) {
    EXPECT_FALSE(exec());
    EXPECT_THAT(qor.sent(), IsEmpty());
}

TEST_F(ExecKwp, AfterADisconnectItFailsWithoutSending) {
    connect(2);
    client().disconnectEcu();
    qor.forgetSent();
    EXPECT_FALSE(exec());
    EXPECT_THAT(qor.sent(), IsEmpty());
}

TEST_F(ExecKwp, AConnectThatFailedIsGoodEnough) {
    qor.acknowledges = false;
    EXPECT_FALSE(connect(3));
    answersAfter(10);
    EXPECT_TRUE(exec());
    EXPECT_EQ(qor.last<CommandExecKwp>().channel, 3u);
}

TEST_F(ExecKwp, TheRequestCarriesTheProtocolOfTheConnectAndItsOwnFields) {
    connect(4);
    exec(700);
    ASSERT_THAT(qor.sentIds(), ElementsAre(15));
    const auto& sent = qor.last<CommandExecKwp>();
    EXPECT_EQ(sent.channel, 4u);
    EXPECT_EQ(sent.service, 0x27u);
    EXPECT_EQ(sent.data, std::string("\x01\x00\xFF", 3));
    EXPECT_EQ(sent.timeoutMs, 700u);
    EXPECT_TRUE(sent.failed);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 400u);
}

TEST_F(ExecKwp, TheAnswerComesBackWhole) {
    connect(1);
    answersAfter(10);
    ASSERT_TRUE(exec());
    EXPECT_EQ(answer.channel, 8u);
    EXPECT_EQ(answer.service, 0x50u);
    EXPECT_EQ(answer.data, "answer");
    EXPECT_EQ(answer.timeoutMs, 9u);
    EXPECT_TRUE(answer.failed);
}

TEST_F(ExecKwp, AnAnswerThatWasThereBeforeTheRequestIsNotTaken) {
    connect(1);
    tell("early");
    EXPECT_FALSE(exec());
    EXPECT_EQ(answer.data, "");
    answersAfter(10);
    ASSERT_TRUE(exec());
    qor.on<CommandExecKwp>([](const CommandExecKwp&) { return true; });
    EXPECT_FALSE(exec());
}

TEST_F(ExecKwp, TheAnswerHasTheRequestsTimeAnd400MsMore) {
    connect(1);
    answersAfter(890);
    EXPECT_TRUE(exec(500));
    answersAfter(920);
    EXPECT_FALSE(exec(500));
    answersAfter(390);
    EXPECT_TRUE(exec(0));
}

TEST_F(ExecKwp, WithoutALimitTheTimeDoesNotWrap) {
    connect(1);
    qor.on<CommandExecKwp>([this](const CommandExecKwp&) {
        soon([this] { tell("answer"); });
        return true;
    });
    EXPECT_TRUE(exec(0xFFFFFFFFu));
}

TEST_F(ExecKwp, ASendThatFailsFailsEvenIfTheAnswerCameMeanwhile) {
    connect(1);
    qor.on<CommandExecKwp>([this](const CommandExecKwp&) {
        tell("meanwhile");
        return false;
    });
    EXPECT_FALSE(exec());
    EXPECT_EQ(answer.data, "");
}

TEST_F(ExecKwp, TenThousandBytesTravelBothWays) {
    connect(1);
    request.data = std::string(10000, '\0');
    qor.on<CommandExecKwp>([this](const CommandExecKwp&) {
        tell(std::string(10000, '\xFF'));
        return true;
    });
    ASSERT_TRUE(exec());
    EXPECT_EQ(qor.last<CommandExecKwp>().data, std::string(10000, '\0'));
    EXPECT_EQ(answer.data, std::string(10000, '\xFF'));
}

}  // namespace
