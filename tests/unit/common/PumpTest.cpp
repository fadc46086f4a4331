#include "common/Pump.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "TestThread.h"

using testing_support::TestThread;

namespace {

// A window that counts what is dispatched to it.
class CountingWindow {
public:
    CountingWindow() {
        handle_ = CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                  nullptr);
        SetWindowLongPtrA(handle_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrA(handle_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    }
    ~CountingWindow() { DestroyWindow(handle_); }
    CountingWindow(const CountingWindow&) = delete;
    CountingWindow& operator=(const CountingWindow&) = delete;

    HWND handle() const { return handle_; }

    int copyData = 0;
    int posted = 0;

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
        auto& self = *reinterpret_cast<CountingWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (message == WM_COPYDATA) return ++self.copyData;
        if (message == WM_APP) return ++self.posted;
        return DefWindowProcA(window, message, w, l);
    }

    HWND handle_ = nullptr;
};

void sendCopyData(HWND window) {
    char byte = 'x';
    COPYDATASTRUCT data = {1, 1, &byte};
    SendMessageTimeoutA(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_NORMAL, 5000,
                        nullptr);
}

}  // namespace

TEST(Pump, OneCallDispatchesOneMessage) {
    CountingWindow window;
    PostMessageA(window.handle(), WM_APP, 0, 0);
    PostMessageA(window.handle(), WM_APP, 0, 0);
    common::pumpOneMessage();
    EXPECT_EQ(window.posted, 1);
    common::pumpOneMessage();
    EXPECT_EQ(window.posted, 2);
}

TEST(Pump, WithoutAMessageItReturnsAtOnce) {
    const DWORD before = GetTickCount();
    common::pumpOneMessage();
    common::pumpCopyData();
    EXPECT_LE(GetTickCount() - before, 1000u);
}

TEST(Pump, AQuitMessageIsTakenLikeAnyOther) {
    PostQuitMessage(0);
    common::pumpOneMessage();
    MSG message;
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(Pump, AQuitMessageStaysForItsOwnerInACopyDataPump) {
    PostQuitMessage(7);
    common::pumpCopyData();
    MSG message = {};
    ASSERT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 7u);
}

TEST(Pump, CopyDataOfAnotherThreadIsHandledInsideTheCall) {
    CountingWindow window;
    TestThread sender([&] { sendCopyData(window.handle()); });
    for (int i = 0; i < 500 && window.copyData == 0; ++i) {
        Sleep(1);
        common::pumpCopyData();
    }
    EXPECT_EQ(window.copyData, 1);
}

TEST(Pump, OtherMessagesStayInTheQueueOfACopyDataPump) {
    CountingWindow window;
    PostMessageA(window.handle(), WM_APP, 0, 0);
    common::pumpCopyData();
    EXPECT_EQ(window.posted, 0);
    common::pumpOneMessage();
    EXPECT_EQ(window.posted, 1);
}

TEST(Pump, AWaitForASentMessageEndsWithItAndLeavesItToThePump) {
    CountingWindow window;
    TestThread sender([&] {
        Sleep(30);
        sendCopyData(window.handle());
    });
    const DWORD before = GetTickCount();
    common::awaitSentMessage(5000);
    EXPECT_LT(GetTickCount() - before, 4000u);
    EXPECT_EQ(window.copyData, 0);
    common::awaitSentMessage(5000);
    EXPECT_LT(GetTickCount() - before, 4000u) << "it is still there";
    common::pumpCopyData();
    EXPECT_EQ(window.copyData, 1);
}

TEST(Pump, AWaitForASentMessageTakesItsTimeWhereThereIsNoneWhateverElseIsThere) {
    CountingWindow window;
    PostMessageA(window.handle(), WM_APP, 0, 0);
    const DWORD before = GetTickCount();
    common::awaitSentMessage(80);
    EXPECT_GE(GetTickCount() - before, 60u) << "ticks move in steps of up to 20 ms";
    EXPECT_EQ(window.posted, 0);
    common::pumpOneMessage();
}
