#include "transport/SocketPump.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "framework/AsyncSocket.h"
#include "qorcontrol/Event.h"
#include "SocketTransportSupport.h"

namespace {

TEST(SocketPump, WithoutInputItEndsAfterAboutAMillisecond) {
    const Stopwatch watch;
    for (int round = 0; round < 10; ++round) pumpSocketNotifications(nullptr);

    EXPECT_LT(watch.ms(), 500u);
}

TEST(SocketPump, TheWakeUpEndsTheWaitAndIsTaken) {
    common::Event wakeUp;
    wakeUp.signal();

    pumpSocketNotifications(&wakeUp);

    EXPECT_FALSE(wakeUp.wait(0));
}

TEST(SocketPump, ItTakesSocketMessagesOnly) {
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes the queue
    PostThreadMessageA(GetCurrentThreadId(), WM_USER, 1, 2);
    PostThreadMessageA(GetCurrentThreadId(), socketNotifyMessage, 0, 0);
    PostThreadMessageA(GetCurrentThreadId(), socketDeadMessage, 0, 0);

    pumpSocketNotifications(nullptr);

    ASSERT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(static_cast<UINT>(WM_USER), message.message);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

// What they have brought is parsed before the next ones are taken.
TEST(SocketPump, OfManySocketMessagesItTakesSixtyFour) {
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes the queue
    for (int i = 0; i < 200; ++i)
        PostThreadMessageA(GetCurrentThreadId(), socketNotifyMessage, 0, 0);

    pumpSocketNotifications(nullptr);

    int left = 0;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) ++left;
    EXPECT_EQ(200 - 64, left);
}

TEST(SocketPump, AQuitMessageIsPostedAgainAndEndsThePump) {
    PostQuitMessage(9);

    pumpSocketNotifications(nullptr);

    MSG message = {};
    ASSERT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(static_cast<UINT>(WM_QUIT), message.message);
    EXPECT_EQ(9u, message.wParam);
}

}  // namespace
