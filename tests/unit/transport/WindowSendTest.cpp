#include <gmock/gmock.h>

#include "support/TcpBytes.h"
#include "WindowFakePlatform.h"
#include "WindowTestTransport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using tcp::record;
using tcp::word;

class WindowSend : public testing::Test {
protected:
    WindowFakePlatform* const platform = new WindowFakePlatform;  // the transport's
    WindowTestTransport transport{uniqueTitle("send"), "server",
                                  std::unique_ptr<IWindowPlatform>(platform)};

    /// A message of QOR's is being handled, and its sender held, while this is done.
    void inHandler(const std::function<void()>& action) {
        transport.handler = [&](auto&, auto&) {
            platform->isHolding = true;
            action();
            return true;
        };
        std::string message = record(8, 5, word(3));
        COPYDATASTRUCT data = {3084, static_cast<DWORD>(message.size()), &message[0]};
        EXPECT_TRUE(transport.onCopyData(&data));
    }

    WindowFakePlatform::Sent sendWith(unsigned int timeoutMs) {
        EXPECT_TRUE(transport.sendRoutine(timeoutMs));
        return platform->sent.at(0);
    }
};

TEST_F(WindowSend, ACommandIsOneMessageOfTheProtocolsTagToTheServersWindow) {
    auto command = std::make_unique<CommandEcuToolRoutine>();
    command->routine = 3;
    const std::string expected = record(8, command->requestId(), word(3));

    EXPECT_TRUE(transport.send(std::move(command), 500));

    EXPECT_THAT(platform->calls, ElementsAre("find server", "send"));
    EXPECT_EQ(platform->server, platform->sent[0].window);
    EXPECT_EQ(3084u, platform->sent[0].tag);
    EXPECT_EQ(expected, platform->sent[0].bytes);
}

TEST_F(WindowSend, ATimeOutOf1000MsUsesBothFlags) {
    const auto sent = sendWith(1000);
    EXPECT_EQ(1000u, sent.timeoutMs);
    EXPECT_EQ(unsigned{SMTO_BLOCK | SMTO_ABORTIFHUNG}, sent.flags);
}

TEST_F(WindowSend, ATimeOutOf1001MsOnlyBlocks) {
    const auto sent = sendWith(1001);
    EXPECT_EQ(1001u, sent.timeoutMs);
    EXPECT_EQ(unsigned{SMTO_BLOCK}, sent.flags);
}

TEST_F(WindowSend, TheDefaultTimeOutIs2000MsAndOnlyBlocks) {
    const auto sent = sendWith(static_cast<unsigned int>(-2));
    EXPECT_EQ(2000u, sent.timeoutMs);
    EXPECT_EQ(unsigned{SMTO_BLOCK}, sent.flags);
}

TEST_F(WindowSend, NoLimitIsPassedOnAndOnlyBlocks) {
    const auto sent = sendWith(static_cast<unsigned int>(-1));
    EXPECT_EQ(0xFFFFFFFFu, sent.timeoutMs);
    EXPECT_EQ(unsigned{SMTO_BLOCK}, sent.flags);
}

TEST_F(WindowSend, ATimeOutOf0IsPassedOnWithBothFlags) {
    const auto sent = sendWith(0);
    EXPECT_EQ(0u, sent.timeoutMs);
    EXPECT_EQ(unsigned{SMTO_BLOCK | SMTO_ABORTIFHUNG}, sent.flags);
}

TEST_F(WindowSend, TheDefaultTimeOutIsTheSameForEveryCommand) {
    for (unsigned int id = 0; id <= 20; ++id) EXPECT_EQ(2000u, transport.defaultTimeout(id));
}

TEST_F(WindowSend, WithoutAServerWindowNothingIsSent) {
    platform->server = nullptr;

    EXPECT_FALSE(transport.sendRoutine(500));

    EXPECT_THAT(platform->calls, ElementsAre("find server"));
}

TEST_F(WindowSend, ACommandOfTheGreatestLengthIsSentAndALongerOneIsRefusedAtOnce) {
    // Around the path stand the head and nine words.
    constexpr std::size_t longestPath = 0x8000000 - 12 - 4 * 9;
    platform->whileSending = [this] {
        EXPECT_EQ(0x8000000u, platform->sent.back().bytes.size());
        platform->sent.back().bytes.clear();
    };
    auto command = std::make_unique<CommandStartEdit>();
    command->path.assign(longestPath, 'x');
    EXPECT_TRUE(transport.send(std::move(command), 500));
    EXPECT_THAT(platform->calls, ElementsAre("find server", "send"));

    command = std::make_unique<CommandStartEdit>();
    command->path.assign(longestPath + 1, 'x');
    inHandler([&] { EXPECT_FALSE(transport.send(std::move(command), 500)); });
    EXPECT_THAT(platform->calls, ElementsAre("find server", "send", "release 1"));
}

TEST_F(WindowSend, TheServerIsLookedForAgainAtEverySend) {
    platform->server = nullptr;
    EXPECT_FALSE(transport.sendRoutine(500));
    platform->server = reinterpret_cast<HWND>(0x77);

    EXPECT_TRUE(transport.sendRoutine(500));

    EXPECT_EQ(platform->server, platform->sent.at(0).window);
}

TEST_F(WindowSend, AnyResultButZeroIsASuccess) {
    for (const unsigned long result : {1ul, 2ul, 0x80000000ul, 0xFFFFFFFFul}) {
        platform->receiverResult = result;
        EXPECT_TRUE(transport.sendRoutine(500)) << result;
    }
    platform->receiverResult = 0;
    EXPECT_FALSE(transport.sendRoutine(500));
}

TEST_F(WindowSend, AMessageThatWasNotTakenIsAFailureWhateverItsResult) {
    platform->end = MessageEnd::late;
    platform->receiverResult = 1;

    EXPECT_FALSE(transport.sendRoutine(500));
}

TEST_F(WindowSend, AHeldSenderIsReleasedWithOneBeforeAnythingElse) {
    inHandler([this] { EXPECT_TRUE(transport.sendRoutine(500)); });

    EXPECT_THAT(platform->calls, ElementsAre("release 1", "find server", "send"));
}

// The system may say so after a message that reached no handler: to release its sender would tell
// it that the message was taken.
TEST_F(WindowSend, OutsideOfAHandlerNobodyIsReleased) {
    platform->isHolding = true;
    EXPECT_TRUE(transport.sendRoutine(500));
    EXPECT_THAT(platform->calls, ElementsAre("find server", "send"));
    inHandler([] {});
    platform->isHolding = true;
    EXPECT_TRUE(transport.sendRoutine(500));
    EXPECT_THAT(platform->calls, testing::Not(testing::Contains("release 1")));
}

TEST_F(WindowSend, AHeldSenderIsReleasedEvenIfThereIsNoServer) {
    platform->server = nullptr;

    inHandler([this] { EXPECT_FALSE(transport.sendRoutine(500)); });

    EXPECT_THAT(platform->calls, ElementsAre("release 1", "find server"));
}

TEST_F(WindowSend, AnAnswerThatArrivesInsideTheSendHasBeenHandledWhenItReturns) {
    platform->whileSending = [this] {
        std::string answer = record(tcp::replyFlag | 6, tcp::wordAt(platform->sent[0].bytes, 4),
                                    word(1) + std::string(8, '\0'));
        COPYDATASTRUCT data = {3084, static_cast<DWORD>(answer.size()), &answer[0]};
        EXPECT_TRUE(transport.onCopyData(&data));
    };

    EXPECT_TRUE(transport.sendRoutine(500));

    ASSERT_EQ(1u, transport.seen.size());
    EXPECT_EQ(6u, transport.seen[0].commandId);
    EXPECT_TRUE(transport.seen[0].isReply);
}

}  // namespace
