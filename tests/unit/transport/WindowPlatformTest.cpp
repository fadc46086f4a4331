#include "transport/WindowPlatform.h"

#include <gtest/gtest.h>

#include <atomic>

#include "WindowPeer.h"
#include "WindowTestTransport.h"
#include "WindowWaiting.h"

namespace {

class WindowCalls : public testing::Test {
protected:
    WindowPlatform platform;
    const std::string title = uniqueTitle("platform");
    unsigned long result = 77;

    MessageEnd send(HWND to, const std::string& bytes, unsigned int timeoutMs = 5000) {
        return platform.sendCopyData(to, 3084, bytes, SMTO_BLOCK, timeoutMs, result);
    }
};

TEST_F(WindowCalls, AWindowIsFoundByItsWholeTitleAndNotByAnother) {
    const peer::WindowThread peer(title);

    EXPECT_EQ(peer.handle(), platform.findWindow(title));
    EXPECT_EQ(nullptr, platform.findWindow(title + "x"));
    EXPECT_EQ(nullptr, platform.findWindow(title.substr(0, title.size() - 1)));
}

TEST_F(WindowCalls, AnEmptyTitleFindsNothingThoughThereAreWindowsWithoutATitle) {
    const peer::WindowThread untitled("");
    ASSERT_NE(nullptr, FindWindowA(nullptr, ""));

    EXPECT_EQ(nullptr, platform.findWindow(""));
}

TEST_F(WindowCalls, OfTwoWindowsWithOneTitleOneIsFound) {
    const peer::WindowThread first(title);
    const peer::WindowThread second(title);

    HWND const found = platform.findWindow(title);

    EXPECT_TRUE(found == first.handle() || found == second.handle());
}

TEST_F(WindowCalls, BytesArriveAsTheyAreAndTheReceiversResultComesBack) {
    peer::WindowThread peer(title);
    peer.onMessage([](const peer::Message&) { return LRESULT{0x12345}; });
    const std::string bytes("a\0b\xFF", 4);

    ASSERT_EQ(MessageEnd::handled, send(peer.handle(), bytes));

    EXPECT_EQ(0x12345u, result);
    ASSERT_EQ(1u, peer.received().size());
    EXPECT_EQ(bytes, peer.received()[0].bytes);
    EXPECT_EQ(3084u, peer.received()[0].tag);
    EXPECT_EQ(0u, peer.received()[0].wParam);
}

TEST_F(WindowCalls, ATimeOutIsTheErrorToTellUnlessTheSystemSaysAnother) {
    const peer::WindowThread peer(title);
    SetLastError(0);

    ASSERT_EQ(MessageEnd::handled, send(peer.handle(), "x"));

    EXPECT_EQ(DWORD{ERROR_TIMEOUT}, GetLastError());
}

TEST_F(WindowCalls, AMessageToAWindowThatIsGoneFailsAtOnceAndIsNoTimeOut) {
    HWND gone = nullptr;
    {
        const peer::WindowThread peer(title);
        gone = peer.handle();
    }
    const Elapsed elapsed;

    EXPECT_EQ(MessageEnd::gone, send(gone, "x"));

    EXPECT_NE(DWORD{ERROR_TIMEOUT}, GetLastError());
    EXPECT_LT(elapsed.ms(), 2000u);
}

TEST_F(WindowCalls, APeerThatHangsIsATimeOut) {
    peer::WindowThread peer(title);
    std::promise<void> end;
    peer.onMessage([hanging = end.get_future().share()](const peer::Message&) {
        hanging.wait();
        return LRESULT{1};
    });
    const Elapsed elapsed;

    EXPECT_EQ(MessageEnd::late, send(peer.handle(), "x", 100));

    EXPECT_EQ(DWORD{ERROR_TIMEOUT}, GetLastError());
    EXPECT_GE(elapsed.ms(), 80u);
    EXPECT_LT(elapsed.ms(), 3000u);
    end.set_value();
}

TEST_F(WindowCalls, APeerThatHasTakenNoMessagesForSecondsHangs) {
    peer::WindowThread peer(title);
    std::promise<void> end;
    peer.onMessage([hanging = end.get_future().share()](const peer::Message&) {
        hanging.wait();
        return LRESULT{1};
    });

    EXPECT_EQ(MessageEnd::hung, send(peer.handle(), "x", 6000));
    end.set_value();
}

TEST_F(WindowCalls, OutsideAMessageAndInOneOfTheOwnThreadNoSenderIsHeld) {
    EXPECT_FALSE(platform.holdsSender());
    bool held = true;
    const peer::Window window(title, [&](const peer::Message&) {
        held = platform.holdsSender();
        return LRESULT{1};
    });
    EXPECT_EQ(1, peer::send(window.handle(), "x"));
    EXPECT_FALSE(held);
}

TEST_F(WindowCalls, AReleasedSenderGoesOnWithTheResultWhileTheHandlerStillRuns) {
    bool before = false;
    bool after = true;
    bool wentOn = false;
    std::promise<int> senderResult;
    auto senderIsDone = senderResult.get_future();
    const peer::Window window(title, [&](const peer::Message&) {
        before = platform.holdsSender();
        platform.releaseSender(5);
        after = platform.holdsSender();
        wentOn = senderIsDone.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
        return LRESULT{9};
    });

    pumpDuring([&] {
        senderResult.set_value(peer::send(window.handle(), "x"));
        return true;
    });

    EXPECT_TRUE(before);
    EXPECT_FALSE(after);
    EXPECT_TRUE(wentOn);
    EXPECT_EQ(5, senderIsDone.get());
}

}  // namespace
