#include <gmock/gmock.h>

#include <new>

#include "support/TcpBytes.h"
#include "WindowFakePlatform.h"
#include "WindowTestTransport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using tcp::record;
using tcp::word;
using tcp::wordAt;

constexpr DWORD tag = 3084;

class WindowReceive : public testing::Test {
protected:
    WindowFakePlatform* const platform = new WindowFakePlatform;  // the transport's
    WindowTestTransport transport{uniqueTitle("receive"), "server",
                                  std::unique_ptr<IWindowPlatform>(platform)};

    bool receive(std::string bytes, DWORD itsTag = tag) {
        COPYDATASTRUCT data = {itsTag, static_cast<DWORD>(bytes.size()), &bytes[0]};
        return transport.onCopyData(&data);
    }
};

const std::string routine = record(8, 0xABCD, word(3));

TEST_F(WindowReceive, ACommandGoesToTheHandlerWhoseResultIsTheMessages) {
    EXPECT_TRUE(receive(routine));
    transport.handler = [](auto&, auto&) { return false; };
    EXPECT_FALSE(receive(routine));

    ASSERT_EQ(2u, transport.seen.size());
    EXPECT_EQ(8u, transport.seen[0].commandId);
    EXPECT_EQ(0xABCDu, transport.seen[0].requestId);
}

TEST_F(WindowReceive, AMessageWithoutARecordIsRefused) {
    EXPECT_FALSE(transport.onCopyData(nullptr));
}

TEST_F(WindowReceive, AMessageWithAnotherTagIsRefusedUnread) {
    COPYDATASTRUCT unreadable = {0, 1000, reinterpret_cast<void*>(8)};
    for (const DWORD other : {0ul, 3083ul, 3085ul, 0x10C0Cul, 0xFFFFFFFFul}) {
        unreadable.dwData = other;
        EXPECT_FALSE(transport.onCopyData(&unreadable)) << other;
        EXPECT_FALSE(receive(routine, other)) << other;
    }
    EXPECT_EQ(0u, transport.offers);
    EXPECT_THAT(transport.seen, IsEmpty());
}

TEST_F(WindowReceive, ANullPointerIsRefusedWhateverItsLength) {
    for (const DWORD length : {0ul, 1ul, 16ul, 0xFFFFFFFFul}) {
        COPYDATASTRUCT data = {tag, length, nullptr};
        EXPECT_FALSE(transport.onCopyData(&data)) << length;
    }
}

TEST_F(WindowReceive, AnAbsurdLengthIsRefusedUnread) {
    char byte = 0;
    for (const DWORD length : {0x8000001ul, 0x7FFFFFFFul, 0x80000000ul, 0xFFFFFFFFul}) {
        COPYDATASTRUCT data = {tag, length, &byte};
        EXPECT_FALSE(transport.onCopyData(&data)) << length;
    }
    EXPECT_EQ(0u, transport.offers);
}

TEST_F(WindowReceive, TheLongestRecordIsTaken) {
    constexpr std::size_t longest = 0x8000000;
    std::string bytes = word(8) + word(1) + word(longest - 12) + word(3);
    bytes.resize(longest);
    COPYDATASTRUCT data = {tag, longest, &bytes[0]};
    EXPECT_TRUE(transport.onCopyData(&data));
    EXPECT_EQ(1u, transport.seen.size());
}

TEST_F(WindowReceive, EveryCutOfARecordIsRefusedTheEmptyOneToo) {
    for (std::size_t length = 0; length < routine.size(); ++length)
        EXPECT_FALSE(receive(routine.substr(0, length))) << length;
    EXPECT_THAT(transport.seen, IsEmpty());
}

TEST_F(WindowReceive, ALengthFieldThatPromisesMoreThanThereIsIsRefused) {
    EXPECT_FALSE(receive(word(8) + word(1) + word(0xFFFFFFFF) + word(3)));
    EXPECT_FALSE(receive(word(8) + word(1) + word(0x7FFFFFF4) + word(3)));
    EXPECT_FALSE(receive(word(8) + word(1) + word(5) + word(3)));
}

TEST_F(WindowReceive, TrailingBytesAreIgnored) {
    EXPECT_TRUE(receive(routine + "?"));
    EXPECT_TRUE(receive(routine + std::string(1000, '\xFF')));
    EXPECT_EQ(2u, transport.seen.size());
}

TEST_F(WindowReceive, ASecondRecordInAMessageIsNotHandled) {
    EXPECT_TRUE(receive(routine + record(6, 1, word(2) + std::string(8, '\0'))));

    ASSERT_EQ(1u, transport.seen.size());
    EXPECT_EQ(8u, transport.seen[0].commandId);
}

TEST_F(WindowReceive, ACommandThatNoPrototypeKnowsIsRefused) {
    for (const std::uint32_t id : {2u, 4u, 13u, 20u, 0xFFFFu})
        EXPECT_FALSE(receive(record(id, 1, word(0)))) << id;
    EXPECT_THAT(transport.seen, IsEmpty());
}

TEST_F(WindowReceive, APingIsAcceptedWhateverItsStatusAndNeedsNoHandler) {
    for (const std::uint32_t status : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
        EXPECT_TRUE(receive(record(0, 1, word(status)))) << status;
        EXPECT_TRUE(receive(record(tcp::replyFlag, 1, word(status)))) << status;
    }
    EXPECT_THAT(transport.seen, IsEmpty());
    EXPECT_THAT(platform->calls, IsEmpty());
}

TEST_F(WindowReceive, APrototypeOfThePingIsAskedBeforeTheTransportsOwn) {
    transport.registry.push_back(std::make_unique<CountingPrototype<CommandPing>>());
    transport.handler = [](auto&, auto&) { return false; };

    EXPECT_FALSE(receive(record(0, 5, word(0))));

    EXPECT_EQ(1u, transport.seen.size());
}

TEST_F(WindowReceive, ThePrototypeThatWasRegisteredFirstWins) {
    unsigned late = 0;
    transport.registry.push_back(
        std::make_unique<CountingPrototype<CommandReceiveParamData>>(late));

    EXPECT_TRUE(receive(record(6, 1, word(2) + std::string(8, '\0'))));

    EXPECT_EQ(1u, transport.offers);
    EXPECT_EQ(0u, late);
}

TEST_F(WindowReceive, AHandlerThatRunsOutOfMemoryHasNotHandled) {
    transport.handler = [](auto&, auto&) -> bool { throw std::bad_alloc(); };
    EXPECT_FALSE(receive(routine));
    ASSERT_EQ(1u, transport.unread.size());
    EXPECT_EQ(8u, transport.unread[0].commandId);
    EXPECT_EQ(0xABCDu, transport.unread[0].requestId);
    EXPECT_TRUE(transport.unread[0].lacksMemory);
}

TEST_F(WindowReceive, WhatAHandlerMeetsIsNotTheErrorOfTheSendThatItInterrupts) {
    transport.handler = [](auto&, auto&) {
        SetLastError(ERROR_ACCESS_DENIED);
        return true;
    };
    SetLastError(ERROR_TIMEOUT);
    EXPECT_TRUE(receive(routine));
    EXPECT_EQ(DWORD{ERROR_TIMEOUT}, GetLastError());
}

TEST_F(WindowReceive, AReplyReleasesTheSenderFirstAndIsStamped) {
    transport.handler = [this](auto&, auto& replyer) {
        platform->isHolding = true;
        return replyer.reply(std::make_unique<CommandEcuToolRoutine>(), 1234);
    };

    EXPECT_TRUE(receive(routine));

    EXPECT_THAT(platform->calls, ElementsAre("release 1", "find server", "send"));
    EXPECT_EQ(record(tcp::replyFlag | 8, 0xABCD, word(0)), platform->sent.at(0).bytes);
    EXPECT_EQ(1234u, platform->sent[0].timeoutMs);
}

TEST_F(WindowReceive, TheResultOfAReplyIsThatOfItsSend) {
    transport.handler = [](auto&, auto& replyer) {
        return replyer.reply(std::make_unique<CommandEcuToolRoutine>(), 100);
    };
    platform->receiverResult = 0;
    EXPECT_FALSE(receive(routine));
    platform->server = nullptr;
    EXPECT_FALSE(receive(routine));
}

TEST_F(WindowReceive, AReplyWithoutACommandOnlyReleasesTheSender) {
    bool result = false;
    platform->isHolding = true;
    transport.handler = [&](auto&, auto& replyer) {
        result = replyer.reply(nullptr, 0);
        return true;
    };

    EXPECT_TRUE(receive(routine));

    EXPECT_TRUE(result);
    EXPECT_THAT(platform->calls, ElementsAre("release 1"));
}

TEST_F(WindowReceive, ASenderThatIsNotHeldOrNoLongerHeldIsNotReleased) {
    transport.handler = [](auto&, auto& replyer) {
        return replyer.reply(nullptr, 0) && replyer.reply(nullptr, 0);
    };
    EXPECT_TRUE(receive(routine));
    EXPECT_THAT(platform->calls, IsEmpty());
    platform->isHolding = true;
    EXPECT_TRUE(receive(routine));
    EXPECT_THAT(platform->calls, ElementsAre("release 1"));
}

TEST_F(WindowReceive, ASendFromTheHandlerIsARequestOfItsOwn) {
    transport.handler = [this](auto&, auto&) {
        platform->isHolding = true;
        return transport.sendRoutine(100);
    };

    EXPECT_TRUE(receive(routine));

    EXPECT_THAT(platform->calls, ElementsAre("release 1", "find server", "send"));
    EXPECT_EQ(8u, wordAt(platform->sent.at(0).bytes, 0)) << "no reply flag";
    EXPECT_NE(0xABCDu, wordAt(platform->sent[0].bytes, 4));
}

}  // namespace
