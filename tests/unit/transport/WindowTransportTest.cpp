#include <gtest/gtest.h>

#include <stdexcept>

#include "support/TcpBytes.h"
#include "WindowPeer.h"
#include "WindowTestTransport.h"
#include "WindowWaiting.h"

namespace {

using tcp::record;
using tcp::word;
using tcp::wordAt;

class WindowTransport : public testing::Test {
protected:
    const std::string title = uniqueTitle("client");
    const std::string serverTitle = uniqueTitle("server");
    WindowTestTransport transport{title, serverTitle, std::make_unique<WindowPlatform>()};
    HWND const window = FindWindowA(nullptr, title.c_str());

    static std::string answerTo(const peer::Message& request) {
        return record(tcp::replyFlag | 8, wordAt(request.bytes, 4), word(0));
    }
    bool answerHasCome() {
        return pumpUntil([this] { return !transport.seen.empty(); }) && transport.seen[0].isReply;
    }
};

const std::string routine = record(8, 0xABCD, word(3));

TEST_F(WindowTransport, TheWindowIsATopLevelOneOfTheThreadThatMadeItAndNeverVisible) {
    ASSERT_NE(nullptr, window);
    EXPECT_FALSE(IsWindowVisible(window));
    EXPECT_EQ(GetDesktopWindow(), GetAncestor(window, GA_PARENT));
    EXPECT_EQ(nullptr, GetWindow(window, GW_OWNER));
    EXPECT_EQ(nullptr, GetMenu(window));
    EXPECT_EQ(0u, GetClassLongA(window, GCL_STYLE));
    EXPECT_EQ(0u, GetClassLongA(window, GCL_HCURSOR));
    EXPECT_EQ(0u, GetClassLongA(window, GCL_HBRBACKGROUND));
    EXPECT_EQ(0u, GetClassLongA(window, GCL_HICON));
    EXPECT_EQ(GetCurrentThreadId(), GetWindowThreadProcessId(window, nullptr));
}

TEST(WindowTransportLife, TheWindowEndsWithTheTransport) {
    const std::string title = uniqueTitle("life");
    {
        const WindowTestTransport transport(title, "", std::make_unique<WindowPlatform>());
        EXPECT_NE(nullptr, FindWindowA(nullptr, title.c_str()));
    }
    EXPECT_EQ(nullptr, FindWindowA(nullptr, title.c_str()));
}

/// Has the system refuse every window of this thread while it lives.
class NoWindows {
public:
    NoWindows() : hook_(SetWindowsHookExA(WH_CBT, refuse, nullptr, GetCurrentThreadId())) {}
    ~NoWindows() { UnhookWindowsHookEx(hook_); }
    NoWindows(const NoWindows&) = delete;
    NoWindows& operator=(const NoWindows&) = delete;

private:
    static LRESULT CALLBACK refuse(int code, WPARAM wParam, LPARAM lParam) {
        return code == HCBT_CREATEWND ? 1 : CallNextHookEx(nullptr, code, wParam, lParam);
    }
    HHOOK const hook_;
};

TEST(WindowTransportLife, AWindowThatTheSystemRefusesIsAnExceptionThatNamesIt) {
    const std::string title = uniqueTitle("refused");
    const NoWindows none;
    try {
        const WindowTestTransport transport(title, "", std::make_unique<WindowPlatform>());
        FAIL() << "there was a window";
    } catch (const std::exception& error) {
        EXPECT_EQ("Unable to create External Operating CWnd (" + title + ")", error.what());
    }
}

TEST(WindowTransportLife, AModalStateDisablesTheReceivingWindowUntilItEnds) {
    const std::string title = uniqueTitle("modal");
    WindowTestTransport transport(uniqueTitle("other"), "", std::make_unique<WindowPlatform>());
    ExternalOperatingWnd window(transport);
    ASSERT_TRUE(window.create(title.c_str()));
    EXPECT_TRUE(IsWindowEnabled(window.m_hWnd));

    window.BeginModalState();
    EXPECT_FALSE(IsWindowEnabled(window.m_hWnd));
    EXPECT_EQ(1, pumpDuring([&] { return peer::send(window.m_hWnd, routine); }))
        << "messages are still handled";
    window.EndModalState();
    EXPECT_TRUE(IsWindowEnabled(window.m_hWnd));
}

TEST_F(WindowTransport, WithoutAServerWindowASendFailsAtOnce) {
    const Elapsed elapsed;
    EXPECT_FALSE(transport.sendRoutine(5000));
    EXPECT_LT(elapsed.ms(), 2000u);
}

TEST_F(WindowTransport, AServerThatComesIsFoundAndOneThatGoesIsMissed) {
    {
        const peer::WindowThread server(serverTitle);
        EXPECT_TRUE(transport.sendRoutine(5000));
    }
    EXPECT_FALSE(transport.sendRoutine(5000));
}

TEST_F(WindowTransport, OfTwoServersWithOneTitleExactlyOneGetsTheMessage) {
    const peer::WindowThread first(serverTitle);
    const peer::WindowThread second(serverTitle);

    EXPECT_TRUE(transport.sendRoutine(5000));

    EXPECT_EQ(1u, first.received().size() + second.received().size());
}

TEST_F(WindowTransport, AServerThatRefusesIsAFailure) {
    peer::WindowThread server(serverTitle);
    server.onMessage([](const peer::Message&) { return LRESULT{0}; });
    EXPECT_FALSE(transport.sendRoutine(5000));
}

TEST_F(WindowTransport, AServerThatHangsIsGivenUpAfterTheTimeOut) {
    peer::WindowThread server(serverTitle);
    std::promise<void> end;
    server.onMessage([hanging = end.get_future().share()](const peer::Message&) {
        hanging.wait();
        return LRESULT{1};
    });
    for (const unsigned timeoutMs : {100u, 1000u, 1001u}) {
        const Elapsed elapsed;
        EXPECT_FALSE(transport.sendRoutine(timeoutMs));
        EXPECT_GE(elapsed.ms() + 20, timeoutMs);
        EXPECT_LT(elapsed.ms(), timeoutMs + 3000);
    }
    end.set_value();
    server.onMessage({});
    EXPECT_TRUE(transport.sendRoutine(5000)) << "it hangs no longer";
}

/// Whether the system takes messages inside a send or not, the answer is there after one pump.
TEST_F(WindowTransport, AnAnswerFromInsideTheServersHandlerIsHandledOnceTheSenderIsReleased) {
    peer::WindowThread server(serverTitle);
    server.onMessage([this](const peer::Message& request) {
        ReplyMessage(1);
        return LRESULT{peer::send(window, answerTo(request))};
    });

    EXPECT_TRUE(transport.sendRoutine(5000));

    EXPECT_TRUE(answerHasCome());
}

TEST_F(WindowTransport, AnAnswerBeforeTheReleaseIsHandledAtTheLatestWhenItIsRepeated) {
    peer::WindowThread server(serverTitle);
    server.onMessage([&, this](const peer::Message& request) {
        const std::string answer = answerTo(request);
        if (peer::send(window, answer, SMTO_NORMAL, 100) == peer::notTaken)
            server.later([this, answer] { peer::send(window, answer); });
        return LRESULT{1};
    });

    EXPECT_TRUE(transport.sendRoutine(5000));

    EXPECT_TRUE(answerHasCome());
    EXPECT_EQ(1u, transport.seen.size());
}

TEST_F(WindowTransport, AnAnswerAfterTheServersHandlerIsHandledByThePump) {
    peer::WindowThread server(serverTitle);
    server.onMessage([&, this](const peer::Message& request) {
        server.later([this, answer = answerTo(request)] { peer::send(window, answer); });
        return LRESULT{1};
    });

    EXPECT_TRUE(transport.sendRoutine(5000));

    EXPECT_TRUE(answerHasCome());
}

TEST_F(WindowTransport, ASendFromInsideAHandlerReleasesTheServerSoThatNeitherWaits) {
    peer::WindowThread server(serverTitle);
    bool handlersSend = false;
    transport.handler = [&](auto&, auto&) {
        handlersSend = transport.sendRoutine(5000);
        return false;  // too late: the server has its result
    };
    const Elapsed elapsed;
    std::promise<int> result;
    auto serversResult = result.get_future();

    server.later([&] { result.set_value(peer::send(window, routine, SMTO_BLOCK, 5000)); });

    EXPECT_TRUE(pumpUntil([&] { return !transport.seen.empty(); }));
    EXPECT_TRUE(handlersSend);
    EXPECT_EQ(1, serversResult.get());
    EXPECT_LT(elapsed.ms(), 4000u);
}

TEST_F(WindowTransport, AReplyReachesTheServerStampedAfterItsSendHasReturned) {
    peer::WindowThread server(serverTitle);
    transport.handler = [](auto&, auto& replyer) {
        return replyer.reply(std::make_unique<CommandEcuToolRoutine>(), 5000);
    };
    server.later([&] { peer::send(window, routine, SMTO_BLOCK, 5000); });

    ASSERT_TRUE(pumpUntil([&] { return !server.received().empty(); }));

    EXPECT_EQ(record(tcp::replyFlag | 8, 0xABCD, word(0)), server.received()[0].bytes);
}

TEST_F(WindowTransport, TheResultOfAMessageTellsWhetherItWasHandled) {
    EXPECT_EQ(1, pumpDuring([&] { return peer::send(window, routine); }));
    EXPECT_EQ(0, pumpDuring([&] { return peer::send(window, "no record"); }));
    EXPECT_EQ(0, pumpDuring([&] { return peer::sendData(window, {peer::tag, 0, nullptr}); }));
    EXPECT_EQ(0, pumpDuring([&] { return peer::sendData(window, {peer::tag, 16, nullptr}); }));
    transport.handler = [](auto&, auto&) { return false; };
    EXPECT_EQ(0, pumpDuring([&] { return peer::send(window, routine); }));
}

}  // namespace
