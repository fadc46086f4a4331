// That the native windows and messages do what the system's do, as far as the library relies on it.
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "Crowd.h"
#include "Desktop.h"

namespace {

constexpr UINT timeoutMs = 10000;
constexpr LRESULT answer = 7;

using Handler = std::function<LRESULT(const COPYDATASTRUCT&)>;

/// A window of the calling thread, whose messages a function handles.
class TestWindow {
public:
    TestWindow(const char* title, Handler handler) : handler_(std::move(handler)) {
        WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = procedure;
        windowClass.lpszClassName = "TestWindow";
        RegisterClassA(&windowClass);  // unless that is done
        handle = CreateWindowExA(0, "TestWindow", title, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                                 nullptr);
        SetWindowLongPtrA(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~TestWindow() { DestroyWindow(handle); }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    HWND handle = nullptr;

private:
    static LRESULT procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != WM_COPYDATA) return DefWindowProcA(window, message, wParam, lParam);
        const auto* self = reinterpret_cast<TestWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        return self->handler_(*reinterpret_cast<const COPYDATASTRUCT*>(lParam));
    }

    const Handler handler_;
};

void handleSent() {
    MSG message;
    PeekMessageA(&message, nullptr, WM_COPYDATA, WM_COPYDATA, PM_REMOVE);
}

void handleSentUntil(const std::function<bool()>& isDone) {
    while (!isDone()) {
        MsgWaitForMultipleObjectsEx(0, nullptr, 1, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        handleSent();
    }
}

struct Sending {
    LRESULT success = 0;
    DWORD_PTR result = 0;
    DWORD error = 0;
};

Sending send(HWND window, std::string bytes, UINT flags = SMTO_BLOCK, UINT withinMs = timeoutMs) {
    COPYDATASTRUCT record{1, static_cast<DWORD>(bytes.size()), bytes.data()};
    Sending sending;
    SetLastError(ERROR_TIMEOUT);
    sending.success = SendMessageTimeoutA(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record),
                                          flags, withinMs, &sending.result);
    sending.error = GetLastError();
    bytes.assign(bytes.size(), '#');  // whoever reads them from now on reads this
    return sending;
}

std::string bytesOf(const COPYDATASTRUCT& record) {
    return {static_cast<const char*>(record.lpData), record.cbData};
}

TEST(DesktopMessages, AreHandledByTheThreadOfTheirWindowWhichGivesTheResult) {
    std::string received;
    const std::thread::id own = std::this_thread::get_id();
    const TestWindow window("own", [&](const COPYDATASTRUCT& record) {
        EXPECT_EQ(std::this_thread::get_id(), own);
        received = bytesOf(record);
        return answer;
    });
    std::atomic<bool> isSent{false};
    Crowd sender;
    sender.add(1, [&](int) {
        const Sending sending = send(FindWindowA(nullptr, "own"), "bytes");
        EXPECT_NE(sending.success, 0);
        EXPECT_EQ(sending.result, static_cast<DWORD_PTR>(answer));
        isSent = true;
    });
    handleSentUntil([&] { return isSent.load(); });
    EXPECT_EQ(received, "bytes");
}

TEST(DesktopMessages, OfASenderThatHasGivenUpAreHandledLaterWithTheirBytes) {
    std::string received;
    const TestWindow window("own", [&](const COPYDATASTRUCT& record) {
        received = bytesOf(record);
        return answer;
    });
    Crowd sender;
    sender.add(1, [&](int) {
        const Sending sending = send(window.handle, "bytes", SMTO_BLOCK, 5);
        EXPECT_EQ(sending.success, 0);
        EXPECT_EQ(sending.error, ERROR_TIMEOUT);
    });
    sender.join();
    handleSent();
    EXPECT_EQ(received, "bytes");
}

TEST(DesktopMessages, LetTheirSenderGoWithTheReplyBeforeTheHandlerEnds) {
    std::atomic<bool> isSent{false};
    const TestWindow window("own", [&](const COPYDATASTRUCT&) {
        EXPECT_EQ(InSendMessageEx(nullptr), ISMEX_SEND);
        ReplyMessage(answer);
        EXPECT_EQ(InSendMessageEx(nullptr), ISMEX_SEND | ISMEX_REPLIED);
        while (!isSent) std::this_thread::yield();
        return LRESULT{0};
    });
    Crowd sender;
    sender.add(1, [&](int) {
        EXPECT_EQ(send(window.handle, "").result, static_cast<DWORD_PTR>(answer));
        isSent = true;
    });
    handleSentUntil([&] { return isSent.load(); });
    EXPECT_EQ(InSendMessageEx(nullptr), 0u);
}

/// A thread with a window that sends to `back` from inside its handler.
void answerInside(HWND back, std::atomic<HWND>& window, const std::atomic<bool>& enough) {
    const TestWindow own("other", [&](const COPYDATASTRUCT&) {
        return static_cast<LRESULT>(send(back, "", SMTO_BLOCK, 20).result);
    });
    window = own.handle;
    handleSentUntil([&] { return enough.load(); });
}

DWORD_PTR resultOfASendThatIsAnsweredInside(UINT flags) {
    const TestWindow window("own", [](const COPYDATASTRUCT&) { return answer; });
    std::atomic<HWND> otherWindow{nullptr};
    std::atomic<bool> enough{false};
    Crowd other;
    other.add(1, [&](int) { answerInside(window.handle, otherWindow, enough); });
    while (otherWindow == nullptr) std::this_thread::yield();
    const Sending sending = send(otherWindow, "", flags);
    enough = true;
    other.join();
    handleSent();
    return sending.result;
}

TEST(DesktopMessages, ASenderThatBlocksHandlesNoneUnlessTheSystemInterruptsIt) {
    desktop::letSendsBeInterrupted(false);
    EXPECT_EQ(resultOfASendThatIsAnsweredInside(SMTO_BLOCK), 0u);
    EXPECT_EQ(resultOfASendThatIsAnsweredInside(0), static_cast<DWORD_PTR>(answer));
    desktop::letSendsBeInterrupted(true);
    EXPECT_EQ(resultOfASendThatIsAnsweredInside(SMTO_BLOCK), static_cast<DWORD_PTR>(answer));
    desktop::letSendsBeInterrupted(false);
}

TEST(DesktopMessages, AreLostWithTheWindowOrItsThread) {
    std::atomic<HWND> handle{nullptr};
    Crowd owner;
    owner.add(1, [&](int) {
        const TestWindow window("other", [](const COPYDATASTRUCT&) { return answer; });
        handle = window.handle;
        while (handle != nullptr) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    });
    while (handle == nullptr) std::this_thread::yield();
    const HWND window = handle.exchange(nullptr);
    const Sending sending = send(window, "");
    EXPECT_EQ(sending.success, 0);
    EXPECT_EQ(sending.error, ERROR_INVALID_WINDOW_HANDLE);
    owner.join();
    EXPECT_EQ(send(window, "").error, ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(GetWindowThreadProcessId(window, nullptr), 0u);
    EXPECT_EQ(FindWindowA(nullptr, "other"), nullptr);
}

TEST(DesktopMessages, ArePostedInTheirOrderAndTheEndComesBehindThem) {
    const TestWindow window("own", [](const COPYDATASTRUCT&) { return answer; });
    PostQuitMessage(3);
    PostMessageA(window.handle, 100, 1, 0);
    PostMessageA(window.handle, 200, 2, 0);
    MSG message;
    ASSERT_TRUE(PeekMessageA(&message, nullptr, 200, 200, PM_REMOVE));
    EXPECT_EQ(message.wParam, 2u);
    ASSERT_TRUE(PeekMessageA(&message, window.handle, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.wParam, 1u);
    ASSERT_TRUE(PeekMessageA(&message, nullptr, 200, 200, PM_REMOVE));
    EXPECT_EQ(message.message, WM_QUIT);
    EXPECT_EQ(message.wParam, 3u);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

}  // namespace
