#include "TestSupport.h"

namespace simulator::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

KwpPayload kwp(ConversationHarness& qor, std::uint32_t service, const std::string& data,
               std::uint32_t timeoutMs = 500) {
    std::vector<Record> records =
        qor.ask(CommandId::ExecKwp, KwpPayload{2, service, data, timeoutMs, false}.write());
    if (records.at(0).id == CommandId::Ping) records = qor.wait(timeoutMs + 1);
    return KwpPayload::read(records.at(0).payload);
}

TEST(Diagnostics, TroubleCodesAreReadWithTheCallersOptionUntilTheyAreCleared) {
    ConversationHarness qor;
    const auto read = [&] {
        const auto answer = qor.ask(CommandId::GetDtc, TroubleCodesPayload{{}, true}.write());
        return TroubleCodesPayload::read(answer.at(0).payload);
    };
    ASSERT_THAT(read().codes, SizeIs(1));
    EXPECT_EQ(read().codes[0].status, 2U);
    EXPECT_EQ(read().codes[0].texts[3], "d");
    EXPECT_TRUE(read().option);
    const auto cleared = qor.ask(CommandId::EcuToolRoutine, RoutinePayload{3}.write());
    EXPECT_TRUE(isAcknowledgement(cleared.at(0), 1));
    EXPECT_THAT(read().codes, SizeIs(0));
}

TEST(Diagnostics, AKwpServiceIsChosenByItsNumberAndTheBeginningOfItsData) {
    ConversationHarness qor;
    qor.connectEcu();
    const KwpPayload known = kwp(qor, 0x1A, "\x90\x01");
    EXPECT_EQ(known.data, "\x5A\x90\x31");
    EXPECT_FALSE(known.failed);
    EXPECT_EQ(known.channel, 2U);
    const KwpPayload unknown = kwp(qor, 0x1A, "\x91");
    EXPECT_EQ(unknown.data, "\x7F\x1A\x11");
    EXPECT_TRUE(unknown.failed);
}

TEST(Diagnostics, ASlowKwpServiceIsAcknowledgedFirstAndFailsWhenTheTimeIsTooShort) {
    ConversationHarness qor;
    qor.connectEcu();
    EXPECT_EQ(kwp(qor, 0x11, "", 300).data, "\x51");
    const KwpPayload late = kwp(qor, 0x11, "", 299);
    EXPECT_TRUE(late.failed);
    EXPECT_EQ(late.data, "");
}

TEST(Diagnostics, WithoutAnEcuKwpFails) {
    ConversationHarness qor;
    EXPECT_TRUE(kwp(qor, 0x1A, "\x90").failed);
}

TEST(Diagnostics, TheCanBusAnswersOnceItIsConnected) {
    ConversationHarness qor;
    const std::string request = CanDataPayload{{{256, 0}, {512, 0}, {1, 0}}}.write();
    EXPECT_TRUE(isAcknowledgement(qor.ask(CommandId::CanBusData, request).at(0), 2));
    EXPECT_TRUE(isAcknowledgement(
        qor.ask(CommandId::CanBusSend, CanSendPayload{512, 0, "a"}.write()).at(0), 2));
    qor.ask(CommandId::CanBusConnect, CanConnectPayload().write());
    const auto answer = qor.ask(CommandId::CanBusData, request);
    const CanDataPayload data = CanDataPayload::read(answer.at(0).payload);
    ASSERT_THAT(data.items, SizeIs(3));
    EXPECT_EQ(data.items[0].value, 20);
    EXPECT_EQ(data.items[1].value, -40);
    EXPECT_EQ(data.items[2].value, -1);
}

TEST(Diagnostics, ASentFrameIsWhatTheNextReadingFinds) {
    ConversationHarness qor;
    qor.ask(CommandId::CanBusConnect, CanConnectPayload().write());
    qor.ask(CommandId::CanBusSend, CanSendPayload{512, 0, bytesOf("34 12")}.write());
    const auto answer = qor.ask(CommandId::CanBusData, CanDataPayload{{{512, 0}}}.write());
    EXPECT_EQ(CanDataPayload::read(answer.at(0).payload).items.at(0).value, 0x1234);
}

}  // namespace
}  // namespace simulator::test
