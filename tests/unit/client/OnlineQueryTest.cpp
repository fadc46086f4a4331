#include <limits>

#include "ClientFixture.h"

namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::int32_t ecuOnline = -10;

class OnlineQuery : public ClientTest {
protected:
    /// The client asks now; QOR's report comes behind the query.
    void askAndReport(double value) {
        client().isEcuOnline();
        qor.sendValue(ecuOnline, value);
    }
    protocol::KwpConnect lastQuery() { return qor.last<CommandKwpConnect>(); }

    struct NoCallback final : ClientExternalOperating::ConnectCallback {
        void onProgress() override {}
        void onFigure(std::int32_t, std::uint32_t) override {}
    } callback;
};

TEST_F(OnlineQuery, TwoQueriesWithin400MsSendOneCommand) {
    client().isEcuOnline();
    clock.advance(399);
    client().isEcuOnline();
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(OnlineQuery, After400MsQorIsAskedAgain) {
    client().isEcuOnline();
    clock.advance(400);
    client().isEcuOnline();
    EXPECT_THAT(qor.sent(), SizeIs(2));
}

TEST_F(OnlineQuery, TheTimeOfAQueryIsTakenAfterItsSend) {
    qor.on<CommandKwpConnect>([this](const CommandKwpConnect&) {
        clock.advance(300);
        return true;
    });
    client().isEcuOnline();
    clock.advance(399);
    client().isEcuOnline();
    EXPECT_THAT(qor.sent(), SizeIs(1));
}

TEST_F(OnlineQuery, TheCallThatAsksKnowsNothingYetAndTheNextTellsTheTruth) {
    EXPECT_FALSE(client().isEcuOnline());
    qor.sendValue(ecuOnline, 1.0);
    EXPECT_TRUE(client().isEcuOnline());
    clock.advance(400);
    EXPECT_FALSE(client().isEcuOnline());
}

TEST_F(OnlineQuery, AnAnswerDuringTheSendIsSeenByTheCallThatAsks) {
    qor.on<CommandKwpConnect>([this](const CommandKwpConnect&) {
        qor.sendValue(ecuOnline, 1.0);
        return true;
    });
    EXPECT_TRUE(client().isEcuOnline());
}

TEST_F(OnlineQuery, AQorThatNoLongerAnswersIsOfflineFromTheNextQueryOn) {
    askAndReport(1.0);
    clock.advance(400);
    client().isEcuOnline();
    EXPECT_FALSE(client().isEcuOnline());
}

TEST_F(OnlineQuery, TheResultOfTheSendMeansNothing) {
    qor.acknowledges = false;
    askAndReport(1.0);
    EXPECT_TRUE(client().isEcuOnline());
}

TEST_F(OnlineQuery, OnlyExactlyZeroAndOneChangeTheState) {
    const double others[] = {0.5,
                             2.0,
                             -1.0,
                             1.0000001,
                             std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity()};
    askAndReport(1.0);
    for (const double other : others) qor.sendValue(ecuOnline, other);
    EXPECT_TRUE(client().isEcuOnline());
    qor.sendValue(ecuOnline, -0.0);
    for (const double other : others) qor.sendValue(ecuOnline, other);
    EXPECT_FALSE(client().isEcuOnline());
}

TEST_F(OnlineQuery, TheFirstQueryCarriesProtocol0AndMode2AndDefaults) {
    client().isEcuOnline();
    const auto query = lastQuery();
    EXPECT_EQ(query.protocol, 0u);
    EXPECT_EQ(query.protocolOption, 1u);
    EXPECT_TRUE(query.optionFlag);
    EXPECT_EQ(query.kLineBaudRate, 10400u);
    EXPECT_EQ(query.canBaudRate, 125000u);
    EXPECT_EQ(query.refreshPeriodMs, 0u);
    EXPECT_EQ(query.mode, 2u);
    EXPECT_EQ(query.canRequestId, 0xFFFFFFFFu);
    EXPECT_EQ(query.canResponseId, 0xFFFFFFFFu);
    EXPECT_EQ(query.addressByte1, 0xFF);
    EXPECT_EQ(query.addressByte2, 0xFF);
    EXPECT_EQ(query.addressWord, 255u);
    EXPECT_EQ(query.reservedWord, 0u);
    EXPECT_TRUE(query.extraFlag);
    EXPECT_EQ(query.securityDll, "");
    EXPECT_TRUE(query.finalFlag);
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 0u);
}

TEST_F(OnlineQuery, AfterAConnectItCarriesTheConnectionsRecordWithMode2) {
    protocol::KwpConnect record;
    record.protocol = 3;
    record.mode = 0x30;
    record.securityDll = "c:\\sec.dll";
    client().connectEcu(record, nullptr, callback);
    client().isEcuOnline();
    EXPECT_EQ(lastQuery().protocol, 3u);
    EXPECT_EQ(lastQuery().mode, 2u);
    EXPECT_EQ(lastQuery().securityDll, "c:\\sec.dll");
}

TEST_F(OnlineQuery, AFailedConnectStillKeepsItsProtocol) {
    qor.acknowledges = false;
    protocol::KwpConnect record;
    record.protocol = 4;
    EXPECT_FALSE(client().connectEcu(record, nullptr, callback));
    client().isEcuOnline();
    EXPECT_EQ(lastQuery().protocol, 4u);
}

TEST_F(OnlineQuery, AfterADisconnectTheProtocolIs0Again) {
    protocol::KwpConnect record;
    record.protocol = 4;
    record.canBaudRate = 500000;
    client().connectEcu(record, nullptr, callback);
    client().disconnectEcu();
    client().isEcuOnline();
    EXPECT_EQ(lastQuery().protocol, 0u);
    EXPECT_EQ(lastQuery().canBaudRate, 125000u);
}

TEST_F(OnlineQuery, ADisconnectForgetsThatTheEcuWasOnline) {
    askAndReport(1.0);
    client().disconnectEcu();
    EXPECT_FALSE(client().isEcuOnline());
    EXPECT_THAT(qor.sent(), SizeIs(2));  // no further query yet: the old answer is gone
}

TEST_F(OnlineQuery, AnAnswerThatComesDuringADisconnectIsForgottenWithTheConnection) {
    client().isEcuOnline();
    qor.on<CommandKwpConnect>([this](const CommandKwpConnect&) {
        qor.sendValue(ecuOnline, 1.0);
        return true;
    });
    client().disconnectEcu();
    EXPECT_FALSE(client().isEcuOnline());
}

TEST_F(OnlineQuery, ADisconnectSendsTheNeutralRecordAndGivesQor3Seconds) {
    EXPECT_TRUE(client().disconnectEcu());
    ASSERT_THAT(qor.sent(), SizeIs(1));
    EXPECT_EQ(qor.sent().at(0).timeoutMs, 3000u);
    EXPECT_EQ(lastQuery().protocol, 0u);
    EXPECT_EQ(lastQuery().mode, 0u);
    qor.acknowledges = false;
    EXPECT_FALSE(client().disconnectEcu());
}

TEST_F(OnlineQuery, QueriesGoOnAcrossAWrapOfTheTickCount) {
    clock.advance(0xFFFFFFFFu - clock.now() - 100);
    client().isEcuOnline();
    clock.advance(399);  // wraps
    client().isEcuOnline();
    EXPECT_THAT(qor.sent(), SizeIs(1));
    clock.advance(1);
    client().isEcuOnline();
    EXPECT_THAT(qor.sent(), SizeIs(2));
}

TEST(OnlineQueryRightAfterBoot, EvenTheFirst400MsOfTheMachineSeeAQuery) {
    FakeClock clock(0);
    TempFolder folder;
    FakeQor qor;
    FakeProcesses processes;
    const FakeMessageBox::Choice choice = [](auto&&...) { return 1u; };
    ClientExternalOperating client(ClientSettings(), qor.transport(), processes.starter(),
                                   std::make_unique<FakeMessageBox>(choice));
    EXPECT_FALSE(client.isEcuOnline());
    EXPECT_THAT(qor.sent(), SizeIs(1));
    clock.advance(399);
    client.isEcuOnline();
    EXPECT_THAT(qor.sent(), SizeIs(1));
    clock.advance(1);
    client.isEcuOnline();
    EXPECT_THAT(qor.sent(), SizeIs(2));
}

}  // namespace
