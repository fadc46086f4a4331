// QOR's window is another one than before, or gone.

#include <gmock/gmock.h>

#include "support/TcpBytes.h"
#include "WindowFakePlatform.h"
#include "WindowTestTransport.h"

namespace {

using tcp::record;
using tcp::word;
using testing::ElementsAre;

class WindowPeerChange : public testing::Test {
protected:
    WindowPeerChange() { EXPECT_TRUE(transport.sendRoutine(500)); }

    void receive() {
        std::string value = record(6, 5, word(1) + std::string(8, '\0'));
        COPYDATASTRUCT data = {3084, static_cast<DWORD>(value.size()), &value[0]};
        EXPECT_TRUE(transport.onCopyData(&data));
    }
    void anotherWindow() { platform->server = reinterpret_cast<HWND>(0x5678); }

    WindowFakePlatform* const platform = new WindowFakePlatform;  // the transport's
    WindowTestTransport transport{uniqueTitle("peer"), "server",
                                  std::unique_ptr<IWindowPlatform>(platform)};
};

TEST_F(WindowPeerChange, TheFirstWindowIsNoChange) {
    EXPECT_TRUE(transport.sendRoutine(500));
    receive();
    EXPECT_EQ(0, transport.newQors);
}

TEST_F(WindowPeerChange, AnotherWindowIsAnotherQor) {
    anotherWindow();
    EXPECT_TRUE(transport.sendRoutine(500));
    EXPECT_EQ(1, transport.newQors);
    EXPECT_TRUE(transport.sendRoutine(500));
    EXPECT_EQ(1, transport.newQors);
}

TEST_F(WindowPeerChange, TheSameHandleInAnotherProcessIsAnotherQor) {
    platform->process = 78;
    EXPECT_TRUE(transport.sendRoutine(500));
    EXPECT_EQ(1, transport.newQors);
}

TEST_F(WindowPeerChange, AWindowThatWasAwayForAWhileIsTheSameQor) {
    const HWND window = platform->server;
    platform->server = nullptr;
    EXPECT_FALSE(transport.sendRoutine(500));
    platform->server = window;
    EXPECT_TRUE(transport.sendRoutine(500));
    EXPECT_EQ(0, transport.newQors);
}

TEST_F(WindowPeerChange, AnotherQorIsKnownBeforeAnythingIsSentToIt) {
    anotherWindow();
    int atSending = 0;
    platform->whileSending = [&] { atSending = transport.newQors; };
    EXPECT_TRUE(transport.sendRoutine(500));
    EXPECT_EQ(1, atSending);
}

TEST_F(WindowPeerChange, AMessageThatComesWhenTheKnownWindowIsGoneIsOfAnotherQor) {
    anotherWindow();
    int atHandling = 0;
    transport.handler = [&](auto&, auto&) {
        atHandling = transport.newQors;
        return true;
    };
    receive();
    EXPECT_EQ(1, atHandling);
    receive();
    EXPECT_TRUE(transport.sendRoutine(500));
    EXPECT_EQ(1, transport.newQors);
}

TEST_F(WindowPeerChange, ThePermitIsAskedWhenTheWindowHasBeenLookedAt) {
    anotherWindow();
    const auto send = [this] {
        return transport.sendIf([this] { return transport.newQors == 0; },
                                std::make_unique<CommandEcuToolRoutine>(), 500);
    };
    EXPECT_EQ(Delivery::withdrawn, send());
    EXPECT_EQ(1u, platform->sent.size());
}

}  // namespace
