#include "link/WindowLink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "link/Messages.h"
#include "WindowClient.h"

namespace simulator::test {
namespace {

using testing::SizeIs;

constexpr std::uint32_t patienceMs = 5000;

class Recorder : public WindowLinkEvents {
public:
    bool onMessage(const std::string& message, const MessageForm& messageForm) override {
        ++count;
        bytes = message;
        form = messageForm;
        if (onInput) onInput();
        return result;
    }

    int count = 0;
    std::string bytes;
    MessageForm form;
    bool result = true;
    std::function<void()> onInput;
};

class WindowLinkTest : public testing::Test {
protected:
    // Handles messages until the client's work is done.
    template <class Future>
    auto served(Future future) {
        const DWORD startMs = GetTickCount();
        while (future.wait_for(std::chrono::seconds(0)) != std::future_status::ready &&
               GetTickCount() - startMs < 2 * patienceMs) {
            waitForEventOrMessage(nullptr, 20);
            handleMessages();
        }
        return future.get();
    }

    std::future<int> clientSends(DWORD tag, const std::string& bytes, UINT flags = SMTO_NORMAL) {
        return client_.doing([this, tag, bytes, flags] {
            return WindowClient::send(server(), tag, bytes, flags, patienceMs);
        });
    }

    WindowLink::Sent send(const std::string& bytes, const MessageForm& form = {}) const {
        return WindowLink::send(client_.window(), bytes, form, patienceMs);
    }

    HWND server() const { return WindowLink::find(title_); }

    const std::string title_ = uniqueTitle("Server");
    Recorder events_;
    WindowLink link_{title_, events_};
    WindowClient client_{uniqueTitle("Client")};
};

TEST_F(WindowLinkTest, AMessageOfAClientArrivesAndGetsTheResultOfTheHandler) {
    EXPECT_EQ(served(clientSends(3084, std::string("a\0b", 3))), 1);
    EXPECT_EQ(events_.bytes, std::string("a\0b", 3));
    EXPECT_EQ(events_.form.tag, 3084U);
    EXPECT_EQ(events_.form.nullLength, std::nullopt);
    events_.result = false;
    EXPECT_EQ(served(clientSends(5, "")), 0);
    EXPECT_EQ(events_.form.tag, 5U);
}

TEST_F(WindowLinkTest, AMessageToAClientArrivesAndItsResultComesBack) {
    client_.onMessage([] { return 42; });
    const WindowLink::Sent sent = send(std::string("x\0y", 3));
    EXPECT_TRUE(sent.delivered);
    EXPECT_EQ(sent.result, 42U);
    ASSERT_THAT(client_.received(), SizeIs(1));
    EXPECT_EQ(client_.received()[0].bytes, std::string("x\0y", 3));
    EXPECT_EQ(client_.received()[0].tag, 3084U);
}

TEST_F(WindowLinkTest, ANullPointerTravelsWithTheLengthThatIsAnnounced) {
    MessageForm form;
    form.nullLength = 100;
    EXPECT_TRUE(send("", form).delivered);
    ASSERT_THAT(client_.received(), SizeIs(1));
    EXPECT_TRUE(client_.received()[0].isNull);
    EXPECT_EQ(client_.received()[0].length, 100U);

    served(client_.doing([this] {
        return WindowClient::sendData(server(), {3084, 77, nullptr}, SMTO_NORMAL, patienceMs);
    }));
    EXPECT_EQ(events_.form.nullLength, 77U);
}

TEST_F(WindowLinkTest, AClientThatHangsCostsTheTimeOutAndNoMore) {
    client_.onMessage([]() -> LRESULT {
        Sleep(600);
        return 1;
    });
    const DWORD startMs = GetTickCount();
    const WindowLink::Sent sent = WindowLink::send(client_.window(), "x", {}, 100);
    const DWORD tookMs = GetTickCount() - startMs;
    EXPECT_FALSE(sent.delivered);
    EXPECT_TRUE(sent.timedOut);
    EXPECT_EQ(sent.failure, "time-out");
    EXPECT_GE(tookMs, 80U);
    EXPECT_LT(tookMs, 500U);
}

TEST_F(WindowLinkTest, AWindowThatHasGoneIsToldAtOnce) {
    HWND gone = nullptr;
    {
        const WindowClient other(uniqueTitle("Gone"));
        gone = other.window();
    }
    const DWORD startMs = GetTickCount();
    const WindowLink::Sent sent = WindowLink::send(gone, "x", {}, patienceMs);
    EXPECT_FALSE(sent.delivered);
    EXPECT_FALSE(sent.timedOut);
    EXPECT_THAT(sent.failure, testing::StartsWith("error "));
    EXPECT_LT(GetTickCount() - startMs, patienceMs / 2);
}

TEST_F(WindowLinkTest, AMessageThatComesWhileWeSendIsHandledMeanwhile) {
    client_.onMessage([this] {
        return static_cast<LRESULT>(
            WindowClient::send(server(), 3084, "nested", SMTO_BLOCK, patienceMs));
    });
    const WindowLink::Sent sent = send("x");
    EXPECT_TRUE(sent.delivered);
    EXPECT_EQ(sent.result, 1U);
    EXPECT_EQ(events_.bytes, "nested");
}

TEST_F(WindowLinkTest, AReleasedSenderGoesOnWhileTheHandlerRuns) {
    bool heldBefore = false;
    bool heldAfter = true;
    WindowLink::Sent sent;
    events_.onInput = [&] {
        heldBefore = WindowLink::holdsSender();
        WindowLink::releaseSender(true);
        heldAfter = WindowLink::holdsSender();
        // Delivered only if the client's blocking send has come back.
        sent = send("answer");
    };
    events_.result = false;  // too late to count
    EXPECT_EQ(served(clientSends(3084, "question", SMTO_BLOCK)), 1);
    EXPECT_TRUE(heldBefore);
    EXPECT_FALSE(heldAfter);
    EXPECT_TRUE(sent.delivered);
    EXPECT_FALSE(WindowLink::holdsSender());
}

TEST_F(WindowLinkTest, TheWindowIsFoundByItsTitleAsLongAsItIsThere) {
    const std::string title = uniqueTitle("Other");
    EXPECT_EQ(WindowLink::find(title), nullptr);
    for (int round = 0; round < 3; ++round) {
        Recorder events;
        const WindowLink other(title, events);
        EXPECT_NE(WindowLink::find(title), nullptr);
        EXPECT_FALSE(IsWindowVisible(WindowLink::find(title)));
    }
    EXPECT_EQ(WindowLink::find(title), nullptr);
}

TEST_F(WindowLinkTest, ATitleBelongsToOneWindow) {
    Recorder other;
    try {
        const WindowLink second(title_, other);
        FAIL() << "two windows with one title";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "there is a window titled \"" + title_ + "\" already");
    }
}

}  // namespace
}  // namespace simulator::test
